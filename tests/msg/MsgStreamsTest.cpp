// Streams as blocks, text properties, property records.

#include "msg/MsgStreams.h"

#include <gtest/gtest.h>

#include "ReadMsg.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"

namespace tarn::test {
namespace {

using Streams = std::map<std::string, std::string>;

// What ReadMsgTextProperty makes of a file that has these streams in its root.
class TextProperty {
 public:
  explicit TextProperty(const Streams& streams) : msg_(write(streams)) {}

  std::string read(std::string_view name = "__substg1.0_0037") {
    EXPECT_EQ(ReadMsgTextProperty(msg_.storage(), name, target), StatusOk);
    return Bytes(target);
  }

  SizedBytes target;

 private:
  static std::string write(const Streams& streams) {
    CompoundBuilder file;
    for (const auto& [name, bytes] : streams) file.stream(name, bytes);
    return file.write();
  }

  OpenMsg msg_;
};

std::string ReadWide(const std::string& bytes) {
  return TextProperty(Streams{{"__substg1.0_0037001F", bytes}}).read();
}

TEST(WholeStream, HasTwoZeroBytesThatItsLengthDoesNotCount) {
  OpenMsg msg(CompoundBuilder().stream("s", "hello").write());
  std::optional<CompoundStream> stream = msg.file().open("s");
  ASSERT_TRUE(stream);
  SizedBytes target;
  ASSERT_EQ(ReadWholeStream(&*stream, target), StatusOk);
  EXPECT_EQ(target.length(), 5u);
  EXPECT_EQ(std::string(target.data(), 7), Raw("hello\0\0"));
  EXPECT_EQ(stream->position, 5u);
}

TEST(WholeStream, GoesOnFromItsPositionAndReportsTheLengthOfTheDirectory) {
  OpenMsg msg(CompoundBuilder().stream("s", "hello").write());
  std::optional<CompoundStream> stream = msg.file().open("s");
  ASSERT_TRUE(stream);
  stream->position = 2;
  SizedBytes target;
  ASSERT_EQ(ReadWholeStream(&*stream, target), StatusOk);
  EXPECT_EQ(target.length(), 5u);
  EXPECT_EQ(std::string(target.data(), 7), Raw("llo\0\0\0\0"));
  EXPECT_EQ(stream->position, 5u);
}

TEST(WholeStream, IsEmptyWithoutAStream) {
  SizedBytes target;
  Set(target, "old");
  ASSERT_EQ(ReadWholeStream(nullptr, target), StatusOk);
  EXPECT_EQ(target.length(), 0u);
  EXPECT_EQ(std::string(target.data(), 2), Raw("\0\0"));
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(ReadWholeStream(nullptr, target), StatusOutOfMemory);
}

TEST(WholeStream, HasZerosWhereItsChainEndsEarly) {
  CompoundImage image = CompoundBuilder().stream("s", "hello").image();
  image.put(image.record("s") + RecordSize, 100);
  OpenMsg msg(image.bytes);
  SizedBytes target;
  ASSERT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusOk);
  EXPECT_EQ(Bytes(target), "hello" + std::string(95, '\0'));
}

// Not what the file does not have: that is zeros.
TEST(WholeStream, FailsWhenTheKernelDoesNotReachIt) {
  for (const uint64_t size : {200u, 5000u}) {
    const std::string bytes(size, 'b');
    OpenMsg msg(CompoundBuilder().stream("s", bytes).write());
    SizedBytes target;
    PlainKernelFailAt(PlainKernelFaultSeek, 1);
    EXPECT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusReadFailed) << size;
    EXPECT_EQ(Bytes(target), "(null)") << size;
    ASSERT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusOk) << size;
    EXPECT_EQ(Bytes(target), bytes) << size;
  }
}

TEST(WholeStream, IsRefusedWhenItIsSaidToBeLargerThanItsFile) {
  CompoundImage image = CompoundBuilder().stream("s", std::string(5000, 'x')).image();
  image.put(image.record("s") + RecordSize, image.bytes.size() + 1);
  {
    OpenMsg msg(image.bytes);
    SizedBytes target;
    EXPECT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusOutOfMemory);
    EXPECT_EQ(target.data(), nullptr);
    EXPECT_EQ(target.length(), 0u);
  }
  image.put(image.record("s") + RecordSize, image.bytes.size());
  OpenMsg msg(image.bytes);
  SizedBytes target;
  EXPECT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusOk);
  EXPECT_EQ(target.length(), image.bytes.size());
}

TEST(WholeStream, IsRefusedOnceTooMuchOfTheFileHasBeenRead) {
  OpenMsg msg(CompoundBuilder().stream("s", std::string(1000, 'x')).write());
  msg.file().spend(PartsOf(msg.file()).big.bytesLeft() - 80000);
  SizedBytes target;
  EXPECT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusOk);
  EXPECT_EQ(Bytes(target), std::string(1000, 'x'));
  for (int i = 0; i < 2; ++i) {
    ReadMsgStream(msg.storage(), "s", target).ignore();
  }
  EXPECT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusOutOfMemory);
}

TEST(MsgStream, ThatDoesNotExistLeavesTheTarget) {
  CompoundBuilder file;
  file.storage("folder").stream("s", "x");
  OpenMsg msg(file.write());
  SizedBytes target;
  Set(target, "before");
  for (const char* path : {"none", "folder", "folder/none", "none/s", "/", ""}) {
    EXPECT_EQ(ReadMsgStream(msg.storage(), path, target), kNoStream) << path;
    EXPECT_EQ(Bytes(target), "before");
  }
  EXPECT_EQ(ReadMsgStream(msg.storage(), "folder/s", target), StatusOk);
  EXPECT_EQ(Bytes(target), "x");
}

TEST(MsgStream, ThatIsEmptyGivesABlock) {
  OpenMsg msg(CompoundBuilder().stream("s", "").write());
  SizedBytes target;
  EXPECT_EQ(ReadMsgStream(msg.storage(), "s", target), StatusOk);
  EXPECT_EQ(Bytes(target), "");
}

TEST(MsgText, ConvertsUtf16AndCountsANul) {
  EXPECT_EQ(ReadWide(WideBytes(u"Hi")), Raw("Hi\0"));
  EXPECT_EQ(ReadWide(WideBytes(u"\u00e9\u20ac\U0001F600")),
            Raw("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\0"));
}

TEST(MsgText, AddsNoSecondNul) {
  EXPECT_EQ(ReadWide(WideBytes(std::u16string(u"Hi\0", 3))), Raw("Hi\0"));
  EXPECT_EQ(ReadWide(WideBytes(std::u16string(u"Hi\0\0", 4))), Raw("Hi\0\0"));
  EXPECT_EQ(ReadWide(WideBytes(std::u16string(u"\0", 1))), Raw("\0"));
  EXPECT_EQ(ReadWide(WideBytes(std::u16string(u"a\0b", 3))), Raw("a\0b\0"));
}

TEST(MsgText, EndsWhereALongerTextWasBefore) {
  TextProperty text(Streams{{"__substg1.0_0037001F", WideBytes(u"Hi")}});
  Set(text.target, std::string(100, '#'));
  EXPECT_EQ(text.read(), Raw("Hi\0"));
}

TEST(MsgText, DropsAnOddByte) {
  EXPECT_EQ(ReadWide(WideBytes(u"Hi") + "x"), Raw("Hi\0"));
  EXPECT_EQ(ReadWide("x"), "");
}

TEST(MsgText, ReplacesLoneSurrogates) {
  EXPECT_EQ(ReadWide(Raw("\x00\xD8"
                         "a\0"
                         "\x00\xDC")),
            Raw("\xEF\xBF\xBD"
                "a\xEF\xBF\xBD\0"));
}

TEST(MsgText, FillsItsWholeRoomWithUnitsOfThreeBytes) {
  const std::u16string units(3000, u'\u20ac');
  std::string expected;
  for (size_t i = 0; i < units.size(); ++i) expected += "\xE2\x82\xAC";
  EXPECT_EQ(ReadWide(WideBytes(units)), expected + '\0');
}

// Relied upon: an empty Unicode stream leaves the field without a block, a missing one gives it
// one.
TEST(MsgText, OfLengthZeroLeavesThePointer) {
  TextProperty empty(Streams{{"__substg1.0_0037001F", ""}, {"__substg1.0_0037001E", "narrow"}});
  EXPECT_EQ(empty.read(), "(null)");
  EXPECT_EQ(empty.target.length(), 0u);
  Set(empty.target, "before");
  EXPECT_EQ(empty.read(), "");
  EXPECT_EQ(std::string(empty.target.data(), 6), "before");
}

TEST(MsgText, ThatIsMissingIsEmptyWithABlock) {
  TextProperty missing(Streams{{"__substg1.0_0E1D001F", "x"}});
  EXPECT_EQ(missing.read(), "");
  ASSERT_NE(missing.target.data(), nullptr);
  EXPECT_EQ(missing.target.data()[0], '\0');
  Set(missing.target, "before");
  EXPECT_EQ(missing.read(), "");
}

TEST(MsgText, KeepsNarrowBytesAsTheyStand) {
  TextProperty narrow(Streams{{"__substg1.0_0037001E",
                               "Gr\xFC\xDF"
                               "e"}});
  EXPECT_EQ(narrow.read(),
            "Gr\xFC\xDF"
            "e");
  EXPECT_EQ(std::string(narrow.target.data() + 5, 2), Raw("\0\0"));
  EXPECT_EQ(TextProperty(Streams{{"__substg1.0_00370102", Raw("a\0b")}}).read(), Raw("a\0b"));
  EXPECT_EQ(TextProperty(Streams{{"__substg1.0_0037001E", ""}}).read(), "");
}

TEST(MsgText, PrefersUnicodeThenNarrowThenBinary) {
  EXPECT_EQ(TextProperty(Streams{{"__substg1.0_0037001F", WideBytes(u"wide")},
                                 {"__substg1.0_0037001E", "narrow"},
                                 {"__substg1.0_00370102", "binary"}})
                .read(),
            Raw("wide\0"));
  EXPECT_EQ(
      TextProperty(Streams{{"__substg1.0_0037001E", "narrow"}, {"__substg1.0_00370102", "binary"}})
          .read(),
      "narrow");
  EXPECT_EQ(TextProperty(Streams{{"__substg1.0_00370102", "binary"}}).read(), "binary");
}

TEST(MsgText, IsNotAStorage) {
  CompoundBuilder file;
  file.storage("__substg1.0_0037001F");
  file.stream("__substg1.0_0037001E", "narrow");
  OpenMsg msg(file.write());
  SizedBytes target;
  ASSERT_EQ(ReadMsgTextProperty(msg.storage(), "__substg1.0_0037", target), StatusOk);
  EXPECT_EQ(Bytes(target), "narrow");
}

TEST(MsgText, OfALongerNameIsMissing) {
  CompoundBuilder file;
  const std::string folder = std::string(31, 'a') + "/" + std::string(31, 'b') + "/";
  const std::string deep = folder + std::string(8, 'c') + "/";  // 73 bytes
  file.at(deep.substr(0, deep.size() - 1)).stream(std::string(22, 'd') + "001E", "95");
  file.at(deep.substr(0, deep.size() - 1)).stream(std::string(23, 'd') + "001E", "96");
  OpenMsg msg(file.write());
  SizedBytes target;
  const std::string fits = deep + std::string(22, 'd');
  ASSERT_EQ(fits.size(), 95u);
  ASSERT_EQ(ReadMsgTextProperty(msg.storage(), fits, target), StatusOk);
  EXPECT_EQ(Bytes(target), "95");
  ASSERT_EQ(ReadMsgTextProperty(msg.storage(), fits + "d", target), StatusOk);
  EXPECT_EQ(Bytes(target), "");
}

TEST(MsgText, EndsInMinusOneWithoutMemory) {
  for (const char* name :
       {"__substg1.0_0037001F", "__substg1.0_0037001E", "__substg1.0_00390102"}) {
    OpenMsg msg(CompoundBuilder().stream(name, WideBytes(u"Subject")).write());
    const auto round = [&](FaultedWork& faulted) {
      SizedBytes target;
      const Status status =
          faulted([&] { return ReadMsgTextProperty(msg.storage(), "__substg1.0_0037", target); });
      EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk) << name;
    };
    const uint64_t calls = FailInTurn(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom);
    EXPECT_GT(calls, 0u);
    EXPECT_LT(calls, 100u);
  }
}

TEST(PropertyRecord, IsFoundByTypeAndId) {
  const std::string header(32, 'h');
  const std::string stream =
      header + Raw("\x03\x00\x17\x00\x06\x00\x00\x00\x02\x00\x00\x00\0\0\0\0") +
      Raw("\x40\x00\x39\x00\x06\x00\x00\x00\x01\x02\x03\x04\x05\x06\x07\x88");
  EXPECT_EQ(FindPropertyRecord(stream, 32, kPropertyTime, 0x39), 0x8807060504030201u);
  EXPECT_EQ(FindPropertyRecord(stream, 32, kPropertyInteger, 0x17), 2u);
  EXPECT_EQ(FindPropertyRecord(stream, 32, kPropertyInteger, 0x39), std::nullopt);
  EXPECT_EQ(FindPropertyRecord(stream, 32, kPropertyTime, 0x17), std::nullopt);
  EXPECT_EQ(FindPropertyRecord(stream, 48, kPropertyInteger, 0x17), std::nullopt);
}

TEST(PropertyRecord, LiesWhollyInsideTheStream) {
  const std::string stream =
      std::string(32, '\0') + Raw("\x40\x00\x39\x00\0\0\0\0\x01\0\0\0\0\0\0\0");
  const std::string_view cut = std::string_view(stream).substr(0, 47);
  EXPECT_EQ(FindPropertyRecord(stream, 32, kPropertyTime, 0x39), 1u);
  EXPECT_EQ(FindPropertyRecord(cut, 32, kPropertyTime, 0x39), std::nullopt);
  EXPECT_EQ(FindPropertyRecord(stream, 33, kPropertyTime, 0x39), std::nullopt);
  EXPECT_EQ(FindPropertyRecord("", 32, kPropertyTime, 0x39), std::nullopt);
}

}  // namespace
}  // namespace tarn::test

// Whole messages: which streams are read, in what order, and what ends the reading.

#include "msg/MsgReader.h"

#include <gtest/gtest.h>

#include "ReadMsg.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/LocalZone.h"
#include "support/RtfCompressor.h"

namespace tarn::test {
namespace {

class MsgReader : public ::testing::Test {
  LocalZone zone_;
};

MsgBuilder FullMessage() {
  MsgBuilder msg;
  msg.text(0x0037, u"Subject").text(0x0C1A, u"Ann").text(0x5D01, u"ann@example.com");
  msg.text(0x004D, u"Author").text(0x0E04, u"Bob").text(0x0E03, u"Cid").text(0x0E02, u"Dan");
  msg.text(0x1000, u"Plain").binary(0x1013, "<p>Html");
  msg.submitTime(kSampleTime).importance(2).recipient(u"Bob", u"bob@example.com");
  msg.named(u"Keywords");
  return msg;
}

TEST_F(MsgReader, FillsEveryField) {
  MsgReading reading(FullMessage());
  ASSERT_EQ(reading.run(), StatusOk);
  const MailMessage& message = reading.message;
  EXPECT_EQ(Bytes(message.subject), Raw("Subject\0"));
  EXPECT_EQ(Bytes(message.from), Raw("Ann\0"));
  EXPECT_EQ(Bytes(message.fromAddress), Raw("ann@example.com\0"));
  EXPECT_EQ(Bytes(message.originalAuthor), Raw("Author\0"));
  EXPECT_EQ(Bytes(message.to), Raw("Bob\0"));
  EXPECT_EQ(Bytes(message.cc), Raw("Cid\0"));
  EXPECT_EQ(Bytes(message.bcc), Raw("Dan\0"));
  EXPECT_EQ(Bytes(message.text), Raw("Plain\0"));
  EXPECT_EQ(Bytes(message.body), "<p>Html");
  EXPECT_EQ(Bytes(message.sent), kSampleSent);
  EXPECT_EQ(Bytes(message.importance), Raw("High\0"));
  EXPECT_EQ(message.compressedRtf.get(), nullptr);
  EXPECT_EQ(message.inlineStatus, StatusOk);
  EXPECT_EQ(message.attachmentCount, 0u);
}

TEST_F(MsgReader, SucceedsWithNothingToRead) {
  MsgReading reading(CompoundBuilder().write());
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.text), "");
  EXPECT_EQ(Bytes(reading.message.body), "");
  EXPECT_EQ(Bytes(reading.message.subject), "");
  EXPECT_EQ(Bytes(reading.message.fromAddress), "");
  EXPECT_EQ(Bytes(reading.message.sent), "(null)");
  EXPECT_EQ(Bytes(reading.message.importance), "(null)");
}

TEST_F(MsgReader, TakesAnyOtherFileForAnEmptyMessage) {
  std::string badShift = FullMessage().write();
  badShift[30] = 77;
  for (const std::string& bytes :
       {std::string("Hello, this is no compound file"), badShift, std::string()}) {
    MsgReading reading(bytes);
    EXPECT_EQ(reading.run(), StatusOk);
    EXPECT_EQ(Bytes(reading.message.text), "(null)");
    EXPECT_EQ(Bytes(reading.message.subject), "(null)");
    Deliveries list;
    EXPECT_EQ(reading.run(&list.request), StatusOk);
    EXPECT_TRUE(list.all.empty());
  }
}

TEST_F(MsgReader, RefusesAFileThatDoesNotOpen) {
  MailMessage message;
  PstFilterData data;
  EXPECT_EQ(ReadMsgFile(message, data, u"/nowhere/mail.msg", nullptr), StatusMsgOpenFailed);
  MsgReading reading(FullMessage());
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  EXPECT_EQ(reading.run(), StatusMsgOpenFailed);
}

TEST_F(MsgReader, KeepsMarkersOfTheSubject) {
  MsgBuilder msg;
  msg.text(0x0037, u"\u0001\u0004Re: Hi");
  MsgReading reading(msg);
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.subject), Raw("\x01\x04Re: Hi\0"));
}

// A body without bytes and without a block, and a text stream that is empty: there is no body.
TEST_F(MsgReader, RefusesAMessageWithAnEmptyUnicodeTextAndNoBody) {
  MsgBuilder msg;
  msg.text(0x1000, u"").stream("__substg1.0_1013001F", "");
  EXPECT_EQ(MsgReading(msg).run(), StatusNotSupported);
  msg.stream("__substg1.0_10090102", std::string(20, 'x'));  // of an unknown magic
  EXPECT_EQ(MsgReading(msg).run(), StatusNotSupported);
}

TEST_F(MsgReader, TakesAnEmptyUnicodeTextWithAnyBodyBlock) {
  MsgBuilder msg;
  msg.text(0x1000, u"");  // without an HTML stream the body is empty, with a block
  MsgReading reading(msg);
  EXPECT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.body), "");
  EXPECT_EQ(Bytes(reading.message.text), "(null)");
}

std::string FromAddress(const MsgBuilder& msg) {
  MsgReading reading(msg);
  EXPECT_EQ(reading.run(), StatusOk);
  return Bytes(reading.message.fromAddress);
}

TEST_F(MsgReader, TriesTheRepresentedAddressWhenTheFirstIsEmpty) {
  MsgBuilder none;
  none.text(0x0065, u"rep@example.com");
  EXPECT_EQ(FromAddress(none), Raw("rep@example.com\0"));
  MsgBuilder nul;
  nul.stream("__substg1.0_5D01001F", Raw("\0\0")).text(0x0065, u"rep@example.com");
  EXPECT_EQ(FromAddress(nul), Raw("rep@example.com\0"));
  MsgBuilder empty;
  empty.text(0x5D01, u"").text(0x0065, u"rep@example.com");
  EXPECT_EQ(FromAddress(empty), Raw("rep@example.com\0"));
  MsgBuilder narrow;
  narrow.text8(0x5D01, "").text8(0x0065, "rep@example.com");
  EXPECT_EQ(FromAddress(narrow), "rep@example.com");
  MsgBuilder both;
  both.text(0x5D01, u"smtp@example.com").text(0x0065, u"rep@example.com");
  EXPECT_EQ(FromAddress(both), Raw("smtp@example.com\0"));
}

TEST_F(MsgReader, DropsDirectoryAddressesOfEitherStream) {
  MsgBuilder first;
  first.text(0x5D01, u"/O=EXAMPLE/CN=ANN").text(0x0065, u"rep@example.com");
  EXPECT_EQ(FromAddress(first), "(null)");
  MsgBuilder second;
  second.text(0x0065, u"/O=EXAMPLE/CN=ANN");
  EXPECT_EQ(FromAddress(second), "(null)");
  MsgBuilder at;
  at.text(0x0065, u"/O=EXAMPLE/CN=ANN@X");
  EXPECT_EQ(FromAddress(at), Raw("/O=EXAMPLE/CN=ANN@X\0"));
}

std::string Sent(const std::string& properties) {
  MsgReading reading(CompoundBuilder().stream("__properties_version1.0", properties).write());
  EXPECT_EQ(reading.run(), StatusOk);
  return Bytes(reading.message.sent) + "|" + Bytes(reading.message.importance);
}

TEST_F(MsgReader, ReadsRecordsAfterAHeaderOf32Bytes) {
  const std::string header(32, '\xEE');
  const std::string sent = MsgRecord(0x40, 0x39, kSampleTime);
  const std::string one = std::string(kSampleSent) + "|(null)";
  EXPECT_EQ(Sent(header + sent), one);
  EXPECT_EQ(Sent(header + sent.substr(0, 15)), "(null)|(null)");  // 47 bytes
  EXPECT_EQ(Sent(header.substr(8) + sent), "(null)|(null)");
  EXPECT_EQ(Sent(""), "(null)|(null)");
  EXPECT_EQ(Sent(header + sent + MsgRecord(0x40, 0x39, 0)), one);
  EXPECT_EQ(Sent(header + MsgRecord(3, 0x17, 2) + sent), std::string(kSampleSent) + Raw("|High\0"));
  EXPECT_EQ(Sent(header + MsgRecord(3, 0x17, 0) + MsgRecord(3, 0x17, 2)), Raw("(null)|Low\0"));
  EXPECT_EQ(Sent(header + MsgRecord(3, 0x17, 1)), "(null)|(null)");
  // The upper half of an integer's value does not count.
  EXPECT_EQ(Sent(header + MsgRecord(3, 0x17, 0x0123456700000002)), Raw("(null)|High\0"));
  EXPECT_EQ(Sent(header + MsgRecord(3, 0x39, 2) + MsgRecord(0x40, 0x17, 2)), "(null)|(null)");
}

TEST_F(MsgReader, FormatsAnyTime) {
  const std::string header(32, '\0');
  EXPECT_EQ(Sent(header + MsgRecord(0x40, 0x39, 0)), Raw("Mon Jan 01, 1601 12:00 AM\0|(null)"));
  EXPECT_EQ(Sent(header + MsgRecord(0x40, 0x39, 116444736000000000)),
            Raw("Thu Jan 01, 1970 12:00 AM\0|(null)"));
}

// ---------------------------------------------------------------------------- compressed RTF

class Rtf : public MsgReader {
 protected:
  static MsgBuilder msg(const std::string& packed) {
    MsgBuilder message;
    message.binary(0x1009, packed).binary(0x1013, "<p>Html").text(0x1000, u"Plain");
    return message;
  }
};

TEST_F(Rtf, ShutsOutTheHtmlStream) {
  for (const std::string& packed : {PackRtf("{\\rtf1 Hello}"), StoreRtf("{\\rtf1 Hello}")}) {
    MsgReading reading(msg(packed));
    ASSERT_EQ(reading.run(), StatusOk);
    EXPECT_EQ(Bytes(reading.message.body), Raw("{\\rtf1 Hello}\0"));
    EXPECT_EQ(Bytes(reading.message.text), Raw("Plain\0"));
    EXPECT_EQ(reading.message.compressedRtf.get(), nullptr);
  }
}

TEST_F(Rtf, BecomesTheHtmlThatItWraps) {
  MsgReading reading(
      msg(PackRtf("{\\rtf1\\ansi\\fromhtml1 {\\*\\htmltag64 <p>}Hi{\\*\\htmltag72 </p>}}")));
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.body).substr(0, 9), "<p>Hi</p>");
}

TEST_F(Rtf, ThatIsMarkupIsScrubbed) {
  MsgReading reading(msg(StoreRtf("<div>&nbsp;value=\"/x\">rest")));
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.body), std::string(22, ' ') + Raw("rest\0"));
  // What begins as RTF is not.
  MsgReading kept(msg(StoreRtf("{\\rtf<div>&nbsp;value=\"/x\">rest")));
  ASSERT_EQ(kept.run(), StatusOk);
  EXPECT_EQ(Bytes(kept.message.body), Raw("{\\rtf<div>&nbsp;value=\"/x\">rest\0"));
}

TEST_F(Rtf, OfAnotherMagicStaysPackedAndLeavesTheText) {
  std::string packed = PackRtf("{\\rtf1 Hello}");
  packed[8] = 'X';
  for (const std::string& bytes :
       {packed, packed.substr(0, 11), Raw("12345678LZF"), std::string()}) {
    MsgReading reading(msg(bytes));
    ASSERT_EQ(reading.run(), StatusOk);
    EXPECT_FALSE(reading.message.body.hasBlock());
    ASSERT_NE(reading.message.compressedRtf.get(), nullptr);
    EXPECT_EQ(std::string(reading.message.compressedRtf.get(), bytes.size() + 2),
              bytes + Raw("\0\0"));
    EXPECT_EQ(Bytes(reading.message.text), Raw("Plain\0"));
  }
}

TEST_F(Rtf, ThatIsDamagedFailsTheMessage) {
  const std::string sound = PackRtf("{\\rtf1 Hello}");
  std::string badCrc = sound;
  badCrc[12] = static_cast<char>(badCrc[12] ^ 1);
  std::string badSize = sound;
  badSize[0] = static_cast<char>(badSize[0] + 1);
  for (const std::string& bytes :
       {badCrc, badSize, sound + "x", sound.substr(0, 12), sound.substr(0, 15)}) {
    MsgReading reading(msg(bytes));
    EXPECT_EQ(reading.run(), StatusNotSupported);
    EXPECT_EQ(reading.message.body.data(), nullptr);
    EXPECT_EQ(reading.message.compressedRtf.get(), nullptr);
    EXPECT_EQ(Bytes(reading.message.text), "(null)");
  }
}

TEST_F(Rtf, InAStorageOrOfAnotherTypeIsNone) {
  CompoundBuilder file;
  file.storage("__substg1.0_10090102");
  file.stream("__substg1.0_1009001E", PackRtf("{\\rtf1 no}")).stream("__substg1.0_10130102", "<p>");
  MsgReading reading(file.write());
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.body), "<p>");
}

TEST_F(Rtf, LargerThanItsFileIsOutOfMemory) {
  CompoundImage image = msg(std::string(5000, 'x')).image();
  image.put(image.record("__substg1.0_10090102") + RecordSize, image.bytes.size() + 1);
  MsgReading reading(image.bytes);
  EXPECT_EQ(reading.run(), StatusOutOfMemory);
}

TEST_F(MsgReader, ReadsHtmlOfAnyTextType) {
  MsgBuilder wide;
  wide.text(0x1013, u"<p>\u00e9");
  MsgReading reading(wide);
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.body), Raw("<p>\xC3\xA9\0"));
}

// Relied upon: a failing stream ends the reading with what was read so far.
TEST_F(MsgReader, KeepsWhatWasReadBeforeAFailure) {
  CompoundImage image = FullMessage().image();
  image.put(image.record("__substg1.0_0E04001F") + RecordSize, 0x7FFFFFFF);
  MsgReading reading(image.bytes);
  EXPECT_EQ(reading.run(), StatusOutOfMemory);
  EXPECT_EQ(Bytes(reading.message.subject), Raw("Subject\0"));
  EXPECT_EQ(Bytes(reading.message.to), "(null)");
  EXPECT_EQ(Bytes(reading.message.sent), "(null)");
}

// Each stream in turn fails, and the fields show which were read before it.
TEST_F(MsgReader, ReadsItsTextsInOrder) {
  using Field = SizedBytes MailMessage::*;
  const std::pair<const char*, Field> order[] = {
      {"__substg1.0_1000001F", &MailMessage::text},
      {"__substg1.0_0037001F", &MailMessage::subject},
      {"__substg1.0_0C1A001F", &MailMessage::from},
      {"__substg1.0_5D01001F", &MailMessage::fromAddress},
      {"__substg1.0_004D001F", &MailMessage::originalAuthor},
      {"__substg1.0_0E04001F", &MailMessage::to},
      {"__substg1.0_0E03001F", &MailMessage::cc},
      {"__substg1.0_0E02001F", &MailMessage::bcc},
  };
  for (size_t failing = 0; failing < std::size(order); ++failing) {
    CompoundImage image = FullMessage().image();
    image.put(image.record(order[failing].first) + RecordSize, 0x7FFFFFFF);
    MsgReading reading(image.bytes);
    EXPECT_EQ(reading.run(), StatusOutOfMemory);
    for (size_t i = 0; i < std::size(order); ++i) {
      EXPECT_EQ((reading.message.*order[i].second).data() != nullptr, i < failing)
          << order[failing].first << " " << order[i].first;
    }
  }
}

TEST_F(MsgReader, ReadsFilesOfEveryLayout) {
  for (const CompoundVersion version : {CompoundVersion::V3, CompoundVersion::V4}) {
    for (const BlockOrder order :
         {BlockOrder::Ascending, BlockOrder::Descending, BlockOrder::Interleaved}) {
      for (const SiblingShape shape :
           {SiblingShape::Balanced, SiblingShape::RightList, SiblingShape::LeftList}) {
        CompoundOptions options;
        options.version = version;
        options.order = order;
        options.shape = shape;
        MsgBuilder msg = FullMessage();
        const std::string html(20000, 'h');
        msg.binary(0x1013, html);
        MsgReading reading(msg.write(options));
        ASSERT_EQ(reading.run(), StatusOk);
        EXPECT_EQ(Bytes(reading.message.subject), Raw("Subject\0"));
        EXPECT_EQ(Bytes(reading.message.body), html);
        EXPECT_EQ(Bytes(reading.message.sent), kSampleSent);
      }
    }
  }
}

// ------------------------------------------------------------------------------------ faults

MsgBuilder FaultyMessage() {
  MsgBuilder msg = FullMessage();
  msg.binary(0x1013, "<img src=\"cid:one@x\">" + std::string(5000, 'h'));
  msg.attachment(u"a.png", std::string(60, 'A')).contentId(u"one@x");
  msg.attachment().text(0x3707, u"m.msg").embedded().text(0x0037, u"Inner");
  return msg;
}

bool IsDocumented(int32_t group, Status status) {
  if (group == PlainKernelFaultSeek) return status == StatusOk || status == StatusReadFailed;
  return status == StatusOk || status == StatusOutOfMemory || status == StatusNotSupported ||
         status == StatusMsgOpenFailed;
}

TEST_F(MsgReader, EndsInAStatusWhicheverCallFails) {
  const std::string bytes = FaultyMessage().write();
  MsgReading sound(bytes);
  ASSERT_EQ(sound.run(), StatusOk);
  bool failedInline = false;
  for (const int32_t group : {PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead,
                              PlainKernelFaultSeek, PlainKernelFaultText, PlainKernelFaultWrite}) {
    const auto round = [&](FaultedWork& faulted) {
      MsgReading reading(bytes);
      const Status status = faulted([&] { return reading.run(); });
      EXPECT_TRUE(faulted.isReached() ? IsDocumented(group, status) : status == StatusOk)
          << status.code();
      if (group != PlainKernelFaultMemory || !faulted.isReached()) return;
      EXPECT_TRUE(
          status == StatusOutOfMemory ||
          (status == StatusOk && (reading.message.inlineStatus == StatusOutOfMemory ||
                                  Bytes(reading.message.body) == Bytes(sound.message.body) ||
                                  reading.data.attachmentCount == 2)))
          << status.code() << " " << reading.message.inlineStatus.code();
      failedInline |= reading.message.inlineStatus == StatusOutOfMemory;
    };
    SweepFaults(group, round);
  }
  // What fails while images go into the body does not fail the message.
  EXPECT_TRUE(failedInline);
}

}  // namespace
}  // namespace tarn::test

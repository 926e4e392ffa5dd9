// Embedded messages as files of their own.

#include "msg/EmbeddedMessage.h"

#include <gtest/gtest.h>

#include "ReadMsg.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/LocalZone.h"

namespace tarn::test {
namespace {

constexpr const char* kInner = "__attach_version1.0_#00000000/__substg1.0_3701000D";

struct Export {
  explicit Export(const std::string& file, const std::string& path = kInner) {
    OpenMsg msg(file);
    TrackedBuffer<char> data(0, 1024, 1);
    status = ExportEmbeddedMessage(msg.storage(), path, data);
    bytes = data.view();
  }

  Status status;
  std::string bytes;
};

// A message whose embedded one has only streams, and no map of named properties but an empty one.
MsgBuilder StreamsOnly() {
  MsgBuilder msg;
  MsgBuilder& inner = msg.attachment().text(0x3707, u"inner.msg").embedded();
  inner.text(0x0037, u"Inner").text(0x1000, u"Body").submitTime(kSampleTime);
  return msg;
}

TEST(EmbeddedMessage, OfStreamsIsAFileThatOpens) {
  const Export exported(StreamsOnly().write());
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  ASSERT_EQ(file.file().result(), CompoundOk);
  EXPECT_EQ(file.names("/"),
            "__nameid_version1.0 __substg1.0_0037001F __substg1.0_1000001F "
            "__properties_version1.0");
  EXPECT_EQ(file.stream("__substg1.0_0037001F"), WideBytes(u"Inner"));
  EXPECT_EQ(file.stream("__substg1.0_1000001F"), WideBytes(u"Body"));
}

TEST(EmbeddedMessage, HasAHeaderOf32BytesThatRepeatsItsBeginning) {
  CompoundBuilder parent;
  const std::string header = "ABCDEFGHIJKLMNOPQRSTUVWX";
  const std::string record = MsgRecord(0x40, 0x39, kSampleTime);
  parent.at(kInner).stream("__properties_version1.0", header + record);
  const Export exported(parent.write());
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  EXPECT_EQ(file.stream("__properties_version1.0"), header + "ABCDEFGH" + record);
}

TEST(EmbeddedMessage, WidensAHeaderOf24BytesAndNoShorterOne) {
  const std::string header = "ABCDEFGHIJKLMNOPQRSTUVWX";
  for (const auto& [bytes, expected] :
       {std::pair(header, header + "ABCDEFGH"), std::pair(header.substr(1), header.substr(1)),
        std::pair(header + "!", header + "ABCDEFGH!"), std::pair(std::string(), std::string())}) {
    CompoundBuilder parent;
    parent.at(kInner).stream("__properties_version1.0", bytes).stream("a", "x");
    const Export exported(parent.write());
    ASSERT_EQ(exported.status, StatusOk);
    EXPECT_EQ(OpenMsg(exported.bytes).stream("__properties_version1.0"), expected);
  }
}

TEST(EmbeddedMessage, WidensNoOtherStream) {
  const std::string bytes(40, 'p');
  CompoundBuilder parent;
  parent.at(kInner).stream("__properties_version1.00", bytes);  // the last in the listing
  parent.at(std::string(kInner) + "/r").stream("__properties_version1.0", bytes);
  const Export exported(parent.write());
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  EXPECT_EQ(file.stream("__properties_version1.00"), bytes);
  EXPECT_EQ(file.stream("r/__properties_version1.0"), bytes);
}

TEST(EmbeddedMessage, ComesWithTheNamedPropertiesOfItsParent) {
  MsgBuilder msg = StreamsOnly();
  msg.named(u"Keywords");
  const Export exported(msg.write());
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  // Length of the text, then the text.
  EXPECT_EQ(file.stream("__nameid_version1.0/__substg1.0_00040102"),
            Raw("\x10\0\0\0") + WideBytes(u"Keywords"));
  EXPECT_EQ(file.stream("__nameid_version1.0/__substg1.0_00020102"), "");
}

TEST(EmbeddedMessage, ExportsWithoutAMapOfItsParent) {
  CompoundBuilder parent;
  parent.at(kInner).stream("__substg1.0_0037001E", "Inner");
  const Export exported(parent.write());
  ASSERT_EQ(exported.status, StatusOk);
  EXPECT_EQ(OpenMsg(exported.bytes).names("/"), "__substg1.0_0037001E");
}

TEST(EmbeddedMessage, LeavesOutEmptyStorages) {
  CompoundBuilder parent;
  parent.at(std::string(kInner) + "/empty");
  parent.at(std::string(kInner) + "/nest/deep");
  parent.at(kInner).stream("a stream that is last", "x");
  const Export exported(parent.write());
  ASSERT_EQ(exported.status, StatusOk);
  EXPECT_EQ(OpenMsg(exported.bytes).names("/"), "a stream that is last");
}

// A damaged directory: a storage without a name, in which a stream has the name of one beside it.
TEST(EmbeddedMessage, KeepsStreamsOfAStorageWithoutAName) {
  CompoundBuilder parent;
  const std::string inner(kInner);
  parent.at(inner + "/a").stream("stream", "below");
  parent.at(inner).stream("stream", "beside");
  CompoundImage image = parent.image();
  image.put(image.record(inner + "/a") + RecordName, 0, 2);
  const Export exported(image.bytes);
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  EXPECT_EQ(file.names("//"), "stream");
  EXPECT_EQ(file.stream("stream"), "beside");
  EXPECT_EQ(file.stream("/stream"), "beside");
  EXPECT_EQ(file.stream("//stream"), "below");
}

// Relied upon: one control character that begins a name is left out by each reader, and none is
// added when the name is written.
TEST(EmbeddedMessage, LosesAControlCharacterOfANameWithEachReading) {
  CompoundBuilder parent;
  parent.at(kInner).stream("\x05\x01xyz", "one").stream("a longer name", "two");
  const Export exported(parent.write());
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  EXPECT_EQ(file.names("/"), "xyz a longer name");
  EXPECT_EQ(file.stream("xyz"), "one");
  EXPECT_EQ(file.stream("a longer name"), "two");
}

TEST(EmbeddedMessage, KeepsStreamsOfEverySize) {
  CompoundBuilder parent;
  std::map<std::string, std::string> streams;
  for (const size_t size : {0u, 1u, 63u, 64u, 65u, 4095u, 4096u, 4097u, 100000u}) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251 + size);
    const std::string name = "s" + std::to_string(size);
    streams[name] = bytes;
    parent.at(kInner).stream(name, bytes);
    parent.at(std::string(kInner) + "/r").stream(name, bytes);
  }
  const Export exported(parent.write());
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  for (const auto& [name, bytes] : streams) {
    EXPECT_EQ(file.stream(name), bytes) << name;
    EXPECT_EQ(file.stream("r/" + name), bytes) << name;
  }
}

// Relied upon: with a storage as the last name of the listing nothing leads to the streams, and the
// export succeeds.
TEST(EmbeddedMessage, WhoseLastNameIsAStorageHasNoHeader) {
  CompoundBuilder parent;
  parent.at(kInner).stream("s", "stream of the root");
  parent.at(std::string(kInner) + "/__recip_version1.0_#00000000").stream("t", "below");
  const Export exported(parent.write());
  EXPECT_EQ(exported.status, StatusOk);
  // Blocks 0 to 2 are to hold tables and directory, block 3 the small streams, 64 bytes each.
  ASSERT_GE(exported.bytes.size(), 2048u + 64u + 5u);
  EXPECT_EQ(exported.bytes.substr(0, 2048), std::string(2048, '\0'));
  EXPECT_EQ(exported.bytes.substr(2048, 18), "stream of the root");
  EXPECT_EQ(exported.bytes.substr(2048 + 64, 5), "below");
}

// The copy of the named properties ends in a stream, too, but that is not the root's last name.
TEST(EmbeddedMessage, WhoseLastNameIsAStorageGetsNoHeaderFromItsNamedProperties) {
  CompoundBuilder parent;
  parent.at("__nameid_version1.0").stream("__substg1.0_00020102", "names");
  parent.at(kInner).stream("s", "stream of the root");
  parent.at(std::string(kInner) + "/__recip_version1.0_#00000000").stream("t", "below");
  const Export exported(parent.write());
  EXPECT_EQ(exported.status, StatusOk);
  ASSERT_GE(exported.bytes.size(), 2048u + 2 * 64u);
  EXPECT_EQ(exported.bytes.substr(0, 2048), std::string(2048, '\0'));
  EXPECT_EQ(exported.bytes.substr(2048, 5), "names");
  EXPECT_EQ(exported.bytes.substr(2048 + 64, 18), "stream of the root");
}

TEST(EmbeddedMessage, EndsAtNamedPropertiesThatCannotBeRead) {
  CompoundBuilder parent;
  parent.at("__nameid_version1.0").stream("__substg1.0_00020102", "names");
  parent.at(kInner).stream("s", "x");
  CompoundImage image = parent.image();
  image.put(image.record("__nameid_version1.0/__substg1.0_00020102") + RecordSize, 100);
  EXPECT_EQ(Export(image.bytes).status, StatusReadFailed);
}

// Below the root of the new file nothing is widened.
TEST(EmbeddedMessage, KeepsAPropertiesStreamAmongTheNamedProperties) {
  const std::string bytes(40, 'p');
  CompoundBuilder parent;
  parent.at("__nameid_version1.0").stream("__properties_version1.0", bytes);
  parent.at(kInner).stream("a stream that is the last", "x");
  const Export exported(parent.write());
  ASSERT_EQ(exported.status, StatusOk);
  OpenMsg file(exported.bytes);
  ASSERT_EQ(file.file().result(), CompoundOk);
  EXPECT_EQ(file.stream("__nameid_version1.0/__properties_version1.0"), bytes);
  EXPECT_EQ(file.stream("a stream that is the last"), "x");
}

// The stream of one value of a property with many has a name of 29 bytes. The listing puts it
// after the storages of recipients, which are shorter, and of attachments, whose names are
// smaller.
TEST(EmbeddedMessage, WhoseLastNameIsAStreamOpensWithItsStorages) {
  constexpr const char* kValue = "__substg1.0_8001101F-00000000";
  const std::string inner(kInner);
  for (const bool hasValue : {true, false}) {
    CompoundBuilder parent;
    parent.at(kInner).stream("__substg1.0_0037001E", "Inner");
    parent.at(inner + "/__recip_version1.0_#00000000").stream("r", "recipient");
    parent.at(inner + "/__attach_version1.0_#00000000").stream("a", "attachment");
    if (hasValue) parent.at(kInner).stream(kValue, "value");
    const Export exported(parent.write());
    ASSERT_EQ(exported.status, StatusOk);
    OpenMsg file(exported.bytes);
    EXPECT_EQ(file.file().result() == CompoundOk, hasValue);
    if (!hasValue) continue;
    EXPECT_EQ(file.stream("__substg1.0_0037001E"), "Inner");
    EXPECT_EQ(file.stream("__recip_version1.0_#00000000/r"), "recipient");
    EXPECT_EQ(file.stream("__attach_version1.0_#00000000/a"), "attachment");
    EXPECT_EQ(file.stream(kValue), "value");
  }
}

TEST(EmbeddedMessage, WithoutEntriesOrStorageHasNothingToCopy) {
  CompoundBuilder parent;
  parent.at(kInner);
  const Export empty(parent.write());
  EXPECT_EQ(empty.status, kNothingToCopy);
  EXPECT_EQ(empty.bytes, "");
  EXPECT_EQ(Export(parent.write(), "none").status, kNothingToCopy);
  EXPECT_EQ(Export(StreamsOnly().write(), "__properties_version1.0").status, kNothingToCopy);
}

TEST(EmbeddedMessage, OfEmptyStoragesIsNoData) {
  CompoundBuilder parent;
  parent.at(std::string(kInner) + "/empty");
  const Export exported(parent.write());
  EXPECT_EQ(exported.status, StatusOk);
  EXPECT_EQ(exported.bytes, "");
  OpenMsg file(parent.write());
  Deliveries deliveries;
  EXPECT_EQ(EnumerateMsgAttachments(file.storage(), deliveries.request), StatusOutOfMemory);
  EXPECT_TRUE(deliveries.all.empty());
}

TEST(EmbeddedMessage, WhoseStreamEndsEarlyCannotBeRead) {
  CompoundBuilder parent;
  parent.at(kInner).stream("s", "short");
  CompoundImage image = parent.image();
  image.put(image.record(std::string(kInner) + "/s") + RecordSize, 100);
  EXPECT_EQ(Export(image.bytes).status, StatusReadFailed);
}

TEST(EmbeddedMessage, WithAStreamLargerThanTheFileIsOutOfMemory) {
  CompoundBuilder parent;
  parent.at(kInner).stream("s", std::string(5000, 'x'));
  CompoundImage image = parent.image();
  const uint64_t whole = image.bytes.size();
  for (const auto& [size, status] :
       {std::pair(whole, Status(StatusReadFailed)), std::pair(whole + 1, Status(StatusOutOfMemory)),
        std::pair(2 * whole, Status(StatusOutOfMemory)),
        std::pair(uint64_t{0x7FFFFFFF}, Status(StatusOutOfMemory))}) {
    image.put(image.record(std::string(kInner) + "/s") + RecordSize, size);
    EXPECT_EQ(Export(image.bytes).status, status) << size;
  }
}

// A damaged directory: before the stream "d" is one named "d/e", which is looked up as
// what hangs below "d". So the copy has a storage "d" by the time the stream is to be made.
TEST(EmbeddedMessage, WhoseStreamCannotBeMadeCannotBeWritten) {
  const auto exported = [](std::string_view bytes) {
    CompoundBuilder parent;
    parent.at(kInner).stream("d", bytes).stream("d/e", "x");
    parent.stream("e", "below");
    CompoundImage image = parent.image();
    const std::string inner(kInner);
    const size_t d = image.record(inner + "/d");
    const size_t slash = image.record(inner + "/d/e");
    image.put(image.record(inner) + RecordChild, image.entries.at(inner + "/d"));
    image.put(d + RecordLeft, image.entries.at(inner + "/d/e"));
    image.put(d + RecordRight, 0xFFFFFFFF);
    image.put(d + RecordChild, image.entries.at("e"));
    image.put(slash + RecordLeft, 0xFFFFFFFF);
    image.put(slash + RecordRight, 0xFFFFFFFF);
    return Export(image.bytes).status;
  };
  EXPECT_EQ(exported("bytes"), StatusWriteFailed);
  EXPECT_EQ(exported(""), StatusOk);
}

TEST(EmbeddedMessage, WhoseStorageHoldsItselfFails) {
  CompoundBuilder parent;
  parent.at(std::string(kInner) + "/a/b/c").stream("s", "x");
  CompoundImage image = parent.image();
  const std::string inner(kInner);
  image.put(image.record(inner + "/a/b/c") + RecordChild,
            image.get(image.record(inner) + RecordChild));
  EXPECT_EQ(Export(image.bytes).status, StatusOutOfMemory);
}

// Two storages in each storage that are one and the same: 2^40 ways to the bottom.
TEST(EmbeddedMessage, WhoseStoragesShareTheirEntriesFails) {
  constexpr int kLevels = 40;
  CompoundBuilder parent;
  std::vector<std::string> paths = {kInner};
  for (int i = 0; i < kLevels; ++i) {
    parent.at(paths.back() + "/b");
    parent.at(paths.back() + "/a");
    paths.push_back(paths.back() + "/a");
  }
  parent.at(paths.back()).stream("empty", "");
  CompoundImage image = parent.image();
  for (int i = 0; i < kLevels; ++i) {
    const std::string& path = paths[static_cast<size_t>(i)];
    image.put(image.record(path + "/b") + RecordChild,
              image.get(image.record(path + "/a") + RecordChild));
  }
  EXPECT_EQ(Export(image.bytes).status, StatusOutOfMemory);
}

TEST(EmbeddedMessage, OfStreamsThatShareTheirBytesFails) {
  CompoundBuilder parent;
  CompoundFolder& inner = parent.at(kInner);
  for (int i = 0; i < 1000; ++i) inner.stream("s" + std::to_string(i), std::string(5000, 'x'));
  CompoundImage image = parent.image();
  // All of them become the first, said to be as large as the file.
  const std::string first = std::string(kInner) + "/s0";
  CompoundBuilder large;
  for (int i = 0; i < 1000; ++i) large.at(kInner).stream("s" + std::to_string(i), "x");
  large.stream("large", std::string(1 << 20, 'x'));
  CompoundImage shared = large.image();
  const uint64_t start = shared.get(shared.record("large") + RecordStart);
  for (const auto& [path, entry] : shared.entries) {
    if (path.find("/s") == std::string::npos) continue;
    shared.put(shared.record(entry) + RecordStart, start);
    shared.put(shared.record(entry) + RecordSize, 1 << 20);
  }
  const Export exported(shared.bytes);
  EXPECT_EQ(exported.status, StatusOutOfMemory);
  EXPECT_LE(exported.bytes.size(), 4 * shared.bytes.size());
  // Streams that lie apart are no trouble.
  EXPECT_EQ(Export(image.bytes).status, StatusOk);
}

TEST(EmbeddedMessage, DeeperThanSixtyFourStoragesFails) {
  for (const auto& [depth, status] :
       {std::pair(64, Status(StatusOk)), std::pair(65, Status(StatusOutOfMemory))}) {
    CompoundBuilder parent;
    std::string path = kInner;
    for (int i = 0; i < depth; ++i) path += "/a";
    parent.at(path).stream("s", "x");
    parent.at(kInner).stream("last stream", "x");
    const Export exported(parent.write());
    EXPECT_EQ(exported.status, status) << depth;
    if (status != StatusOk) continue;
    std::string deep;
    for (int i = 0; i < depth; ++i) deep += "a/";
    EXPECT_EQ(OpenMsg(exported.bytes).stream(deep + "s"), "x");
  }
}

TEST(EmbeddedMessage, OfAnEmbeddedMessageOpensAgain) {
  MsgBuilder msg;
  MsgBuilder& middle = msg.attachment().embedded();
  middle.text(0x0037, u"Middle");
  middle.attachment().embedded().text(0x0037, u"Inner");
  // The middle one ends in a storage; only its own embedded one is a file again.
  const Export exported(msg.write(), std::string(kInner) + "/" + kInner);
  ASSERT_EQ(exported.status, StatusOk);
  MsgReading reading(exported.bytes);
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.subject), Raw("Inner\0"));
}

TEST(EmbeddedMessage, KeepsItsTimeThroughTheWiderHeader) {
  const LocalZone zone;
  const Export exported(StreamsOnly().write());
  MsgReading reading(exported.bytes);
  ASSERT_EQ(reading.run(), StatusOk);
  EXPECT_EQ(Bytes(reading.message.subject), Raw("Inner\0"));
  EXPECT_EQ(Bytes(reading.message.text), Raw("Body\0"));
  EXPECT_EQ(Bytes(reading.message.sent), kSampleSent);
}

TEST(EmbeddedMessage, IsWrittenAfterNothingInAFilledBuffer) {
  OpenMsg msg(StreamsOnly().write());
  TrackedBuffer<char> data(0, 1024, 1);
  ASSERT_EQ(data.append("filled", 6), StatusOk);
  ASSERT_EQ(ExportEmbeddedMessage(msg.storage(), kInner, data), StatusOk);
  const Export fresh(StreamsOnly().write());
  EXPECT_EQ(std::string(data.data(), data.length()), fresh.bytes);
  EXPECT_GE(data.capacity(), data.length());
}

TEST(EmbeddedMessage, EndsInAStatusWhicheverCallFails) {
  const std::string bytes = StreamsOnly().write();
  for (const int32_t group : {PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead,
                              PlainKernelFaultSeek, PlainKernelFaultWrite}) {
    bool failed = false;
    const auto round = [&](FaultedWork& faulted) {
      OpenMsg msg(bytes);
      TrackedBuffer<char> data(0, 1024, 1);
      const Status status =
          faulted([&] { return ExportEmbeddedMessage(msg.storage(), kInner, data); });
      if (!faulted.isReached()) {
        EXPECT_EQ(status, StatusOk);
      }
      failed |= status != StatusOk;
      const bool documented = status == StatusOk ||
                              (group == PlainKernelFaultMemory && status == StatusOutOfMemory) ||
                              (group == PlainKernelFaultOpen && status == StatusCreateFailed) ||
                              (group == PlainKernelFaultRead && status == StatusReadFailed) ||
                              (group == PlainKernelFaultSeek && status == StatusReadFailed);
      EXPECT_TRUE(documented) << status.code();
    };
    SweepFaults(group, round, FaultKinds::OneAndFrom);
    EXPECT_TRUE(failed || (group != PlainKernelFaultMemory && group != PlainKernelFaultOpen));
  }
}

}  // namespace
}  // namespace tarn::test

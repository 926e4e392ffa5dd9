// The attachments of MSG files, as a request gets them.

#include "msg/MsgAttachments.h"

#include <gtest/gtest.h>

#include "ReadMsg.h"
#include "Tarnbase/PlainKernel.h"
#include "TextProbe.h"
#include "support/FaultSweep.h"

namespace tarn::test {
namespace {

using Properties = std::vector<std::pair<std::u16string, std::u16string>>;

// Runs a request over the file; its status.
Status Enumerate(const std::string& bytes, Deliveries& deliveries) {
  OpenMsg msg(bytes);
  return EnumerateMsgAttachments(msg.storage(), deliveries.request);
}

Delivered Only(const std::string& bytes, bool infoOnly = false) {
  Deliveries deliveries(kAllAttachments, infoOnly);
  EXPECT_EQ(Enumerate(bytes, deliveries), StatusOk);
  EXPECT_EQ(deliveries.all.size(), 1u);
  return deliveries.all.empty() ? Delivered() : deliveries.all[0];
}

// A file with one attachment storage that has these streams.
std::string OneAttachment(const std::map<std::string, std::string>& streams) {
  CompoundBuilder file;
  CompoundFolder& folder = file.storage("__attach_version1.0_#00000000");
  for (const auto& [name, bytes] : streams) folder.stream(name, bytes);
  return file.write();
}

MsgBuilder TwoAttachments() {
  MsgBuilder msg;
  msg.attachment(u"first.bin", "one");
  msg.attachment(u"second.bin", "two");
  return msg;
}

TEST(MsgAttachments, ComeWithNameAndBytes) {
  Deliveries deliveries;
  ASSERT_EQ(Enumerate(TwoAttachments().write(), deliveries), StatusOk);
  ASSERT_EQ(deliveries.all.size(), 2u);
  EXPECT_EQ(deliveries.all[0].name, u"first.bin");
  EXPECT_EQ(deliveries.all[0].bytes, "one");
  EXPECT_TRUE(deliveries.all[0].properties.empty());
  EXPECT_EQ(deliveries.all[1].name, u"second.bin");
  EXPECT_EQ(deliveries.all[1].bytes, "two");
}

TEST(MsgAttachments, ComeSinglyByTheirNumber) {
  for (const auto& [number, bytes] : {std::pair(1u, "one"), std::pair(2u, "two")}) {
    Deliveries deliveries(number);
    ASSERT_EQ(Enumerate(TwoAttachments().write(), deliveries), StatusOk);
    ASSERT_EQ(deliveries.all.size(), 1u);
    EXPECT_EQ(deliveries.all[0].bytes, bytes);
  }
  for (const uint32_t number : {0u, 3u, 0xFFFFFFFEu}) {
    Deliveries deliveries(number);
    EXPECT_EQ(Enumerate(TwoAttachments().write(), deliveries), StatusOk);
    EXPECT_TRUE(deliveries.all.empty());
  }
}

TEST(MsgAttachments, NeedACallback) {
  OpenMsg msg(TwoAttachments().write());
  const AttachmentRequest request = {};
  EXPECT_EQ(EnumerateMsgAttachments(msg.storage(), request), StatusOk);
}

TEST(MsgAttachments, GoOnUnlessTheCallbackAnswersBelowOne) {
  for (const Status answer : {Status(StatusOk), Status(StatusDone), Status::FromCode(77)}) {
    Deliveries deliveries;
    deliveries.answer = answer;
    EXPECT_EQ(Enumerate(TwoAttachments().write(), deliveries), StatusOk);
    EXPECT_EQ(deliveries.all.size(), 2u);
  }
  for (const Status answer : {StatusFailed, StatusOutOfMemory, StatusNullArgument}) {
    Deliveries deliveries;
    deliveries.answer = answer;
    EXPECT_EQ(Enumerate(TwoAttachments().write(), deliveries), answer);
    EXPECT_EQ(deliveries.all.size(), 1u);
  }
}

// The number in a storage's name plays no part, and neither does what has no more than the prefix,
// another case, or no storage.
TEST(MsgAttachments, AreNumberedByTheListing) {
  CompoundBuilder file;
  const auto add = [&file](const std::string& name, const std::string& bytes) {
    file.storage(name).stream("__substg1.0_37010102", bytes);
  };
  add("__attach_version1.0_#00000009", "nine");
  add("__attach_version1.0_#00000001", "one");
  add("__attach_version1.0_z", "short");
  add("__attach_version1.0_", "prefix only");
  add("__Attach_version1.0_#00000000", "case");
  add("__recip_version1.0_#00000000", "recipient");
  file.stream("__attach_version1.0_#00000000", "a stream");
  Deliveries deliveries;
  ASSERT_EQ(Enumerate(file.write(), deliveries), StatusOk);
  ASSERT_EQ(deliveries.all.size(), 3u);
  EXPECT_EQ(deliveries.all[0].bytes, "short");
  EXPECT_EQ(deliveries.all[1].bytes, "one");
  EXPECT_EQ(deliveries.all[2].bytes, "nine");
  Deliveries second(2);
  ASSERT_EQ(Enumerate(file.write(), second), StatusOk);
  ASSERT_EQ(second.all.size(), 1u);
  EXPECT_EQ(second.all[0].bytes, "one");
}

TEST(MsgAttachments, AreNamedByTheLongNameOrElseTheShort) {
  const std::string longName = "__substg1.0_3707001F";
  const std::string shortName = "__substg1.0_3704001F";
  const std::string data = "__substg1.0_37010102";
  EXPECT_EQ(Only(OneAttachment({{data, ""},
                                {longName, WideBytes(u"long.txt")},
                                {shortName, WideBytes(u"SHORT.TXT")}}))
                .name,
            u"long.txt");
  EXPECT_EQ(Only(OneAttachment({{data, ""}, {shortName, WideBytes(u"SHORT.TXT")}})).name,
            u"SHORT.TXT");
  EXPECT_EQ(
      Only(OneAttachment({{data, ""}, {longName, ""}, {shortName, WideBytes(u"SHORT.TXT")}})).name,
      u"SHORT.TXT");
  EXPECT_EQ(Only(OneAttachment(
                     {{data, ""}, {longName, Raw("\0\0")}, {shortName, WideBytes(u"SHORT.TXT")}}))
                .name,
            u"SHORT.TXT");
  // A missing name is an empty one, and only two empty Unicode streams are none.
  EXPECT_EQ(Only(OneAttachment({{data, ""}})).name, u"");
  EXPECT_EQ(Only(OneAttachment({{data, ""}, {longName, ""}})).name, u"");
  EXPECT_EQ(Only(OneAttachment({{data, ""}, {longName, ""}, {shortName, ""}})).name, std::nullopt);
}

TEST(MsgAttachments, HaveWideNames) {
  const std::string data = "__substg1.0_37010102";
  EXPECT_EQ(Only(OneAttachment(
                     {{data, ""}, {"__substg1.0_3707001F", WideBytes(u"\u65e5\u672c \U0001F600")}}))
                .name,
            u"\u65e5\u672c \U0001F600");
  EXPECT_EQ(Only(OneAttachment({{data, ""}, {"__substg1.0_3707001E", "na\xC3\xAFve"}})).name,
            u"na\u00efve");
  // 8-bit names are not converted, and those that are no UTF-8 are lost.
  EXPECT_EQ(Only(OneAttachment({{data, ""}, {"__substg1.0_3707001E", "na\xEFve"}})).name, u"");
}

// A kernel need not tell the number of units; success is all that it promises.
TEST(MsgAttachments, HaveNamesThatEndWhereTheConversionDoes) {
  const std::string file = OneAttachment(
      {{"__substg1.0_37010102", ""}, {"__substg1.0_3707001F", WideBytes(u"n\u00e9\u65e5.txt")}});
  for (const int64_t answer : {int64_t{1}, int64_t{1} << 40, int64_t{-1}}) {
    const TextProbe probe(answer);
    EXPECT_EQ(Only(file).name, u"n\u00e9\u65e5.txt") << answer;
  }
}

// The bytes of what callbacks get may grow by steps of 1024 that are cleared.
TEST(MsgAttachments, ComeInABufferThatGrowsByClearedSteps) {
  for (const bool infoOnly : {false, true}) {
    OpenMsg msg(TwoAttachments().write());
    int calls = 0;
    const AttachmentRequest request = {1, infoOnly,
                                       [](void* user, TrackedBuffer<char>* data, const char16_t*,
                                          PropertyList* properties) -> Status {
                                         ++*static_cast<int*>(user);
                                         EXPECT_EQ(data->increment(), 1024u);
                                         EXPECT_EQ(data->zeroFill(), 1u);
                                         EXPECT_EQ(properties->increment(), 1024u);
                                         EXPECT_EQ(properties->zeroFill(), 0u);
                                         return StatusOk;
                                       },
                                       &calls};
    EXPECT_EQ(EnumerateMsgAttachments(msg.storage(), request), StatusOk);
    EXPECT_EQ(calls, 1);
  }
}

// A path of 264 bytes holds the storage's name and 8 bytes more, or it has no number; one without
// room for the name of the data stream has a number and no more.
TEST(MsgAttachments, WithNamesBeyondThePathAreLeftOut) {
  struct Case {
    size_t length;
    size_t calls;
    uint32_t count;
  };
  for (const Case& one : {Case{241, 1, 1}, Case{242, 0, 1}, Case{255, 0, 1}, Case{256, 0, 0}}) {
    MsgBuilder builder;
    builder.attachment(u"a.bin", "bytes");
    OpenMsg msg(builder.write());
    // No name of a file is that long. It stays the longest, so that the directory stays in order.
    const std::string old = "__attach_version1.0_#00000000";
    DirectoryTree& tree = PartsOf(msg.file()).directory;
    DirectoryTree::Entries entries = tree.entries();
    for (DirectoryEntry& entry : entries) {
      if (std::string_view(entry.name) != old) continue;
      entry.name.resize(one.length, 'x');
    }
    tree = DirectoryTree(entries);
    ASSERT_EQ(ListAttachments(msg.storage()).size(), one.count) << one.length;
    Deliveries deliveries;
    EXPECT_EQ(EnumerateMsgAttachments(msg.storage(), deliveries.request), StatusOk);
    ASSERT_EQ(deliveries.all.size(), one.calls) << one.length;
    if (one.calls != 0) {
      EXPECT_EQ(deliveries.all[0].bytes, "bytes");
    }
    MailMessage message;
    PstFilterData data;
    EXPECT_EQ(InlineMsgImages(message, data, msg.storage()), StatusOk);
    EXPECT_EQ(data.attachmentCount, one.count) << one.length;
  }
}

TEST(MsgAttachments, WithoutBytesHaveABlock) {
  const Delivered empty = Only(OneAttachment({{"__substg1.0_37010102", ""}}));
  EXPECT_TRUE(empty.hasBlock);
  EXPECT_EQ(empty.bytes, "");
}

TEST(MsgAttachments, OfNeitherKindArePassedOverWithTheirNumber) {
  MsgBuilder msg;
  msg.attachment(u"first.bin", "one");
  msg.attachment().text(0x3707, u"nothing");
  msg.attachment(u"third.bin", "three");
  Deliveries deliveries;
  ASSERT_EQ(Enumerate(msg.write(), deliveries), StatusOk);
  ASSERT_EQ(deliveries.all.size(), 2u);
  EXPECT_EQ(deliveries.all[1].bytes, "three");
  Deliveries third(3);
  ASSERT_EQ(Enumerate(msg.write(), third), StatusOk);
  ASSERT_EQ(third.all.size(), 1u);
  EXPECT_EQ(third.all[0].bytes, "three");
  Deliveries second(2);
  EXPECT_EQ(Enumerate(msg.write(), second), StatusOk);
  EXPECT_TRUE(second.all.empty());
}

// In a list their bytes are not asked for, so they are there.
TEST(MsgAttachments, OfNeitherKindAreListed) {
  MsgBuilder msg;
  msg.attachment().text(0x3707, u"nothing");
  const Delivered listed = Only(msg.write(), true);
  EXPECT_EQ(listed.name, u"nothing");
  EXPECT_FALSE(listed.hasBlock);
}

TEST(MsgAttachments, HaveTheirPropertiesInAList) {
  MsgBuilder msg;
  msg.attachment(u"a.png", std::string(60, 'A'))
      .contentId(u"a.png@x")
      .mimeType(u"image/png")
      .modified(kSampleTime + 10000000)
      .created(kSampleTime);
  const Delivered listed = Only(msg.write(), true);
  EXPECT_EQ(listed.name, u"a.png");
  EXPECT_FALSE(listed.hasBlock);
  EXPECT_EQ(listed.properties, (Properties{{u"Content-ID:", u"a.png@x"},
                                           {u"MimeType", u"image/png"},
                                           {u"MsgCreationTime", u"1795255200"},
                                           {u"MsgModificationTime", u"1795255201"}}));
}

std::string TimesOf(const std::string& records) {
  const Delivered listed = Only(OneAttachment({{"__properties_version1.0", records}}), true);
  std::string text;
  for (const auto& [name, value] : listed.properties) {
    text += std::string(name.begin(), name.end()) + "=" + std::string(value.begin(), value.end());
    text += ' ';
  }
  return text;
}

// The scan leaves out the first record, after the 8 bytes of the header that attachments have.
TEST(MsgAttachments, HaveTheirTimesFromOffset24On) {
  const std::string header(8, '\0');
  const std::string first = MsgRecord(3, 0x0E21, 0);
  const std::string created = MsgRecord(0x40, 0x3007, kSampleTime);
  const std::string modified = MsgRecord(0x40, 0x3008, kSampleTime);
  EXPECT_EQ(TimesOf(header + created), "");
  EXPECT_EQ(TimesOf(header + created + first), "");
  EXPECT_EQ(TimesOf(header + first + created), "MsgCreationTime=1795255200 ");
  EXPECT_EQ(TimesOf((header + first + created).substr(0, 39)), "");
  EXPECT_EQ(TimesOf(header + first + modified + created),
            "MsgCreationTime=1795255200 MsgModificationTime=1795255200 ");
  EXPECT_EQ(TimesOf(header + first + created + MsgRecord(0x40, 0x3007, 0)),
            "MsgCreationTime=1795255200 ");
  EXPECT_EQ(TimesOf(header + first + MsgRecord(0x41, 0x3007, kSampleTime)), "");
  EXPECT_EQ(TimesOf(""), "");
}

TEST(MsgAttachments, HaveTimesBefore1970AsLargeNumbers) {
  const std::string start = std::string(8, '\0') + MsgRecord(3, 0x0E21, 0);
  EXPECT_EQ(TimesOf(start + MsgRecord(0x40, 0x3007, 0)), "MsgCreationTime=18446744062065078016 ");
  EXPECT_EQ(TimesOf(start + MsgRecord(0x40, 0x3007, 116444736000000000)), "MsgCreationTime=0 ");
  // Half a second before: toward zero.
  EXPECT_EQ(TimesOf(start + MsgRecord(0x40, 0x3007, 116444735995000000)), "MsgCreationTime=0 ");
  EXPECT_EQ(TimesOf(start + MsgRecord(0x40, 0x3007, 116444735980000000)),
            "MsgCreationTime=18446744073709551614 ");
}

TEST(MsgAttachments, LeaveOutEmptyProperties) {
  const Delivered listed = Only(
      OneAttachment({{"__substg1.0_3712001F", ""}, {"__substg1.0_370E001F", Raw("\0\0")}}), true);
  EXPECT_TRUE(listed.properties.empty());
}

// Relied upon: the list ends there, without a failure code of its own.
TEST(MsgAttachments, WhosePropertiesAreNoUtf8EndTheList) {
  for (const char* name : {"__substg1.0_3712001E", "__substg1.0_370E001E"}) {
    Deliveries deliveries(kAllAttachments, true);
    EXPECT_EQ(Enumerate(OneAttachment({{name, "\xE9"}}), deliveries), StatusFailed);
    EXPECT_TRUE(deliveries.all.empty());
  }
}

// UTF-16 in a stream of 8-bit text: the whole value is converted, and kept up to its first NUL.
TEST(MsgAttachments, WhosePropertiesAreUtf16InAnEightBitStreamMayEndTheList) {
  for (const char* name : {"__substg1.0_3712001E", "__substg1.0_370E001E"}) {
    const Delivered listed = Only(OneAttachment({{name, Raw("i\0m\0")}}), true);
    ASSERT_EQ(listed.properties.size(), 1u) << name;
    EXPECT_EQ(listed.properties[0].second, u"i");
    Deliveries deliveries(kAllAttachments, true);
    EXPECT_EQ(Enumerate(OneAttachment({{name, Raw("i\0\xFC\0")}}), deliveries), StatusFailed);
    EXPECT_TRUE(deliveries.all.empty());
  }
}

TEST(MsgAttachments, EndTheListWithoutMemoryForAStream) {
  CompoundImage image = TwoAttachments().image();
  image.put(image.record("__attach_version1.0_#00000000/__substg1.0_37010102") + RecordSize,
            image.bytes.size() + 1);
  Deliveries deliveries;
  EXPECT_EQ(Enumerate(image.bytes, deliveries), StatusOutOfMemory);
  EXPECT_TRUE(deliveries.all.empty());
  Deliveries second(2);
  EXPECT_EQ(Enumerate(image.bytes, second), StatusOk);
  EXPECT_EQ(second.all.size(), 1u);
}

// Ten thousand attachments whose names are one and the same large stream.
TEST(MsgAttachments, ThatShareALargeStreamTakeBoundedTime) {
  constexpr size_t kAttachments = 10000;
  CompoundBuilder file;
  file.stream("large", std::string(4 << 20, 'x'));
  char name[40];
  for (size_t i = 0; i < kAttachments; ++i) {
    std::snprintf(name, sizeof name, "__attach_version1.0_#%08X", static_cast<unsigned>(i));
    file.storage(name).stream("__substg1.0_3707001F", "");
  }
  CompoundImage image = file.image();
  const uint64_t start = image.get(image.record("large") + RecordStart);
  for (const auto& [path, entry] : image.entries) {
    if (path.find('/') == std::string::npos) continue;
    image.put(image.record(entry) + RecordStart, start);
    image.put(image.record(entry) + RecordSize, 4 << 20);
  }
  Deliveries deliveries(kAllAttachments, true);
  const Status status = Enumerate(image.bytes, deliveries);
  EXPECT_EQ(status, StatusOk);
  EXPECT_EQ(deliveries.all.size(), kAttachments);
  // Names that are too much to read are none.
  EXPECT_EQ(deliveries.all.front().name, std::u16string(2 << 20, u'\u7878'));
  EXPECT_EQ(deliveries.all.back().name, u"");
}

TEST(MsgAttachments, EndInAStatusWhicheverCallFails) {
  MsgBuilder msg;
  msg.attachment(u"a.png", "bytes").contentId(u"a@x").mimeType(u"image/png").created(kSampleTime);
  msg.attachment().text(0x3707, u"m.msg").embedded().text(0x0037, u"Inner");
  const std::string bytes = msg.write();
  for (const bool infoOnly : {false, true}) {
    for (const int32_t group :
         {PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead, PlainKernelFaultSeek,
          PlainKernelFaultText, PlainKernelFaultWrite}) {
      const auto round = [&](FaultedWork& faulted) {
        Deliveries deliveries(kAllAttachments, infoOnly);
        OpenMsg file(bytes);
        const Status status =
            faulted([&] { return EnumerateMsgAttachments(file.storage(), deliveries.request); });
        if (!faulted.isReached()) {
          EXPECT_EQ(status, StatusOk);
        }
        const bool documented = status == StatusOk ||
                                (group == PlainKernelFaultMemory && status == StatusOutOfMemory) ||
                                (group == PlainKernelFaultOpen && status == StatusCreateFailed) ||
                                (group == PlainKernelFaultText && status == StatusFailed) ||
                                ((group == PlainKernelFaultRead || group == PlainKernelFaultSeek) &&
                                 (status == StatusReadFailed || status == StatusOutOfMemory));
        EXPECT_TRUE(documented) << infoOnly << " " << status.code();
      };
      SweepFaults(group, round, FaultKinds::OneAndFrom);
    }
  }
}

TEST(MsgAttachments, KeepTheirPlaceWhenTheirNameCannotBeRead) {
  MsgBuilder msg;
  msg.attachment(u"a.png", "bytes");
  OpenMsg file(msg.write());
  Deliveries deliveries;
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(EnumerateMsgAttachments(file.storage(), deliveries.request), StatusOk);
  ASSERT_EQ(deliveries.all.size(), 1u);
  EXPECT_EQ(deliveries.all[0].name, u"");
  EXPECT_EQ(deliveries.all[0].bytes, "bytes");
}

}  // namespace
}  // namespace tarn::test

// Messages before the wanted one: nothing of them is kept, and what they do to the walk is what
// they would do if they were read.

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <typeinfo>

#include "FileFormats/Pst/PstMessage.h"
#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "pststore/StoreObjects.h"
#include "support/FaultSweep.h"
#include "support/KernelUsage.h"
#include "support/PeakMemory.h"
#include "support/RtfCompressor.h"

namespace {

// The largest array that was asked for without exceptions; the usage record does not see arrays.
std::size_t largestArray = 0;

}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  largestArray = std::max(largestArray, size);
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace tarn::test {
namespace {

constexpr uint64_t kMebibyte = uint64_t{1} << 20;

TEST(StoreClaims, CostTheSameHoweverMany) {
  for (const uint32_t claim : {1u, 1000000u}) {
    StoreBuilder store(SmallStore());
    store.folder("A").count(claim);
    PstReading reading(store);
    largestArray = 0;
    EXPECT_LT(PeakOf([&] { EXPECT_EQ(reading.read(static_cast<int32_t>(claim) - 1), StatusOk); }),
              20000u);
    EXPECT_EQ(reading.list->count, static_cast<int32_t>(claim));
    EXPECT_GE(largestArray, sizeof(MailMessage));
    EXPECT_LT(largestArray, 2 * sizeof(MailMessage));
  }
}

TEST(StoreClaims, TakeAHeadAndAnAnnouncedRecord) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(77);
  PstReading reading(store);
  ASSERT_EQ(reading.count(), StatusOk);  // the store keeps the pages that it has read
  ReleaseMessageList(std::exchange(reading.list, nullptr));
  const PlainKernelUsageRecord before = Usage();
  ASSERT_EQ(reading.count(), StatusOk);
  const PlainKernelUsageRecord after = Usage();
  EXPECT_EQ(after.liveBlocks, before.liveBlocks + 1);
  EXPECT_EQ(after.liveBytes, before.liveBytes + 16);
  EXPECT_EQ(after.liveTrackedObjects, before.liveTrackedObjects + 1);
}

// 12 MB in three messages, of each kind of body one.
TEST(StorePass, KeepsNoBody) {
  constexpr size_t kSize = 4000000;
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("A");
  folder.message().body(std::string_view(std::string(kSize, 't')));
  folder.message().html(std::string(kSize, 'h'));
  folder.message().rtf(StoreRtf(std::string(kSize, 'r'), StoredCrc::OfContents));
  folder.message().html(std::string(100000, 'w'));
  PstReading reading(store);
  EXPECT_LT(PeakOf([&] { EXPECT_EQ(reading.read(3), StatusOk); }), kMebibyte / 2);
  EXPECT_EQ(reading.body(3), std::string(100000, 'w'));
}

// The wanted message needs its bodies, and compressed RTF beside its text, but no more.
TEST(StorePass, HasTheWantedBodiesOnce) {
  constexpr size_t kSize = 4000000;
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("A");
  folder.message().body(std::string_view(std::string(kSize, 't')));
  folder.message().html(std::string(kSize, 'h'));
  folder.message().rtf(StoreRtf(std::string(kSize, 'r'), StoredCrc::OfContents));
  for (int32_t selected = 0; selected < 3; ++selected) {
    PstReading reading(store);
    const uint64_t bodies = selected == 2 ? 2 : 1;
    EXPECT_LT(PeakOf([&] { EXPECT_EQ(reading.read(selected), StatusOk); }),
              bodies * kSize + kMebibyte / 2)
        << selected;
  }
}

// However many messages there are: only the pages of the store's trees stay, some 250 bytes a
// message.
TEST(StorePass, KeepsNothingOfManyMessages) {
  const std::string html(5000, 'h');
  const std::string rtf = PackRtf("{\\rtf1 " + std::string(40000, 'r') + "}");
  for (const int32_t messages : {1000, 4000}) {
    StoreBuilder store(StoreOptions{});
    FolderBuilder& folder = store.folder("A");
    for (int32_t i = 0; i + 1 < messages; ++i) {
      folder.message().subject(u"Message");
      i % 2 == 0 ? folder.message().html(html) : folder.message().rtf(rtf);
    }
    folder.message().html("last");
    PstReading reading(store);
    const uint64_t peak = PeakOf([&] { EXPECT_EQ(reading.read(messages - 1), StatusOk); });
    EXPECT_LT(peak, 100000u + 700u * static_cast<uint64_t>(messages));
    EXPECT_EQ(reading.list->count, messages);
  }
}

// What came of a message, with all that it leaves behind.
struct Outcome {
  std::string result;
  TarnDocumentKind kind = DocumentNone;
  uint64_t textLeft = 0;
};

bool operator==(const Outcome& a, const Outcome& b) {
  return a.result == b.result && a.kind == b.kind && a.textLeft == b.textLeft;
}
std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.result << ", kind " << outcome.kind << ", left " << outcome.textLeft;
}

constexpr uint64_t kPlentyOfText = uint64_t{1} << 40;

// The store's first message, read as the wanted one or passed.
Outcome Run(StoreBuilder& builder, bool wanted, uint64_t textLeft, FaultedWork* faulted = nullptr) {
  PstReading reading(builder);
  EXPECT_EQ(reading.count(), StatusOk);
  const pststore::folder folder = pststore::make_folder(pststore::folder_begin(reading.context));
  const pststore::message_iterator first(pststore::get_contents_table(folder)->begin(),
                                         reading.context);
  const pststore::message message = pststore::make_message(first);
  StoreReading limits(reading.data, nullptr, reading.fileSize);
  limits.textLeft = textLeft;

  Outcome outcome;
  try {
    const Status status = RunFaulted(faulted, [&] {
      return wanted ? ReadPstMessage(message, outcome.kind, *reading.list, limits)
                    : PassPstMessage(message, outcome.kind, limits);
    });
    outcome.result = std::to_string(status.code());
  } catch (const std::exception& caught) {
    outcome.result = std::string(typeid(caught).name()) + ": " + caught.what();
  }
  outcome.textLeft = limits.textLeft;
  return outcome;
}

using Describe = std::function<void(MessageBuilder&)>;

// Passing the message and reading it come to the same, with every read and every seek failing once
// and with all too narrow limits; these fall on the same calls and bytes. Returns what came of it
// without failures.
std::string ExpectSame(const Describe& describe, PstLayout layout = PstLayout::Unicode) {
  StoreBuilder store(SmallStore(layout));
  describe(store.folder("A").message());
  const Outcome plain = Run(store, true, kPlentyOfText);
  EXPECT_EQ(Run(store, false, kPlentyOfText), plain);
  for (const int32_t group : {PlainKernelFaultRead, PlainKernelFaultSeek}) {
    std::vector<Outcome> passed;
    const uint64_t calls = SweepFaults(group, [&](FaultedWork& faulted) {
      passed.push_back(Run(store, false, kPlentyOfText, &faulted));
    });
    const uint64_t callsOfReading = SweepFaults(group, [&](FaultedWork& faulted) {
      const Outcome read = Run(store, true, kPlentyOfText, &faulted);
      ASSERT_LE(faulted.ordinal(), passed.size());
      EXPECT_EQ(passed[faulted.ordinal() - 1], read);
      EXPECT_TRUE(faulted.isReached() || read == plain);
    });
    EXPECT_EQ(calls, callsOfReading);
  }
  const uint64_t spent = kPlentyOfText - plain.textLeft;
  for (uint64_t left = 0; left < std::min<uint64_t>(spent + 2, 400); ++left) {
    EXPECT_EQ(Run(store, false, left), Run(store, true, left)) << left;
  }
  return plain.result;
}

TEST(StorePass, OfEachBodyIsLikeReading) {
  const std::string longText(50000, 'x');
  const std::string rtf = PackRtf("{\\rtf1 Hello}");
  for (const PstLayout layout : kBothLayouts) {
    EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.subject(u"a"); }, layout), "1");
    EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.body(u"text"); }, layout), "1");
    EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.html("html"); }, layout), "1");
    EXPECT_EQ(ExpectSame([&](MessageBuilder& m) { m.rtf(rtf); }, layout), "1");
    EXPECT_EQ(ExpectSame([&](MessageBuilder& m) { m.body(longText); }, layout), "1");
    EXPECT_EQ(ExpectSame([&](MessageBuilder& m) { m.html(longText); }, layout), "1");
  }
  EXPECT_EQ(ExpectSame([&](MessageBuilder& m) { m.body(u"t").html("h").rtf(rtf); }), "1");
  EXPECT_EQ(ExpectSame([&](MessageBuilder& m) { m.html(std::string(300, 'h')).rtf(rtf); }), "1");
  EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.body(u"").html(""); }), "1");
}

TEST(StorePass, OfSubjectsIsLikeReading) {
  EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.subject(u"LocalFreebusy").html("x"); }), "2");
  EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.subject("LocalFreebusy").html("x"); }), "2");
  EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.subject(u"\1\5Hello").html("x"); }), "1");
  EXPECT_EQ(ExpectSame([](MessageBuilder& m) { m.without(kPropSubject).html("x"); }), "1");
  EXPECT_NE(ExpectSame([](MessageBuilder& m) {
              m.subject(u"\1").html("x");
            }).find("subject marker without its second character"),
            std::string::npos);
}

TEST(StorePass, OfRtfIsLikeReading) {
  const auto outcome = [](const std::string& bytes, size_t html = 0) {
    return ExpectSame([&](MessageBuilder& m) {
      m.subject(u"").rtf(bytes);
      if (html != 0) m.html(std::string(html, 'h'));
    });
  };
  std::string text = "{\\rtf1 ";
  for (int i = 0; text.size() < 40000; ++i) text += std::to_string(i * 7919) + " ";
  const std::string packed = PackRtf(text);
  ASSERT_GT(packed.size(), 8176u);
  EXPECT_EQ(outcome(packed), "1");
  EXPECT_EQ(outcome(packed, 45000), "1");
  std::string damaged = packed;
  damaged[packed.size() / 2] = static_cast<char>(damaged[packed.size() / 2] ^ 1);
  EXPECT_EQ(outcome(damaged), "-9");
  EXPECT_EQ(outcome(StoreRtf("{\\rtf1 Hi}", StoredCrc::OfContents)), "1");
  EXPECT_EQ(outcome(StoreRtf(std::string(9000, 'x'), StoredCrc::OfContents), 20), "1");
  EXPECT_EQ(outcome(StoreRtf("{\\rtf1 Hi}")), "-9");
  EXPECT_EQ(outcome("15 bytes of rtf"), "-9");
  EXPECT_EQ(outcome(""), "-9");
  // A checksum that is right over tokens that are not.
  EXPECT_EQ(outcome(WriteCompressedRtf({.rawSize = 10}, LzfuTokens().reference(300, 10).bytes())),
            "-9");
  EXPECT_EQ(outcome(WriteCompressedRtf({.rawSize = 10}, LzfuTokens().literals("abc").bytes())),
            "-9");
  // The last reference has room only in the block of a long HTML body.
  const std::string wide =
      WriteCompressedRtf({.rawSize = 3}, LzfuTokens().literals("ab").back(1, 17).bytes());
  EXPECT_EQ(outcome(wide), "-9");
  EXPECT_EQ(outcome(wide, 226), "1");
}

TEST(StorePass, OfDamageIsLikeReading) {
  // Values in a subnode that does not exist, and in an allocation that does not.
  for (const uint16_t id : {kPropBody, kPropHtml, kPropRtfCompressed}) {
    for (const uint32_t where : {0x9F3Fu, 0x1FE0u, 0x70020u}) {
      const std::string result =
          ExpectSame([&](MessageBuilder& m) { m.properties().raw(id, kTypeBinary, where); });
      EXPECT_NE(result, "1");
      EXPECT_NE(result, "-9");
    }
  }
  // A stream whose blocks end before it does, after a good one, and damaged RTF in such a stream:
  // the store's damage is told first.
  for (const uint16_t id : {kPropBody, kPropHtml, kPropRtfCompressed}) {
    PstNodeParts parts = PstNodeParts::Stream(std::string(20000, 'x'), 8176);
    parts.dataShape.totalSize = 24000;
    const std::string result =
        ExpectSame([&](MessageBuilder& m) { m.properties().streamed(id, kTypeBinary, parts); });
    EXPECT_NE(result.find("child shorter than its place"), std::string::npos) << result;
  }
  const std::string table = ExpectSame([](MessageBuilder& m) {
    m.html("x").properties().subnode(0x671, PstNodeParts::OfPages({std::string(50, 'x')}));
  });
  EXPECT_NE(table.find("invalid heap_sig"), std::string::npos) << table;
}

// A request asks for nothing but the numbers of the messages before.
TEST(StorePass, OpensNoBodyForARequest) {
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("A");
  MessageBuilder& first = folder.message();
  for (const uint16_t id : {kPropBody, kPropHtml, kPropRtfCompressed}) {
    first.properties().raw(id, kTypeBinary, 0x9F3F);
  }
  folder.message().attachment(u"a", "b");
  PstReading reading(store);
  uint64_t announced = 0;
  const uint64_t before = Usage().liveTrackedObjects;
  const AttachmentRequest request = {
      kAllAttachments, true,
      [](void* user, TrackedBuffer<char>*, const char16_t*, PropertyList*) -> Status {
        *static_cast<uint64_t*>(user) = Usage().liveTrackedObjects;
        return StatusOk;
      },
      &announced};
  reading.request = &request;
  EXPECT_EQ(reading.read(1), StatusOk);
  EXPECT_EQ(announced, before + 1);  // the array of records
  EXPECT_EQ(reading.kind, DocumentNone);
}

}  // namespace
}  // namespace tarn::test

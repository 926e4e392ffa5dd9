// What reading a message of a store may cost, and where each limit is met.

#include "FileFormats/Pst/StoreLimits.h"

#include <gtest/gtest.h>

#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "support/RtfCompressor.h"
#include "support/SampleMails.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

const std::string kDataUrl = "data:image;base64," + kImageBase64;

// Reads message 0 of a store within limits that the test sets.
class StoreLimits : public ::testing::Test {
 protected:
  MessageBuilder& message(const char* folder = "A") { return store_.folder(folder).message(); }

  Status readWith(const std::function<void(StoreReading&)>& limits) {
    reading_.emplace(store_);
    reading_->data.useTempFile = useTempFile_;
    reading_->limits = limits;
    return reading_->read(0);
  }
  Status readWithText(uint64_t bytes) {
    return readWith([bytes](StoreReading& reading) { reading.textLeft = bytes; });
  }
  Status readWithImages(uint64_t bytes) {
    return readWith([bytes](StoreReading& reading) { reading.imageBytesLeft = bytes; });
  }
  Status readWithSearches(uint64_t bytes) {
    return readWith(
        [bytes](StoreReading& reading) { reading.imageSearches = SearchBudget(bytes); });
  }
  Status readWithAttachments(uint64_t count) {
    return readWith([count](StoreReading& reading) { reading.attachmentsLeft = count; });
  }
  // The store's folder A has a message that fails after its bodies, so that the next folder's
  // message is read in its place.
  MessageBuilder& failingMessage() {
    MessageBuilder& failing = message();
    failing.properties().raw(kPropRtfCompressed, kTypeBinary, 0x9F3F);
    return failing;
  }
  std::string body() { return reading_->body(0); }

  StoreBuilder store_{SmallStore()};
  std::optional<PstReading> reading_;
  bool useTempFile_ = false;
};

TEST_F(StoreLimits, GrowWithTheFile) {
  EXPECT_EQ(ClaimLimit(0), 1000000u);
  EXPECT_EQ(ClaimLimit(1600), 1000100u);
  EXPECT_EQ(RowLimit(0), 65536u);
  EXPECT_EQ(RowLimit(1600), 65636u);
  EXPECT_EQ(FolderTextLimit(0), 67108864u);
  EXPECT_EQ(FolderTextLimit(100), 67109264u);
  EXPECT_EQ(TextLimit(0), 67108864u);
  EXPECT_EQ(TextLimit(100), 67110464u);
  EXPECT_EQ(AttachmentLimit(0), 16384u);
  EXPECT_EQ(AttachmentLimit(1200), 16484u);
  EXPECT_EQ(AttachmentTextLimit(0), 67108864u);
  EXPECT_EQ(AttachmentTextLimit(100), 67109264u);
  EXPECT_EQ(ImageLimit(0), 67108864u);
  EXPECT_EQ(ImageLimit(100), 67109264u);
}

TEST_F(StoreLimits, AreThoseOfTheFileWhenAReadingBegins) {
  PstFilterData data;
  const StoreReading reading(data, nullptr, 1200);
  EXPECT_EQ(reading.rowsLeft, 65611u);
  EXPECT_EQ(reading.textLeft, 67128064u);
  EXPECT_EQ(reading.attachmentsLeft, 16484u);
  EXPECT_EQ(reading.imageBytesLeft, 67113664u);
  SearchBudget searches = reading.imageSearches;
  searches.spend(4294967296u + 1228799u);
  EXPECT_FALSE(searches.isSpent());
  searches.spend(1);
  EXPECT_TRUE(searches.isSpent());
}

TEST_F(StoreLimits, TakeNothingThatIsNotThere) {
  uint64_t left = 3;
  EXPECT_TRUE(TakeFrom(left, 2));
  EXPECT_EQ(left, 1u);
  EXPECT_FALSE(TakeFrom(left, 2));
  EXPECT_EQ(left, 0u);
  EXPECT_TRUE(TakeFrom(left, 0));
}

TEST_F(StoreLimits, CountSubjects) {
  message().subject(u"abc").html("");
  EXPECT_EQ(readWithText(6), StatusOk);
  EXPECT_EQ(readWithText(5), StatusOutOfMemory);
}

// 8-bit text is widened.
TEST_F(StoreLimits, CountSubjectsAsTheyAreRead) {
  message().subject("abc").html("");
  EXPECT_EQ(readWithText(6), StatusOk);
  EXPECT_EQ(readWithText(5), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountHeaderStrings) {
  using Set = MessageBuilder& (MessageBuilder::*)(std::u16string_view);
  for (const Set set :
       {&MessageBuilder::from, &MessageBuilder::to, &MessageBuilder::cc, &MessageBuilder::bcc}) {
    StoreBuilder store(SmallStore());
    MessageBuilder& m = store.folder("A").message();
    (m.subject(u"ab").*set)(u"cde");
    for (const auto& [bytes, status] : {std::pair{10u, StatusOk}, {9u, StatusOutOfMemory}}) {
      PstReading reading(store);
      reading.limits = [left = bytes](StoreReading& limits) { limits.textLeft = left; };
      EXPECT_EQ(reading.read(0), status) << bytes;
    }
  }
}

TEST_F(StoreLimits, CountPlainBodies) {
  message().subject(u"").body(u"text");
  EXPECT_EQ(readWithText(8), StatusOk);
  EXPECT_EQ(readWithText(7), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountHtmlBodies) {
  message().subject(u"").html("html");
  EXPECT_EQ(readWithText(4), StatusOk);
  EXPECT_EQ(readWithText(3), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountRtfPackedAndUnpacked) {
  const std::string packed = PackRtf("{\\rtf1 Hello}");
  message().subject(u"").rtf(packed);
  EXPECT_EQ(readWithText(packed.size() + 13), StatusOk);
  EXPECT_EQ(readWithText(packed.size() + 12), StatusOutOfMemory);
}

// Not even the checksum is looked at then.
TEST_F(StoreLimits, CountPackedRtfBeforeItIsUnpacked) {
  message().subject(u"").rtf("0123456789abcdef");
  EXPECT_EQ(readWithText(16), StatusNotSupported);
  EXPECT_EQ(readWithText(15), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountWhatFailedMessagesHaveRead) {
  failingMessage().subject(u"ab").to(u"cd").html("html");
  message("B").subject(u"ab").to(u"cd").html("html");
  EXPECT_EQ(readWithText(24), StatusOk);
  EXPECT_EQ(readWithText(23), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountImages) {
  MessageBuilder& m = message();
  m.html("<img src=\"cid:a\"><img src=\"cid:b\">");
  m.attachment(u"a", std::string(60, 'x')).attachment(u"b", std::string(90, 'x'));
  EXPECT_EQ(readWithImages(150), StatusOk);
  EXPECT_EQ(readWithImages(149), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountOnlyImagesThatTheBodyRefersTo) {
  message().html("<p>").attachment(u"a", kImageBytes);
  EXPECT_EQ(readWithImages(0), StatusOk);
}

TEST_F(StoreLimits, CountImagesThatStayReferences) {
  MessageBuilder& m = message();
  m.html("<v:imagedata src=\"cid:a\">");
  m.attachment(u"a", std::string(60, 'x')).attachment(u"a", std::string(60, 'x'));
  EXPECT_EQ(readWithImages(120), StatusOk);
  EXPECT_EQ(body(), "<v:imagedata src=\"cid:a\">");
  EXPECT_EQ(readWithImages(119), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountImagesTwiceThatAreWritten) {
  const TempDirectory directory;
  PlainKernelSetTempDirectory(directory.wide().c_str());
  useTempFile_ = true;
  message().html("<img src=\"cid:a\">").attachment(u"a", std::string(60, 'x'));
  EXPECT_EQ(readWithImages(119), StatusOutOfMemory);
  EXPECT_EQ(reading_->data.inlineFiles.length(), 0u);
  ASSERT_EQ(readWithImages(120), StatusOk);
  ASSERT_EQ(reading_->data.inlineFiles.length(), 1u);
  KernelDeleteFileUtf8(reading_->data.inlineFiles.data()[0]);
}

TEST_F(StoreLimits, CountImagesOfFailedMessages) {
  const std::string image(60, 'x');
  failingMessage().html("<img src=\"cid:a\">").attachment(u"a", image);
  message("B").html("<img src=\"cid:a\">").attachment(u"a", image);
  EXPECT_EQ(readWithImages(120), StatusOk);
  EXPECT_EQ(readWithImages(119), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountAttachmentsLookedAtForImages) {
  MessageBuilder& m = message();
  m.html("<img src=\"cid:a\"><img src=\"cid:b\">");
  m.attachment(u"a", kImageBytes).attachment(u"b", kImageBytes);
  ASSERT_EQ(readWithAttachments(2), StatusOk);
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\"><img src=\"" + kDataUrl + "\">");
  ASSERT_EQ(readWithAttachments(1), StatusOk);
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\"><img src=\"cid:b\">");
  EXPECT_EQ(reading_->data.attachmentCount, 2u);
}

TEST_F(StoreLimits, CountAttachmentsOfFailedMessages) {
  failingMessage().html("x").attachment(u"a", kImageBytes).attachment(u"b", kImageBytes);
  message("B").html("<img src=\"cid:a\">").attachment(u"a", kImageBytes);
  ASSERT_EQ(readWithAttachments(3), StatusOk);
  EXPECT_EQ(body(), "<img src=\"" + kDataUrl + "\">");
  ASSERT_EQ(readWithAttachments(2), StatusOk);
  EXPECT_EQ(body(), "<img src=\"cid:a\">");
}

// Both names are 2 bytes, and the reference is found at 10.
TEST_F(StoreLimits, CountNamesAndSearches) {
  message().html("<img src=\"cid:a\">").attachment(u"a", kImageBytes);
  EXPECT_EQ(readWithSearches(4 + 10 + 1), StatusOk);
  EXPECT_EQ(readWithSearches(4 + 10), StatusOutOfMemory);
}

// Searches from the beginning of the body would take 13 million, and rewriting it each time twice
// as many.
TEST_F(StoreLimits, CountLittleForEachOfManyImages) {
  std::string html;
  std::string expected;
  MessageBuilder& m = message();
  for (int i = 0; i < 1000; ++i) {
    const std::string name = std::to_string(100000 + i);
    html += "<img src=\"cid:" + name + "\">\r\n\r\n";
    expected += "<img src=\"" + kDataUrl + "\">\r\n\r\n";
    m.attachment(std::u16string(name.begin(), name.end()), kImageBytes);
  }
  m.html(html);
  ASSERT_EQ(readWithSearches(3000000), StatusOk);
  EXPECT_EQ(body(), expected);
}

// A name that is not found is looked for in the whole body: with "cid:" and alone.
TEST_F(StoreLimits, CountSearchesThatFindNothing) {
  message().html("<p>nothing here</p>").attachment(u"a", kImageBytes);
  EXPECT_EQ(readWithSearches(4 + 19 + 19 + 1), StatusOk);
  EXPECT_EQ(readWithSearches(4 + 19 + 19), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountNamesWithoutSearches) {
  message().html("").attachment(u"abc", kImageBytes);
  EXPECT_EQ(readWithSearches(13), StatusOk);
  EXPECT_EQ(readWithSearches(12), StatusOutOfMemory);
}

TEST_F(StoreLimits, CountSearchesOfFailedMessages) {
  failingMessage().html("<p>nothing here</p>").attachment(u"a", kImageBytes);
  message("B").html("<p>nothing here</p>").attachment(u"a", kImageBytes);
  EXPECT_EQ(readWithSearches(2 * 42 + 1), StatusOk);
  EXPECT_EQ(readWithSearches(2 * 42), StatusOutOfMemory);
}

// 70,000 references to 16 kB would be a body of 1.5 GB.
TEST_F(StoreLimits, BoundTheBodyThatImagesMake) {
  std::string html;
  for (int i = 0; i < 70000; ++i) html += "\"cid:a\"";
  message().html(html).attachment(u"a", std::string(16384, 'x'));
  EXPECT_EQ(readWith(nullptr), StatusOutOfMemory);
}

// Names of 4,088,000 bytes, all holes, in a file of some more: each takes twice as much once it is
// widened, and 64 MiB and 4 times the file are 10 of them.
TEST_F(StoreLimits, CountNamesOfFolders) {
  constexpr size_t kPages = 500;
  constexpr size_t kPage = 8176;
  for (const auto& [folders, status] : {std::pair{10, StatusOk}, {11, StatusOutOfMemory}}) {
    StoreBuilder store(SmallStore());
    for (int i = 0; i < folders; ++i) {
      FolderBuilder& folder = store.folder("A").count(1);
      PstNodeParts name = PstNodeParts::Stream(std::string(kPages * kPage, '\0'), kPage);
      for (size_t page = 0; page < kPages; ++page) name.dataShape.pageHoles.insert(page);
      folder.properties().raw(kPropDisplayName, kTypeString8, ValueSubnode(0));
      folder.properties().subnode(ValueSubnode(0), name);
    }
    store.node(0x300024, PstNodeParts::Stream(std::string(4100000, 'x'), kPage));
    PstReading reading(store);
    EXPECT_EQ(reading.count(), status);
    EXPECT_EQ(reading.list == nullptr, status == StatusOutOfMemory);
  }
}

}  // namespace
}  // namespace tarn::test

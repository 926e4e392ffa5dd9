// The road from a store's file to one document, without the frame around it.

#include "FileFormats/Pst/PstDocument.h"

#include <gtest/gtest.h>

#include "FileFormats/Pst/MessageDriver.h"
#include "PstReading.h"
#include "Tarnbase/PlainKernel.h"
#include "pststore/Errors.h"
#include "support/FaultSweep.h"
#include "support/HeaderRows.h"
#include "support/MemoryMail.h"
#include "support/RtfCompressor.h"

namespace tarn::test {
namespace {

const std::string kSubjectRow = HtmlBlock(MailHtmlRow("Subject:   ", "Hi"));

class PstDocument : public ::testing::Test {
 protected:
  Status read(StoreBuilder& store, int32_t messageIndex = 0, bool textOnly = false,
              const AttachmentRequest* request = nullptr) {
    const MemoryMail file(store.bytes());
    const TempDirectory directory;
    const std::u16string path = directory.write("store.pst", store.bytes()).u16string();
    data.emplace();
    DocumentResult result;
    const Status status = ReadMessageDocument(
        {path.c_str(), FormatPst, messageIndex, textOnly, file.handle(), request}, *data, result);
    index = result.index;
    kind = result.kind;
    return status;
  }
  std::string document() const { return std::string(data->document.view()); }

  std::optional<PstFilterData> data;
  int32_t index = 0;
  TarnDocumentKind kind = DocumentNone;
};

TEST_F(PstDocument, PutsHtmlBetweenTagsWhateverItContains) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    store.folder("A").message().subject(u"Hi").html("<html><body>x</body></html>");
    ASSERT_EQ(read(store), StatusOk);
    EXPECT_EQ(kind, DocumentHtml);
    EXPECT_EQ(document(), "<html><html><body>" + kSubjectRow + "x</body></html></html>");
    EXPECT_EQ(data->readerFormat, FormatPst);
    EXPECT_EQ(data->messageCount, 1);
    EXPECT_EQ(data->attachmentStatus, StatusOk);
  }
}

TEST_F(PstDocument, PutsTheRowsInFrontOfHtmlWithoutBody) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"Hi").html("x");
  ASSERT_EQ(read(store), StatusOk);
  EXPECT_EQ(document(), "<html>" + kSubjectRow + "x</html>");
}

// No charset is declared on this road.
TEST_F(PstDocument, LeavesTheHeadAsItIs) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"").html("<head></head>");
  ASSERT_EQ(read(store), StatusOk);
  EXPECT_EQ(document(), "<html><head></head></html>");
}

TEST_F(PstDocument, DropsOneTrailingNul) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"").html(std::string_view("x\0\0", 3));
  ASSERT_EQ(read(store), StatusOk);
  EXPECT_EQ(document(), std::string("<html>x\0</html>", 15));
}

TEST_F(PstDocument, CopiesRtfAsItIs) {
  const std::string rtf = "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\pard Hello}";
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    store.folder("A").message().subject(u"").html("<p>").rtf(PackRtf(rtf));
    ASSERT_EQ(read(store), StatusOk);
    EXPECT_EQ(kind, DocumentRtf);
    EXPECT_EQ(document(), rtf);
  }
}

TEST_F(PstDocument, RefusesAMessageWithAPlainBodyOnly) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"Hi").body(u"text");
  EXPECT_EQ(read(store), StatusNotSupported);
  EXPECT_EQ(kind, DocumentNone);
  EXPECT_EQ(data->document.length(), 0u);
  EXPECT_EQ(data->messageCount, 1);
}

// The mark is not in the length, so that the last two bytes of the text fall outside; rows are
// UTF-8 and the body is UTF-16.
TEST_F(PstDocument, StartsTextWithAMarkThatDoesNotCount) {
  for (const PstLayout layout : kBothLayouts) {
    StoreBuilder store(SmallStore(layout));
    store.folder("A").message().subject(u"Hi").body(u"bye").html("<p>");
    ASSERT_EQ(read(store, 0, true), StatusOk);
    EXPECT_EQ(kind, DocumentText);
    // The last byte of the body is zero and counts as the text's terminator.
    const std::string whole =
        std::string("\xFF\xFE") + "Subject:   \tHi\r\n\r\n" + std::string("b\0y\0e", 5);
    ASSERT_EQ(data->document.length(), whole.size() - 2);
    // The bytes after the length are there.
    EXPECT_EQ(std::string(data->document.data(), whole.size()), whole);
  }
}

TEST_F(PstDocument, TakesOneNulOffATextWithoutRows) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"").body(u"ab");
  ASSERT_EQ(read(store, 0, true), StatusOk);
  EXPECT_EQ(document().substr(0, 2), "\xFF\xFE");
  EXPECT_EQ(std::string(data->document.data() + 2, 3), std::string("a\0b", 3));
}

TEST_F(PstDocument, RefusesTheTextOfAMessageWithoutPlainBody) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().html("<p>").rtf(PackRtf("{\\rtf1 Hello}"));
  EXPECT_EQ(read(store, 0, true), StatusNotSupported);
  EXPECT_EQ(kind, DocumentNone);
}

TEST_F(PstDocument, ClampsTheNumber) {
  StoreBuilder store(SmallStore());
  FolderBuilder& folder = store.folder("A");
  for (const char* text : {"0", "1", "2"}) folder.message().subject(u"").html(text);
  for (const auto& [asked, given] :
       {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 2}, {INT32_MAX, 2}, {-1, 0}, {INT32_MIN, 0}}) {
    ASSERT_EQ(read(store, asked), StatusOk);
    EXPECT_EQ(index, given) << asked;
    EXPECT_EQ(document(), "<html>" + std::to_string(given) + "</html>");
    EXPECT_EQ(data->messageCount, 3);
  }
}

TEST_F(PstDocument, RefusesNumbersThatTheTablesDoNotHave) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(3).message().html("x");
  EXPECT_EQ(read(store, 0), StatusOk);
  EXPECT_EQ(read(store, 1), StatusNotSupported);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(read(store, 2), StatusNotSupported);
  EXPECT_EQ(read(store, 2, true), StatusNotSupported);
  EXPECT_EQ(data->messageCount, 3);
}

TEST_F(PstDocument, LeavesTheDocumentForARequest) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().html("x").attachment(u"a", "b");
  int calls = 0;
  const AttachmentRequest request = {
      kAllAttachments, true,
      [](void* user, TrackedBuffer<char>*, const char16_t*, PropertyList*) -> Status {
        ++*static_cast<int*>(user);
        return StatusOk;
      },
      &calls};
  ASSERT_EQ(read(store, 0, true, &request), StatusOk);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(data->document.data(), nullptr);
  EXPECT_EQ(kind, DocumentNone);
  EXPECT_EQ(data->readerFormat, FormatPst);
}

TEST_F(PstDocument, TakesARequestForAMessageThatNoTableHolds) {
  StoreBuilder store(SmallStore());
  store.folder("A").count(2).message().html("x").attachment(u"a", "b");
  int calls = 0;
  const AttachmentRequest request = {
      kAllAttachments, true,
      [](void* user, TrackedBuffer<char>*, const char16_t*, PropertyList*) -> Status {
        ++*static_cast<int*>(user);
        return StatusOk;
      },
      &calls};
  EXPECT_EQ(read(store, 1, false, &request), StatusOk);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(data->readerFormat, FormatPst);
  EXPECT_EQ(data->messageCount, 2);
}

// An opening of the body element without its end is StatusNotSupported to the renderer.
TEST_F(PstDocument, MakesAnyFailureOfTheRendererOutOfMemory) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"Hi").html("<body");
  EXPECT_EQ(read(store), StatusOutOfMemory);
  EXPECT_EQ(kind, DocumentNone);
  EXPECT_EQ(data->readerFormat, FormatNone);
}

TEST_F(PstDocument, PassesOnFailuresOfCountAndWalk) {
  StoreBuilder empty(SmallStore());
  empty.folder("A");
  EXPECT_EQ(read(empty), StatusBadArgument);
  EXPECT_EQ(data->messageCount, 0);
  EXPECT_EQ(data->readerFormat, FormatNone);
  StoreBuilder damaged(SmallStore());
  damaged.folder("A").message().rtf("0123456789abcdef");
  EXPECT_EQ(read(damaged), StatusNotSupported);
  EXPECT_EQ(data->readerFormat, FormatNone);
}

// A body that a message left in the record before it failed shows as an empty page.
TEST_F(PstDocument, ShowsTheBlockOfAFailedMessageAsAnEmptyPage) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"").html("old").properties().raw(kPropRtfCompressed,
                                                                        kTypeBinary, 0x9F3F);
  store.folder("B").message().subject(u"").html("");
  ASSERT_EQ(read(store), StatusOk);
  EXPECT_EQ(document(), "<html></html>");
}

TEST_F(PstDocument, LetsTheStoreThrow) {
  StoreBuilder store(SmallStore());
  store.folder("A").without(kPropContentCount).message().html("x");
  EXPECT_THROW(read(store).ignore(), pststore::key_not_found<uint16_t>);
  PstFilterData scratch;
  DocumentRequest nowhere;
  nowhere.path = u"/nowhere.pst";
  DocumentResult none;
  EXPECT_THROW(ReadPstDocument(nowhere, scratch, none).ignore(), std::runtime_error);
}

// All that a road takes fails once, from opening the store on.
TEST_F(PstDocument, ReleasesAllWhateverFails) {
  StoreBuilder store(SmallStore());
  store.folder("A").message().subject(u"Hi").html("<p>").attachment(u"a", "b");
  const MemoryMail file(store.bytes());
  const TempDirectory directory;
  const std::u16string path = directory.write("store.pst", store.bytes()).u16string();
  for (const int32_t group : {PlainKernelFaultMemory, PlainKernelFaultOpen, PlainKernelFaultRead,
                              PlainKernelFaultSeek, PlainKernelFaultText}) {
    uint64_t successes = 0;
    const auto round = [&](FaultedWork& faulted) {
      const DocumentRequest request = {path.c_str(), FormatPst, 0, false, file.handle(), nullptr};
      DocumentResult result;
      PstFilterData attempt;
      Status status = StatusFailed;
      try {
        status = faulted([&] { return ReadPstDocument(request, attempt, result); });
        EXPECT_TRUE(status.ok() || status == StatusOutOfMemory || status == StatusSeekFailed ||
                    status == StatusNotSupported)
            << status.code();
      } catch (const std::exception&) {
        EXPECT_EQ(attempt.document.length(), 0u);
      }
      if (status.ok() && !faulted.andAllAfter()) ++successes;
      EXPECT_TRUE(faulted.isReached() || status.ok());
    };
    const uint64_t calls = SweepFaults(group, round, FaultKinds::OneAndFrom);
    EXPECT_GT(calls, 0u) << group;
    // Texts that do not convert leave out a header row or an image.
    EXPECT_EQ(successes == calls + 1, group == PlainKernelFaultText) << group;
  }
}

}  // namespace
}  // namespace tarn::test

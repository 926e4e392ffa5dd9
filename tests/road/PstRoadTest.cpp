// Stores through the exports: every message, both routes, the attachments, the slot, and what a
// host sees of a damaged store.

#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>

#include "Internal/Tarnclasses_.h"
#include "PstSamples.h"
#include "support/FakeHost.h"
#include "support/HeaderRows.h"
#include "support/LeakCheck.h"
#include "support/LocalZone.h"

namespace tarn::test {
namespace {

constexpr PstLayout kBothLayouts[] = {PstLayout::Ansi, PstLayout::Unicode};

const ByteRange kMessageCountOut = {offsetof(HostFileInfo, messageCount), 4};

// A host on a store: its calls may also answer the number of messages.
class PstHost : public FakeHost {
 public:
  explicit PstHost(const std::string& store) : FakeHost(store) {
    moreInfoOut.push_back(kMessageCountOut);
  }

  int32_t infoOf(int32_t number, int32_t textOnly = 0) {
    clearSlot();
    infoContext->messageNumber = number;
    infoContext->textOnly = textOnly;
    return info();
  }
  std::string document() const { return calls.back().document; }
};

std::string FirstDocument(const HeaderLabels& labels, const std::string& image) {
  return "<html><html><body>" +
         HtmlBlock(MailHtmlRow(labels.from, "Ann") +
                   MailHtmlRow(labels.sent, "Fri Jan 01, 2021 12:00 AM") +
                   MailHtmlRow(labels.to, "Bob") + MailHtmlRow(labels.subject, "Re: Image") +
                   MailHtmlRow(labels.importance, labels.high)) +
         "<img src=\"" + image + "\"></body></html></html>";
}

class PstRoad : public ::testing::Test {
 protected:
  LocalZone zone_;
};

TEST_F(PstRoad, HandsHtmlAndImagesToTheSiblingAsFiles) {
  for (const PstLayout layout : kBothLayouts) {
    for (const PstEncoding encoding :
         {PstEncoding::None, PstEncoding::Permute, PstEncoding::Cyclic}) {
      PstHost host(SampleStore(layout, encoding));
      ASSERT_EQ(host.infoOf(1), StatusOk);
      const SiblingCall& call = host.calls.back();
      EXPECT_EQ(call.route, Route::InfoByName);
      EXPECT_EQ(call.info.format, SiblingHtml);
      EXPECT_EQ(call.document, FirstDocument(kEnglishLabels, "_pic.png"));
      EXPECT_NE(call.besideFiles.find("/_pic.png"), std::string::npos) << call.besideFiles;
      EXPECT_EQ(host.hostInfo->format, FormatPst);
      EXPECT_EQ(Copy(host.hostInfo->messageCount), 6);
      EXPECT_EQ(Copy(host.hostInfo->attachmentCount), 2);
      EXPECT_EQ(host.infoContext->messageNumber, 0);
      host.clearSlot();
      EXPECT_EQ(host.directory().listing(), "mail");
    }
  }
}

TEST_F(PstRoad, HandsHtmlWithImagesOverInMemory) {
  PlainKernelSetIoMode(3);
  for (const PstLayout layout : kBothLayouts) {
    PstHost host(SampleStore(layout));
    ASSERT_EQ(host.infoOf(1), StatusOk);
    EXPECT_EQ(host.calls.back().route, Route::InfoFromMemory);
    EXPECT_EQ(host.document(), FirstDocument(kEnglishLabels, "data:image;base64," + kImageBase64));
    EXPECT_EQ(host.directory().listing(), "mail");
  }
}

TEST_F(PstRoad, LabelsTheRowsInTheLanguageOfTheHost) {
  PlainKernelSetIoMode(3);
  const std::string store = SampleStore(PstLayout::Unicode);
  PstHost host(store);
  std::string english;
  int different = 0;
  for (const uint32_t language :
       {0x0409u, 0x0407u, 0x0418u, 0x040Cu, 0x0411u, 0x0804u, 0x0404u, 0x0412u, 0x2C01u}) {
    PlainKernelSetLanguage(language);
    ASSERT_EQ(host.infoOf(1), StatusOk);
    const std::string document = host.document();
    EXPECT_NE(document.find("Ann</span>"), std::string::npos) << language;
    EXPECT_NE(document.find("Fri Jan 01, 2021 12:00 AM</span>"), std::string::npos) << language;
    if (language == 0x0409) english = document;
    if (document != english) ++different;
  }
  EXPECT_EQ(different, 8);
  PlainKernelSetLanguage(0x0407);
  ASSERT_EQ(host.infoOf(1), StatusOk);
  EXPECT_EQ(host.document(), FirstDocument(kHeaderLabels[1], "data:image;base64," + kImageBase64));
}

TEST_F(PstRoad, HandsRtfOverFromMemoryOnBothRoutes) {
  for (const int32_t ioMode : {0, 3}) {
    PlainKernelSetIoMode(ioMode);
    PstHost host(SampleStore(PstLayout::Unicode));
    ASSERT_EQ(host.infoOf(2), StatusOk);
    EXPECT_EQ(host.calls.back().route, Route::InfoFromMemory);
    EXPECT_EQ(host.calls.back().info.format, SiblingRtf);
    EXPECT_EQ(host.document(), kSampleRtf);
  }
}

TEST_F(PstRoad, RefusesAPlainBodyWithoutTheTextFlag) {
  for (const PstLayout layout : kBothLayouts) {
    PstHost host(SampleStore(layout));
    EXPECT_EQ(host.infoOf(3), StatusNotSupported);
    EXPECT_EQ(Copy(host.slot.data), nullptr);
    ASSERT_EQ(host.infoOf(3, 1), StatusOk);
    EXPECT_EQ(host.calls.back().info.format, SiblingText);
    // The mark does not count, so that the last two bytes fall outside; the zero byte before
    // them counts as the text's terminator.
    EXPECT_EQ(host.document(), std::string("\xFF\xFE"
                                           "Subject:   \tPlain\r\n\r\no\0n\0l",
                                           28));
    // Only the flag 1 asks for text.
    EXPECT_EQ(host.infoOf(3, 2), StatusNotSupported);
  }
}

TEST_F(PstRoad, GivesTheTextOfAMessageWithHtmlToo) {
  PstHost host(SampleStore(PstLayout::Unicode));
  ASSERT_EQ(host.infoOf(1, 1), StatusOk);
  EXPECT_EQ(host.calls.back().route, Route::InfoFromMemory);
  EXPECT_TRUE(host.document().starts_with(
      "\xFF\xFE"
      "From:      \tAnn\r\nSent:      \tFri Jan 01, 2021 12:00 AM\r\nTo:        \tBob\r\n"
      "Subject:   \tRe: Image\r\nImportance:\tHigh\r\n\r\nS"));
  EXPECT_EQ(host.infoOf(2, 1), StatusNotSupported);
}

TEST_F(PstRoad, ClampsNumbersOutsideTheStore) {
  PlainKernelSetIoMode(3);
  PstHost host(SampleStore(PstLayout::Unicode));
  const std::string first = FirstDocument(kEnglishLabels, "data:image;base64," + kImageBase64);
  for (const int32_t number : {0, -1, INT32_MIN + 1, 1}) {
    ASSERT_EQ(host.infoOf(number), StatusOk) << number;
    EXPECT_EQ(host.infoContext->messageNumber, 0);
    EXPECT_EQ(host.document(), first);
  }
  ASSERT_EQ(host.infoOf(4), StatusOk);
  EXPECT_EQ(host.infoContext->messageNumber, 3);
  EXPECT_EQ(host.document(), "<html>last</html>");
  // Claimed, but in no table; and beyond all claims, which is the last claimed one.
  for (const int32_t number : {5, 6, 7, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(host.infoOf(number), StatusNotSupported) << number;
  }
}

TEST_F(PstRoad, AnswersFromTheRecordInTheSlot) {
  PstHost host(SampleStore(PstLayout::Unicode));
  ASSERT_EQ(host.infoOf(1), StatusOk);
  ASSERT_EQ(host.calls.size(), 1u);
  const std::string document = host.document();
  // The file is not read again: it could not be.
  host.rewriteFile("!BDN and nothing else");
  host.hostInfo->messageCount = 0;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(Copy(host.hostInfo->messageCount), 6);
  EXPECT_EQ(host.calls.size(), 1u);
  // Whatever message is asked for.
  host.infoContext->messageNumber = 2;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.infoContext->messageNumber, 1);
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(host.calls.back().route, Route::LoadByName);
  EXPECT_EQ(host.document(), document);
  host.clearSlot();
  EXPECT_THROW(host.info(), std::exception);
}

TEST_F(PstRoad, LoadsWithoutASlot) {
  for (const int32_t ioMode : {0, 3}) {
    PlainKernelSetIoMode(ioMode);
    PstHost host(SampleStore(PstLayout::Ansi));
    host.loadContext->messageNumber = 4;
    ASSERT_EQ(host.load(false), StatusOk);
    EXPECT_EQ(host.document(), "<html>last</html>");
    host.loadContext->messageNumber = 2;
    ASSERT_EQ(host.load(false), StatusOk);
    EXPECT_EQ(host.calls.back().route, Route::LoadFromMemory);
    EXPECT_EQ(host.document(), kSampleRtf);
    host.loadContext->messageNumber = 3;
    EXPECT_EQ(host.load(false), StatusNotSupported);
    host.loadContext->textOnly = 1;
    EXPECT_EQ(host.load(false), StatusOk);
    EXPECT_EQ(host.calls.back().info.format, SiblingText);
    EXPECT_EQ(host.directory().listing(), "mail");
  }
}

TEST_F(PstRoad, RefusesAStoreWithoutMessages) {
  StoreBuilder empty(PstLayout::Unicode);
  empty.folder("Inbox");
  PstHost host(empty.bytes());
  EXPECT_EQ(host.info(), StatusBadArgument);
  EXPECT_EQ(host.load(false), StatusBadArgument);
  EXPECT_EQ(host.attachmentInfo(), StatusBadArgument);
  EXPECT_EQ(host.extract(1), StatusBadArgument);
}

TEST_F(PstRoad, ListsAttachments) {
  for (const PstLayout layout : kBothLayouts) {
    PstHost host(SampleStore(layout));
    ASSERT_EQ(host.attachmentInfo(), StatusOk);
    AttachmentInfoBlock* const block = host.listContext->block;
    EXPECT_EQ(block->format, FormatPst);
    EXPECT_EQ(block->itemSize, 88u);
    ASSERT_EQ(Copy(block->itemCount), 2u);
    const AttachmentInfoItem& image = block->items[0];
    EXPECT_EQ(image.number, 1u);
    EXPECT_EQ(std::u16string(image.name), u"pic.png");
    EXPECT_EQ(image.size, 0u);
    EXPECT_EQ(image.creationTime, 0);
    ASSERT_EQ(image.propertyCount, 2u);
    EXPECT_EQ(std::u16string(image.properties[0].name), u"Content-ID");
    EXPECT_EQ(std::u16string(image.properties[0].value), u"pic.png");
    EXPECT_EQ(std::u16string(image.properties[1].name), u"MimeType");
    EXPECT_EQ(std::u16string(image.properties[1].value), u"image/png");
    const AttachmentInfoItem& report = block->items[1];
    EXPECT_EQ(report.number, 2u);
    EXPECT_EQ(std::u16string(report.name), u"report.pdf");
    EXPECT_EQ(report.description, nullptr);
    EXPECT_EQ(report.creationTime, 1609459200);
    EXPECT_EQ(report.modificationTime, 1609459260);
    EXPECT_EQ(report.propertyCount, 1u);
    FreeAttachmentBlock(block);
    EXPECT_EQ(host.directory().listing(), "mail");
  }
}

TEST_F(PstRoad, ListsAttachmentsOfTheMessageThatIsAskedFor) {
  PstHost host(SampleStore(PstLayout::Unicode));
  for (const auto& [number, count] :
       {std::pair{0, 2u}, {1, 2u}, {2, 0u}, {3, 0u}, {4, 0u}, {6, 0u}, {99, 0u}}) {
    host.attachmentOptions->messageNumber = number;
    ASSERT_EQ(host.attachmentInfo(), StatusOk) << number;
    EXPECT_EQ(Copy(host.listContext->block->itemCount), count) << number;
    FreeAttachmentBlock(host.listContext->block);
  }
}

TEST_F(PstRoad, ExtractsToMemoryAndToAFile) {
  for (const PstLayout layout : kBothLayouts) {
    PstHost host(SampleStore(layout));
    ASSERT_EQ(host.extract(2), StatusOk);
    EXPECT_EQ(
        std::string(static_cast<char*>(host.extractContext->data), Copy(host.extractContext->size)),
        "%PDF-1.4 not much of one");
    KernelFree(host.extractContext->data, TARN_HERE);
    host.extractContext->data = nullptr;
    const std::u16string path = host.directory().wide() + u"/out";
    ASSERT_EQ(host.extract(1, path.c_str()), StatusOk);
    EXPECT_EQ(ReadWholeFile(path), kImageBytes);
    host.extractContext->size = 4711;
    EXPECT_EQ(host.extract(3), StatusOk);
    EXPECT_EQ(Copy(host.extractContext->data), nullptr);
    EXPECT_EQ(Copy(host.extractContext->size), 4711u);
    EXPECT_EQ(host.extract(0), StatusBadArgument);
    EXPECT_EQ(host.extract(1, u"/nowhere/at/all"), StatusCreateFailed);
  }
}

TEST_F(PstRoad, ExtractsAnEmbeddedMessageAsRawBytes) {
  StoreBuilder store(PstLayout::Unicode);
  AttachmentBuilder& attachment =
      store.folder("Inbox").message().attach().longName(u"Inner").method(5);
  attachment.properties().object(0x3701, 0x200024, 0x11);
  attachment.properties().subnode(0x200024,
                                  MessageBuilder(PstLayout::Unicode, {}, 0x200024).build());
  PstHost host(store.bytes());
  ASSERT_EQ(host.extract(1), StatusOk);
  EXPECT_EQ(
      std::string(static_cast<char*>(host.extractContext->data), Copy(host.extractContext->size)),
      std::string("\x24\x00\x20\x00\x11\x00\x00\x00", 8));
  KernelFree(host.extractContext->data, TARN_HERE);
}

TEST_F(PstRoad, ExtractsLargeAttachments) {
  std::string bytes;
  for (int i = 0; bytes.size() < 9000000; ++i) bytes += std::to_string(i) + ',';
  StoreBuilder store(PstLayout::Unicode);
  store.folder("Inbox").message().attachment(u"large", bytes);
  PstHost host(store.bytes());
  ASSERT_EQ(host.extract(1), StatusOk);
  ASSERT_EQ(Copy(host.extractContext->size), bytes.size());
  EXPECT_EQ(std::memcmp(host.extractContext->data, bytes.data(), bytes.size()), 0);
  KernelFree(host.extractContext->data, TARN_HERE);
  PlainKernelSetMemoryBudget(4000000);
  host.extractContext->data = nullptr;
  EXPECT_EQ(host.extract(1), StatusOutOfMemory);
  EXPECT_EQ(Copy(host.extractContext->data), nullptr);
}

// What the store throws leaves every export; all that the call held is given back first.
TEST_F(PstRoad, LetsExceptionsLeaveTheExports) {
  const std::string good = SampleStore(PstLayout::Unicode);
  std::string badHeader = good;
  badHeader[100] ^= 1;
  const std::string truncated = good.substr(0, 600);
  StoreBuilder nameless(PstLayout::Unicode);
  nameless.folder("Inbox").without(kPropDisplayName).message().html("x");
  for (const std::string& bad : {badHeader, truncated, nameless.bytes(), good.substr(0, 100)}) {
    for (const int32_t ioMode : {0, 3}) {
      PlainKernelSetIoMode(ioMode);
      PstHost host(bad);
      EXPECT_THROW(host.info(), std::exception);
      EXPECT_EQ(Copy(host.slot.data), nullptr);
      EXPECT_THROW(host.load(), std::exception);
      EXPECT_THROW(host.attachmentInfo(), std::exception);
      EXPECT_THROW(host.extract(1), std::exception);
      EXPECT_TRUE(host.calls.empty());
      EXPECT_EQ(KernelIoModeGet(), ioMode);
      EXPECT_EQ(host.directory().listing(), "mail");
    }
  }
}

TEST_F(PstRoad, ReleasesImagesWhenTheMessageFails) {
  StoreBuilder store(PstLayout::Unicode);
  MessageBuilder& message = store.folder("Inbox").message();
  message.html("<img src=\"cid:a.png\"><img src=\"cid:b.png\">");
  message.attachment(u"a.png", kImageBytes).attachment(u"b.png", "");
  PstHost host(store.bytes());
  EXPECT_EQ(host.info(), StatusOutOfMemory);
  EXPECT_EQ(host.directory().listing(), "mail");
  EXPECT_EQ(host.load(false), StatusOutOfMemory);
  EXPECT_EQ(host.directory().listing(), "mail");
}

}  // namespace
}  // namespace tarn::test

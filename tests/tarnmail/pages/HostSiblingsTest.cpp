// The host's siblings, called by the filter itself.

#include "tarnmail/pages/HostSiblings.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Tarnbase/PlainKernel.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"
#include "support/msg/MsgBuilder.h"
#include "support/pst/StoreBuilder.h"
#include "tarnmail/pages/FakePages.h"
#include "tarnmail/pages/HostBitmap.h"

namespace tarn::host {
namespace {

using namespace std::literals;
using pages::DocumentKind;
using pages::PageFailure;
using pages::Trouble;
using test::FakeHost;
using test::FakePages;

class HostSiblingsTest : public ::testing::Test {
 protected:
  ~HostSiblingsTest() override { PlainKernelSetIoMode(0); }

  static void attach(FakeHost& host, const HostSiblings& siblings) {
    siblings.attachTo(*host.infoContext.get());
    siblings.attachTo(*host.loadContext.get());
    host.loadContext->bitmap = nullptr;
    host.loadContext->callback = nullptr;
    host.hostInfo->xResolution = 0;
    host.hostInfo->yResolution = 0;
  }

  // Page `page` by fltLoad.
  static int32_t load(FakeHost& host, int32_t page, int32_t dotsPerInch, HostBitmap& bitmap) {
    host.hostInfo->xResolution = dotsPerInch;
    host.hostInfo->yResolution = dotsPerInch;
    host.options->pageNumber = page;
    host.loadContext->bitmap = bitmap.get();
    return host.load();
  }

  FakePages maker_;
};

TEST_F(HostSiblingsTest, AnswerWithTheLayoutAtTheUsualResolution) {
  FakeHost host(test::kHtmlMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.hostInfo->pageCount, 3);
  EXPECT_EQ(host.hostInfo->pageNumber, 1);
  EXPECT_EQ(host.hostInfo->width, 792);    // 594 points
  EXPECT_EQ(host.hostInfo->height, 1128);  // 846 points
  EXPECT_EQ(host.hostInfo->xResolution, 96);
  EXPECT_EQ(host.hostInfo->yResolution, 96);
  EXPECT_EQ(uint64_t{host.hostInfo->dataSize}, 792u * 1128 * 3);
  ASSERT_EQ(maker_.documents.size(), 1u);
  EXPECT_EQ(maker_.documents[0].kind, DocumentKind::Html);
  EXPECT_EQ(maker_.documents[0].bytes, test::HtmlMailDocument());
  EXPECT_EQ(maker_.documents[0].paper, pages::Paper::A4);
  EXPECT_EQ(siblings.lastSibling(), SiblingHtml);
  host.clearSlot();
}

TEST_F(HostSiblingsTest, LeaveTheWishForAnotherResolutionToTheFilter) {
  FakeHost host(test::kHtmlMail);
  HostSiblings siblings(maker_, pages::Paper::Letter, MailFormat::Mail);
  attach(host, siblings);
  host.infoContext->raster.xResolution = 300;
  host.infoContext->raster.yResolution = 300;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.hostInfo->width, 2550);
  EXPECT_EQ(host.hostInfo->height, 3300);
  // Another wish asks again, and finds the document laid out.
  host.infoContext->raster.xResolution = 0;
  host.infoContext->raster.yResolution = 0;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.hostInfo->width, 816);
  EXPECT_EQ(maker_.documents.size(), 1u);
  host.clearSlot();
}

TEST_F(HostSiblingsTest, DrawPageTwoAt300Dpi) {
  for (const int32_t ioMode : {0, KERNEL_IO_IN_MEMORY}) {
    FakePages maker;
    PlainKernelSetIoMode(ioMode);
    FakeHost host(test::kHtmlMail);
    HostSiblings siblings(maker, pages::Paper::Letter, MailFormat::Mail);
    attach(host, siblings);
    ASSERT_EQ(host.info(), StatusOk);
    HostBitmap bitmap;
    ASSERT_EQ(load(host, 2, 300, bitmap), StatusOk);
    EXPECT_EQ(maker.drawnPages, (std::vector<int32_t>{2}));
    EXPECT_EQ(maker.documents.size(), 1u);
    EXPECT_EQ(bitmap.width(), 2550);
    EXPECT_EQ(bitmap.height(), 3300);
    EXPECT_EQ(bitmap.dotsPerInch(), 300);
    EXPECT_EQ(bitmap.pageNumber(), 2);
    EXPECT_EQ(bitmap.get()->depth, 24);
    EXPECT_EQ(bitmap.get()->order, 1);
    EXPECT_EQ(bitmap.get()->rowBytes, 7650u);
    EXPECT_EQ(bitmap.rows().size(), 2550u * 3300 * 3);
    // Red, green, blue.
    EXPECT_EQ(bitmap.rows().substr(0, 6), "\x02\x02\x01\xFF\xFF\xFF"sv);
    host.clearSlot();
  }
}

TEST_F(HostSiblingsTest, DrawWithoutASlotOrAnInfoBefore) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  HostBitmap bitmap;
  host.loadContext->info = nullptr;
  host.options->pageNumber = 3;
  host.loadContext->bitmap = bitmap.get();
  ASSERT_EQ(host.load(false), StatusOk);
  EXPECT_EQ(bitmap.dotsPerInch(), 96);
  EXPECT_EQ(bitmap.pageNumber(), 3);
  EXPECT_EQ(maker_.documents[0].kind, DocumentKind::Text);
  EXPECT_EQ(maker_.documents[0].bytes, test::kPlainMailDocument + '\0');
  // Nothing is kept where there is no slot to keep it.
  ASSERT_EQ(host.info(false), StatusOk);
}

TEST_F(HostSiblingsTest, TakeTheNearestPage) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  for (const auto& [asked, drawn] : {std::pair{0, 1}, {-5, 1}, {3, 3}, {4, 3}, {INT32_MAX, 3}}) {
    HostBitmap bitmap;
    ASSERT_EQ(load(host, asked, 96, bitmap), StatusOk);
    EXPECT_EQ(bitmap.pageNumber(), drawn);
  }
  host.clearSlot();
}

TEST_F(HostSiblingsTest, LayOutAgainWhatTheMakerHasForgotten) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  HostBitmap first;
  ASSERT_EQ(load(host, 1, 96, first), StatusOk);
  EXPECT_EQ(maker_.documents.size(), 1u);
  maker_.forgets = true;
  HostBitmap second;
  ASSERT_EQ(load(host, 1, 96, second), StatusOk);
  EXPECT_EQ(maker_.documents.size(), 2u);
  host.clearSlot();
}

// fltLoad passes on what was kept for the first message, whatever the message is.
TEST_F(HostSiblingsTest, KnowTheDocumentOfALaterMessage) {
  test::StoreBuilder store(test::PstLayout::Unicode, test::PstEncoding::None);
  test::FolderBuilder& inbox = store.folder(u"Inbox");
  inbox.message().subject(u"One").html("<html><body>1</body></html>");
  inbox.message().subject(u"Two").html("<html><body>2</body></html>");
  FakeHost host(store.bytes());
  host.moreInfoOut = {{2280, 4}};
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Store);
  attach(host, siblings);
  host.infoContext->messageNumber = 2;
  ASSERT_EQ(host.info(), StatusOk);
  host.loadContext->messageNumber = 2;
  HostBitmap bitmap;
  ASSERT_EQ(load(host, 1, 96, bitmap), StatusOk);
  ASSERT_EQ(maker_.documents.size(), 1u);
  EXPECT_NE(maker_.documents[0].bytes.find("2</body>"), std::string::npos);
  host.clearSlot();
}

TEST_F(HostSiblingsTest, DoNotTakeOneDocumentForAnother) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(false), StatusOk);
  host.rewriteFile(test::kSampleFields + "\r\nHi thera\r\n");
  HostBitmap bitmap;
  host.loadContext->bitmap = bitmap.get();
  ASSERT_EQ(host.load(false), StatusOk);
  ASSERT_EQ(maker_.documents.size(), 2u);
  EXPECT_EQ(maker_.documents[1].bytes, test::kSampleTextBlock + "Hi thera\r\n" + '\0');
}

TEST_F(HostSiblingsTest, TellDocumentsOfTwoFoldersApart) {
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  FilterInfoContext context = {};
  siblings.attachTo(context);
  const auto ask = [&](const test::TempDirectory& folder) {
    folder.write("document.html", "<html><img src=picture.png></html>");
    HostFileInfo info = {};
    info.format = SiblingHtml;
    HostLoadOptions options = {};
    const std::u16string path = (folder.path() / "document.html").u16string();
    return context.infoByName(path.c_str(), &info, sizeof info, 0, &options);
  };
  const test::TempDirectory one;
  const test::TempDirectory other;
  EXPECT_EQ(ask(one), StatusOk);
  EXPECT_EQ(ask(one), StatusOk);
  EXPECT_EQ(maker_.documents.size(), 1u);
  EXPECT_EQ(ask(other), StatusOk);
  ASSERT_EQ(maker_.documents.size(), 2u);
  EXPECT_EQ(maker_.documents[1].folder, other.path());
}

TEST_F(HostSiblingsTest, ThrowNothingIntoTheFilter) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  maker_.atLayOut = [](const FakePages::Document&) { throw 1; };
  EXPECT_EQ(host.info(), StatusSiblingRefused);
  EXPECT_EQ(host.infoContext->siblingResult, StatusFailed);
  EXPECT_FALSE(siblings.failure());
  maker_.atLayOut = [](const FakePages::Document&) { throw std::runtime_error("why"); };
  EXPECT_EQ(host.info(), StatusSiblingRefused);
  EXPECT_EQ(host.infoContext->siblingResult, StatusFailed);
  ASSERT_TRUE(siblings.failure());
  EXPECT_STREQ(siblings.failure()->what(), "why");
  host.clearSlot();
}

TEST_F(HostSiblingsTest, NameTheFolderOfTheImages) {
  FakeHost host(test::kImageMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  int images = 0;
  maker_.atLayOut = [&](const FakePages::Document& document) {
    for (const auto& entry : std::filesystem::directory_iterator(document.folder)) {
      if (entry.path().extension() == ".html") continue;
      EXPECT_NE(document.bytes.find(entry.path().filename().string()), std::string::npos);
      EXPECT_EQ(test::ReadWholeFile(entry.path()), test::kImageBytes);
      ++images;
    }
  };
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(images, 1);
  host.clearSlot();
  PlainKernelSetIoMode(KERNEL_IO_IN_MEMORY);
  maker_.atLayOut = {};
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_TRUE(maker_.documents[1].folder.empty());
  EXPECT_NE(maker_.documents[1].bytes.find(";base64," + test::kImageBase64), std::string::npos);
  host.clearSlot();
}

TEST_F(HostSiblingsTest, ShowTheEndOfATextThatItsSizeDoesNotCount) {
  test::MsgBuilder msg;
  msg.text(0x0037, u"Hello").text(0x1000, u"The text");
  FakeHost host(msg.write());
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Msg);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  const std::string& bytes = maker_.documents[0].bytes;
  EXPECT_EQ(maker_.documents[0].kind, DocumentKind::Text);
  EXPECT_EQ(bytes, "\xEF\xBB\xBFSubject:   \tHello\r\n\r\nThe text");
  host.clearSlot();
}

// The size does not count two of the mark's bytes, and one NUL it does.
TEST_F(HostSiblingsTest, KnowTheMarkOfAMessageWithoutText) {
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Msg);
  FilterInfoContext context = {};
  siblings.attachTo(context);
  HostFileInfo info = {};
  info.format = SiblingText;
  HostLoadOptions options = {};
  const std::string_view data = "\xEF\xBB\xBF\0"sv;
  ASSERT_EQ(context.infoFromMemory(data.data(), &info, sizeof info, 1, 1, &options), StatusOk);
  EXPECT_EQ(maker_.documents[0].bytes, "\xEF\xBB\xBF");
}

// All fields are empty, so that no row is before the mark; the block ends with the text.
TEST_F(HostSiblingsTest, ReadNothingAfterAMailThatBeginsWithAMark) {
  FakeHost host("From:\r\nTo:\r\nDate:\r\n\r\n\xFF\xFEHi");
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(maker_.documents[0].bytes, "\xFF\xFEHi\0"sv);
  host.clearSlot();
}

TEST_F(HostSiblingsTest, LayHtmlOutAsHtmlForTheTextSibling) {
  FakeHost host(test::kHtmlMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  host.infoContext->textOnly = 1;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(maker_.documents[0].kind, DocumentKind::Html);
  EXPECT_EQ(siblings.lastSibling(), SiblingText);
  host.clearSlot();
}

TEST_F(HostSiblingsTest, TurnEachFailureIntoAStatus) {
  const std::pair<Trouble, int32_t> expected[] = {
      {Trouble::BadDocument, StatusNotSupported}, {Trouble::NoSuchPage, StatusBadArgument},
      {Trouble::TooLarge, StatusOutOfMemory},     {Trouble::TooLong, StatusFailed},
      {Trouble::HelperDied, StatusFailed},        {Trouble::NoSandbox, StatusFailed},
      {Trouble::NotInstalled, StatusFailed},      {Trouble::Stopped, StatusDone}};
  for (const auto& [trouble, status] : expected) {
    FakeHost host(test::kPlainMail);
    HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
    attach(host, siblings);
    maker_.failure = PageFailure(trouble, "why");
    EXPECT_EQ(host.info(), StatusSiblingRefused);
    EXPECT_EQ(host.infoContext->siblingResult, status);
    ASSERT_TRUE(siblings.failure());
    EXPECT_EQ(siblings.failure()->trouble(), trouble);
    EXPECT_STREQ(siblings.failure()->what(), "why");
    maker_.failure.reset();
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_FALSE(siblings.failure());
    maker_.failure = PageFailure(trouble, "why");
    HostBitmap bitmap;
    EXPECT_EQ(load(host, 1, 96, bitmap), status);
    EXPECT_EQ(bitmap.get()->pixels, nullptr);
    maker_.failure.reset();
    host.clearSlot();
  }
}

TEST_F(HostSiblingsTest, RefuseWhatTheyDoNotDraw) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.load(), StatusBadArgument);  // no bitmap
  HostBitmap bitmap;
  host.hostInfo->xResolution = 200;
  host.hostInfo->yResolution = 100;
  host.loadContext->bitmap = bitmap.get();
  EXPECT_EQ(host.load(), StatusBadArgument);
  EXPECT_TRUE(siblings.failure());

  FilterLoadContext context = {};
  siblings.attachTo(context);
  HostFileInfo info = {};
  info.format = SiblingText;
  HostLoadOptions options = {};
  const auto draw = [&](int32_t size, int32_t depth, int32_t order) {
    return context.loadFromMemory("x", bitmap.get(), size, depth, order, 32, nullptr, 0, 1,
                                  &options, &info);
  };
  EXPECT_EQ(draw(283, 24, 1), StatusBadArgument);
  EXPECT_EQ(draw(284, 8, 1), StatusBadArgument);
  EXPECT_EQ(draw(284, 24, 0), StatusBadArgument);
  info.format = FormatEml;
  EXPECT_EQ(draw(284, 24, 1), StatusNotSupported);
  EXPECT_EQ(context.loadByName(u"/none", bitmap.get(), 284, 24, 1, 32, nullptr, 0, &options, &info),
            StatusOpenFailed);
  EXPECT_EQ(context.targetByName(u"/none", 0, &options, &info), StatusNotSupported);
  EXPECT_EQ(context.targetFromMemory("x", 0, 1, &options, &info), StatusNotSupported);
  EXPECT_EQ(bitmap.get()->pixels, nullptr);
  host.clearSlot();
}

int32_t NoteProgress(uint64_t userValue, int32_t percent) {
  auto& noted = *reinterpret_cast<std::vector<int32_t>*>(userValue);
  noted.push_back(percent);
  return noted.size() == 1 ? StatusOk : StatusFailed;
}

TEST_F(HostSiblingsTest, TellOfProgressAndStop) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  std::vector<int32_t> noted;
  host.loadContext->callback = reinterpret_cast<void*>(&NoteProgress);
  host.loadContext->userValue = reinterpret_cast<uint64_t>(&noted);
  HostBitmap bitmap;
  EXPECT_EQ(load(host, 1, 96, bitmap), StatusOk);
  EXPECT_EQ(noted, (std::vector<int32_t>{50}));
  HostBitmap stopped;
  EXPECT_EQ(load(host, 1, 96, stopped), StatusDone);
  EXPECT_EQ(stopped.get()->pixels, nullptr);
  host.clearSlot();
}

TEST_F(HostSiblingsTest, AnswerWithoutMemory) {
  FakeHost host(test::kPlainMail);
  HostSiblings siblings(maker_, pages::Paper::A4, MailFormat::Mail);
  attach(host, siblings);
  ASSERT_EQ(host.info(), StatusOk);
  // The first block that the call asks for is that of the pixels.
  HostBitmap bitmap;
  PlainKernelFailAt(1, 1);
  EXPECT_EQ(load(host, 1, 96, bitmap), StatusOutOfMemory);
  PlainKernelFailAt(1, 0);
  EXPECT_EQ(bitmap.get()->pixels, nullptr);
  host.clearSlot();
}

}  // namespace
}  // namespace tarn::host

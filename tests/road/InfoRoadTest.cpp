// fltInfo: the sniff, the document that the sibling gets on both routes, the answer to the host.

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

constexpr uint32_t kLanguages[] = {0x0409, 0x0407, 0x0418, 0x040C, 0x0411,
                                   0x0804, 0x0404, 0x0412, 0x2C01};

TEST(InfoRoad, RefusesFilesBelowTwelveBytes) {
  for (const char* bytes : {"", "!BDN1234567", "From: a@b.c"}) {
    FakeHost host(bytes);
    EXPECT_EQ(host.info(), StatusReadFailed) << bytes;
    EXPECT_TRUE(host.calls.empty());
  }
}

TEST(InfoRoad, RefusesTextThatIsNoMail) {
  FakeHost host("Hello, world");
  EXPECT_EQ(host.info(), StatusNotSupported);
  EXPECT_EQ(Copy(host.slot.data), nullptr);
}

TEST(InfoRoad, HandsHtmlToTheSiblingAsATempFile) {
  FakeHost host(kHtmlMail);
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.calls.size(), 1u);
  const SiblingCall& call = host.calls[0];
  EXPECT_EQ(call.route, Route::InfoByName);
  EXPECT_EQ(call.document, HtmlMailDocument());
  EXPECT_EQ(call.ioMode, 3);
  EXPECT_EQ(KernelIoModeGet(), 0);
  EXPECT_EQ(call.mode, 3);
  EXPECT_EQ(call.info.size, 2316u);
  EXPECT_EQ(call.info.format, SiblingHtml);
  EXPECT_EQ(call.info.flags, 4096u);
  EXPECT_EQ(call.options.size, 84u);
  EXPECT_EQ(call.options.pageNumber, 1);
  EXPECT_EQ(call.options.lastWord, 0u);
  EXPECT_EQ(call.path.substr(0, host.directory().wide().size() + 4),
            (host.directory().path() / "pst").u16string());
  EXPECT_EQ(call.path.substr(call.path.size() - 5), u".html");
  host.clearSlot();
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(InfoRoad, HandsHtmlToTheSiblingInMemoryWithItsTerminators) {
  PlainKernelSetIoMode(3);
  FakeHost host(kHtmlMail);
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.calls.size(), 1u);
  EXPECT_EQ(host.calls[0].route, Route::InfoFromMemory);
  // The length counts the body's NUL, and one more that the charset declaration adds.
  EXPECT_EQ(host.calls[0].document, HtmlMailDocument() + std::string(2, '\0'));
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(InfoRoad, HandsTextToTheSiblingInMemoryOnBothRoutes) {
  for (int32_t ioMode : {0, 3}) {
    PlainKernelSetIoMode(ioMode);
    FakeHost host(kPlainMail);
    ASSERT_EQ(host.info(), StatusOk);
    ASSERT_EQ(host.calls.size(), 1u);
    EXPECT_EQ(host.calls[0].route, Route::InfoFromMemory);
    EXPECT_EQ(host.calls[0].info.format, SiblingText);
    EXPECT_EQ(host.calls[0].document, kPlainMailDocument + '\0');
    EXPECT_EQ(host.calls[0].ioMode, ioMode);
  }
}

TEST(InfoRoad, KeepsEnglishLabelsInEveryLanguage) {
  for (uint32_t language : kLanguages) {
    PlainKernelSetLanguage(language);
    FakeHost html(kHtmlMail);
    ASSERT_EQ(html.info(), StatusOk);
    EXPECT_EQ(html.calls[0].document, HtmlMailDocument()) << std::hex << language;
    FakeHost text(kPlainMail);
    ASSERT_EQ(text.info(), StatusOk);
    EXPECT_EQ(text.calls[0].document, kPlainMailDocument + '\0') << std::hex << language;
  }
}

TEST(InfoRoad, GivesTheTextSiblingTheSameDocumentWhenTextIsAsked) {
  FakeHost host(kHtmlMail);
  host.infoContext->textOnly = 1;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls[0].route, Route::InfoFromMemory);
  EXPECT_EQ(host.calls[0].info.format, SiblingText);
  EXPECT_EQ(host.calls[0].document, HtmlMailDocument() + std::string(2, '\0'));
}

// The HTML is shown, whichever of the two comes first.
TEST(InfoRoad, ShowsTheHtmlOfAlternatives) {
  const std::string html =
      "--b\r\nContent-Type: text/html\r\n\r\n"
      "<html><head></head><body><p>Hi</p></body></html>\r\n";
  const std::string plain = "--b\r\nContent-Type: text/plain\r\n\r\nHi in plain text\r\n";
  for (const std::string& parts : {html + plain, plain + html}) {
    FakeHost host(kSampleFields + "Content-Type: multipart/alternative; boundary=b\r\n\r\n" +
                  parts + "--b--\r\n");
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls[0].route, Route::InfoByName);
    EXPECT_EQ(host.calls[0].info.format, SiblingHtml);
    EXPECT_EQ(host.calls[0].document, HtmlMailDocument());
  }
}

TEST(InfoRoad, TakesOnlyOneForTheTextFlag) {
  FakeHost host(kHtmlMail);
  host.infoContext->textOnly = 2;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls[0].info.format, SiblingHtml);
}

TEST(InfoRoad, PutsInlineImagesBesideTheTempFile) {
  FakeHost host(kImageMail);
  ASSERT_EQ(host.info(), StatusOk);
  const SiblingCall& call = host.calls[0];
  EXPECT_NE(call.document.find("<img src=\"pic@x_pic.png\">"), std::string::npos);
  // The HTML file is in the image directory.
  const size_t slash = call.path.find_last_of(u'\\');
  ASSERT_NE(slash, std::u16string::npos);
  const std::filesystem::path images(call.path.substr(0, slash));
  EXPECT_EQ(images.parent_path(), host.directory().path());
  EXPECT_EQ(ReadWholeFile(images / "pic@x_pic.png"), kImageBytes);
  EXPECT_EQ(host.hostInfo->attachmentCount, 2);

  host.clearSlot();
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(InfoRoad, PutsInlineImagesIntoTheTextInMemory) {
  PlainKernelSetIoMode(3);
  FakeHost host(kImageMail);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_NE(
      host.calls[0].document.find("<img src=\"data:image;base64," + kImageBase64 + "\"></body>"),
      std::string::npos);
}

TEST(InfoRoad, AnswersEveryField) {
  FakeHost host(kHtmlMail);
  host.hostInfo->width = 425;
  host.hostInfo->height = 331;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.infoContext->messageNumber, 0);
  EXPECT_EQ(host.hostInfo->format, FormatEml);
  EXPECT_EQ(host.hostInfo->answered2188, 1);
  EXPECT_EQ(host.hostInfo->answered2208, 1);
  EXPECT_EQ(host.hostInfo->answered1104, 1);
  EXPECT_EQ(host.hostInfo->depth, 24);
  // Whole quotients of the width and height that came in.
  EXPECT_EQ(Copy(host.hostInfo->widthInches), 4.0);
  EXPECT_EQ(Copy(host.hostInfo->heightInches), 3.0);
  EXPECT_EQ(host.hostInfo->pageNumber, 1);
  EXPECT_EQ(host.hostInfo->pageCount, 3);
  EXPECT_EQ(host.hostInfo->width, 850);
  EXPECT_EQ(host.hostInfo->height, 1100);
  EXPECT_EQ(host.hostInfo->xResolution, 100);
  EXPECT_EQ(host.hostInfo->yResolution, 110);
  EXPECT_EQ(Copy(host.hostInfo->dataSize), 4711u);
  EXPECT_EQ(host.hostInfo->attachmentCount, 0);
}

TEST(InfoRoad, ClampsTheRequestedPage) {
  const int32_t pages[][2] = {{-5, 1}, {0, 1}, {1, 1}, {3, 3}, {4, 3}, {INT32_MAX, 3}};
  for (const auto& [asked, answered] : pages) {
    FakeHost host(kPlainMail);
    host.options->pageNumber = asked;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.hostInfo->pageNumber, answered) << asked;
    EXPECT_EQ(host.calls[0].options.pageNumber, asked);
  }
}

TEST(InfoRoad, ScalesToAWantedResolutionAndLeavesItsField) {
  FakeHost host(kPlainMail);
  host.infoContext->raster.xResolution = 203;
  host.infoContext->raster.yResolution = 110;
  host.hostInfo->xResolution = 77;
  host.hostInfo->yResolution = 78;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.hostInfo->width, 1726);       // (850 x 203 + 50) / 100
  EXPECT_EQ(host.hostInfo->xResolution, 77);   // untouched
  EXPECT_EQ(host.hostInfo->height, 1100);      // equal to the sibling's
  EXPECT_EQ(host.hostInfo->yResolution, 110);  // set
  // The record goes on with the wanted resolution.
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.hostInfo->width, 1726);
  EXPECT_EQ(host.hostInfo->xResolution, 203);
  EXPECT_EQ(Copy(host.hostInfo->widthInches), 8.0);  // 1726 / 203
}

TEST(InfoRoad, SurvivesASiblingWithoutResolution) {
  FakeHost host(kPlainMail);
  host.answer.xResolution = 0;
  host.answer.yResolution = 0;
  host.infoContext->raster.xResolution = 96;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(Copy(host.hostInfo->widthInches), 0.0);
  EXPECT_EQ(host.hostInfo->width, 850);
}

TEST(InfoRoad, GivesMessageNumbersBackUnclamped) {
  const int32_t numbers[][2] = {{0, -1}, {1, 0}, {7, 6}, {-3, -4}, {INT32_MIN, INT32_MAX}};
  for (const auto& [number, index] : numbers) {
    FakeHost host(kPlainMail);
    host.infoContext->messageNumber = number;
    ASSERT_EQ(host.info(false), StatusOk);
    EXPECT_EQ(host.infoContext->messageNumber, index);
  }
}

TEST(InfoRoad, ReadsAnewWithoutASlot) {
  FakeHost host(kHtmlMail);
  ASSERT_EQ(host.info(false), StatusOk);
  EXPECT_EQ(host.calls[0].mode, 1);
  EXPECT_EQ(host.directory().listing(), "mail");
  host.infoContext->messageNumber = 1;
  ASSERT_EQ(host.info(false), StatusOk);
  EXPECT_EQ(host.calls.size(), 2u);
}

TEST(InfoRoad, AsksTheSiblingOnceForTheSameRaster) {
  FakeHost host(kHtmlMail);
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls.size(), 1u);
  // Another raster: asked again, with the same temp file, and the mail is not read.
  host.rewriteFile("no mail any more, but long enough");
  host.infoContext->raster.yResolution = 55;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.calls.size(), 2u);
  EXPECT_EQ(host.calls[1].path, host.calls[0].path);
  EXPECT_EQ(host.calls[1].document, host.calls[0].document);
  EXPECT_EQ(host.calls[1].ioMode, 3);
}

TEST(InfoRoad, ShowsTheCachedMessageWhateverNumberIsAsked) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  host.infoContext->messageNumber = 12;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.infoContext->messageNumber, 11);
  EXPECT_EQ(host.calls.size(), 1u);
}

TEST(InfoRoad, RefusesACachedRecordOfAnotherFormat) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  host.rewriteFile("!BDN12345678");
  EXPECT_EQ(host.info(), StatusNotSupported);
  EXPECT_NE(Copy(host.slot.data), nullptr);
}

TEST(InfoRoad, PassesTheSiblingsRefusalOn) {
  FakeHost host(kHtmlMail);
  host.answer.result = -77;
  EXPECT_EQ(host.info(), StatusSiblingRefused);
  EXPECT_EQ(host.infoContext->siblingResult, -77);
  EXPECT_EQ(Copy(host.slot.data), nullptr);
  EXPECT_EQ(KernelIoModeGet(), 0);
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(InfoRoad, TakesOnlyOneForTheSiblingsSuccess) {
  FakeHost host(kPlainMail);
  host.answer.result = 2;
  EXPECT_EQ(host.info(), StatusSiblingRefused);
  EXPECT_EQ(host.infoContext->siblingResult, 2);
}

TEST(InfoRoad, RefusesAMissingSibling) {
  FakeHost host(kHtmlMail);
  host.infoContext->infoByName = nullptr;
  EXPECT_EQ(host.info(), StatusSiblingRefused);
  EXPECT_EQ(host.infoContext->siblingResult, StatusFailed);
  FakeHost text(kPlainMail);
  text.infoContext->infoFromMemory = nullptr;
  EXPECT_EQ(text.info(), StatusSiblingRefused);
  EXPECT_EQ(text.infoContext->siblingResult, StatusFailed);
}

TEST(InfoRoad, RefusesACallWithoutAContextOrARecord) {
  EXPECT_EQ(fltInfo(nullptr), StatusBadArgument);
  FilterInfoContext context = {};
  EXPECT_EQ(fltInfo(&context), StatusBadArgument);
}

TEST(InfoRoad, ReleasesEverythingWhenASiblingThrows) {
  FakeHost host(kImageMail);
  host.answer.action = [] { throw std::runtime_error("sibling"); };
  EXPECT_THROW(host.info(), std::runtime_error);
  EXPECT_EQ(KernelIoModeGet(), 0);
  EXPECT_EQ(Copy(host.slot.data), nullptr);
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(InfoRoad, DeletesTheTempFileThoughTheSiblingChangedTheFormat) {
  FakeHost host(kHtmlMail);
  host.answer.format = SiblingText;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_NE(host.directory().listing(), "mail");
  host.clearSlot();
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(InfoRoad, AsksTheSiblingThatTheLastOneNamed) {
  FakeHost host(kHtmlMail);
  host.answer.format = SiblingText;
  ASSERT_EQ(host.info(), StatusOk);
  host.infoContext->raster.xResolution = 300;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.calls.size(), 2u);
  EXPECT_EQ(host.calls[1].route, Route::InfoFromMemory);
  EXPECT_EQ(host.calls[1].info.format, SiblingText);
}

TEST(InfoRoad, MapsAnHtmlFileThatCannotBeMade) {
  FakeHost host(kHtmlMail);
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  EXPECT_EQ(host.info(), StatusCreateFailed);
  PlainKernelFailAt(PlainKernelFaultOpen, 2);
  EXPECT_EQ(host.info(), StatusCreateFailed);
  PlainKernelFailAt(PlainKernelFaultWrite, 1);
  EXPECT_EQ(host.info(), StatusWriteFailed);
  EXPECT_EQ(host.directory().listing(), "mail");
}

TEST(FreeData, LeavesTheRecordAliveForANonZeroValue) {
  FakeHost host(kPlainMail);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(fltFreeData(host.slot.data, 5), StatusOk);
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls.size(), 1u);
}

TEST(FreeData, LeavesAnythingElseAlone) {
  char other[64] = "none of ours";
  EXPECT_EQ(fltFreeData(other, 0), StatusOk);
  EXPECT_STREQ(other, "none of ours");
}

}  // namespace
}  // namespace tarn::test

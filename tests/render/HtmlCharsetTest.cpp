#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/Renderer.h"
#include "support/FaultSweep.h"
#include "support/HeaderRows.h"

namespace tarn {
namespace {

using test::Bytes;
using test::HtmlBlock;
using test::MailHtmlRow;
using test::Set;
using test::SetTerminated;
using test::Terminated;

// A German label of importance is the one label of the set beyond ASCII.
const std::string kGermanBlock = HtmlBlock(MailHtmlRow("Priorit\xC3\xA4t: ", "Niedrig"));
const std::string kEnglishBlock = HtmlBlock(MailHtmlRow("Importance:", "Niedrig"));

Status RenderUnderLabel(MailMessage& message, uint32_t language, std::string_view body) {
  PlainKernelSetLanguage(language);
  SetTerminated(message.importance, "Niedrig");
  Set(message.body, body);
  return RenderMailMessage(&message, DocumentHtml);
}

std::string RenderInGerman(std::string_view body) {
  MailMessage message;
  EXPECT_EQ(RenderUnderLabel(message, 0x0407, body), StatusOk);
  return Bytes(message.body);
}

std::string RenderInEnglish(std::string_view body) {
  MailMessage message;
  EXPECT_EQ(RenderUnderLabel(message, 0x0409, body), StatusOk);
  return Bytes(message.body);
}

TEST(HtmlCharset, ADeclaredBodyUnderALabelBeyondAsciiBecomesUtf8) {
  EXPECT_EQ(RenderInGerman("<meta content=\"text/html; charset=windows-1252\"><body>gr\xFC\x80"),
            Terminated("<meta content=\"text/html; charset=UTF-8\"><body>" + kGermanBlock +
                       "gr\xC3\xBC\xE2\x82\xAC"));
}

TEST(HtmlCharset, UnderAnAsciiBlockItStays) {
  EXPECT_EQ(RenderInEnglish("<meta content=\"text/html; charset=windows-1252\"><body>gr\xFC"),
            Terminated("<meta content=\"text/html; charset=windows-1252\"><body>" + kEnglishBlock +
                       "gr\xFC"));
}

TEST(HtmlCharset, AValueBeyondAsciiAlignsAsWell) {
  MailMessage message;
  SetTerminated(message.importance, "Niedrig");
  SetTerminated(message.bcc, "\xC3\xA9");
  Set(message.body, "<meta charset=iso-8859-1><body>\xFC");
  ASSERT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOk);
  EXPECT_TRUE(Bytes(message.body).starts_with("<meta charset=UTF-8><body><table "));
  EXPECT_TRUE(Bytes(message.body).ends_with(Terminated("\r\n\xC3\xBC")));
}

TEST(HtmlCharset, ADeleteCharacterIsAscii) {
  MailMessage message;
  SetTerminated(message.importance, "Niedrig");
  SetTerminated(message.bcc, "\x7F");
  Set(message.body, "<meta charset=iso-8859-1><body>\xFC");
  ASSERT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOk);
  EXPECT_TRUE(Bytes(message.body).starts_with("<meta charset=iso-8859-1><body><table "));
  EXPECT_TRUE(Bytes(message.body).ends_with(Terminated("\r\n\xFC")));
}

TEST(HtmlCharset, TheMetaElementIsFoundInAnyCase) {
  EXPECT_EQ(RenderInGerman("<META CHARSET=\"Windows-1252\">\xFC"),
            Terminated(kGermanBlock + "<META CHARSET=\"UTF-8\">\xC3\xBC"));
}

TEST(HtmlCharset, AnElementWithoutACharsetIsPassed) {
  EXPECT_EQ(
      RenderInGerman("<meta name=generator>charset=big5<meta charset=windows-1252><body>\xFC"),
      Terminated("<meta name=generator>charset=big5<meta charset=UTF-8><body>" + kGermanBlock +
                 "\xC3\xBC"));
}

TEST(HtmlCharset, ACharsetInsideALongerNameIsNone) {
  EXPECT_EQ(RenderInGerman("<meta data-charset=windows-1252>\xFC"),
            Terminated(kGermanBlock + "<meta data-charset=windows-1252>\xFC"));
}

TEST(HtmlCharset, OnlyTheFirstDeclarationCounts) {
  EXPECT_EQ(RenderInGerman("<meta charset=utf-8><meta charset=windows-1252>\xFC"),
            Terminated(kGermanBlock + "<meta charset=utf-8><meta charset=windows-1252>\xFC"));
  EXPECT_EQ(RenderInGerman("<meta charset=koi8-r><meta charset=windows-1252>\xFC"),
            Terminated(kGermanBlock + "<meta charset=koi8-r><meta charset=windows-1252>\xFC"));
}

// What comes before the name keeps its bytes.
TEST(HtmlCharset, AnElementThatNeverEndsReachesToTheEnd) {
  EXPECT_EQ(RenderInGerman("<meta charset=windows-1252"),
            Terminated(kGermanBlock + "<meta charset=UTF-8"));
  EXPECT_EQ(RenderInGerman("<meta x=\"\xFC\" charset=windows-1252 y=\"\xFC\""),
            Terminated(kGermanBlock + "<meta x=\"\xFC\" charset=UTF-8 y=\"\xC3\xBC\""));
}

TEST(HtmlCharset, ABodyWithoutADeclarationStays) {
  EXPECT_EQ(RenderInGerman("charset=windows-1252 \xFC"),
            Terminated(kGermanBlock + "charset=windows-1252 \xFC"));
}

TEST(HtmlCharset, AnEmptyBodyHasNothingToAlign) {
  MailMessage message;
  PlainKernelSetLanguage(0x0407);
  SetTerminated(message.importance, "Niedrig");
  ASSERT_EQ(RenderMailMessage(&message, DocumentHtml), StatusOk);
  EXPECT_EQ(Bytes(message.body), Terminated(kGermanBlock));
}

TEST(HtmlCharset, AConversionStaysWhenTheBodyTagNeverEnds) {
  MailMessage message;
  EXPECT_EQ(RenderUnderLabel(message, 0x0407, "<meta charset=windows-1252>\xFC<body"),
            StatusNotSupported);
  EXPECT_EQ(Bytes(message.body), "<meta charset=UTF-8>\xC3\xBC<body");
}

TEST(HtmlCharset, AFailedConversionIsTheResult) {
  MailMessage message;
  PlainKernelSetLanguage(0x0407);
  SetTerminated(message.importance, "Niedrig");
  Set(message.body, "<meta charset=windows-1252>\xFC");
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(RenderMailMessage(&message, DocumentHtml), StatusPathToUtf8Failed);
}

TEST(HtmlCharset, WithoutMemoryTheResultIsAFailure) {
  PlainKernelSetLanguage(0x0407);
  const auto round = [](test::FaultedWork& faulted) {
    MailMessage message;
    SetTerminated(message.importance, "Niedrig");
    Set(message.body, "<meta charset=windows-1252>\xFC");
    const Status rendered = faulted([&] { return RenderMailMessage(&message, DocumentHtml); });
    EXPECT_EQ(rendered.ok(), !faulted.isReached());
    EXPECT_TRUE(rendered.ok() || rendered == StatusOutOfMemory || rendered == StatusFailed)
        << rendered.code();
  };
  EXPECT_GE(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 3u);
}

// A hundred thousand elements cost one pass.
TEST(HtmlCharset, ManyElementsWithoutACharset) {
  std::string body;
  for (int i = 0; i < 100000; ++i) body += "<meta name=x>";
  for (int i = 0; i < 100000; ++i) body += "<meta ";
  EXPECT_EQ(RenderInGerman(body), Terminated(kGermanBlock + body));
}

}  // namespace
}  // namespace tarn

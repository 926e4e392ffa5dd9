#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/EmlDocument.h"
#include "render/Renderer.h"
#include "support/FaultSweep.h"
#include "support/HeaderRows.h"

namespace tarn {
namespace {

using test::Bytes;
using test::EmlHtmlRow;
using test::HtmlBlock;
using test::Set;
using test::SetTerminated;
using test::Terminated;

const std::string kToBob = HtmlBlock(EmlHtmlRow("To:", "Bob"));

void SetAllFields(EmlMessage& message) {
  SetTerminated(message.from, "Ann");
  SetTerminated(message.to, "Bob");
  SetTerminated(message.date, "Sat, 21 Nov 2026 10:00:00 +0000");
  SetTerminated(message.cc, "Cy");
  SetTerminated(message.bcc, "Di");
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.importance, "high");
}

std::string RenderToBob(std::string_view body) {
  EmlMessage message;
  SetTerminated(message.to, "Bob");
  Set(message.body, body);
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  return Bytes(message.body);
}

TEST(EmlHtml, ARowByteForByte) {
  EXPECT_EQ(RenderToBob("<html><body>text"), "<html><body>" + kToBob + "text");
}

TEST(EmlHtml, AllRowsInTheirOrderInEnglish) {
  PlainKernelSetLanguage(0x0407);
  EmlMessage message;
  SetAllFields(message);
  Set(message.body, "<html><body>text");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body),
            "<html><body>" +
                HtmlBlock(EmlHtmlRow("From:", "Ann") + EmlHtmlRow("To:", "Bob") +
                          EmlHtmlRow("Sent:", "Sat, 21 Nov 2026 10:00:00 +0000") +
                          EmlHtmlRow("Cc:", "Cy") + EmlHtmlRow("Bcc:", "Di") +
                          EmlHtmlRow("Subject:", "Hello") + EmlHtmlRow("Importance:", "high")) +
                "text");
}

TEST(EmlHtml, AngleBracketsAreEscapedAndAmpersandsStay) {
  EmlMessage message;
  SetTerminated(message.to, "<b>&lt;\"<>>");
  Set(message.body, "<html>");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body),
            HtmlBlock(EmlHtmlRow("To:", "&lt;b&gt;&lt;\"&lt;&gt;&gt;")) + "<html>");
}

TEST(EmlHtml, AFieldEndsAtItsFirstNul) {
  EmlMessage message;
  Set(message.to, std::string_view("Bob\0<Eve>", 9));
  Set(message.cc, "Cy");
  Set(message.body, "<html>");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body),
            HtmlBlock(EmlHtmlRow("To:", "Bob") + EmlHtmlRow("Cc:", "Cy")) + "<html>");
}

TEST(EmlHtml, AFieldThatBeginsWithANulHasAnEmptyRow) {
  EmlMessage message;
  Set(message.to, std::string_view("\0Bob", 4));
  Set(message.body, "<html>");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), HtmlBlock(EmlHtmlRow("To:", "")) + "<html>");
}

TEST(EmlHtml, EmptyFieldsHaveNoRow) {
  EmlMessage message;
  SetTerminated(message.from, "");
  SetTerminated(message.to, "Bob");
  Set(message.cc, "");
  SetTerminated(message.bcc, "");
  Set(message.body, "<html>");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), kToBob + "<html>");
}

TEST(EmlHtml, WithoutFromToDateAndCcThereIsNoBlock) {
  EmlMessage message;
  SetTerminated(message.bcc, "Di");
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.importance, "high");
  SetTerminated(message.from, "");
  Set(message.body, "no html element");
  const char* const block = message.body.data();
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(message.body.data(), block);
  EXPECT_EQ(Bytes(message.body), "no html element");
}

TEST(EmlHtml, OneOfTheFourIsEnough) {
  for (SizedBytes EmlMessage::*const field :
       {&EmlMessage::from, &EmlMessage::to, &EmlMessage::date, &EmlMessage::cc}) {
    EmlMessage message;
    SetTerminated(message.*field, "x");
    SetTerminated(message.bcc, "Di");
    Set(message.body, "<html>");
    ASSERT_EQ(RenderEmlMessage(message), StatusOk);
    EXPECT_TRUE(Bytes(message.body).starts_with("<table "));
    EXPECT_NE(Bytes(message.body).find(EmlHtmlRow("Bcc:", "Di")), std::string::npos);
  }
}

// The place of the block, and the html element ----------------------------------------------------

TEST(EmlHtmlSplice, AfterTheOpeningOfTheBody) {
  EXPECT_EQ(RenderToBob("<html><body a=\"b\">text</body></html>"),
            "<html><body a=\"b\">" + kToBob + "text</body></html>");
}

TEST(EmlHtmlSplice, ABodyTagInCapitalsIsNotFound) {
  EXPECT_EQ(RenderToBob("<html><BODY>text"), kToBob + "<html><BODY>text");
}

TEST(EmlHtmlSplice, ATerminatorStaysWhereItIs) {
  EXPECT_EQ(RenderToBob(std::string_view("<html><body>x\0", 14)),
            Terminated("<html><body>" + kToBob + "x"));
}

TEST(EmlHtmlWrap, ABodyWithoutAnHtmlElementGetsOne) {
  EXPECT_EQ(RenderToBob("text"), "<html>" + kToBob + "text</html>");
  EXPECT_EQ(RenderToBob("<p><body>text"), "<html><p><body>" + kToBob + "text</html>");
}

TEST(EmlHtmlWrap, ATerminatorStaysAfterTheElement) {
  EXPECT_EQ(RenderToBob(std::string_view("text\0", 5)),
            Terminated("<html>" + kToBob + "text</html>"));
  EXPECT_EQ(RenderToBob(std::string_view("text\0\0", 6)),
            "<html>" + kToBob + "text" + std::string("\0</html>\0", 9));
}

TEST(EmlHtmlWrap, LeadingBlanksAndLineEndsArePassed) {
  EXPECT_EQ(RenderToBob(" \r\n\n <HtMl>x"), kToBob + " \r\n\n <HtMl>x");
  EXPECT_EQ(RenderToBob("\r\n<HTML>x"), kToBob + "\r\n<HTML>x");
  EXPECT_EQ(RenderToBob("\t<html>x"), "<html>" + kToBob + "\t<html>x</html>");
}

TEST(EmlHtmlWrap, OnlyTheFourLettersCount) {
  EXPECT_EQ(RenderToBob("<htmlx"), kToBob + "<htmlx");
  EXPECT_EQ(RenderToBob("<html"), kToBob + "<html");
  EXPECT_EQ(RenderToBob("<htm"), "<html>" + kToBob + "<htm</html>");
  EXPECT_EQ(RenderToBob("< html>"), "<html>" + kToBob + "< html></html>");
  EXPECT_EQ(RenderToBob("<"), "<html>" + kToBob + "<</html>");
}

TEST(EmlHtmlWrap, AnyOtherTagInFrontMeansNone) {
  EXPECT_EQ(RenderToBob("<!DOCTYPE html><html><body>x"),
            "<html><!DOCTYPE html><html><body>" + kToBob + "x</html>");
}

TEST(EmlHtmlWrap, ABlankBodyGetsOne) {
  EXPECT_EQ(RenderToBob(" \r\n"), "<html>" + kToBob + " \r\n</html>");
  EXPECT_EQ(RenderToBob(std::string_view("\0", 1)), Terminated("<html>" + kToBob + "</html>"));
  EXPECT_EQ(RenderToBob(""), "<html>" + kToBob + "</html>");
}

TEST(EmlHtmlWrap, AnAbsentBodyGetsOne) {
  EmlMessage message;
  SetTerminated(message.to, "Bob");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), "<html>" + kToBob + "</html>");
}

// Kinds -----------------------------------------------------------------------------------------

TEST(RenderEmlMessage, NoKindNoBlock) {
  EmlMessage message;
  SetAllFields(message);
  message.documentKind = DocumentNone;
  Set(message.body, "text");
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), "text");
}

std::string AppendRow(TarnDocumentKind kind, HeaderRow row) {
  SizedBytes field;
  SetTerminated(field, "<x>");
  TextWriter block;
  block.write("before ");
  EXPECT_EQ(AppendEmlHeaderRow(block, field, kind, row), StatusOk);
  return std::string(block.view());
}

TEST(AppendEmlHeaderRow, EveryOpenerOfHtml) {
  EXPECT_EQ(AppendRow(DocumentHtml, HeaderRowFrom), "before " + EmlHtmlRow("From:", "&lt;x&gt;"));
  EXPECT_EQ(AppendRow(DocumentHtml, HeaderRowTo), "before " + EmlHtmlRow("To:", "&lt;x&gt;"));
  EXPECT_EQ(AppendRow(DocumentHtml, HeaderRowBcc), "before " + EmlHtmlRow("Bcc:", "&lt;x&gt;"));
  EXPECT_EQ(AppendRow(DocumentHtml, HeaderRowCc), "before " + EmlHtmlRow("Cc:", "&lt;x&gt;"));
  EXPECT_EQ(AppendRow(DocumentHtml, HeaderRowSent), "before " + EmlHtmlRow("Sent:", "&lt;x&gt;"));
  EXPECT_EQ(AppendRow(DocumentHtml, HeaderRowSubject),
            "before " + EmlHtmlRow("Subject:", "&lt;x&gt;"));
  EXPECT_EQ(AppendRow(DocumentHtml, HeaderRowImportance),
            "before " + EmlHtmlRow("Importance:", "&lt;x&gt;"));
}

TEST(AppendEmlHeaderRow, EveryOpenerOfText) {
  EXPECT_EQ(AppendRow(DocumentText, HeaderRowFrom), "before From:   \t<x>\r\n");
  EXPECT_EQ(AppendRow(DocumentText, HeaderRowTo), "before To:     \t<x>\r\n");
  EXPECT_EQ(AppendRow(DocumentText, HeaderRowBcc), "before Bcc:    \t<x>\r\n");
  EXPECT_EQ(AppendRow(DocumentText, HeaderRowCc), "before Cc:     \t<x>\r\n");
  EXPECT_EQ(AppendRow(DocumentText, HeaderRowSent), "before Sent:   \t<x>\r\n");
  EXPECT_EQ(AppendRow(DocumentText, HeaderRowSubject), "before Subject:\t<x>\r\n");
  EXPECT_EQ(AppendRow(DocumentText, HeaderRowImportance), "before Importance: <x>\r\n");
}

TEST(AppendEmlHeaderRow, AnEmptyFieldComesBeforeTheKind) {
  SizedBytes absent;
  SizedBytes terminator;
  SetTerminated(terminator, "");
  TextWriter block;
  for (const TarnDocumentKind kind : {DocumentHtml, DocumentRtf, DocumentText, DocumentNone}) {
    EXPECT_EQ(AppendEmlHeaderRow(block, absent, kind, HeaderRowTo), StatusOk);
    EXPECT_EQ(AppendEmlHeaderRow(block, terminator, kind, HeaderRowTo), StatusOk);
  }
  EXPECT_EQ(block.view(), "");
}

TEST(AppendEmlHeaderRow, RefusesKindsWithoutARow) {
  SizedBytes field;
  SetTerminated(field, "x");
  TextWriter block;
  EXPECT_EQ(AppendEmlHeaderRow(block, field, DocumentNone, HeaderRowTo), StatusTimeFailed);
  EXPECT_EQ(AppendEmlHeaderRow(block, field, DocumentHtml, HeaderRowHighWord), StatusNotSupported);
  EXPECT_EQ(block.view(), "");
}

// Failures --------------------------------------------------------------------------------------

TEST(EmlHtmlFailure, ABodyTagThatNeverEndsIsRefused) {
  EmlMessage message;
  SetTerminated(message.to, "Bob");
  Set(message.body, "x<body a");
  const char* const block = message.body.data();
  EXPECT_EQ(RenderEmlMessage(message), StatusNotSupported);
  EXPECT_EQ(message.body.data(), block);
  EXPECT_EQ(Bytes(message.body), "x<body a");
}

// Once the html element is there it stays.
TEST(EmlHtmlFailure, WithoutMemory) {
  uint64_t unchanged = 0;
  uint64_t wrapped = 0;
  test::SweepFaults(PlainKernelFaultMemory, [&](test::FaultedWork& faulted) {
    EmlMessage message;
    SetAllFields(message);
    SetTerminated(message.body, "x");
    const Status rendered = faulted([&] { return RenderEmlMessage(message); });
    EXPECT_EQ(rendered, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (!faulted.isReached()) return;
    if (Bytes(message.body) == Terminated("<html>x</html>")) {
      ++wrapped;
    } else {
      EXPECT_EQ(Bytes(message.body), Terminated("x"));
      EXPECT_EQ(wrapped, 0u);
      ++unchanged;
    }
  });
  EXPECT_GE(unchanged, 2u);
  EXPECT_EQ(wrapped, 1u);
}

TEST(EmlHtmlFailure, ABlockBeyondTheBudget) {
  EmlMessage message;
  SetTerminated(message.to, std::string(3000000, '<'));
  SetTerminated(message.body, "x");
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(RenderEmlMessage(message), StatusOutOfMemory);
  EXPECT_EQ(Bytes(message.body), Terminated("x"));
}

TEST(EmlHtml, ALongFieldOfBracketsIsEscapedInOneGo) {
  EmlMessage message;
  SetTerminated(message.to, std::string(1000000, '>'));
  Set(message.body, "<html>");
  const uint64_t calls = test::AllocationCalls();
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_LE(test::AllocationCalls(), calls + 3);
  std::string escaped;
  for (int i = 0; i < 1000000; ++i) escaped += "&gt;";
  EXPECT_EQ(Bytes(message.body), HtmlBlock(EmlHtmlRow("To:", escaped)) + "<html>");
}

}  // namespace
}  // namespace tarn

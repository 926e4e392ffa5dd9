#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/EmlDocument.h"
#include "render/Renderer.h"
#include "support/FaultSweep.h"
#include "support/HeaderRows.h"

namespace tarn {
namespace {

using test::Bytes;
using test::Set;
using test::SetTerminated;
using test::Terminated;

const std::string kFourTabs = R"(\tab \tab \tab \tab )";
const std::string kThreeTabs = R"(\tab \tab \tab )";

// What follows the rows: two empty paragraphs.
const std::string kTail = test::kRtfEmptyParagraph + test::kRtfEmptyParagraph;

const std::string kToBob = test::EmlRtfRow("To:" + kFourTabs, "Bob") + kTail;

std::string RenderToBob(std::string_view body) {
  EmlMessage message;
  message.documentKind = DocumentRtf;
  SetTerminated(message.to, "Bob");
  Set(message.body, body);
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  return Bytes(message.body);
}

TEST(EmlRtf, ADocumentByteForByte) {
  EXPECT_EQ(
      RenderToBob("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\pard Hi\\par}"),
      Terminated("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}"
                 "{\\rtlch\\fcs1 \\ab\\af37 \\ltrch\\fcs0 \\b\\cf0\\insrsid5716485 To:\\tab \\tab "
                 "\\tab \\tab }{\\rtlch\\fcs1 \\af37 \\ltrch\\fcs0 \\cf0 "
                 "Bob"
                 "\\insrsid5716485 \\par }\r\n"
                 "\\pard \\ltrpar\\ql \\li0\\ri0\\widctlpar\\wrapdefault\\aspalpha\\aspnum"
                 "\\faauto\\adjustright\\rin0\\lin0\\itap0 {\\rtlch\\fcs1 \\af1 \\ltrch\\fcs0 "
                 "\\insrsid5716485 \\par }"
                 "\\pard \\ltrpar\\ql \\li0\\ri0\\widctlpar\\wrapdefault\\aspalpha\\aspnum"
                 "\\faauto\\adjustright\\rin0\\lin0\\itap0 {\\rtlch\\fcs1 \\af1 \\ltrch\\fcs0 "
                 "\\insrsid5716485 \\par }"
                 "\\pard Hi\\par}"));
}

TEST(EmlRtf, AllRowsInTheirOrderInEnglish) {
  PlainKernelSetLanguage(0x0407);
  EmlMessage message;
  message.documentKind = DocumentRtf;
  SetTerminated(message.from, "Ann");
  SetTerminated(message.to, "Bob");
  SetTerminated(message.date, "Sat, 21 Nov 2026 10:00:00 +0000");
  SetTerminated(message.cc, "Cy");
  SetTerminated(message.bcc, "Di");
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.importance, "high");
  Set(message.body, R"({\rtf1\pard Hi})");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(
      Bytes(message.body),
      Terminated(
          R"({\rtf1)" + test::EmlRtfRow(R"(From:\tab \tab \tab \tab )", "Ann") +
          test::EmlRtfRow(R"(To:\tab \tab \tab \tab )", "Bob") +
          test::EmlRtfRow(R"(Sent:\tab \tab \tab \tab )", "Sat, 21 Nov 2026 10:00:00 +0000") +
          test::EmlRtfRow(R"(Cc:\tab \tab \tab \tab )", "Cy") +
          test::EmlRtfRow(R"(Bcc:\tab \tab \tab )", "Di") +
          test::EmlRtfRow(R"(Subject:\tab \tab \tab )", "Hello") +
          test::EmlRtfRow(R"(Importance:\tab \tab \tab \tab )", "high") + kTail + R"(\pard Hi})"));
}

// RTF in a value is RTF in the document, and other bytes get no font.
TEST(EmlRtf, ValuesAreCopiedAsTheyStand) {
  EmlMessage message;
  message.documentKind = DocumentRtf;
  Set(message.to, std::string_view("{\\b<a>}\xC3\xA9\0x\0", 12));
  Set(message.body, R"({\rtf1{\fonttbl{\f0 Arial;}}\pard})");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body),
            Terminated(R"({\rtf1{\fonttbl{\f0 Arial;}})" +
                       test::EmlRtfRow("To:" + kFourTabs, std::string("{\\b<a>}\xC3\xA9\0x", 11)) +
                       kTail + R"(\pard})"));
}

TEST(EmlRtf, EmptyFieldsHaveNoRow) {
  EmlMessage message;
  message.documentKind = DocumentRtf;
  SetTerminated(message.from, "");
  SetTerminated(message.to, "Bob");
  Set(message.subject, "");
  Set(message.body, "\\pard");
  ASSERT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), Terminated(kToBob + "\\pard"));
}

TEST(EmlRtf, WithoutFromToDateAndCcThereIsNoBlock) {
  EmlMessage message;
  message.documentKind = DocumentRtf;
  SetTerminated(message.bcc, "Di");
  SetTerminated(message.subject, "Hello");
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  Set(message.body, "\\pard");
  EXPECT_EQ(RenderEmlMessage(message), StatusOk);
  EXPECT_EQ(Bytes(message.body), "\\pard");
}

TEST(EmlRtf, TheBlockStandsInFrontOfTheFirstParagraph) {
  EXPECT_EQ(RenderToBob(R"(a\Pard b\pard c\pard d)"),
            Terminated(R"(a\Pard b)" + kToBob + R"(\pard c\pard d)"));
}

// The fonts stay as they are, so that nothing before the paragraph is lost.
TEST(EmlRtf, AParagraphInsideTheFontTable) {
  EXPECT_EQ(RenderToBob(R"({\rtf1{\fonttbl{\f0\pard Arial;}}\pard x})"),
            Terminated(R"({\rtf1{\fonttbl{\f0)" + kToBob + R"(\pard Arial;}}\pard x})"));
}

TEST(EmlRtf, ATerminatorThatIsThereStays) {
  EXPECT_EQ(RenderToBob(std::string_view("a\\pard\0", 7)), Terminated("a" + kToBob + "\\pard"));
}

TEST(EmlRtf, WithoutAParagraphTheBodyStays) {
  for (const std::string_view body : {std::string_view("{\\rtf1 Hi}"), std::string_view("\0", 1)}) {
    EXPECT_EQ(RenderToBob(body), body);
  }
}

TEST(EmlRtfFailure, ABodyOfNoBytes) {
  EmlMessage message;
  message.documentKind = DocumentRtf;
  SetTerminated(message.to, "Bob");
  EXPECT_EQ(RenderEmlMessage(message), StatusTimeFailed);
  Set(message.body, "");
  EXPECT_EQ(RenderEmlMessage(message), StatusTimeFailed);
  EXPECT_EQ(message.body.length(), 0u);
}

TEST(EmlRtfFailure, WithoutMemoryTheBodyStays) {
  const auto round = [](test::FaultedWork& faulted) {
    EmlMessage message;
    message.documentKind = DocumentRtf;
    SetTerminated(message.to, "Bob");
    Set(message.body, "a\\pard");
    const char* const block = message.body.data();
    const Status rendered = faulted([&] { return RenderEmlMessage(message); });
    if (!faulted.isReached()) {
      EXPECT_EQ(rendered, StatusOk);
      EXPECT_EQ(Bytes(message.body), Terminated("a" + kToBob + "\\pard"));
      return;
    }
    EXPECT_EQ(rendered, StatusOutOfMemory);
    EXPECT_EQ(message.body.data(), block);
    EXPECT_EQ(Bytes(message.body), "a\\pard");
  };
  // The block, then the document.
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 2u);
}

TEST(EmlRtfFailure, BeyondTheBudgetTheBodyStays) {
  EmlMessage message;
  message.documentKind = DocumentRtf;
  SetTerminated(message.to, std::string(8000000, 'x'));
  Set(message.body, "a\\pard");
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(RenderEmlMessage(message), StatusOutOfMemory);
  EXPECT_EQ(Bytes(message.body), "a\\pard");
}

std::string AppendRow(HeaderRow row) {
  SizedBytes field;
  SetTerminated(field, "<x>");
  TextWriter block;
  block.write("before ");
  EXPECT_EQ(AppendEmlHeaderRow(block, field, DocumentRtf, row), StatusOk);
  return std::string(block.view());
}

TEST(AppendEmlHeaderRow, EveryOpenerOfRtf) {
  const auto row = [](const std::string& label) {
    return "before " + test::EmlRtfRow(label, "<x>");
  };
  EXPECT_EQ(AppendRow(HeaderRowFrom), row("From:" + kFourTabs));
  EXPECT_EQ(AppendRow(HeaderRowTo), row("To:" + kFourTabs));
  EXPECT_EQ(AppendRow(HeaderRowBcc), row("Bcc:" + kThreeTabs));
  EXPECT_EQ(AppendRow(HeaderRowCc), row("Cc:" + kFourTabs));
  EXPECT_EQ(AppendRow(HeaderRowSent), row("Sent:" + kFourTabs));
  EXPECT_EQ(AppendRow(HeaderRowSubject), row("Subject:" + kThreeTabs));
  EXPECT_EQ(AppendRow(HeaderRowImportance), row("Importance:" + kFourTabs));
}

TEST(AppendEmlHeaderRow, RtfHasNoRowForAWord) {
  SizedBytes field;
  SetTerminated(field, "x");
  TextWriter block;
  EXPECT_EQ(AppendEmlHeaderRow(block, field, DocumentRtf, HeaderRowHighWord), StatusNotSupported);
  EXPECT_EQ(block.view(), "");
}

}  // namespace
}  // namespace tarn

#include "render/RtfDocument.h"

#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "render/Renderer.h"
#include "support/HeaderRows.h"

namespace tarn {
namespace {

using test::Bytes;
using test::MailRtfRow;
using test::Set;
using test::SetAllFields;
using test::SetTerminated;
using test::Terminated;

const std::string kSeparator = test::kRtfEmptyParagraph;
const std::string kHead = R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;}})";
const std::string kTail = R"(\pard Hi\par})";
const std::string kBody = kHead + kTail;

// U+5DEE in UTF-8, and what it becomes in font 1.
const std::string kKanji = "\xE5\xB7\xAE";
const std::string kKanjiRtf = R"(\f1 \'8d\'b7\f0 )";
const std::string kKanjiFont = R"({\f1 \swiss \fcharset128 MS Gothic})";

std::string Render(MailMessage& message) {
  EXPECT_EQ(RenderMailMessage(&message, DocumentRtf), StatusOk);
  return Bytes(message.body);
}

std::string RenderToBob(std::string_view body) {
  MailMessage message;
  SetTerminated(message.to, "Bob");
  Set(message.body, body);
  return Render(message);
}

std::string RenderSubject(std::string_view subject, std::string_view body = kBody) {
  MailMessage message;
  SetTerminated(message.subject, subject);
  Set(message.body, body);
  return Render(message);
}

const std::string kToBob = MailRtfRow("To:        ", "Bob") + kSeparator;

std::string Subject(const std::string& value) {
  return MailRtfRow("Subject:   ", value) + kSeparator;
}

// The block --------------------------------------------------------------------------------------

TEST(MailRtf, ADocumentByteForByte) {
  MailMessage message;
  SetTerminated(message.from, "Ann");
  SetTerminated(message.fromAddress, "a@b");
  SetTerminated(message.subject, "a{b");
  Set(message.body, "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\r\n\\pard Hi\\par}");
  EXPECT_EQ(
      Render(message),
      Terminated("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\r\n"
                 "\r{\\rtlch\\fcs1 \\ab\\af37 \\ltrch\\fcs0 \\b\\cf0\\insrsid5716485 From:      "
                 "\\tab }{\\rtlch\\fcs1 \\af37 \\ltrch\\fcs0 \\cf0 "
                 "Ann <a@b>"
                 "\\insrsid5716485 \\par }\r\n"
                 "\r{\\rtlch\\fcs1 \\ab\\af37 \\ltrch\\fcs0 \\b\\cf0\\insrsid5716485 Subject:   "
                 "\\tab }{\\rtlch\\fcs1 \\af37 \\ltrch\\fcs0 \\cf0 "
                 "a\\'7bb"
                 "\\insrsid5716485 \\par }\r\n"
                 "\\pard \\ltrpar\\ql \\li0\\ri0\\widctlpar\\wrapdefault\\aspalpha\\aspnum"
                 "\\faauto\\adjustright\\rin0\\lin0\\itap0 {\\rtlch\\fcs1 \\af1 \\ltrch\\fcs0 "
                 "\\insrsid5716485 \\par }"
                 "\\pard Hi\\par}"));
}

TEST(MailRtf, AllRowsInTheirOrder) {
  MailMessage message;
  SetAllFields(message);
  Set(message.body, kBody);
  EXPECT_EQ(Render(message),
            Terminated(kHead + MailRtfRow("From:      ", "Ann") +
                       MailRtfRow("Sent:      ", "Thu Jan 01, 1970 12:00 AM") +
                       MailRtfRow("To:        ", "Bob") + MailRtfRow("Cc:        ", "Cy") +
                       MailRtfRow("Bcc:       ", "Di") + MailRtfRow("Subject:   ", "Hello") +
                       MailRtfRow("Importance:", "High") + kSeparator + kTail));
}

TEST(MailRtf, EmptyFieldsHaveNoRow) {
  MailMessage message;
  SetTerminated(message.from, "");
  SetTerminated(message.fromAddress, "a@b");
  Set(message.cc, "");
  SetTerminated(message.to, "Bob");
  Set(message.body, kBody);
  EXPECT_EQ(Render(message), Terminated(kHead + kToBob + kTail));
}

TEST(MailRtf, WithoutAnyRowTheBodyStays) {
  MailMessage message;
  SetTerminated(message.importance, "");
  SetTerminated(message.fromAddress, "a@b");
  Set(message.originalAuthor, "Eve");
  Set(message.body, kBody);
  const char* const block = message.body.data();
  EXPECT_EQ(Render(message), kBody);
  EXPECT_EQ(message.body.data(), block);
}

TEST(MailRtf, WithoutAParagraphTheBodyStays) {
  const std::string body = R"({\rtf1{\fonttbl{\f0 Arial;}}\PARD Hi\par})";
  MailMessage message;
  SetTerminated(message.subject, kKanji);
  Set(message.body, body);
  const char* const block = message.body.data();
  EXPECT_EQ(Render(message), body);
  EXPECT_EQ(message.body.data(), block);
}

TEST(MailRtf, ATerminatorIsAddedOnlyWhenThereIsNone) {
  EXPECT_EQ(RenderToBob(kBody), Terminated(kHead + kToBob + kTail));
  EXPECT_EQ(RenderToBob(Terminated(kBody)), Terminated(kHead + kToBob + kTail));
}

TEST(MailRtf, OnlyTheFirstParagraphCounts) {
  EXPECT_EQ(RenderToBob(kBody + kBody), Terminated(kHead + kToBob + kTail + kBody));
}

// Values -----------------------------------------------------------------------------------------

TEST(MailRtfValue, RtfIsEscaped) {
  EXPECT_EQ(RenderSubject("{\\b x}\r\n"),
            Terminated(kHead + Subject(R"(\'7b\'5cb x\'7d\'0d\'0a)") + kTail));
}

TEST(MailRtfValue, OnlyOneTrailingNulIsDropped) {
  MailMessage message;
  Set(message.to, std::string_view("a\0b\0\0", 5));
  Set(message.body, kBody);
  EXPECT_EQ(Render(message),
            Terminated(kHead + MailRtfRow("To:        ", R"(a\'00b\'00)") + kSeparator + kTail));
}

// The ASCII text between two letters beyond ASCII is lost.
TEST(MailRtfValue, TextOfTheDocumentsCodePage) {
  EXPECT_EQ(RenderSubject("R\xC3\xA9union \xC3\xA0 Paris"),
            Terminated(kHead + Subject(R"(R\'e9\'e0 Paris)") + kTail));
}

// The first code page that has all of a Russian text is 932.
TEST(MailRtfValue, Cyrillic) {
  EXPECT_EQ(RenderSubject("\xD0\x94\xD0\xB0"),
            Terminated(R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;})" +
                       kKanjiFont + "}" + Subject(R"(\f1 \'84D\'84p\f0 )") + kTail));
}

TEST(MailRtfValue, OneNewFontServesAllRows) {
  MailMessage message;
  SetTerminated(message.from, kKanji);
  SetTerminated(message.fromAddress, kKanji);
  SetTerminated(message.subject, kKanji + "x");
  Set(message.body, Terminated(kBody));
  EXPECT_EQ(Render(message),
            Terminated(R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;})"
                       R"({\f1 \swiss \fcharset128 MS Gothic}})" +
                       MailRtfRow("From:      ", kKanjiRtf + " <" + kKanjiRtf + ">") +
                       MailRtfRow("Subject:   ", kKanjiRtf + "x") + kSeparator + kTail));
}

TEST(MailRtfValue, TheDefaultFontOfTheDocumentIsRestored) {
  EXPECT_EQ(RenderSubject(kKanji, R"({\rtf1\ansicpg1252\deff7{\fonttbl{\f7 A;}{\f9 B;}}\pard})"),
            Terminated(R"({\rtf1\ansicpg1252\deff7{\fonttbl{\f7 A;}{\f9 B;})"
                       R"({\f10 \swiss \fcharset128 MS Gothic}})" +
                       Subject(R"(\f10 \'8d\'b7\f7 )") + R"(\pard})"));
}

// A font without a charset has the document's code page, which is 1252 unless it says otherwise.
TEST(MailRtfValue, TheCodePageOfADocument) {
  EXPECT_EQ(RenderSubject("\xC3\xA9", R"({\rtf1{\fonttbl{\f0 A;}}\pard})"),
            Terminated(R"({\rtf1{\fonttbl{\f0 A;}})" + Subject(R"(\'e9)") + R"(\pard})"));
  EXPECT_EQ(RenderSubject("\xC3\xA9", R"({\rtf1\ansicpg1251{\fonttbl{\f0 A;}}\pard})"),
            Terminated(R"({\rtf1\ansicpg1251{\fonttbl{\f0 A;}{\f1 \swiss \fcharset0 Arial}})" +
                       Subject(R"(\f1 \'e9\f0 )") + R"(\pard})"));
}

TEST(MailRtfValue, TheAddressFollowsTheName) {
  MailMessage message;
  Set(message.from, "Ann");
  SetTerminated(message.fromAddress, "a}@b");
  Set(message.body, kBody);
  EXPECT_EQ(Render(message),
            Terminated(kHead + MailRtfRow("From:      ", R"(Ann <a\'7d@b>)") + kSeparator + kTail));
}

TEST(MailRtfValue, AnEmptyAddressIsWritten) {
  const std::string expected =
      Terminated(kHead + MailRtfRow("From:      ", "Ann <>") + kSeparator + kTail);
  MailMessage message;
  Set(message.from, "Ann");
  SetTerminated(message.fromAddress, "");
  Set(message.body, kBody);
  EXPECT_EQ(Render(message), expected);
  MailMessage noBytes;
  Set(noBytes.from, "Ann");
  Set(noBytes.fromAddress, "");
  Set(noBytes.body, kBody);
  EXPECT_EQ(Render(noBytes), expected);
}

TEST(MailRtfValue, AnotherAuthorPlaysNoPart) {
  MailMessage message;
  Set(message.from, "Ann");
  Set(message.originalAuthor, "Eve");
  SetTerminated(message.fromAddress, "a@b");
  Set(message.body, kBody);
  EXPECT_EQ(Render(message),
            Terminated(kHead + MailRtfRow("From:      ", "Ann <a@b>") + kSeparator + kTail));
  MailMessage noAddress;
  Set(noAddress.from, "Ann");
  Set(noAddress.originalAuthor, "Eve");
  Set(noAddress.body, kBody);
  EXPECT_EQ(Render(noAddress),
            Terminated(kHead + MailRtfRow("From:      ", "Ann") + kSeparator + kTail));
}

// The font table in its places --------------------------------------------------------------------

TEST(MailRtfTable, WhatFollowsTheTableStays) {
  EXPECT_EQ(RenderSubject(kKanji, R"({\rtf1{\fonttbl{\f0 A;}}{\colortbl;}\pard x})"),
            Terminated(R"({\rtf1{\fonttbl{\f0 A;}{\f1 \swiss \fcharset128 MS Gothic}})"
                       R"({\colortbl;})" +
                       Subject(kKanjiRtf) + R"(\pard x})"));
}

TEST(MailRtfTable, AParagraphInFrontOfATableThatStays) {
  EXPECT_EQ(RenderToBob(R"({\rtf1\pard{\fonttbl{\f0 A;}}x})"),
            Terminated(R"({\rtf1)" + kToBob + R"(\pard{\fonttbl{\f0 A;}}x})"));
}

TEST(MailRtfTable, AParagraphInFrontOfATableThatGrewLosesTheHead) {
  EXPECT_EQ(RenderSubject(kKanji, R"({\rtf1\pard{\fonttbl{\f0 A;}}x})"),
            Terminated(Subject(kKanjiRtf) + R"(\pard{\fonttbl{\f0 A;}}x})"));
}

TEST(MailRtfTable, AParagraphInsideATableThatStays) {
  EXPECT_EQ(RenderToBob(R"({\rtf1{\fonttbl{\f0\pard A;}}x})"),
            Terminated(R"({\rtf1{\fonttbl{\f0)" + kToBob + R"(\pard A;}}x})"));
}

// The new table is complete, and the rest of the old one follows the block.
TEST(MailRtfTable, AParagraphInsideATableThatGrew) {
  EXPECT_EQ(RenderSubject(kKanji, R"({\rtf1{\fonttbl{\f0\pard A;}}x})"),
            Terminated(R"({\rtf1{\fonttbl{\f0\pard A;}{\f1 \swiss \fcharset128 MS Gothic}})" +
                       Subject(kKanjiRtf) + R"(\pard A;}}x})"));
}

// A document without a table gets one before its "\from", which opens with a form feed in
// place of a backslash and an "f". Its first font has the number of the default font.
TEST(MailRtfTable, ADocumentWithoutATable) {
  EXPECT_EQ(RenderSubject(kKanji, R"({\rtf1\fromtext \pard x})"),
            Terminated("{\\rtf1\x0C"
                       R"(onttbl{\f0 \swiss \fcharset128 MS Gothic}}\fromtext )" +
                       Subject(R"(\'8d\'b7)") + R"(\pard x})"));
  EXPECT_EQ(RenderToBob(R"({\rtf1\fromtext \pard x})"),
            Terminated(R"({\rtf1\fromtext )" + kToBob + R"(\pard x})"));
}

// A table that never closes takes all of the text. The new font goes before the last byte that the
// length counts: the NUL, where it counts one.
TEST(MailRtfTable, ATableThatNeverCloses) {
  const std::string unclosed = R"({\rtf1{\fonttbl{\f0 A;}\pard xy)";
  const std::string block = Subject(kKanjiRtf);
  EXPECT_EQ(RenderSubject(kKanji, Terminated(unclosed)),
            Terminated(Terminated(unclosed + kKanjiFont) + block + R"(\pard xy)"));
  EXPECT_EQ(RenderSubject(kKanji, Terminated(Terminated(unclosed))),
            Terminated(Terminated(Terminated(unclosed) + kKanjiFont) + block +
                       Terminated(R"(\pard xy)")));
  EXPECT_EQ(RenderSubject(kKanji, unclosed), Terminated(R"({\rtf1{\fonttbl{\f0 A;}\pard x)" +
                                                        kKanjiFont + "y" + block + R"(\pard xy)"));
}

// One row -----------------------------------------------------------------------------------------

std::string AppendRow(HeaderRow row, std::string_view text = "x") {
  RtfRender render;
  MailMessage message;
  SetTerminated(message.fromAddress, "a@b");
  SetTerminated(message.to, text);
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, &message.to, row), StatusOk);
  return std::string(render.output.data(), render.output.length());
}

TEST(AppendRtfHeaderRow, EveryRow) {
  EXPECT_EQ(AppendRow(HeaderRowFrom), MailRtfRow("From:      ", "x <a@b>"));
  EXPECT_EQ(AppendRow(HeaderRowTo), MailRtfRow("To:        ", "x"));
  EXPECT_EQ(AppendRow(HeaderRowBcc), MailRtfRow("Bcc:       ", "x"));
  EXPECT_EQ(AppendRow(HeaderRowCc), MailRtfRow("Cc:        ", "x"));
  EXPECT_EQ(AppendRow(HeaderRowSent), MailRtfRow("Sent:      ", "x"));
  EXPECT_EQ(AppendRow(HeaderRowSubject), MailRtfRow("Subject:   ", "x"));
  EXPECT_EQ(AppendRow(HeaderRowImportance), MailRtfRow("Importance:", "x"));
}

TEST(AppendRtfHeaderRow, RowsFollowEachOther) {
  RtfRender render;
  MailMessage message;
  SetTerminated(message.to, "x");
  SetTerminated(message.cc, "");
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, &message.to, HeaderRowTo), StatusOk);
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, &message.cc, HeaderRowCc), StatusOk);
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, &message.bcc, HeaderRowBcc), StatusOk);
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, &message.to, HeaderRowSubject), StatusOk);
  EXPECT_EQ(std::string(render.output.data(), render.output.length()),
            MailRtfRow("To:        ", "x") + MailRtfRow("Subject:   ", "x"));
}

TEST(AppendRtfHeaderRow, RefusesWhatIsNotThere) {
  RtfRender render;
  MailMessage message;
  SetTerminated(message.to, "x");
  EXPECT_EQ(AppendRtfHeaderRow(render, nullptr, &message.to, HeaderRowTo), StatusNullArgument);
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, nullptr, HeaderRowTo), StatusNullArgument);
  EXPECT_EQ(render.output.length(), 0u);
}

TEST(AppendRtfHeaderRow, WithoutMemory) {
  RtfRender render;
  MailMessage message;
  SetTerminated(message.to, "x");
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, &message.to, HeaderRowTo), StatusOutOfMemory);
}

// A text beyond ASCII that finds no room is not left out of a row that stays.
TEST(AppendRtfHeaderRow, BeyondTheBudget) {
  std::string text;
  for (int i = 0; i < 200; ++i) text += kKanji;
  RtfRender render;
  render.output.setThreshold(1000);
  MailMessage message;
  SetTerminated(message.to, text);
  PlainKernelSetMemoryBudget(2000);
  EXPECT_EQ(AppendRtfHeaderRow(render, &message, &message.to, HeaderRowTo), StatusOutOfMemory);
}

}  // namespace
}  // namespace tarn

#include "eml/PartCharset.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Tarnbase/PlainKernel.h"
#include "eml/ReadMail.h"

namespace tarn {
namespace {

using namespace std::string_view_literals;
using test::MakeText;

CharsetRef Parse(std::string_view value) {
  EmlPart part;
  part.charset = {CharsetWindows, 1251};
  ParsePartCharset(part, {value, value.size()});
  return part.charset;
}

TEST(PartCharset, ComesFromTheContentType) {
  EXPECT_EQ(Parse("text/html; charset=\"UTF-8\"\r\n").kind, CharsetUtf8);
  EXPECT_EQ(Parse("text/html; charset=windows-1252\r\n").codePage, 1252u);
}

TEST(PartCharset, MayBeOnAFoldedLine) {
  EXPECT_EQ(Parse("text/html;\r\n\tcharset=big5\r\nX: y\r\n\r\n").kind, CharsetBig5);
}

TEST(PartCharset, OtherHeaderLinesDoNotCount) {
  const CharsetRef charset = Parse("text/html\r\nX: charset=big5\r\n\r\n");
  EXPECT_EQ(charset.kind, CharsetNone);
  EXPECT_EQ(charset.codePage, 0u);
}

// A part and a message with one field that is no UTF-8.
struct Conversion {
  EmlMessage message;
  EmlPart part;
  Status status;

  Conversion(std::string_view text, CharsetRef charset) {
    message.from = MakeText("J\xF6rg");
    part.decoded = MakeText(text);
    part.decoded.truncate(text.size());
    part.charset = charset;
  }
  void run() { status = ConvertPartCharset(part, message); }
  std::string_view text() const { return part.decoded.view(); }
};

constexpr CharsetRef kLatin1 = {CharsetLatin1, 0};

TEST(CharsetDecision, CharsetsWithoutConversionLeaveAllAsItIs) {
  for (const CharsetKind kind : {CharsetNone, CharsetUtf8, CharsetAscii}) {
    Conversion conversion("\xE4", {kind, 0});
    conversion.run();
    EXPECT_EQ(conversion.status, StatusOk);
    EXPECT_FALSE(conversion.message.convertToUtf8);
    EXPECT_EQ(conversion.text(), "\xE4");
    EXPECT_EQ(conversion.message.from.text(), "J\xF6rg");
  }
}

TEST(CharsetDecision, TextWithoutTheMetaIsConvertedAndFieldsAreRepaired) {
  Conversion conversion("\xE4", kLatin1);
  conversion.message.subject = MakeText("\xC3\xA4");
  conversion.message.importance = MakeText("\xE4");
  conversion.run();
  EXPECT_EQ(conversion.status, StatusOk);
  EXPECT_TRUE(conversion.message.convertToUtf8);
  EXPECT_EQ(conversion.text(), "\xC3\xA4");
  EXPECT_EQ(conversion.message.from.text(), "J\xC3\xB6rg");
  // What is UTF-8 stays, and the importance is not among the fields.
  EXPECT_EQ(conversion.message.subject.text(), "\xC3\xA4");
  EXPECT_EQ(conversion.message.importance.text(), "\xE4");
}

TEST(CharsetDecision, SixFieldsAreRepairedAndTheImportanceIsNot) {
  Conversion conversion("", kLatin1);
  EmlMessage& message = conversion.message;
  message.from = MakeText("a\xE0");
  message.to = MakeText("b\xE1");
  message.subject = MakeText("c\xE2");
  message.date = MakeText("d\xE3");
  message.cc = MakeText("e\xE4");
  message.bcc = MakeText("f\xE5");
  message.importance = MakeText("g\xE6");
  conversion.run();
  EXPECT_EQ(message.from.text(), "a\xC3\xA0");
  EXPECT_EQ(message.to.text(), "b\xC3\xA1");
  EXPECT_EQ(message.subject.text(), "c\xC3\xA2");
  EXPECT_EQ(message.date.text(), "d\xC3\xA3");
  EXPECT_EQ(message.cc.text(), "e\xC3\xA4");
  EXPECT_EQ(message.bcc.text(), "f\xC3\xA5");
  EXPECT_EQ(message.importance.text(), "g\xE6");
}

constexpr std::string_view kMeta =
    "<META http-equiv=Content-Type content=\"text/html; charset=iso-8859-1\">\xE4";

TEST(CharsetDecision, MetaThatAgreesKeepsTheCharset) {
  Conversion conversion(kMeta, kLatin1);
  conversion.run();
  EXPECT_FALSE(conversion.message.convertToUtf8);
  EXPECT_EQ(conversion.text(), kMeta);
  EXPECT_EQ(conversion.message.from.text(), "J\xF6rg");
}

TEST(CharsetDecision, MetaOfAnotherKindConverts) {
  Conversion conversion(kMeta, {CharsetWindows, 1252});
  conversion.run();
  EXPECT_TRUE(conversion.message.convertToUtf8);
}

TEST(CharsetDecision, CodePagesOfWindowsMustAgree) {
  constexpr std::string_view kText =
      "<meta http-equiv=Content-Type content=\"text/html; charset=windows-1251\">";
  Conversion same(kText, {CharsetWindows, 1251});
  same.run();
  EXPECT_FALSE(same.message.convertToUtf8);
  Conversion other(kText, {CharsetWindows, 1252});
  other.run();
  EXPECT_TRUE(other.message.convertToUtf8);
}

TEST(CharsetDecision, MetaWithQuotesAroundContentTypeDoesNotCount) {
  Conversion conversion(
      "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=iso-8859-1\">\xE4", kLatin1);
  conversion.run();
  EXPECT_TRUE(conversion.message.convertToUtf8);
  EXPECT_EQ(conversion.text(),
            "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\">\xC3\xA4");
}

TEST(CharsetDecision, MetaAtTheVeryEndHasNoValue) {
  Conversion conversion("<meta http-equiv=Content-Type content=\"text/html; charset=", kLatin1);
  conversion.run();
  EXPECT_TRUE(conversion.message.convertToUtf8);
}

TEST(CharsetDecision, OtherBodyKindConvertsWithoutLooking) {
  Conversion conversion(kMeta, kLatin1);
  conversion.message.documentKind = DocumentText;
  conversion.run();
  EXPECT_TRUE(conversion.message.convertToUtf8);
  EXPECT_EQ(conversion.text(),
            "<META http-equiv=Content-Type content=\"text/html; charset=UTF-8\">\xC3\xA4");
}

TEST(CharsetDecision, OnceMadeItHoldsAndRepairsNothing) {
  Conversion conversion(kMeta, kLatin1);
  conversion.message.convertToUtf8 = true;
  conversion.run();
  EXPECT_EQ(conversion.text(),
            "<META http-equiv=Content-Type content=\"text/html; charset=UTF-8\">\xC3\xA4");
  EXPECT_EQ(conversion.message.from.text(), "J\xF6rg");
}

TEST(CharsetDecision, UnknownCharsetDecidesToo) {
  Conversion conversion("\xE4", {CharsetOther, 0});
  conversion.run();
  EXPECT_TRUE(conversion.message.convertToUtf8);
  EXPECT_EQ(conversion.text(), "\xE4");
  EXPECT_EQ(conversion.message.from.text(), "J\xF6rg");
}

TEST(CharsetDecision, Iso2022JpIsConvertedWithoutTheDecisionToo) {
  Conversion conversion(
      "<meta http-equiv=Content-Type content=\"text/html; charset=iso-2022-jp\">\x1B$B$\"\x1B(B",
      {CharsetIso2022Jp, 0});
  conversion.run();
  EXPECT_FALSE(conversion.message.convertToUtf8);
  EXPECT_EQ(conversion.text(),
            "<meta http-equiv=Content-Type content=\"text/html; charset=UTF-8\">\xE3\x81\x82");
}

TEST(CharsetDecision, FailedConversionIsTheResult) {
  Conversion conversion("\xE4", kLatin1);
  conversion.message.convertToUtf8 = true;
  PlainKernelFailAt(PlainKernelFaultText, 1);
  conversion.run();
  EXPECT_EQ(conversion.status, StatusPathToUtf8Failed);
}

}  // namespace
}  // namespace tarn

// How RTF is cut into tokens.
#include "siblings/office/RtfScanner.h"

#include <gtest/gtest.h>

namespace tarn::pages {
namespace {

std::vector<RtfToken> Tokens(std::string_view document) {
  RtfScanner scanner(document);
  std::vector<RtfToken> tokens;
  while (const auto token = scanner.next()) tokens.push_back(*token);
  return tokens;
}

// The bytes of the tokens, each in brackets.
std::string Cut(std::string_view document) {
  std::string text;
  for (const RtfToken& token : Tokens(document)) {
    text.append("[").append(token.bytes).append("]");
  }
  return text;
}

TEST(RtfScanner, CutsGroupsWordsSymbolsAndText) {
  EXPECT_EQ(Cut(R"({\rtf1\ansi Grüße\par\'e9\~ x})"),
            R"([{][\rtf1][\ansi ][Grüße][\par][\'e9][\~][ x][}])");
}

TEST(RtfScanner, TellsNamesAndNumbers) {
  const auto tokens = Tokens(R"(\fs20\li-360\b0 \b\u-10)");
  ASSERT_EQ(tokens.size(), 5u);
  EXPECT_EQ(tokens[0].name, "fs");
  EXPECT_EQ(tokens[0].number, 20);
  EXPECT_EQ(tokens[1].name, "li");
  EXPECT_EQ(tokens[1].number, -360);
  EXPECT_EQ(tokens[2].bytes, "\\b0 ");
  EXPECT_EQ(tokens[3].number, std::nullopt);
  EXPECT_EQ(tokens[4].number, -10);
}

TEST(RtfScanner, HoldsNumbersThatAreTooLarge) {
  const auto tokens = Tokens(R"(\fs99999999999\fs-99999999999)");
  ASSERT_EQ(tokens.size(), 2u);
  EXPECT_EQ(tokens[0].number, INT32_MAX);
  EXPECT_EQ(tokens[1].number, INT32_MIN);
}

TEST(RtfScanner, AHyphenWithoutDigitsIsText) { EXPECT_EQ(Cut(R"(\b-x)"), R"([\b][-x])"); }

TEST(RtfScanner, DigitsBeyondTheDocumentAreNotRead) {
  constexpr std::string_view kLonger = R"(\li-360)";
  EXPECT_EQ(Cut(kLonger.substr(0, 4)), R"([\li][-])");
}

TEST(RtfScanner, TakesOneBlankOnly) { EXPECT_EQ(Cut("\\b  x"), "[\\b ][ x]"); }

TEST(RtfScanner, LeavesBinaryBytesAlone) {
  EXPECT_EQ(Cut(R"({\bin5 }}\{{}x)"), R"([{][\bin5 ][}}\{{][}][x])");
}

TEST(RtfScanner, BinaryBytesEndWithTheDocument) {
  EXPECT_EQ(Cut(R"(\bin2147483647 ab)"), R"([\bin2147483647 ][ab])");
  EXPECT_EQ(Cut(R"(\bin5)"), R"([\bin5])");
  EXPECT_EQ(Cut(R"(\bin-5 ab)"), R"([\bin-5 ][ab])");
}

TEST(RtfScanner, TellsHexadecimalBytes) {
  const auto tokens = Tokens(R"(\'e9\'FF\'zz\'4)");
  ASSERT_EQ(tokens.size(), 4u);
  EXPECT_EQ(tokens[0].number, 0xE9);
  EXPECT_EQ(tokens[1].number, 0xFF);
  EXPECT_EQ(tokens[2].number, std::nullopt);
  EXPECT_EQ(tokens[3].number, std::nullopt);
}

TEST(RtfScanner, EndsWithWhatIsCutOff) {
  EXPECT_EQ(Cut("{\\"), "[{][\\]");
  EXPECT_EQ(Cut("\\'"), "[\\']");
  EXPECT_EQ(Cut(""), "");
}

}  // namespace
}  // namespace tarn::pages

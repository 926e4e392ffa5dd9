#include "siblings/layout/WordBreaks.h"

#include <gtest/gtest.h>

namespace tarn::test {
namespace {

using pages::SplitIntoWords;
using Words = std::vector<std::string>;

TEST(WordBreaks, WordsAndBlanks) {
  EXPECT_EQ(SplitIntoWords(" a  bc\n"), (Words{" ", "a", " ", " ", "bc", "\n"}));
  EXPECT_EQ(SplitIntoWords(""), Words{});
}

TEST(WordBreaks, ANonBreakingBlankIsALetter) {
  EXPECT_EQ(SplitIntoWords("12\u00A0480 \u20AC"), (Words{"12\u00A0480", " ", "\u20AC"}));
}

TEST(WordBreaks, ChineseBreaksBetweenCharactersButNotBeforeAFullStop) {
  EXPECT_EQ(SplitIntoWords("\u4F60\u597D\u3002ok"), (Words{"\u4F60", "\u597D\u3002", "ok"}));
}

TEST(WordBreaks, LongWordsBreakAfterPartsOfAddresses) {
  const std::string head = "https://example.com/a-rather-long/";
  EXPECT_EQ(SplitIntoWords(head + "path-that-goes-on"), (Words{head + "path-", "that-goes-on"}));
  EXPECT_EQ(SplitIntoWords(std::string(95, 'x')),
            (Words{std::string(40, 'x'), std::string(40, 'x'), std::string(15, 'x')}));
  EXPECT_EQ(SplitIntoWords(std::string(40, 'x')), Words{std::string(40, 'x')});
}

TEST(WordBreaks, LongWordsAreCutBetweenCharacters) {
  std::string word;
  for (int i = 0; i < 50; ++i) word += "\u00E4";
  EXPECT_EQ(SplitIntoWords(word), (Words{word.substr(0, 80), word.substr(80)}));
}

}  // namespace
}  // namespace tarn::test

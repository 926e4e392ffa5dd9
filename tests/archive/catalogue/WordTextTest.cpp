#include "archive/catalogue/WordText.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace tarn::archive {
namespace {

// The words with one blank between them.
std::string Words(std::string_view text) {
  std::istringstream words(WordsOf(text).text);
  std::string joined;
  for (std::string word; words >> word;) joined += (joined.empty() ? "" : " ") + word;
  return joined;
}

TEST(WordTextTest, FoldsCaseAndWidth) {
  EXPECT_EQ(Words("Annual REPORT 2024"), "annual report 2024");
  EXPECT_EQ(Words("STRASSE Straße ﬁn Ａｂ"), "strasse strasse fin ab");
  EXPECT_EQ(Words(""), "");
}

TEST(WordTextTest, ComposesMarks) {
  // A base and its mark, also where the base is a plain letter.
  EXPECT_EQ(Words("cafe\xCC\x81 x"), "caf\xC3\xA9 x");
  EXPECT_EQ(Words("\xCC\x81"), "\xCC\x81");
}

TEST(WordTextTest, PairsCharactersOfScriptsWithoutBlanks) {
  EXPECT_EQ(Words("日本語"), "日本 本語 語");
  EXPECT_EQ(Words("日"), "日");
  EXPECT_EQ(Words("iPhone手机 x"), "iphone 手机 机 x");
  EXPECT_EQ(Words("手a机"), "手 a 机");
  EXPECT_EQ(Words("한국어를"), "한국 국어 어를 를");
  EXPECT_EQ(Words("ｶﾞｽ"), "ガス ス");  // of half width, with a mark of its own
  EXPECT_EQ(Words("ไทย"), "ไท ทย ย");
  EXPECT_EQ(Words("𠀋𠀌"), "𠀋𠀌 𠀌");
}

TEST(WordTextTest, EndsARunAtPunctuation) {
  EXPECT_EQ(Words("日本、語"), "日本 、本 語");
  EXPECT_EQ(Words("日本。"), "日本 。本");
}

TEST(WordTextTest, LeavesPointsOut) {
  EXPECT_EQ(Words("שָׁלוֹם"), "שלום");
  EXPECT_EQ(Words("مُحَمَّد محمـــد"), "محمد محمد");
}

TEST(WordTextTest, ReadsWhatIsNoUtf8) {
  EXPECT_EQ(Words("a\xFFz"), "a\xEF\xBF\xBDz");
  EXPECT_EQ(Words("a\xE6\x97"), "a\xEF\xBF\xBD");
}

TEST(WordTextTest, TellsWhereBytesComeFrom) {
  const WordText words = WordsOf("a日本", Origins::Keep);
  EXPECT_EQ(words.text, "a 日本 本 ");
  // "a", a blank, both characters and a blank, the second again.
  EXPECT_EQ(words.origins, (std::vector<uint32_t>{0, 1, 1, 1, 1, 4, 4, 4, 4, 4, 4, 4, 4, 7}));
  EXPECT_TRUE(WordsOf("a").origins.empty());
}

TEST(WordTextTest, LeavesTheEndOfWhatIsToBeFoundOpen) {
  EXPECT_EQ(WordsToFind("日本語").text, " 日本 本語 ");
  EXPECT_FALSE(WordsToFind("日本語").endsInPart);
  EXPECT_EQ(WordsToFind("日").text, " 日 ");
  EXPECT_TRUE(WordsToFind("日").endsInPart);
  // Inside, the run is as a text has it.
  EXPECT_EQ(WordsToFind("手机x").text, " 手机 机 x");
  EXPECT_FALSE(WordsToFind("手机x").endsInPart);
  EXPECT_TRUE(WordsToFind("x手").endsInPart);
  EXPECT_EQ(WordsToFind("日本。").text, " 日本 。");
}

// A character with more marks than any writing has takes time in proportion to them.
TEST(WordTextTest, TakesCharactersWithManyMarks) {
  std::string text = "a";
  for (int each = 0; each < 20000; ++each) text += each % 2 == 0 ? "\xCC\xA3" : "\xCC\x81";
  const WordText words = WordsOf(text, Origins::Keep);
  EXPECT_EQ(words.origins.size(), words.text.size() + 1);
  EXPECT_EQ(words.text.substr(0, 3), "\xE1\xBA\xA1");
  EXPECT_GT(words.text.size(), 30000U);
}

}  // namespace
}  // namespace tarn::archive

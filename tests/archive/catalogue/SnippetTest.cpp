#include "archive/catalogue/Snippet.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn::archive {
namespace {

// The snippet with brackets around its marks.
std::string Shown(const Snippet& snippet) {
  std::string shown;
  size_t at = 0;
  for (const TextSpan& mark : snippet.marks) {
    shown += snippet.text.substr(at, mark.begin - at) + "[" +
             snippet.text.substr(mark.begin, mark.end - mark.begin) + "]";
    at = mark.end;
  }
  return shown + snippet.text.substr(at);
}

std::string Of(const std::string& text, const std::vector<std::string>& wanted, size_t length) {
  std::vector<FoundSpan> found;
  for (size_t at = 0; at < text.size(); ++at) {
    for (size_t phrase = 0; phrase < wanted.size(); ++phrase) {
      if (text.compare(at, wanted[phrase].size(), wanted[phrase]) == 0) {
        found.push_back({{at, at + wanted[phrase].size()}, phrase});
      }
    }
  }
  return Shown(SnippetOf(text, found, length));
}

TEST(SnippetTest, IsTheWholeOfAShortText) {
  EXPECT_EQ(Of("the net income", {"net"}, 100), "the [net] income");
  EXPECT_EQ(Of("", {}, 100), "");
  EXPECT_EQ(Of("nothing found", {}, 100), "nothing found");
}

TEST(SnippetTest, IsOneLine) {
  EXPECT_EQ(Of(" a\r\n\r\n\tb  net\n c \n", {"net"}, 100), "a b [net] c");
}

TEST(SnippetTest, BeginsAndEndsWithWords) {
  EXPECT_EQ(Of("one two three four five six seven eight nine", {"five"}, 20),
            "…four [five] six seven…");
}

TEST(SnippetTest, PrefersDifferentPhrases) {
  EXPECT_EQ(Of("net net net and much later on the net of income, and more to come",
               {"net", "income"}, 24),
            "…[net] of [income], and…");
}

TEST(SnippetTest, CutsNoCharacter) {
  const std::string text = "日本語日本語日本語日本語京都日本語日本語日本語日本語日本語";
  const std::string shown = Of(text, {"京都"}, 30);
  EXPECT_EQ(shown, "…日本語[京都]日本語日本…");
}

TEST(SnippetTest, JoinsNeighbours) { EXPECT_EQ(Of("東京都", {"東京", "京都"}, 30), "[東京都]"); }

TEST(SnippetTest, ShowsAPhraseLongerThanItsRoom) {
  EXPECT_EQ(Of("x abcdefghijklmnop y", {"abcdefghijklmnop"}, 5), "…[abcdefghijklmnop]…");
}

}  // namespace
}  // namespace tarn::archive

#include "archive/catalogue/SearchQuery.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn::archive {
namespace {

std::string Query(std::string_view words) { return QueryOf(words).value_or("none"); }

TEST(SearchQueryTest, AsksForAllWords) {
  EXPECT_EQ(Query("budget"), "(\"budget\")");
  EXPECT_EQ(Query("  Annual\tReport "), "(\"annual\") AND (\"report\")");
  EXPECT_EQ(Query("a AND b"), "(\"a\") AND (\"b\")");
}

TEST(SearchQueryTest, TakesPhrasesAndBeginnings) {
  EXPECT_EQ(Query("\"net income\" x"), "(\"net income\") AND (\"x\")");
  EXPECT_EQ(Query("\"net income"), "(\"net income\")");
  EXPECT_EQ(Query("rep*"), "(\"rep*\" *)");
  EXPECT_EQ(Query("\"net inc\"* x"), "(\"net inc\" *) AND (\"x\")");
  EXPECT_EQ(Query("ab\"c d\""), "(\"ab\") AND (\"c d\")");
}

TEST(SearchQueryTest, ChoosesAndExcludes) {
  EXPECT_EQ(Query("a b OR c d"), "(\"a\") AND (\"b\" OR \"c\") AND (\"d\")");
  EXPECT_EQ(Query("a NOT b NOT c"), "((\"a\")) NOT ((\"b\") OR (\"c\"))");
  EXPECT_EQ(Query("NOT b a"), "((\"a\")) NOT ((\"b\"))");
  // Other letters are words.
  EXPECT_EQ(Query("a or not b"), "(\"a\") AND (\"or\") AND (\"not\") AND (\"b\")");
  EXPECT_EQ(Query("\"OR\""), "(\"or\")");
}

TEST(SearchQueryTest, LooksInOneField) {
  EXPECT_EQ(Query("subject:plan"), "(subject : \"plan\")");
  EXPECT_EQ(Query("from:ann@example.com"), "(sender : \"ann@example.com\")");
  EXPECT_EQ(Query("to:\"Bob Builder\""), "(recipients : \"bob builder\")");
  EXPECT_EQ(Query("body:x*"), "(body : \"x*\" *)");
  EXPECT_EQ(Query("attachment:figures"), "(attachments : \"figures\")");
  EXPECT_EQ(Query("http://example.com"), "(\"http://example.com\")");
  EXPECT_EQ(Query("Subject:x"), "(\"subject:x\")");
}

TEST(SearchQueryTest, TakesPairsOfCharacters) {
  EXPECT_EQ(Query("東京都"), "(\" 東京 京都 \")");
  EXPECT_EQ(Query("京"), "(\" 京 \" *)");
}

TEST(SearchQueryTest, PassesOverWhatIsNoWord) {
  EXPECT_EQ(Query(""), "none");
  EXPECT_EQ(Query("-- !!! \"\" * OR NOT AND"), "none");
  EXPECT_EQ(Query("NOT a"), "none");
  EXPECT_EQ(Query("OR a"), "(\"a\")");
  EXPECT_EQ(Query("a OR"), "(\"a\")");
  EXPECT_EQ(Query("a OR - b"), "(\"a\" OR \"b\")");
  EXPECT_EQ(Query("a) OR (b"), "(\"a)\" OR \"(b\")");
  EXPECT_EQ(Query("subject:"), "none");
  EXPECT_EQ(Query(std::string_view("a\0b", 3)), "(\"a b\")");
}

}  // namespace
}  // namespace tarn::archive

#include "siblings/layout/TextLinks.h"

#include <gtest/gtest.h>

#include "siblings/OutwardAddress.h"

namespace tarn::test {
namespace {

using pages::FindTextLinks;
using pages::IsOutwardAddress;
using pages::WithoutBlanksAround;

// The links of a line, each as "its text > its address".
std::vector<std::string> Links(const std::string& line) {
  std::vector<std::string> shown;
  for (const auto& link : FindTextLinks(line)) {
    shown.push_back(line.substr(link.start, link.end - link.start) + " > " + link.address);
  }
  return shown;
}

using Shown = std::vector<std::string>;

TEST(TextLinks, SchemesAndBareNames) {
  EXPECT_EQ(Links("see http://a.example/x?y=1&z or HTTPS://b.example"),
            (Shown{"http://a.example/x?y=1&z > http://a.example/x?y=1&z",
                   "HTTPS://b.example > HTTPS://b.example"}));
  EXPECT_EQ(Links("www.example.org"), Shown{"www.example.org > http://www.example.org"});
  EXPECT_EQ(Links("mailto:a@b.example"), Shown{"mailto:a@b.example > mailto:a@b.example"});
}

TEST(TextLinks, TheEndOfASentenceIsNotTheAddresss) {
  EXPECT_EQ(Links("(http://a.example/b)."), Shown{"http://a.example/b > http://a.example/b"});
  EXPECT_EQ(Links("http://a.example/b_(c)"),
            Shown{"http://a.example/b_(c) > http://a.example/b_(c)"});
  EXPECT_EQ(Links("<http://a.example/>"), Shown{"http://a.example/ > http://a.example/"});
}

TEST(TextLinks, WordsThatOnlyLookLikeIt) {
  EXPECT_EQ(Links("xhttp://a.example http:// www. awww.b file:///etc/passwd javascript:x"),
            Shown{});
}

// A mark each, to see that all are found in a time that grows with the text alone.
TEST(TextLinks, MarksWithoutEnd) {
  constexpr size_t kMany = 4'000'000;
  EXPECT_EQ(Links(std::string("http://a.example/") + std::string(kMany, ')')),
            Shown{"http://a.example/ > http://a.example/"});
  EXPECT_EQ(Links("www." + std::string(kMany, '.')), Shown{});
  EXPECT_EQ(Links(std::string("http://") + std::string(kMany, 'x') + " www.a.example"),
            Shown{"www.a.example > http://www.a.example"});
}

TEST(TextLinks, TheLongestAddress) {
  const std::string longest = "http://" + std::string(pages::kLongestAddress - 7, 'x');
  EXPECT_EQ(FindTextLinks(longest).size(), 1u);
  EXPECT_EQ(FindTextLinks(longest + 'x').size(), 0u);
  EXPECT_TRUE(IsOutwardAddress(longest));
  EXPECT_FALSE(IsOutwardAddress(longest + 'x'));
}

TEST(OutwardAddress, OnlyTheNetMailAndTelephonesAre) {
  EXPECT_TRUE(IsOutwardAddress("Https://a.example"));
  EXPECT_TRUE(IsOutwardAddress("mailto:a@b.example"));
  EXPECT_TRUE(IsOutwardAddress("TEL:+49-30-1"));
  EXPECT_FALSE(IsOutwardAddress("http"));
  EXPECT_FALSE(IsOutwardAddress(":x"));
  EXPECT_FALSE(IsOutwardAddress(""));
  EXPECT_FALSE(IsOutwardAddress("file:///etc/passwd"));
  EXPECT_FALSE(IsOutwardAddress("javascript:alert(1)"));
  EXPECT_FALSE(IsOutwardAddress("#part"));
}

TEST(OutwardAddress, BlanksAround) {
  EXPECT_EQ(WithoutBlanksAround(" \n a b\t"), "a b");
  EXPECT_EQ(WithoutBlanksAround(" "), "");
}

}  // namespace
}  // namespace tarn::test

#include "siblings/layout/TextLinks.h"

#include <gtest/gtest.h>

namespace tarn::test {
namespace {

using pages::FindTextLinks;
using pages::IsOutwardAddress;

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

TEST(TextLinks, OnlyTheWebAndMailAreOutward) {
  EXPECT_TRUE(IsOutwardAddress("Https://a.example"));
  EXPECT_TRUE(IsOutwardAddress("mailto:a@b.example"));
  EXPECT_FALSE(IsOutwardAddress("file:///etc/passwd"));
  EXPECT_FALSE(IsOutwardAddress("javascript:alert(1)"));
  EXPECT_FALSE(IsOutwardAddress("#part"));
}

}  // namespace
}  // namespace tarn::test

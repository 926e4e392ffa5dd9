#include "eml/ContentClasses.h"

#include <gtest/gtest.h>

#include <string_view>

namespace tarn {
namespace {

static_assert(ContentHtml == 0 && ContentPlain == 1 && ContentXml == 2 && ContentOfficeTheme == 3);
static_assert(ContentJavascript == 4 && ContentSvg == 5 && ContentPng == 6 && ContentGif == 7);
static_assert(ContentJpeg == 8 && ContentWmf == 9 && ContentCss == 10 && ContentPdf == 11);
static_assert(ContentOther == 12);

ContentClass Classify(std::string_view value) {
  return ClassifyContent(value.data(), value.data() + value.size());
}

TEST(ContentClasses, EachTypeHasItsClass) {
  EXPECT_EQ(Classify("text/html"), 0u);
  EXPECT_EQ(Classify("text/plain"), 1u);
  EXPECT_EQ(Classify("text/xml"), 2u);
  EXPECT_EQ(Classify("application/vnd.ms-officetheme"), 3u);
  EXPECT_EQ(Classify("application/javascript"), 4u);
  EXPECT_EQ(Classify("image/svg"), 5u);
  EXPECT_EQ(Classify("image/png"), 6u);
  EXPECT_EQ(Classify("image/gif"), 7u);
  EXPECT_EQ(Classify("image/jpeg"), 8u);
  EXPECT_EQ(Classify("image/x-wmf"), 9u);
  EXPECT_EQ(Classify("text/css"), 10u);
  EXPECT_EQ(Classify("application/pdf"), 11u);
}

TEST(ContentClasses, EveryOtherValueIsOther) {
  EXPECT_EQ(Classify("application/octet-stream"), 12u);
  EXPECT_EQ(Classify("image/jpg"), 12u);
  EXPECT_EQ(Classify("message/rfc822"), 12u);
  EXPECT_EQ(Classify("multipart/mixed"), 12u);
  EXPECT_EQ(Classify(" text/html"), 12u);
  EXPECT_EQ(Classify("text/htm"), 12u);
  EXPECT_EQ(Classify(""), 12u);
}

TEST(ContentClasses, TypeIsAPrefixInAnyCase) {
  EXPECT_EQ(Classify("TEXT/Html; charset=x"), ContentHtml);
  EXPECT_EQ(Classify("text/plainest"), ContentPlain);
  EXPECT_EQ(Classify("image/svg+xml"), ContentSvg);
  EXPECT_EQ(Classify("IMAGE/PNG\r\n"), ContentPng);
}

}  // namespace
}  // namespace tarn

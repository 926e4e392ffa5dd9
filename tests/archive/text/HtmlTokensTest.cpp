#include "archive/text/HtmlTokens.h"

#include <gtest/gtest.h>

#include "archive/text/HtmlReferences.h"

namespace tarn::archive {
namespace {

// "<a x=1>", "</a>", text as it is, raw text in braces; a bar after each token.
std::string Cut(std::string_view html) {
  std::string cut;
  HtmlTokens tokens(html);
  for (;;) {
    const HtmlToken& token = tokens.next();
    switch (token.kind) {
      case HtmlTokenKind::End:
        return cut;
      case HtmlTokenKind::Text:
        cut += token.text;
        break;
      case HtmlTokenKind::RawText:
        cut += "{" + std::string(token.text) + "}";
        break;
      case HtmlTokenKind::StartTag:
        cut += "<" + token.name;
        for (const HtmlAttribute& attribute : token.attributes) {
          cut += " " + attribute.name + "=" + std::string(attribute.value);
        }
        cut += ">";
        break;
      case HtmlTokenKind::EndTag:
        cut += "</" + token.name + ">";
    }
    cut += "|";
  }
}

TEST(HtmlTokensTest, CutsTextAndTags) {
  EXPECT_EQ(Cut("a<B>c</B >d"), "a|<b>|c|</b>|d|");
  EXPECT_EQ(Cut(""), "");
}

TEST(HtmlTokensTest, ReadsAttributes) {
  EXPECT_EQ(Cut("<a HREF='x\">' b=\"y'\" c=z/ d e = f g=>"), "<a href=x\"> b=y' c=z/ d= e=f g=>|");
  EXPECT_EQ(Cut("<a/b/c=1/>"), "<a b= c=1/>|");
  EXPECT_EQ(Cut("<a =b=c \"d\">"), "<a =b=c \"d\"=>|");
}

TEST(HtmlTokensTest, KeepsABoundedNumberOfAttributes) {
  std::string html = "<a";
  for (size_t i = 0; i < 2 * HtmlTokens::kMostAttributes; ++i) html += " b='>'";
  html += ">c";
  HtmlTokens tokens(html);
  EXPECT_EQ(tokens.next().attributes.size(), HtmlTokens::kMostAttributes);
  EXPECT_EQ(tokens.next().text, "c");
}

TEST(HtmlTokensTest, DropsTagsThatTheTextEndsIn) {
  EXPECT_EQ(Cut("a<b"), "a|");
  EXPECT_EQ(Cut("a<b c='d>"), "a|");
  EXPECT_EQ(Cut("a<b c="), "a|");
  EXPECT_EQ(Cut("a</b "), "a|");
}

TEST(HtmlTokensTest, TakesWhatIsNoMarkupAsText) {
  EXPECT_EQ(Cut("1 < 2 <3 <"), "1 |< 2 |<3 |<|");
  EXPECT_EQ(Cut("a</"), "a|</|");
}

TEST(HtmlTokensTest, PassesOverComments) {
  EXPECT_EQ(Cut("a<!-- <b> -- > -->c"), "a|c|");
  EXPECT_EQ(Cut("a<!-->b<!--->c<!----!>d<!--x--!>e"), "a|b|c|d|e|");
  EXPECT_EQ(Cut("a<!-- b"), "a|");
  EXPECT_EQ(Cut("<!--[if mso]><b><![endif]-->c<![if !mso]>d<![endif]>"), "c|d|");
}

TEST(HtmlTokensTest, PassesOverDeclarations) {
  EXPECT_EQ(Cut("<!DOCTYPE html><?xml a?>b</3>c<!d"), "b|c|");
}

TEST(HtmlTokensTest, TakesRawTextUpToItsEndTag) {
  EXPECT_EQ(Cut("<script>a<b></scripty></b></SCRIPT >c"),
            "<script>|{a<b></scripty></b>}|</script>|c|");
  EXPECT_EQ(Cut("<style></style>a"), "<style>|</style>|a|");
  EXPECT_EQ(Cut("<title>a</b"), "<title>|{a</b}|");
  EXPECT_EQ(Cut("<plaintext>a</plaintext>"), "<plaintext>|{a</plaintext>}|");
  EXPECT_EQ(Cut("<xmp>a</xmp"), "<xmp>|{a</xmp}|");
}

TEST(HtmlTokensTest, FindsTheFirstAttributeOfAName) {
  HtmlTokens tokens("<a b=1 b=2>");
  const HtmlToken& tag = tokens.next();
  ASSERT_NE(tag.attribute("b"), nullptr);
  EXPECT_EQ(*tag.attribute("b"), "1");
  EXPECT_EQ(tag.attribute("c"), nullptr);
}

TEST(HtmlReferencesTest, DecodesValues) {
  EXPECT_EQ(DecodedHtmlValue("a&amp;b&lt&gt;&quot;&colon;&#65;&#x42;&#X43&Tab;&eacute;&hellip;"),
            "a&b<>\":ABC\té…");
  EXPECT_EQ(DecodedHtmlValue("&unknown;&&#;&#x;&#xD800;&#0;&#99999999999;&"),
            "&unknown;&&#;&#x;\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD&");
}

TEST(HtmlReferencesTest, LeavesTheValuesOfQueriesAlone) {
  const std::string query = "?q=1&num=10&plus=2&lt=5&period=3&section=7&copy=8&ltx&amp1&reg";
  EXPECT_EQ(DecodedHtmlValue(query), query.substr(0, query.size() - 4) + "®");
  EXPECT_EQ(DecodedHtmlText("&copy=8"), "©=8");
}

TEST(HtmlTokensTest, EscapesText) {
  EXPECT_EQ(EscapedHtml("a<b>&\"'"), "a&lt;b&gt;&amp;&quot;&#39;");
}

TEST(HtmlTokens, EscapesHaveNoControls) {
  EXPECT_EQ(EscapedHtml("a\x1B[31m<\u009B2J>\x07"), "a[31m&lt;2J&gt;");
}

TEST(DropControls, LeavesTextAndLines) {
  const auto dropped = [](std::string text) {
    DropControls(text);
    return text;
  };
  EXPECT_EQ(dropped(""), "");
  EXPECT_EQ(dropped("a\tb\r\nc\fd \u00A0\u00BF\u00C0\u0442\u4E00\U0001F600"),
            "a\tb\r\nc\fd \u00A0\u00BF\u00C0\u0442\u4E00\U0001F600");
  EXPECT_EQ(dropped(std::string("\0a\x01\x08\x0E\x1B\x1F b\x7F", 10)), "a b");
  EXPECT_EQ(dropped("\u0080a\u0085\u009B\u009Fb"), "ab");
  // Far in a long text too, and at its end.
  EXPECT_EQ(dropped(std::string(100, 'x') + "\x1B" + std::string(100, 'y')),
            std::string(100, 'x') + std::string(100, 'y'));
  EXPECT_EQ(dropped("a\x0B\xC2"), "a");
}

}  // namespace
}  // namespace tarn::archive

// Documents that want to be read for ever, to fill the memory, or to open what is not theirs.
#include <gtest/gtest.h>

#include "siblings/layout/HtmlFixture.h"
#include "siblings/layout/Pictures.h"

namespace tarn::test {
namespace {

using namespace tarn::pages;

using HostileHtmlTest = HtmlFixture;

TEST_F(HostileHtmlTest, DeepNestingShowsItsText) {
  for (const char* tag : {"<table><tr><td>", "<div>", "<ul><li>", "<span>", "<blockquote>", "<b>",
                          "<p>", "<a href=http://x>", "<button>", "<x-y>"}) {
    EXPECT_EQ(wordsOf(repeated(tag, 100'000) + "deep"), "deep") << tag;
  }
}

TEST_F(HostileHtmlTest, NothingElseIsOpened) {
  folder_.files["passwd"] = "secret";
  EXPECT_EQ(wordsOf("<script src=passwd>document.write('script')</script>"
                    "<iframe src='file:///etc/passwd'></iframe><object data='passwd'></object>"
                    "<embed src=passwd><link rel=stylesheet href=passwd>"
                    "<style>@import url(passwd); @import 'passwd'; p{color:red}</style>"
                    "<video src=passwd poster=passwd></video><svg><image href=passwd /></svg>"
                    "<frameset><frame src=passwd></frameset><base href='http://x/'>"
                    "<meta http-equiv=refresh content='0;url=passwd'>"
                    "<img src='http://a.example/x.png'><img src='file:///etc/passwd'>"
                    "<img src='/etc/passwd'><img src='../passwd'><img src='cid:a@b'><p>shown</p>"),
            "shown");
  EXPECT_TRUE(folder_.asked.empty());
}

TEST_F(HostileHtmlTest, EndlessSizes) {
  for (const char* style : {"height:1e9px",
                            "height:99999999999999999999px",
                            "width:1e9px",
                            "width:-5px",
                            "height:NaN",
                            "margin:1e9px",
                            "margin:-1e9px",
                            "padding:1e9px",
                            "font-size:1e6px",
                            "font-size:0",
                            "font-size:-5px",
                            "border:1e9px solid red",
                            "line-height:1e9",
                            "line-height:-1",
                            "text-indent:-1e9px",
                            "position:absolute;top:1e9px;left:1e9px",
                            "position:fixed;top:-1e9px",
                            "float:left;width:1e9px",
                            "border-radius:1e9px;background:red;height:10px",
                            "background-size:0 0;background:url(x)",
                            "font-size:NaNpx",
                            "width:calc(1px/0)"}) {
    const auto layout = layOut("<p>before</p><div style='" + std::string(style) + "'>x</div>");
    EXPECT_LT(layout->pageCount(), 1'000) << style;
    DrawPage(*layout, 1, 24);
    EXPECT_NE(PdfOf(*layout, {1, 2}), "") << style;
  }
}

TEST_F(HostileHtmlTest, HugeSpansOfCells) {
  const std::string words = wordsOf(
      "<table><tr><td colspan=1000000000 rowspan=1000000000>one</td></tr>"
      "<tr><td colspan=-1>two</td><td colspan=x>three</td></tr></table>");
  for (const char* word : {"one", "two", "three"}) {
    EXPECT_NE(words.find(word), std::string::npos) << words;
  }
  const auto layout = layOut("<table>" + repeated("<tr><td colspan=10000>a</td></tr>", 500));
  EXPECT_GT(layout->pageCount(), 1);
}

TEST_F(HostileHtmlTest, HugeImagesAreNotDecoded) {
  EXPECT_EQ(wordsOf("<p>a<img src=\"" + DataUrlOf(HugePng()) + "\">b</p>"), "ab");
}

TEST_F(HostileHtmlTest, NestedTablesAreNotMeasuredForEver) {
  const auto layout = layOut(repeated("<table><tr><td>a</td><td>", 25) + "end");
  EXPECT_GE(layout->pageCount(), 1);
}

TEST_F(HostileHtmlTest, MarkupThatEndsAnywhere) {
  const std::string html =
      "<!DOCTYPE html><html><style>p{color:red}</style><body class='x'><table><tr><td "
      "style=\"width:5px\">a<!-- c --></td></tr></table><img src='data:image/png;base64,AAAA'>&amp;"
      "<a href=\"http://x\">b</a><ul><li>c</ul></body></html>";
  for (size_t size = 0; size < html.size(); ++size) layOut(html.substr(0, size));
}

TEST_F(HostileHtmlTest, BytesThatMeanNothing) {
  std::string bytes;
  uint32_t seed = 1;
  for (int i = 0; i < 20'000; ++i) {
    seed = seed * 1'664'525 + 1'013'904'223;
    constexpr std::string_view kLikely = "<<<>>>/ \"'=!-&;#abdiprtuv\0\xFF\xC3";
    bytes += kLikely[(seed >> 16) % kLikely.size()];
  }
  EXPECT_GE(layOut(bytes)->pageCount(), 1);
  EXPECT_GE(layOut("<p>a" + std::string(1'000, '\0') + "b")->pageCount(), 1);
}

TEST_F(HostileHtmlTest, AFailureLeavesTheEngineAsItWas) {
  EXPECT_THROW(layOut(repeated("<br>", 400'001)), PageFailure);
  EXPECT_EQ(wordsOf("<p>next</p>"), "next");
}

}  // namespace
}  // namespace tarn::test

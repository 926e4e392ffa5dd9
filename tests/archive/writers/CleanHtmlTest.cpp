#include "archive/writers/CleanHtml.h"

#include <gtest/gtest.h>

#include "archive/writers/FakeItem.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kGif = "GIF89a....";
constexpr std::string_view kGifUrl = "data:image/gif;base64,R0lGODlhLi4uLg==";

std::string Clean(std::string_view html, const FakeContent& content = FakeContent(),
                  const std::vector<std::string>& paths = {}) {
  FakeItem item(content);
  std::vector<Trouble> lost;
  MailImages images(item, lost);
  TextSink sink;
  SinkBuffer out(sink);
  HtmlCleaner(images, paths, out).put(html);
  out.finish();
  return sink.text;
}

FakeContent WithPicture() {
  FakeContent content;
  content.attach("dot.gif", "image/gif", std::string(kGif)).contentId = "Dot@x";
  return content;
}

TEST(CleanHtmlTest, LeavesOutStylesThatFetch) {
  EXPECT_EQ(Clean("<p style='color:red;background:url(http://x/y)'>a"), "<p style=\"color:red\">a");
  EXPECT_EQ(Clean("<p style='background:u&#114;l&#40;//x&#41;;a:&quot;b&quot;'>a"),
            "<p style=\"a:&quot;b&quot;\">a");
  EXPECT_EQ(Clean("<p style=' color : rgb(1,2,3) ;a:&quot;b&quot;'>a"),
            "<p style=\" color : rgb(1,2,3) ;a:&quot;b&quot;\">a");
}

TEST(CleanHtmlTest, KeepsWhatAReaderSees) {
  const std::string html =
      "<h1 style=\"color:red\">a &auml; &lt;</h1><table width=\"3\"><tr><td>b</td></tr></table>";
  EXPECT_EQ(Clean(html), html);
}

TEST(CleanHtmlTest, DropsWhatRuns) {
  EXPECT_EQ(Clean("a<script>alert(1)</script>b<p onclick=x ONLOAD=y>c</p>"), "ab<p>c</p>");
  EXPECT_EQ(
      Clean("<iframe src=x>a</iframe><object data=x>b</object><embed src=x><applet>c</applet>"),
      "bc");
  EXPECT_EQ(Clean("<svg><style>a</style><a xlink:href=x>b</a></svg><math>c</math>"), "<a>b</a>c");
  EXPECT_EQ(Clean("<form action=x><input value=y><button formaction=z>a</button></form>"), "a");
  EXPECT_EQ(Clean("<base href=x><meta http-equiv=refresh content=0><link href=x><video src=x>"),
            "");
}

TEST(CleanHtmlTest, DropsTheHeadsTitleAndDeclarations) {
  EXPECT_EQ(Clean("<!DOCTYPE html><html><head><meta charset=x><title>t</title></head>"
                  "<body bgcolor=red onload=x>a</body></html>"),
            "a");
}

std::string CleanBody(std::string_view html, const FakeContent& content = FakeContent()) {
  FakeItem item(content);
  std::vector<Trouble> lost;
  MailImages images(item, lost);
  TextSink sink;
  SinkBuffer out(sink);
  HtmlCleaner(images, {}, out).putBody(html);
  out.finish();
  return sink.text;
}

TEST(CleanHtmlTest, PutsTheMailIntoAnElementForItsBody) {
  EXPECT_EQ(CleanBody("a</body>b"), "<tarn-body>ab</tarn-body>");
  EXPECT_EQ(CleanBody("<title>t</title><p>a<body class=x onload=y style='color:red'>b</div></body>"
                      "<body id=z>c"),
            "<tarn-body class=\"x\" style=\"color:red\"><p>ab</div>c</tarn-body>");
}

TEST(CleanHtmlTest, ShowsTheColoursOfTheBody) {
  EXPECT_EQ(CleanBody("<body bgcolor=000000 text=' White '>a"),
            "<style>tarn-body{background-color:#000000;color:White;}</style>\n"
            "<tarn-body bgcolor=\"000000\" text=\" White \">a</tarn-body>");
  EXPECT_EQ(CleanBody("<body bgcolor='red;x:y' text='#12345'>a"),
            "<tarn-body bgcolor=\"red;x:y\" text=\"#12345\">a</tarn-body>");
  EXPECT_EQ(CleanBody("<body background=cid:dot@x>", WithPicture()),
            "<style>tarn-body{background-image:url(" + std::string(kGifUrl) +
                ")}</style>\n<tarn-body></tarn-body>");
}

TEST(CleanHtmlTest, LetsNoTagArise) {
  EXPECT_EQ(Clean("<<script>x</script>img src=y>"), "&lt;img src=y>");
  EXPECT_EQ(Clean("<a title='\"><img src=x>'>b</a>"),
            "<a title=\"&quot;&gt;&lt;img src=x&gt;\">b</a>");
  EXPECT_EQ(Clean(std::string_view("<scr\0ipt>a", 10)), "a");
  EXPECT_EQ(Clean("<main></main></header></mail-x>a"), "a");
}

TEST(CleanHtmlTest, ShowsRawText) {
  EXPECT_EQ(Clean("<textarea><b></textarea><xmp><i></xmp>"),
            "<pre>&lt;b&gt;</pre><pre>&lt;i&gt;</pre>");
}

TEST(CleanHtmlTest, KeepsTheFirstOfAnAttribute) {
  EXPECT_EQ(Clean("<p align=left align=right>"), "<p align=\"left\">");
}

TEST(CleanHtmlTest, KeepsThePagesOwnNames) {
  EXPECT_EQ(Clean("<p class=\"tarn-head\" id=x-tarn-y>a</p><p class=&#116;arn-text>"),
            "<p>a</p><p>");
  EXPECT_EQ(Clean("<style>.Tarn-head{display:none}</style><style>p{}</style>"),
            "<style>main .Tarn-head{display:none}\n</style>\n");
}

TEST(CleanHtmlTest, KeepsLinks) {
  EXPECT_EQ(
      Clean("<a href=\"https://x/?a=1&amp;b=2\" target=_top>a</a>"),
      "<a href=\"https://x/?a=1&amp;b=2\" rel=\"noopener noreferrer\" target=\"_blank\">a</a>");
  EXPECT_EQ(Clean("<a href=\" #there\">a</a>"), "<a href=\"#there\">a</a>");
  EXPECT_EQ(Clean("<area href=mailto:a@b>"),
            "<area href=\"mailto:a@b\" rel=\"noopener noreferrer\" target=\"_blank\">");
}

TEST(CleanHtmlTest, DropsLinksThatRunOrLeadIntoTheFolder) {
  for (const char* address :
       {"javascript:alert(1)", "JaVaScript:x", " java&#10;script:x", "javascript&colon;x",
        "&#106;avascript:x", "vbscript:x", "data:text/html,x", "file:///etc/passwd", "",
        "cid:unknown", "javascript&unknown;:x"}) {
    EXPECT_EQ(Clean("<a href=\"" + std::string(address) + "\">a</a>"), "<a>a</a>") << address;
  }
  for (const char* address : {"../x", "\\\\server\\x", "www.example.com/x?a:b", "x"}) {
    EXPECT_EQ(Clean("<a href=\"" + std::string(address) + "\">a</a>"),
              "<a title=\"" + std::string(address) + "\">a</a>");
  }
  EXPECT_EQ(Clean("<a href=x title=y>a</a>"), "<a title=\"y\">a</a>");
}

TEST(CleanHtmlTest, ResolvesRelativeLinks) {
  const auto linked = [](const std::string& head, const std::string& address) {
    const std::string link = Clean(head + "<a href='" + address + "'>");
    const size_t start = link.find('"') + 1;
    return link.substr(start, link.find('"', start) - start);
  };
  EXPECT_EQ(linked("", "//cdn.example.com/x?a=b"), "https://cdn.example.com/x?a=b");
  const std::string base = "<base target=x><base href='https://x.org/a/b?c'><base href=http://y>";
  EXPECT_EQ(linked(base, "d/e"), "https://x.org/a/d/e");
  EXPECT_EQ(linked(base, "/d"), "https://x.org/d");
  EXPECT_EQ(linked(base, "?d"), "https://x.org/a/b?d");
  EXPECT_EQ(linked(base, "#d"), "#d");
  EXPECT_EQ(linked(base, "mailto:a@b"), "mailto:a@b");
  EXPECT_EQ(linked("<base href=https://x.org>", "d"), "https://x.org/d");
  EXPECT_EQ(linked("<base href=javascript:x//>", "d"), "d");
  EXPECT_EQ(linked("<base href=mailto:x>", "d"), "d");
}

TEST(CleanHtmlTest, LinksToAttachments) {
  EXPECT_EQ(Clean("<a href=cid:dot@x>a</a>", WithPicture(), {"files/a b#.gif"}),
            "<a href=\"files/a%20b%23.gif\" rel=\"noopener noreferrer\" target=\"_blank\">a</a>");
  EXPECT_EQ(Clean("<a href=cid:dot@x>a</a>", WithPicture(), {""}), "<a>a</a>");
}

TEST(CleanHtmlTest, ShowsPicturesOfTheMail) {
  const std::string shown = "<img alt=\"x\" src=\"" + std::string(kGifUrl) + "\">";
  EXPECT_EQ(Clean("<img src=\"cid:Dot@x\" alt=x srcset=y>", WithPicture()), shown);
  EXPECT_EQ(Clean("<IMG SRC=CID:dot%40x alt=x>", WithPicture()), shown);
  EXPECT_EQ(Clean("<image src=dot.gif alt=x>", WithPicture()), shown);
  EXPECT_EQ(Clean("<table background=cid:dot@x>", WithPicture()),
            "<table background=\"" + std::string(kGifUrl) + "\">");
  EXPECT_EQ(Clean("<table background=https://x>", WithPicture()), "<table>");
}

TEST(CleanHtmlTest, FindsPicturesByTheirPlace) {
  FakeContent content;
  content.attach("", "", std::string(kGif)).contentLocation = "https://x/a.gif";
  EXPECT_EQ(Clean("<img src=https://x/a.gif>", content),
            "<img src=\"" + std::string(kGifUrl) + "\">");
}

TEST(CleanHtmlTest, FindsPicturesByNameWhereTheirIdIsLost) {
  FakeContent content;
  content.attach("Image001.gif", "image/gif", std::string(kGif));
  content.attach("b.gif", "image/gif", std::string(kGif)).contentId = "other";
  const std::string shown = "<img src=\"" + std::string(kGifUrl) + "\">";
  EXPECT_EQ(Clean("<img src=\"cid:image001.gif@01D0.12\">", content), shown);
  EXPECT_EQ(Clean("<img src=cid:image001.gif>", content), shown);
  EXPECT_NE(Clean("<img src=\"cid:b.gif@01D0.12\">", content), shown);
}

TEST(CleanHtmlTest, KeepsPicturesThatTheHtmlHolds) {
  EXPECT_EQ(Clean("<img src='data:image/PNG;base64,AAAA'>"),
            "<img src=\"data:image/PNG;base64,AAAA\">");
  EXPECT_EQ(Clean("<img src='data:image/svg+xml;base64,AAAA'>"),
            "<span class=\"tarn-image\">[image]</span>");
}

TEST(CleanHtmlTest, MarksPicturesElsewhere) {
  EXPECT_EQ(Clean("<img src=https://x alt='a <b>'>"),
            "<span class=\"tarn-image\">[image: a &lt;b&gt;]</span>");
  EXPECT_EQ(Clean("<img src=https://x>"), "<span class=\"tarn-image\">[image]</span>");
  EXPECT_EQ(Clean("<img>"), "<span class=\"tarn-image\">[image]</span>");
  EXPECT_EQ(Clean("<img alt='caf&eacute;&hellip;'>"),
            "<span class=\"tarn-image\">[image: café…]</span>");
  EXPECT_EQ(Clean("<img src=https://x width=1 height=1><img src=x height=0>"), "");
}

TEST(CleanHtmlTest, MarksPicturesThatAreNone) {
  FakeContent content;
  content.attach("a.gif", "image/gif", "no picture");
  content.attach("b.gif", "image/gif", std::string(kGif));
  content.broken = {1};
  content.list[0].contentId = "a";
  content.list[1].contentId = "b";
  Attachment& gone = content.list.emplace_back();
  gone.contentId = "c";
  FakeItem item(content);
  std::vector<Trouble> lost;
  MailImages images(item, lost);
  TextSink sink;
  SinkBuffer out(sink);
  HtmlCleaner(images, {}, out).put("<img src=cid:a><img src=cid:b><img src=cid:b><img src=cid:c>");
  out.finish();
  std::string expected;
  for (int i = 0; i < 4; ++i) expected += "<span class=\"tarn-image\">[image]</span>";
  EXPECT_EQ(sink.text, expected);
  ASSERT_EQ(lost.size(), 2u);
  EXPECT_EQ(lost[0].reason, "the picture b.gif is not shown: a block is missing");
  EXPECT_EQ(lost[1].reason, "the picture attachment 3 is not shown: no bytes");
}

TEST(CleanHtmlTest, ReadsWhatIsNoPictureOnceAndNoFurtherThanItsStart) {
  FakeContent content;
  content.attach("a.bin", "", std::string(1000, 'x')).contentId = "a";
  content.broken = {0};
  FakeItem item(content);
  std::vector<Trouble> lost;
  MailImages images(item, lost);
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(images.load(0).has_value());
  EXPECT_EQ(item.opened, 1u);
  EXPECT_TRUE(lost.empty());
}

TEST(CleanHtmlTest, ShowsPicturesUpToALimit) {
  FakeContent content;
  std::string large(kGif);
  large.resize(MailImages::kLargestImage);
  content.attach("a", "", large).contentId = "a";
  content.attach("b", "", large + "x").contentId = "b";
  content.list[1].size.reset();
  content.attach("c", "", large + "x").contentId = "c";
  FakeItem item(content);
  std::vector<Trouble> lost;
  MailImages images(item, lost);
  EXPECT_FALSE(images.load(1).has_value());
  EXPECT_FALSE(images.load(2).has_value());
  for (size_t at = 0; at < MailImages::kAllImages / MailImages::kLargestImage; ++at) {
    EXPECT_TRUE(images.load(0).has_value());
  }
  EXPECT_FALSE(images.load(0).has_value());
  EXPECT_TRUE(lost.empty());
}

TEST(CleanHtmlTest, TellsTypesOfPictures) {
  using namespace std::string_view_literals;
  EXPECT_EQ(ImageTypeOf("\x89PNG\r\n\x1A\n..."), "image/png");
  EXPECT_EQ(ImageTypeOf("\xFF\xD8\xFF\xE0"), "image/jpeg");
  EXPECT_EQ(ImageTypeOf("GIF87a"), "image/gif");
  EXPECT_EQ(ImageTypeOf("RIFF....WEBP"), "image/webp");
  EXPECT_EQ(ImageTypeOf("BM....\0\0\0\0................."sv), "image/bmp");
  EXPECT_EQ(ImageTypeOf("\0\0\1\0..................."sv), "image/x-icon");
  EXPECT_EQ(ImageTypeOf("RIFF"), "");
  EXPECT_EQ(ImageTypeOf("<svg>"), "");
}

TEST(CleanHtmlTest, EndsWhereTheSinkIsFull) {
  const FakeContent content;
  FakeItem item(content);
  std::vector<Trouble> lost;
  MailImages images(item, lost);
  SmallSink sink(10);
  SinkBuffer out(sink);
  std::string html(100000, 'x');
  html += "<p>" + html + "<p>" + html;
  HtmlCleaner(images, {}, out).put(html);
  EXPECT_TRUE(out.isFull());
  EXPECT_EQ(sink.writesAfterFull, 0u);
}

}  // namespace
}  // namespace tarn::archive

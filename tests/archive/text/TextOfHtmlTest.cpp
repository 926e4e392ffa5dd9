#include <gtest/gtest.h>

#include "archive/text/BodyText.h"
#include "archive/text/HtmlReader.h"

namespace tarn::archive {
namespace {

std::string TextOf(const std::string& html, size_t width = 40) {
  return TextOfHtml({html, "utf-8"}, width);
}

std::string Repeated(const std::string& text, size_t count) {
  std::string all;
  for (size_t at = 0; at < count; ++at) all += text;
  return all;
}

TEST(TextOfHtmlTest, EmptyIsEmpty) {
  EXPECT_EQ(TextOf(""), "");
  EXPECT_EQ(TextOf(" \n <p>&nbsp;</p><br><div></div>"), "");
}

TEST(TextOfHtmlTest, SpacesCollapse) {
  EXPECT_EQ(TextOf("  one\n\t two <b> three</b> four"), "one two three four\n");
  EXPECT_EQ(TextOf("a&nbsp;&nbsp;b"), "a  b\n");
}

TEST(TextOfHtmlTest, NoBlankLineComesFirst) {
  EXPECT_EQ(TextOf("<pre>  \n \nx\n\n\ny</pre>"), "x\n\n\ny\n");
  EXPECT_EQ(TextOf("<pre> \n </pre>"), "");
}

TEST(TextOfHtmlTest, ParagraphsHaveBlankLinesBetweenThem) {
  EXPECT_EQ(TextOf("<p>one<p>two</p>three<div>four</div>five"),
            "one\n\ntwo\n\nthree\nfour\nfive\n");
  EXPECT_EQ(TextOf("<p></p><p>&nbsp;</p><p>a</p><p></p><p></p><p>b</p>"), "a\n\nb\n");
  EXPECT_EQ(TextOf("a</p>b"), "a\n\nb\n");
}

TEST(TextOfHtmlTest, ParagraphsWithoutMarginsFollowEachOther) {
  EXPECT_EQ(TextOf("<p class=MsoNormal>a</p><p class=MsoNormal>b</p><p class=MsoNormal>&nbsp;</p>"
                   "<p class=MsoNormal>c</p>"),
            "a\nb\n\nc\n");
  EXPECT_EQ(TextOf("<p style='margin:0 0 0 0'>a</p><p style='MARGIN: 0cm 0pt'>b</p>"), "a\nb\n");
  EXPECT_EQ(TextOf("<p style='margin:0;margin-bottom:1em'>a</p><p>b</p>"), "a\n\nb\n");
}

TEST(TextOfHtmlTest, BreaksEndLines) {
  EXPECT_EQ(TextOf("a<br>b<br/> c</br>d"), "a\nb\nc\nd\n");
  EXPECT_EQ(TextOf("<div>a<br></div><div>b</div><div><br></div><div>c</div>"), "a\nb\n\nc\n");
  EXPECT_EQ(TextOf("a<br><br><br><br>b"), "a\n\nb\n");
  EXPECT_EQ(TextOf("<div>a<br><br></div>b"), "a\n\nb\n");
  EXPECT_EQ(TextOf("a<div><br>b</div>"), "a\n\nb\n");
}

TEST(TextOfHtmlTest, HeadingsAndRulesStandApart) {
  EXPECT_EQ(TextOf("a<h1>Title</h1>b<hr>c"), "a\n\nTitle\n\nb\n" + std::string(40, '-') + "\nc\n");
  EXPECT_EQ(TextOf("<hr>", 0), std::string(72, '-') + "\n");
  EXPECT_EQ(TextOf("<blockquote><hr>", 4), "> ---\n");
}

TEST(TextOfHtmlTest, LongLinesBreakAtSpaces) {
  EXPECT_EQ(TextOf("one two three four five", 9), "one two three\nfour five\n");
  EXPECT_EQ(TextOf("one two three four five six", 18), "one two three four\nfive six\n");
  EXPECT_EQ(TextOf("a verylongwordthatdoesnotfitanywhere b", 16),
            "a\nverylongwordthatdoesnotfitanywhere\nb\n");
  EXPECT_EQ(TextOf("one&nbsp;two three&nbsp;four&nbsp;five", 16), "one two\nthree four five\n");
  EXPECT_EQ(TextOf("one two three four five six", 0), "one two three four five six\n");
}

TEST(TextOfHtmlTest, WideCharactersBreakAnywhereButBeforeWhatCloses) {
  EXPECT_EQ(TextOf("漢字漢字漢字漢字漢字", 16), "漢字漢字漢字漢字\n漢字\n");
  EXPECT_EQ(TextOf("漢字漢字漢字漢字。漢字", 16), "漢字漢字漢字漢\n字。漢字\n");
}

TEST(TextOfHtmlTest, ListsHaveMarksAndNumbers) {
  EXPECT_EQ(TextOf("a<ul><li>one<li>two</ul>b"), "a\n\n* one\n* two\n\nb\n");
  EXPECT_EQ(TextOf("<ol><li>one</li><li>two</li></ol>"), "1. one\n2. two\n");
  EXPECT_EQ(TextOf("<ol start=9><li>x<li>y<li value=20>z</ol>"), "9. x\n10. y\n20. z\n");
  EXPECT_EQ(TextOf("<ol type=a><li>x<li>y</ol>"), "a. x\nb. y\n");
  EXPECT_EQ(TextOf("<ol type=A start=27><li>x</ol>"), "AA. x\n");
  EXPECT_EQ(TextOf("<ol type=i start=4><li>x</ol>"), "iv. x\n");
  EXPECT_EQ(TextOf("<ol type=I start=1999><li>x</ol>"), "MCMXCIX. x\n");
  EXPECT_EQ(TextOf("<ol type=i start=-1><li>x</ol>"), "-1. x\n");
  EXPECT_EQ(TextOf("<ol start=99999999999999999999><li>x</ol>"), "1. x\n");
  EXPECT_EQ(TextOf("<li>alone"), "* alone\n");
}

TEST(TextOfHtmlTest, ItemsAreIndentedBelowTheirMarks) {
  EXPECT_EQ(TextOf("<ul><li>one two three four five six seven</ul>", 20),
            "* one two three four\n  five six seven\n");
  EXPECT_EQ(TextOf("<ol><li>a<ul><li>b</li><li>c</li></ul></li><li>d</li></ol>"),
            "1. a\n   * b\n   * c\n2. d\n");
  EXPECT_EQ(TextOf("<ul><li><p>a</p><p>b</p></li></ul>c"), "* a\n\n  b\n\nc\n");
  EXPECT_EQ(TextOf("<ul><li></li><li>b</ul>"), "* b\n");
}

TEST(TextOfHtmlTest, DefinitionsAreIndented) {
  EXPECT_EQ(TextOf("<dl><dt>a<dd>one<dd>two<dt>b<dd>three</dl>c"),
            "a\n    one\n    two\nb\n    three\nc\n");
}

TEST(TextOfHtmlTest, QuotesHaveTheirSigns) {
  EXPECT_EQ(TextOf("a<blockquote>b<p>c</p><blockquote>d</blockquote></blockquote>e"),
            "a\n\n> b\n>\n> c\n>\n> > d\n\ne\n");
  EXPECT_EQ(TextOf("<blockquote>one two three four five six seven</blockquote>", 20),
            "> one two three four\n> five six seven\n");
  EXPECT_EQ(TextOf("he said <q>yes</q>"), "he said \"yes\"\n");
}

TEST(TextOfHtmlTest, PreformattedTextStaysAsItIs) {
  EXPECT_EQ(TextOf("a<pre>\n  x   y\n\n\tz and much more text than fits in one line</pre>b", 20),
            "a\n\n  x   y\n\n\tz and much more text than fits in one line\n\nb\n");
  EXPECT_EQ(TextOf("<div style='white-space: pre-wrap'>a  b\nc</div>d  e"), "a  b\nc\nd e\n");
  EXPECT_EQ(TextOf("a<xmp><b>x</xmp>b"), "a\n<b>x\nb\n");
}

TEST(TextOfHtmlTest, LinksKeepTheirAddresses) {
  EXPECT_EQ(TextOf("see <a href='https://a.example/x?a=1&amp;b=2'>this</a>, please", 80),
            "see this <https://a.example/x?a=1&b=2>, please\n");
  EXPECT_EQ(TextOf("<a href='https://a.example/'>a.example</a> <a href='mailto:a@b'>a@b</a>"),
            "a.example a@b\n");
  EXPECT_EQ(TextOf("<a href='#top'>up</a> <a name=x>here</a> <a href=javascript:x()>run</a>"),
            "up here run\n");
  EXPECT_EQ(TextOf("<a href=http://x></a><a href=http://y> </a>none"), "none\n");
  EXPECT_EQ(TextOf("<a href=http://x>one<a href=http://y>two</a>"),
            "one <http://x>two <http://y>\n");
  EXPECT_EQ(TextOf("<a href=http://x>open"), "open <http://x>\n");
}

TEST(TextOfHtmlTest, ImagesAreWhatStandsForThem) {
  EXPECT_EQ(TextOf("a <img src=x alt='the  Logo'> b <img src=y> c <img alt=''>"),
            "a [the Logo] b c\n");
  EXPECT_EQ(TextOf("<a href=http://x><img src=y></a>"), "<http://x>\n");
  EXPECT_EQ(TextOf("<a href=http://x><img alt=go></a>"), "[go] <http://x>\n");
}

TEST(TextOfHtmlTest, FormsShowWhatTheyHold) {
  EXPECT_EQ(TextOf("<input value=Go type=submit> <input type=hidden value=no>"
                   "<textarea>a &amp; b</textarea><select><option>x<option>y</select>"),
            "[Go] a & b x y\n");
}

TEST(TextOfHtmlTest, TablesOfShortCellsAreAligned) {
  EXPECT_EQ(TextOf("before<table><tr><th>Name<th>Count<tr><td>Apple<td>3<tr><td>漢<td>12</table>"
                   "after"),
            "before\n\nName   Count\nApple  3\n漢     12\n\nafter\n");
  EXPECT_EQ(TextOf("<table><tr><td>a<td></td><td>b<tr><td>c<td></td><td>d"
                   "<tr><td></td><td></td><td>e</table>"),
            "a  b\nc  d\n   e\n");
}

TEST(TextOfHtmlTest, RowsThatCannotBeAlignedAreJoined) {
  EXPECT_EQ(TextOf("<table><tr><td>Home</td><td>News</td></tr></table>"), "Home | News\n");
  EXPECT_EQ(TextOf("<table><tr><td colspan=2>a<td>b<tr><td>c<td>d<td>e</table>"),
            "a | b\nc | d | e\n");
  EXPECT_EQ(TextOf("<table><tr><td>key<td>a text that is longer than any line of the table"
                   "<tr><td>b<td>c</table>"),
            "key | a text that is longer than any\nline of the table\nb | c\n");
}

TEST(TextOfHtmlTest, TablesForLayoutAreTheirCellsInTurn) {
  EXPECT_EQ(TextOf("<table><tr><td><p>one</p><p>two</p></td><td>three</td></tr></table>"),
            "one\n\ntwo\nthree\n");
  EXPECT_EQ(TextOf("<table><tr><td><table><tr><td>a<td>b<tr><td>c<td>d</table></td></tr>"
                   "<tr><td>foot</td></tr></table>"),
            "a  b\nc  d\nfoot\n");
  EXPECT_EQ(TextOf("<table><tr><td>a text as long as most of the line is</td>"
                   "<td>and one that is no shorter than that one</td></table>"),
            "a text as long as most of the line is\nand one that is no shorter than that one\n");
}

TEST(TextOfHtmlTest, TablesMayBeDamaged) {
  EXPECT_EQ(TextOf("<td>a</td><tr>b</tr>c"), "a\nb\nc\n");
  EXPECT_EQ(TextOf("<table>x<tr>y<td>z"), "x\ny\nz\n");
  EXPECT_EQ(TextOf("<table><tbody><td>a</td></tbody><tfoot><td>b</table></table></td>c"),
            "a\nb\nc\n");
  EXPECT_EQ(TextOf("<blockquote><table><tr><td>a</blockquote>b</table>c"), "> a\n> b\n> c\n");
}

TEST(TextOfHtmlTest, ScriptsStylesAndTitlesAreNoText) {
  EXPECT_EQ(TextOf("<html><head><title>T</title><style>p{}</style></head><body>x"
                   "<script>if (a<b) {}</script>y<!-- z --></body></html>"),
            "xy\n");
}

TEST(TextOfHtmlTest, HiddenTextIsLeftOut) {
  EXPECT_EQ(TextOf("<div style='display : none'>no<div>no</div>no</div>yes"), "yes\n");
  EXPECT_EQ(TextOf("<span style='font-size:0px'>no</span><p hidden>no<p>yes"), "yes\n");
  EXPECT_EQ(TextOf("<div style='visibility:hidden !important'>no</div>yes"), "yes\n");
  EXPECT_EQ(TextOf("<div style='max-height:0;overflow:hidden'>no</div>yes"), "yes\n");
  EXPECT_EQ(TextOf("<div style='font-size:0;opacity:0'>no</div>yes"), "yes\n");
  EXPECT_EQ(TextOf("<table><tr style=display:none><td>no<tr><td>yes</table>"), "yes\n");
  EXPECT_EQ(TextOf("<ul><li style=display:none>no<b>no</b><li>yes</ul>"), "* yes\n");
}

TEST(TextOfHtmlTest, PiecesOfTextWithoutSizeAreHidden) {
  for (const std::string name : {"span", "font", "p", "b", "i", "u", "a"}) {
    EXPECT_EQ(TextOf("<" + name + " style='font-size:0.0pt'>no</" + name + ">yes"), "yes\n")
        << name;
  }
  EXPECT_EQ(TextOf("<div style='color:transparent;font-size:0'>no</div>yes"), "yes\n");
  EXPECT_EQ(TextOf("<div style='height:0;overflow:hidden;'>no</div>yes"), "yes\n");
  EXPECT_EQ(TextOf("<div style='max-height:0;opacity:0'>no</div>yes"), "yes\n");
}

TEST(TextOfHtmlTest, OnePropertyAloneHidesNothing) {
  for (const std::string style :
       {"max-height:0", "height:0", "opacity:0", "overflow:hidden", "color:transparent",
        "displays:none", "display", "display:", ";;", "font-size:05px", "font-size:x"}) {
    EXPECT_EQ(TextOf("<div style='" + style + "'>yes</div>"), "yes\n") << style;
  }
  EXPECT_EQ(TextOf("<p>a</p><p style='margin-top:0'>b</p>"), "a\n\nb\n");
  EXPECT_EQ(TextOf("<p class=x>a</p><p style='margin:0 0 1em'>b</p>"), "a\n\nb\n");
  EXPECT_EQ(TextOf("<p style='margin:0'>a</p><p style='margin:0in 0in 8.0pt'>b</p>"), "a\n\nb\n");
}

TEST(TextOfHtmlTest, WhatOnlyLooksHiddenIsShown) {
  EXPECT_EQ(TextOf("<div style='font-size:0'><span style='font-size:13px'>yes</span></div>"),
            "yes\n");
  EXPECT_EQ(TextOf("<span style='font-size:0.8em;display:block'>yes</span>"), "yes\n");
  EXPECT_EQ(TextOf("<p style='display:none;display:block'>yes</p>"), "yes\n");
  EXPECT_EQ(TextOf("<div><span style=display:none>no</div>yes"), "yes\n");
  EXPECT_EQ(TextOf("<table><tr><td><span style=display:none>no</td><td>yes</table>"), "yes\n");
  EXPECT_EQ(TextOf("<br style=display:none>yes"), "yes\n");
}

TEST(TextOfHtmlTest, WhatIsHiddenMayHoldWhatIsSeen) {
  EXPECT_EQ(
      TextOf("<p style='font-size:0'>no<span style='font-size:14px'>y<b>e</b>s</span>no</p>!"),
      "yes\n!\n");
  EXPECT_EQ(TextOf("<p style='font-size:0'><font size=2>yes</font>no"), "yes\n");
  EXPECT_EQ(
      TextOf("<div style='visibility:hidden'>no<p style='visibility:visible'>yes</p>no"
             "<i style='visibility:visible'>yes<s style='visibility:hidden'>no</s></i></div>!"),
      "yes\n\nyes\n!\n");
  EXPECT_EQ(TextOf("<p style='font-size:0'><span style='font-size:1.2em'>no</span></p>!"), "!\n");
  EXPECT_EQ(TextOf("<div style='display:none'><p style='visibility:visible;font-size:9px'>no</p>"
                   "</div>!"),
            "!\n");
  EXPECT_EQ(TextOf("<div style='visibility:hidden'><i style='visibility:visible'>a<b>b</div>c"),
            "ab\nc\n");
  EXPECT_EQ(TextOf("<table><tr><td><b style='visibility:hidden'><i style='visibility:visible'>a"
                   "</td><td>b</table>"),
            "a | b\n");
  std::string deep;
  for (int i = 0; i < 50000; ++i) {
    deep += "<b style='visibility:hidden'><b style='visibility:visible'>";
  }
  EXPECT_EQ(TextOf(deep + "x"), "x\n");
}

TEST(TextOfHtmlTest, ReferencesAreCharacters) {
  EXPECT_EQ(TextOf("&lt;b&gt; &amp;amp; &eacute;&eacute &euro; &#8364;&#x20AC;&#128; &hellip;"),
            "<b> &amp; éé € €€€ …\n");
  EXPECT_EQ(TextOf("&unknown; &euro & &; &#; &#x; &#0; &#xD800; &#99999999; R&D &notit;"),
            "&unknown; &euro & &; &#; &#x; � � � R&D\n¬it;\n");
}

TEST(TextOfHtmlTest, TakesTheCharsetOfTheBody) {
  EXPECT_EQ(TextOfHtml({"<p>gr\xFC\xDF", "iso-8859-1"}, 40), "grüß\n");
  EXPECT_EQ(TextOfHtml({"<meta charset=windows-1251>\xCF", ""}, 40), "П\n");
}

TEST(TextOfHtmlTest, TheDepthOfNestingDoesNotMatter) {
  constexpr size_t kMany = 20000;
  for (const char* const tag :
       {"<div>", "<blockquote>", "<ul><li>", "<table><tr><td>", "<a href=x>", "<pre>", "<q>",
        "<span style=display:none>", "<dd>", "</div>"}) {
    const std::string text = TextOf(Repeated(tag, kMany) + "end");
    EXPECT_LT(text.size(), 4 * kMany) << tag;
  }
  EXPECT_EQ(TextOf(Repeated("<div>", kMany) + Repeated("<li>", kMany) + "x"), "* x\n");
  EXPECT_EQ(TextOf(Repeated("<div>", kMany) + Repeated("</p>", kMany) + "x"), "x\n");
}

TEST(TextOfHtmlTest, DeepTablesAreText) {
  EXPECT_EQ(
      TextOf(Repeated("<table><tr><td>", 50) + "x" + Repeated("</td></tr></table>", 50) + "y"),
      "x\ny\n");
}

TEST(TextOfHtmlTest, PrefixesLeaveRoomForText) {
  const std::string text = TextOf(Repeated("<blockquote>", 30) + "word and word and word", 40);
  EXPECT_EQ(text, Repeated("> ", 20) + "word and word\n" + Repeated("> ", 20) + "and word\n");
}

TEST(BestTextTest, PrefersTextThenHtmlThenRtf) {
  Bodies bodies;
  EXPECT_EQ(BestText(bodies, 80), "");
  bodies.rtf = "{\\rtf1 rtf}";
  EXPECT_EQ(BestText(bodies, 80), "rtf\n");
  bodies.html = HtmlBody{"<p>html", ""};
  EXPECT_EQ(BestText(bodies, 80), "html\n");
  bodies.text = " \n";
  EXPECT_EQ(BestText(bodies, 80), "html\n");
  bodies.text = "text";
  EXPECT_EQ(BestText(bodies, 80), "text");
}

}  // namespace
}  // namespace tarn::archive

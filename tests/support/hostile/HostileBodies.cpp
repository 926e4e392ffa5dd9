// Mails with bodies, HTML and text, of many elements, levels, signs and lines.
#include "support/hostile/HostileShapes.h"
#include "support/hostile/HostileText.h"

namespace tarn::test {
namespace {

std::string Mail(std::string_view type, std::string_view body) {
  return "From: Ann <ann@example.com>\r\nTo: Bob <bob@example.com>\r\nSubject: Shape\r\n"
         "Date: Wed, 1 May 2024 12:34:56 +0200\r\nMIME-Version: 1.0\r\nContent-Type: " +
         std::string(type) + "\r\n\r\n" + std::string(body) + "\r\n";
}

std::string Html(std::string_view body) { return Mail("text/html; charset=utf-8", body); }

std::string Text(std::string_view body) { return Mail("text/plain; charset=utf-8", body); }

std::string NestedElements(size_t count) { return Html(Times(count, "<div>a")); }

std::string NestedTables(size_t count) { return Html(Times(count, "<table><tr><td>a")); }

std::string NestedLists(size_t count) { return Html(Times(count, "<ul><li>a")); }

std::string NestedQuotes(size_t count) { return Html(Times(count, "<blockquote>a")); }

std::string Paragraphs(size_t count) { return Html(Times(count, "<p>Text</p>\r\n")); }

std::string TableRows(size_t count) {
  return Html("<table>" + Times(count, "<tr><td>a<td>b") + "</table>");
}

std::string TableCells(size_t count) {
  return Html("<table><tr>" + Times(count, "<td>a") + "</table>");
}

// Formats that end in another order than they began.
std::string CrossedFormats(size_t count) { return Html(Times(count, "<b><i><u>a</b></i>")); }

std::string OpenFormats(size_t count) { return Html(Times(count, "<p><b><font color=red>a")); }

std::string EndTags(size_t count) { return Html(Times(count, "</p></b></div>")); }

std::string OpenTags(size_t count) { return Html(Times(count, "<a ")); }

std::string AngleBrackets(size_t count) { return Html(Times(count, "<")); }

std::string OpenComments(size_t count) { return Html(Times(count, "<!--")); }

std::string Conditions(size_t count) { return Html(Times(count, "<![if x]>a<![endif]>")); }

std::string Entities(size_t count) { return Html(Times(count, "&amp;&#x41;&lt")); }

std::string Ampersands(size_t count) { return Html(Times(count, "&")); }

std::string Attributes(size_t count) {
  return Html("<p" + Each(count, [](const std::string& n) { return " a" + n + "=b"; }) +
              ">Text</p>");
}

std::string SameAttributes(size_t count) {
  return Html(Times(count, "<p style=\"color:red\" class=a title=b>a</p>"));
}

std::string LongStyle(size_t count) {
  return Html("<p style=\"" + Times(count, "color:red;") + "\">Text</p>");
}

std::string StyleRules(size_t count) {
  return Html("<style>" +
              Each(count, [](const std::string& n) { return ".c" + n + "{color:red}\r\n"; }) +
              "</style><p class=c1>Text</p>");
}

std::string StyleRulesAndElements(size_t count) {
  return Html(
      "<style>" + Each(count, [](const std::string& n) { return ".c" + n + " p{color:red}"; }) +
      "</style>" + Each(count, [](const std::string& n) { return "<p class=c" + n + ">a</p>"; }));
}

std::string NestedStyles(size_t count) {
  return Html("<style>" + Times(count, "@media all{") + "</style><p>Text</p>");
}

std::string StyleComments(size_t count) {
  return Html("<style>" + Times(count, "/*") + "</style><p>Text</p>");
}

std::string Metas(size_t count) {
  return Html("<html><head>" + Times(count, "<meta charset=utf-8>") + "</head><body>a</body>");
}

std::string BodyTags(size_t count) { return Html(Times(count, "<body><html><head>")); }

std::string DataImages(size_t count) {
  return Html(Times(count, "<img src=\"data:image/png;base64,iVBORw0KGgo=\">"));
}

std::string OutwardImages(size_t count) {
  return Html(Times(count, "<img src=\"http://example.com/a.png\" alt=\"picture\">"));
}

std::string Links(size_t count) { return Html(Times(count, "<a href=\"http://a.b/c\">d</a> ")); }

std::string NonBreakingText(size_t count) { return Html(Times(count, "x")); }

std::string Addresses(size_t count) { return Text(Times(count, "http://example.com/a ann@b.c\n")); }

std::string RunTogetherAddresses(size_t count) { return Text(Times(count, "http://a.b/c@d.")); }

std::string QuoteSigns(size_t count) {
  return Mail("text/plain; format=flowed; charset=utf-8", Times(count, ">"));
}

std::string FlowedLines(size_t count) {
  return Mail("text/plain; format=flowed; charset=utf-8", Times(count, "> a \r\n"));
}

std::string EmptyLines(size_t count) { return Text(Times(count, "\r\n")); }

std::string Blanks(size_t count) { return Text(Times(count, " ")); }

std::string Escapes(size_t count) {
  return Mail("text/plain; charset=iso-2022-jp", Times(count, "\x1B$B$\"\x1B(B"));
}

std::string QuotedPrintable(size_t count) {
  return Mail("text/html\r\nContent-Transfer-Encoding: quoted-printable", Times(count, "=\r\n=41"));
}

std::string Base64Lines(size_t count) {
  return Mail("text/html\r\nContent-Transfer-Encoding: base64", Times(count, "Q\r\n"));
}

std::string FromLines(size_t count) { return Text(Times(count, ">>From me\n")); }

std::string CombiningMarks(size_t count) { return Text(Times(count, "\xCC\x88")); }

std::string Ideographs(size_t count) { return Text(Times(count, "\xE4\xBC\x9A")); }

std::string DifferentWords(size_t count) {
  return Text(Each(count, [](const std::string& n) { return "w" + n + " "; }));
}

constexpr HostileShape kShapes[] = {
    {"NestedElements", HostileFormat::Mail, NestedElements, 20000},
    {"NestedTables", HostileFormat::Mail, NestedTables, 10000},
    {"NestedLists", HostileFormat::Mail, NestedLists, 20000},
    {"NestedQuotes", HostileFormat::Mail, NestedQuotes, 20000},
    {"Paragraphs", HostileFormat::Mail, Paragraphs, 40000},
    {"TableRows", HostileFormat::Mail, TableRows, 40000},
    {"TableCells", HostileFormat::Mail, TableCells, 40000},
    {"CrossedFormats", HostileFormat::Mail, CrossedFormats, 20000},
    {"OpenFormats", HostileFormat::Mail, OpenFormats, 20000},
    {"EndTags", HostileFormat::Mail, EndTags, 40000},
    {"OpenTags", HostileFormat::Mail, OpenTags, 200000},
    {"AngleBrackets", HostileFormat::Mail, AngleBrackets, 400000},
    {"OpenComments", HostileFormat::Mail, OpenComments, 200000},
    {"Conditions", HostileFormat::Mail, Conditions, 40000},
    {"Entities", HostileFormat::Mail, Entities, 60000},
    {"Ampersands", HostileFormat::Mail, Ampersands, 400000},
    {"Attributes", HostileFormat::Mail, Attributes, 60000},
    {"SameAttributes", HostileFormat::Mail, SameAttributes, 20000},
    {"LongStyle", HostileFormat::Mail, LongStyle, 60000},
    {"StyleRules", HostileFormat::Mail, StyleRules, 40000},
    {"StyleRulesAndElements", HostileFormat::Mail, StyleRulesAndElements, 4000},
    {"NestedStyles", HostileFormat::Mail, NestedStyles, 60000},
    {"StyleComments", HostileFormat::Mail, StyleComments, 400000},
    {"Metas", HostileFormat::Mail, Metas, 40000},
    {"BodyTags", HostileFormat::Mail, BodyTags, 40000},
    {"DataImages", HostileFormat::Mail, DataImages, 20000},
    {"OutwardImages", HostileFormat::Mail, OutwardImages, 20000},
    {"Links", HostileFormat::Mail, Links, 30000},
    {"NonBreakingText", HostileFormat::Mail, NonBreakingText, 1000000},
    {"Addresses", HostileFormat::Mail, Addresses, 30000},
    {"RunTogetherAddresses", HostileFormat::Mail, RunTogetherAddresses, 60000},
    {"QuoteSigns", HostileFormat::Mail, QuoteSigns, 1000000},
    {"FlowedLines", HostileFormat::Mail, FlowedLines, 100000},
    {"EmptyLines", HostileFormat::Mail, EmptyLines, 400000},
    {"Blanks", HostileFormat::Mail, Blanks, 1000000},
    {"Escapes", HostileFormat::Mail, Escapes, 100000},
    {"QuotedPrintable", HostileFormat::Mail, QuotedPrintable, 100000},
    {"Base64Lines", HostileFormat::Mail, Base64Lines, 200000},
    {"FromLines", HostileFormat::Mail, FromLines, 100000},
    {"CombiningMarks", HostileFormat::Mail, CombiningMarks, 400000},
    {"Ideographs", HostileFormat::Mail, Ideographs, 300000},
    {"DifferentWords", HostileFormat::Mail, DifferentWords, 100000},
};

}  // namespace

std::span<const HostileShape> HostileBodies() { return kShapes; }

}  // namespace tarn::test

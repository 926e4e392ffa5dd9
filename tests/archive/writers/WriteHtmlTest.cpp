#include <gtest/gtest.h>

#include "archive/writers/FakeItem.h"
#include "archive/writers/TextLinks.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

std::string HtmlOf(const FakeContent& content, const AttachmentPaths& paths = {}) {
  FakeItem item(content);
  TextSink sink;
  EXPECT_FALSE(WriteHtml(item, paths, sink).full.has_value());
  return sink.text;
}

// What is between two texts.
std::string Between(const std::string& text, const std::string& start, const std::string& end) {
  const size_t at = text.find(start);
  if (at == text.npos) return "no " + start;
  return text.substr(at + start.size(), text.find(end, at) - at - start.size());
}

std::string BodyOf(const FakeContent& content) {
  return Between(HtmlOf(content), "<main class=\"tarn-mail\">\n", "\n</main>\n</body>\n</html>\n");
}

TEST(WriteHtmlTest, HasThePolicyFirst) {
  EXPECT_TRUE(HtmlOf(FakeContent())
                  .starts_with("<!DOCTYPE html>\n<html>\n<head>\n"
                               "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src "
                               "'none'; img-src data:; "
                               "style-src 'unsafe-inline'\">\n"
                               "<meta charset=\"utf-8\">\n"));
}

TEST(WriteHtmlTest, HasATableOfTheFields) {
  FakeContent item;
  item.fields.subject = "A <b>\n";
  item.fields.from = {"Ann", "ann@example.com"};
  item.fields.sender = Address{"", "s@example.com"};
  item.fields.to = {{"Bob", "bob@example.com"}, {"", "c@example.com"}};
  item.fields.cc = {{"Dan", ""}};
  item.fields.bcc = {{"Eve", ""}};
  item.fields.sent = Moment{1714559696, 120};
  const std::string html = HtmlOf(item);
  EXPECT_EQ(Between(html, "<title>", "</title>"), "A &lt;b&gt; ");
  EXPECT_EQ(Between(html, "<header class=\"tarn-head\">\n", "</header>"),
            "<h1>A &lt;b&gt; </h1>\n<table>\n"
            "<tr><th>From</th><td>Ann &lt;ann@example.com&gt;</td></tr>\n"
            "<tr><th>Sender</th><td>s@example.com</td></tr>\n"
            "<tr><th>To</th><td>Bob &lt;bob@example.com&gt;, c@example.com</td></tr>\n"
            "<tr><th>Cc</th><td>Dan</td></tr>\n"
            "<tr><th>Bcc</th><td>Eve</td></tr>\n"
            "<tr><th>Date</th><td>Wed, 1 May 2024 12:34:56 +0200</td></tr>\n"
            "<tr><th>Subject</th><td>A &lt;b&gt; </td></tr>\n"
            "</table>\n");
}

TEST(WriteHtmlTest, LinksToTheAttachments) {
  FakeContent item;
  item.fields.received = Moment{1714559696, {}};
  item.attach("a b.pdf", "application/pdf", "12");
  item.attach("<c>", "", "");
  item.list.emplace_back();
  EXPECT_EQ(
      Between(HtmlOf(item, {"attachments/a b.pdf", "attachments/c"}), "<table>\n", "</table>"),
      "<tr><th>Date</th><td>Wed, 1 May 2024 10:34:56 UTC</td></tr>\n"
      "<tr><th>Attachments</th><td>"
      "<a href=\"attachments/a%20b.pdf\" rel=\"noopener noreferrer\">a b.pdf</a>"
      "<span class=\"tarn-size\">2 bytes</span><br>\n"
      "<a href=\"attachments/c\" rel=\"noopener noreferrer\">&lt;c&gt;</a>"
      "<span class=\"tarn-size\">0 bytes</span><br>\n"
      "attachment 3</td></tr>\n");
}

TEST(WriteHtmlTest, ShowsHtmlInUtf8) {
  FakeContent item;
  item.bodies.text = "not this";
  item.bodies.html = HtmlBody{"<meta charset=windows-1252><p>\xE4</p>", "windows-1252"};
  EXPECT_EQ(BodyOf(item), "<tarn-body><p>ä</p></tarn-body>");
  item.bodies.html = HtmlBody{"\xEF\xBB\xBF<p>ä</p>", ""};
  EXPECT_EQ(BodyOf(item), "<tarn-body><p>ä</p></tarn-body>");
}

TEST(WriteHtmlTest, ShowsTextInParagraphs) {
  FakeContent item;
  item.bodies.text = "\nDear <you>,\r\n\r\n\r\nsee (https://example.com/a?b&c).\r\nBye\r\n";
  EXPECT_EQ(BodyOf(item),
            "<div class=\"tarn-text\">\n<p>Dear &lt;you&gt;,</p>\n"
            "<p>see (<a href=\"https://example.com/a?b&amp;c\" rel=\"noopener noreferrer\" "
            "target=\"_blank\">https://example.com/a?b&amp;c</a>).\nBye</p>\n</div>");
}

TEST(WriteHtmlTest, ShowsTheTextOfRtf) {
  FakeContent item;
  item.bodies.text = "";
  item.bodies.rtf = "{\\rtf1\\ansi Hello {\\b you}}";
  EXPECT_EQ(BodyOf(item), "<div class=\"tarn-text\">\n<p>Hello you</p>\n</div>");
}

TEST(WriteHtmlTest, IsWholeWithoutABody) {
  FakeContent content;
  content.bodies.troubles = {{TroubleKind::Damaged, "no text"}};
  content.troubles = {{TroubleKind::Damaged, "no recipients"}};
  FakeItem item(content);
  TextSink sink;
  const Written written = WriteHtml(item, {}, sink);
  ASSERT_EQ(written.lost.size(), 2u);
  EXPECT_EQ(written.lost[0].reason, "no text");
  EXPECT_EQ(written.lost[1].reason, "no recipients");
  EXPECT_EQ(BodyOf(content), "<div class=\"tarn-text\">\n</div>");
}

TEST(WriteHtmlTest, EndsWhereTheSinkIsFull) {
  FakeContent content;
  content.bodies.text = std::string(300000, 'x');
  FakeItem item(content);
  SmallSink sink(10);
  EXPECT_EQ(WriteHtml(item, {}, sink).full->reason, "the disk is full");
  EXPECT_EQ(sink.writesAfterFull, 0u);
}

TEST(TextLinksTest, FindsAddresses) {
  EXPECT_EQ(AddressAt("HTTPS://x.com/a_(b), and"), "HTTPS://x.com/a_(b)");
  EXPECT_EQ(AddressAt("http://x]."), "http://x");
  EXPECT_EQ(AddressAt("mailto:a@b>"), "mailto:a@b");
  EXPECT_EQ(AddressAt("http://..."), "");
  EXPECT_EQ(AddressAt("http:/x"), "");
}

TEST(TextLinksTest, LinksEachAddress) {
  TextSink sink;
  SinkBuffer out(sink);
  PutParagraphs("a:http://b:8/ : mailto:c https://\n", out);
  out.finish();
  const std::string rest = "\" rel=\"noopener noreferrer\" target=\"_blank\">";
  EXPECT_EQ(sink.text, "<p>a:<a href=\"http://b:8/" + rest +
                           "http://b:8/</a> : <a href=\"mailto:c" + rest +
                           "mailto:c</a> https://</p>\n");
}

}  // namespace
}  // namespace tarn::archive

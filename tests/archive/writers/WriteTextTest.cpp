#include <gtest/gtest.h>

#include "archive/writers/FakeItem.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

std::string TextOf(const FakeContent& content) {
  FakeItem item(content);
  TextSink sink;
  EXPECT_FALSE(WriteText(item, sink).full.has_value());
  return sink.text;
}

TEST(WriteTextTest, WritesFieldsTextAndAttachments) {
  FakeContent content;
  content.fields.subject = "Hello\nyou";
  content.fields.from = {"Ann", "ann@example.com"};
  content.fields.sender = Address{"", "s@example.com"};
  content.fields.to = {{"Bob", "bob@example.com"}, {"", "c@example.com"}};
  content.fields.cc = {{"Dan", ""}};
  content.fields.bcc = {{"Eve", ""}};
  content.fields.sent = Moment{1714559696, 120};
  using namespace std::string_view_literals;
  content.bodies.text = "\xEF\xBB\xBF\x44\x65\x61r\0 Bob,\r\nGr\xC3\xBC\xC3\x9F\x65"sv;
  content.attach("a.pdf", "application/pdf", "12");
  content.list.emplace_back().mediaType = "text/plain";
  content.list.emplace_back();
  EXPECT_EQ(TextOf(content),
            "From: Ann <ann@example.com>\nSender: s@example.com\n"
            "To: Bob <bob@example.com>, c@example.com\nCc: Dan\nBcc: Eve\n"
            "Date: Wed, 1 May 2024 12:34:56 +0200\nSubject: Hello you\n\n"
            "Dear Bob,\nGr\xC3\xBC\xC3\x9F"
            "e\n\nAttachments:\n"
            "  a.pdf (application/pdf, 2 bytes)\n  attachment 2 (text/plain)\n  attachment 3\n");
}

TEST(WriteTextTest, TellsWhenItCameWhereNothingTellsWhenItWasSent) {
  FakeContent content;
  content.fields.received = Moment{1714559696, {}};
  EXPECT_EQ(TextOf(content), "Date: Wed, 1 May 2024 10:34:56 UTC\n\n");
}

TEST(WriteTextTest, WritesTheTextOfRtf) {
  FakeContent content;
  content.bodies.rtf = "{\\rtf1 a\\par b}";
  EXPECT_EQ(TextOf(content), "\na\nb\n");
}

TEST(WriteTextTest, WritesTheTextOfHtml) {
  FakeContent content;
  content.bodies.html = HtmlBody{"<p>a</p><p>b</p>", "utf-8"};
  const std::string text = TextOf(content);
  EXPECT_NE(text.find("a\n"), text.npos);
  EXPECT_EQ(text.find('<'), text.npos);
}

TEST(WriteTextTest, TellsWhatIsLost) {
  FakeContent content;
  content.bodies.troubles = {{TroubleKind::Damaged, "no text"}};
  content.troubles = {{TroubleKind::Damaged, "no recipients"}};
  FakeItem item(content);
  TextSink sink;
  const Written written = WriteText(item, sink);
  ASSERT_EQ(written.lost.size(), 2u);
  EXPECT_EQ(written.lost[0].reason, "no text");
  EXPECT_EQ(written.lost[1].reason, "no recipients");
}

TEST(WriteTextTest, EndsWhereTheSinkIsFull) {
  FakeContent content;
  content.bodies.text = std::string(200000, 'x');
  FakeItem item(content);
  SmallSink sink(10);
  EXPECT_EQ(WriteText(item, sink).full->reason, "the disk is full");
  EXPECT_EQ(sink.writesAfterFull, 0u);
}

}  // namespace
}  // namespace tarn::archive

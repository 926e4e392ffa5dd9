#include "archive/writers/MboxSink.h"

#include <gtest/gtest.h>

#include "archive/writers/FakeItem.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

// In pieces of a size: the result is the same for all.
std::string MboxOf(std::string_view mail, size_t piece) {
  TextSink sink;
  SinkBuffer out(sink);
  MboxSink mbox(out);
  for (size_t at = 0; at < mail.size(); at += piece) mbox.write(mail.substr(at, piece));
  mbox.finish();
  out.finish();
  return sink.text;
}

void ExpectMbox(std::string_view mail, std::string_view expected) {
  for (size_t piece = 1; piece <= mail.size() + 1; ++piece) {
    EXPECT_EQ(MboxOf(mail, piece), expected) << mail << " in pieces of " << piece;
  }
}

TEST(MboxSinkTest, EndsLinesWithLf) {
  ExpectMbox("A: b\r\n\r\nc\r\r\nd\re\n", "A: b\n\nc\r\nd\re\n\n");
}

TEST(MboxSinkTest, EndsTheLastLine) {
  ExpectMbox("a\n\nb", "a\n\nb\n\n");
  ExpectMbox("a\n\nFro", "a\n\nFro\n\n");
  ExpectMbox("", "\n");
}

TEST(MboxSinkTest, EndsALastLineOfQuotes) {
  ExpectMbox("a\n\n>", "a\n\n>\n\n");
  ExpectMbox("a\n\n>>\r", "a\n\n>>\n\n");
  ExpectMbox("a\n\n>\n", "a\n\n>\n\n");
  ExpectMbox("a\n\n>From", "a\n\n>From\n\n");
  ExpectMbox("a\n\n>\n\r", "a\n\n>\n\n");
  ExpectMbox(">", ">\n\n");
}

TEST(MboxSinkTest, QuotesLinesThatBeginMails) {
  ExpectMbox("a\nFrom b\n>From c\n>>From d\nFrom\n From e\n>>Fro\n> From\nfrom x\n",
             "a\n>From b\n>>From c\n>>>From d\nFrom\n From e\n>>Fro\n> From\nfrom x\n\n");
}

TEST(MboxSinkTest, DropsWhatIsBeforeTheHeaders) {
  ExpectMbox("\xEF\xBB\xBF\r\n\nFrom a b\r\nA: b\n\nc\n", "A: b\n\nc\n\n");
}

TEST(MboxSinkTest, KeepsFieldsWithBlanksBeforeTheirColon) {
  ExpectMbox("From : a@b\nFrom \t: c\n\nFrom : d\n", "From: a@b\nFrom: c\n\n>From : d\n\n");
  ExpectMbox("\nFrom x\nFrom : a@b", "From: a@b\n\n");
  ExpectMbox("A: b\n>From : c\nFrom  \n>\nFrom :", "A: b\n>>From : c\n>From  \n>\nFrom:\n\n");
  ExpectMbox("A: b\nFrom ", "A: b\n>From \n\n");
}

TEST(MboxSinkTest, DropsNoEndlessLine) {
  const std::string line = "From " + std::string(5000, 'x') + "\n";
  EXPECT_EQ(MboxOf(line, 2000), ">" + line + "\n");
}

TEST(WriteMboxTest, BeginsWithTheSenderAndTheDate) {
  FakeContent content;
  content.mail = "Subject: x\r\n\r\nFrom y\r\n";
  content.fields.from = {"Ann", "ann@example.com"};
  content.fields.sent = Moment{1714559696, 120};
  const auto write = [&] {
    FakeItem item(content);
    TextSink sink;
    EXPECT_TRUE(WriteMbox(item, sink).lost.empty());
    return sink.text;
  };
  EXPECT_EQ(write(), "From ann@example.com Wed May  1 10:34:56 2024\nSubject: x\n\n>From y\n\n");
  content.fields.received = Moment{1714559697, {}};
  content.fields.sender = Address{"", "bob@example.com"};
  EXPECT_TRUE(write().starts_with("From bob@example.com Wed May  1 10:34:57 2024\n"));
  content.fields.sender = Address{"", "Bob Smith"};
  EXPECT_TRUE(write().starts_with("From MAILER-DAEMON Wed May"));
  content.fields = {};
  EXPECT_TRUE(write().starts_with("From MAILER-DAEMON Thu Jan  1 00:00:00 1970\nSubject: x\n"));
  content.mail = "";
  EXPECT_EQ(write(), "From MAILER-DAEMON Thu Jan  1 00:00:00 1970\n\n");
}

}  // namespace
}  // namespace tarn::archive

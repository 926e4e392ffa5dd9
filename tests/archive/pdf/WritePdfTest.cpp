#include "archive/pdf/WritePdf.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ReadMailPdf.h"
#include "SmallPdf.h"
#include "archive/pdf/MailMetadata.h"
#include "archive/writers/FakeItem.h"

using namespace tarn::archive;
using namespace tarn::test;

namespace {

// Gives one page, and keeps what it was asked for.
class FakeLayout final : public PageLayout {
 public:
  Outcome<std::string> pdf(std::string_view html,
                           const tarn::pages::PdfProperties& properties) override {
    lastHtml = html;
    lastProperties = properties;
    if (trouble) return *trouble;
    return pages;
  }

  std::string pages = SmallPdf({"page"});
  std::optional<Trouble> trouble;
  std::string lastHtml;
  tarn::pages::PdfProperties lastProperties;
};

FakeContent Letter() {
  FakeContent content;
  content.fields.subject = "Plans\nfor May";
  content.fields.from = {"Ann", "ann@example.com"};
  content.fields.to = {{"Bob", "bob@example.com"}, {"", "carol@example.com"}};
  content.fields.sent = Moment{1714559696, 120};
  content.fields.received = Moment{1714559700, std::nullopt};
  content.fields.messageId = "1@example.com";
  content.bodies.html = HtmlBody{"<p>Hello <b>Bob</b></p>", "utf-8"};
  return content;
}

class WritePdfTest : public ::testing::Test {
 protected:
  WrittenPdf write(const FakeContent& content, const PdfLimits& limits = {}) {
    FakeItem item(content);
    sink_.text.clear();
    return WritePdf(item, layout_, sink_, limits);
  }

  MailPdfFacts facts(const FakeContent& content, const PdfLimits& limits = {}) {
    const WrittenPdf written = write(content, limits);
    EXPECT_FALSE(written.noPages);
    EXPECT_FALSE(written.full);
    reasons_.clear();
    for (const Trouble& trouble : written.lost) reasons_.push_back(trouble.reason);
    return ReadMailPdf(sink_.text);
  }

  FakeLayout layout_;
  TextSink sink_;
  std::vector<std::string> reasons_;
};

TEST_F(WritePdfTest, LaysOutTheHtmlAndSaysWhatTheMailSays) {
  const MailPdfFacts made = facts(Letter());
  EXPECT_NE(layout_.lastHtml.find("Hello <b>Bob</b>"), std::string::npos);
  EXPECT_EQ(layout_.lastProperties.title, "Plans for May");
  EXPECT_EQ(layout_.lastProperties.author, "Ann <ann@example.com>");
  EXPECT_EQ(layout_.lastProperties.date, "2024-05-01T12:34:56+02:00");
  MailFacts expected;
  expected.subject = "Plans for May";
  expected.from = "Ann <ann@example.com>";
  expected.to = {"Bob <bob@example.com>", "carol@example.com"};
  expected.sent = "2024-05-01T12:34:56+02:00";
  expected.received = "2024-05-01T10:35:00Z";
  expected.messageId = "1@example.com";
  EXPECT_EQ(made.metadata, MailMetadata(expected));
  EXPECT_EQ(made.contents, std::vector<std::string>{"page"});
  EXPECT_TRUE(reasons_.empty());
}

TEST_F(WritePdfTest, WritesOffsetsWestOfGreenwich) {
  FakeContent content = Letter();
  content.fields.sent = Moment{1714559696, -570};
  facts(content);
  EXPECT_EQ(layout_.lastProperties.date, "2024-05-01T01:04:56-09:30");
}

TEST_F(WritePdfTest, HoldsTheMailItsAttachmentsAndEmbeddedItems) {
  FakeContent content = Letter();
  content.attach("../a/b.txt", "text/plain", "one");
  content.attach("", "image/png", "two");
  content.attachItem("Fw: Heating").fields.subject = "Heating";
  content.attachItem("c.eml");
  const MailPdfFacts made = facts(content);
  ASSERT_EQ(made.files.size(), 5U);
  EXPECT_EQ(made.files[0].name, "message.eml");
  EXPECT_EQ(made.files[0].relation, "/Source");
  TextSink eml;
  FakeItem item(content);
  WriteEml(item, eml);
  EXPECT_EQ(made.files[0].bytes, eml.text);
  EXPECT_EQ(made.files[1].name.find_first_of("/\\"), std::string::npos);
  EXPECT_EQ(made.files[1].bytes, "one");
  EXPECT_EQ(made.files[1].mediaType, "text/plain");
  EXPECT_EQ(made.files[2].name, "attachment 2");
  EXPECT_EQ(made.files[2].bytes, "two");
  EXPECT_TRUE(made.files[3].name.ends_with(".eml"));
  EXPECT_EQ(made.files[3].mediaType, "message/rfc822");
  EXPECT_NE(made.files[3].bytes.find("Subject: Heating"), std::string::npos);
  EXPECT_EQ(made.files[4].name, "c.eml");
  EXPECT_TRUE(reasons_.empty());
}

TEST_F(WritePdfTest, GivesEachFileInsideANameOfItsOwn) {
  FakeContent content = Letter();
  content.attach("a.txt", "text/plain", "one");
  content.attach("A.TXT", "text/plain", "two");
  content.attach("message.eml", "text/plain", "three");
  const MailPdfFacts made = facts(content);
  ASSERT_EQ(made.files.size(), 4U);
  EXPECT_EQ(made.files[0].name, "message.eml");
  EXPECT_EQ(made.files[1].name, "a.txt");
  EXPECT_EQ(made.files[2].name, "A (2).TXT");
  EXPECT_EQ(made.files[3].name, "message (2).eml");
}

TEST_F(WritePdfTest, LeavesOutWhatCannotBeReadAndSaysSo) {
  FakeContent content = Letter();
  content.attach("a.txt", "text/plain", "one");
  content.broken.insert(0);
  content.attach("b.txt", "text/plain", "two").trouble =
      Trouble{TroubleKind::Missing, "its table is missing"};
  content.attach("c.txt", "text/plain", "three");
  Attachment& elsewhere = content.attach("d.txt", "", "");
  elsewhere.kind = AttachmentKind::Reference;
  const MailPdfFacts made = facts(content);
  ASSERT_EQ(made.files.size(), 2U);
  EXPECT_EQ(made.files[1].name, "c.txt");
  EXPECT_EQ(reasons_.end()[-2], "a.txt is not in the PDF: a block is missing");
  EXPECT_EQ(reasons_.end()[-1], "b.txt is not in the PDF: its table is missing");
}

TEST_F(WritePdfTest, LeavesOutWhatIsTooLarge) {
  FakeContent content = Letter();
  content.attach("a.bin", "text/plain", std::string(100000, 'x'));
  content.attach("b.bin", "text/plain", "small");
  content.attachItem("large").bodies.text = std::string(100000, 'y');
  PdfLimits limits;
  limits.inside = 50000;
  const MailPdfFacts made = facts(content, limits);
  ASSERT_EQ(made.files.size(), 1U);
  EXPECT_EQ(made.files[0].name, "b.bin");
  ASSERT_EQ(reasons_.size(), 3U);
  EXPECT_TRUE(reasons_[0].starts_with("the mail itself is not in the PDF: it is larger than"));
  EXPECT_TRUE(reasons_[1].starts_with("a.bin is not in the PDF: "));
  EXPECT_TRUE(reasons_[2].starts_with("large is not in the PDF: "));
}

TEST_F(WritePdfTest, WritesNothingWithoutPages) {
  layout_.trouble = Trouble{TroubleKind::TooLarge, "it took longer than 60 s"};
  const WrittenPdf written = write(Letter());
  ASSERT_TRUE(written.noPages);
  EXPECT_EQ(written.noPages->kind, TroubleKind::TooLarge);
  EXPECT_EQ(written.noPages->reason, "it took longer than 60 s");
  EXPECT_EQ(sink_.text, "");
}

TEST_F(WritePdfTest, WritesNothingOfPagesThatAreNone) {
  layout_.pages = "no PDF";
  const WrittenPdf written = write(Letter());
  ASSERT_TRUE(written.noPages);
  EXPECT_EQ(written.noPages->kind, TroubleKind::Damaged);
  EXPECT_EQ(sink_.text, "");
}

TEST_F(WritePdfTest, LaysOutNoTextBeyondTheLimit) {
  PdfLimits limits;
  limits.html = 100;
  const WrittenPdf written = write(Letter(), limits);
  ASSERT_TRUE(written.noPages);
  EXPECT_EQ(written.noPages->reason, "its text cannot be laid out: it is larger than 100 bytes");
  EXPECT_EQ(layout_.lastHtml, "");
}

TEST_F(WritePdfTest, SaysThatTheDiskIsFull) {
  const FakeContent content = Letter();
  FakeItem item(content);
  SmallSink sink(10);
  const WrittenPdf written = WritePdf(item, layout_, sink);
  ASSERT_TRUE(written.full);
  EXPECT_EQ(written.full->reason, "the disk is full");
}

TEST_F(WritePdfTest, GivesTheSameBytesForTheSameItem) {
  write(Letter());
  const std::string first = sink_.text;
  write(Letter());
  EXPECT_EQ(sink_.text, first);
}

}  // namespace

#include "archive/pdf/MailPdf.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ReadMailPdf.h"
#include "SmallPdf.h"

using namespace tarn::archive;
using namespace tarn::test;

namespace {

std::string Make(const MailFacts& facts, const std::vector<FileInside>& files) {
  const Outcome<MadePdf> made = MailPdf(SmallPdf({"first", "second"}), facts, files);
  EXPECT_TRUE(made.ok());
  return made.ok() ? made->bytes : std::string();
}

std::vector<FileInside> MailAndTwoFiles() {
  return {{"message.eml", "message/rfc822", FileRelation::Mail, "From: ann\r\n\r\nHello\r\n"},
          {"Plan \xC3\xA4.pdf", "application/pdf", FileRelation::Attachment, "%PDF"},
          {"Plan \xC3\xA4.pdf", "image/x y", FileRelation::Attachment, std::string("\0\1\2", 3)}};
}

TEST(MailPdfTest, HoldsTheMailAndItsAttachments) {
  const MailPdfFacts facts = ReadMailPdf(Make({}, MailAndTwoFiles()));
  ASSERT_EQ(facts.files.size(), 3U);
  EXPECT_EQ(facts.files[0].name, "message.eml");
  EXPECT_EQ(facts.files[0].mediaType, "message/rfc822");
  EXPECT_EQ(facts.files[0].relation, "/Source");
  EXPECT_EQ(facts.files[0].description, "The mail itself");
  EXPECT_EQ(facts.files[0].bytes, "From: ann\r\n\r\nHello\r\n");
  EXPECT_EQ(facts.files[1].name, "Plan \xC3\xA4.pdf");
  EXPECT_EQ(facts.files[1].mediaType, "application/pdf");
  EXPECT_EQ(facts.files[1].relation, "/Supplement");
  EXPECT_EQ(facts.files[1].description, "Attachment of the mail");
  EXPECT_EQ(facts.files[2].mediaType, "application/octet-stream");
  EXPECT_EQ(facts.files[2].bytes, std::string("\0\1\2", 3));
  EXPECT_EQ(facts.associated, 3U);
  EXPECT_EQ(facts.pageMode, "/UseAttachments");
  EXPECT_EQ(facts.contents, (std::vector<std::string>{"first", "second"}));
}

TEST(MailPdfTest, KeepsTheOrderOfManyFiles) {
  std::vector<FileInside> files;
  for (int i = 0; i < 12; ++i) {
    files.push_back({std::to_string(i), "text/plain", FileRelation::Attachment, "x"});
  }
  const MailPdfFacts facts = ReadMailPdf(Make({}, files));
  ASSERT_EQ(facts.files.size(), files.size());
  for (size_t i = 0; i < files.size(); ++i) EXPECT_EQ(facts.files[i].name, files[i].name);
}

TEST(MailPdfTest, OpensNoListOfFilesForTheMailAlone) {
  const MailPdfFacts facts =
      ReadMailPdf(Make({}, {{"message.eml", "message/rfc822", FileRelation::Mail, "x"}}));
  EXPECT_EQ(facts.files.size(), 1U);
  EXPECT_EQ(facts.pageMode, "");
}

TEST(MailPdfTest, NeedsNoFiles) {
  const MailPdfFacts facts = ReadMailPdf(Make({}, {}));
  EXPECT_TRUE(facts.files.empty());
  EXPECT_EQ(facts.associated, 0U);
}

TEST(MailPdfTest, TakesNoMediaTypeThatIsNone) {
  for (const char* type : {"", "text", "/plain", "text/", "text/pl#ain", "text/plain/x"}) {
    const MailPdfFacts facts = ReadMailPdf(Make({}, {{"a", type, FileRelation::Attachment, "x"}}));
    ASSERT_EQ(facts.files.size(), 1U);
    EXPECT_EQ(facts.files[0].mediaType, "application/octet-stream") << type;
  }
}

TEST(MailPdfTest, SaysWhatTheMailSays) {
  MailFacts mail;
  mail.subject = "Plans";
  mail.from = "Ann";
  EXPECT_EQ(ReadMailPdf(Make(mail, {})).metadata, MailMetadata(mail));
}

TEST(MailPdfTest, IsTheSameForTheSameMail) {
  MailFacts mail;
  mail.subject = "Plans";
  const std::string first = Make(mail, MailAndTwoFiles());
  EXPECT_EQ(Make(mail, MailAndTwoFiles()), first);
  mail.subject = "Other plans";
  EXPECT_NE(Make(mail, MailAndTwoFiles()), first);
}

TEST(MailPdfTest, RefusesWhatIsNoPdf) {
  const Outcome<MadePdf> made = MailPdf("<html>", {}, {});
  ASSERT_FALSE(made.ok());
  EXPECT_EQ(made.trouble().kind, TroubleKind::Damaged);
  EXPECT_TRUE(made.trouble().reason.starts_with("the PDF cannot be finished: "));
}

}  // namespace

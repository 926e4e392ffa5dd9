// Mails as trees.
#include "mutators/MailTree.h"

#include <gtest/gtest.h>

#include "support/SampleMails.h"

namespace tarn::test {
namespace {

using namespace tarn::fuzz;

TEST(MailTree, WhatIsNotChangedIsWrittenAsItWas) {
  const std::string nested =
      "Content-Type: multipart/mixed;\r\n boundary=\"a b\"\r\n\r\npreamble\r\n--a b \r\n"
      "Content-Type: multipart/alternative; boundary=c\n\n--c\n\nx\n--c\n--c--\nrest\n"
      "--a b\r\n\r\ny\r\n--a b--\r\nepilogue";
  for (const std::string& mail :
       {kHtmlMail, kPlainMail, kImageMail, kAttachmentMail, nested, std::string("no header"),
        std::string(), std::string("\r\n"), std::string(" folded first\r\n\tand more"),
        std::string("Content-Type: x; boundary=q\n\n--q"), nested.substr(0, 120)}) {
    EXPECT_EQ(WriteMail(ReadMail(mail)), mail);
  }
}

TEST(MailTree, PartsLieBetweenTheirDelimiters) {
  const MailEntity mail = ReadMail(kImageMail);
  ASSERT_EQ(mail.parts.size(), 3U);
  EXPECT_EQ(mail.boundary, "sep");
  EXPECT_EQ(mail.delimiters[1], "--sep\r\n");
  EXPECT_EQ(mail.ending, "--sep--\r\n");
  EXPECT_EQ(FieldValue(mail.parts[1], "content-id"), "<pic@x>");
  EXPECT_EQ(DecodeContent(mail.parts[1]), kImageBytes);
}

TEST(MailTree, ContentsComeBackThroughTheirEncoding) {
  const std::string bytes("\0\xFF=\r\nabc", 8);
  for (const char* const encoding : {"base64", "quoted-printable", "BASE64", "7bit", ""}) {
    MailEntity leaf;
    SetField(leaf, "Content-Transfer-Encoding", encoding);
    EncodeContent(leaf, bytes);
    std::string decoded = DecodeContent(leaf);
    if (decoded.size() == bytes.size() + 2) decoded.resize(bytes.size());  // the line's end
    EXPECT_EQ(decoded, bytes) << encoding;
  }
}

TEST(MailTree, BrokenEncodingsGiveWhatTheyHave) {
  MailEntity leaf;
  leaf.content = "QU!J\r\nD=";
  SetField(leaf, "content-transfer-encoding", "base64");
  EXPECT_EQ(DecodeContent(leaf), "ABC");
  leaf.content = "a=4=41=\r\nb=";
  SetField(leaf, "content-transfer-encoding", "quoted-printable");
  EXPECT_EQ(DecodeContent(leaf), "a=4Ab=");
  ASSERT_EQ(leaf.lines.size(), 1U);
}

TEST(MailTree, DeepMultipartsEndAsContents) {
  std::string mail;
  for (int i = 1000; i < 1100; ++i) {
    const std::string boundary = std::to_string(i);
    mail +=
        "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary + "\r\n";
  }
  EXPECT_EQ(WriteMail(ReadMail(mail)), mail);
  int depth = 0;
  MailEntity entity = ReadMail(mail);
  for (; entity.isMultipart(); ++depth) {
    const MailEntity inner = entity.parts[0];
    entity = inner;
  }
  EXPECT_EQ(depth, 24);
}

}  // namespace
}  // namespace tarn::test

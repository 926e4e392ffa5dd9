// The attachments of mails.
#include "MailReading.h"

namespace tarn::archive {
namespace {

using test::AttachmentBytes;
using test::OpenedMail;

// A mail with a text and these parts.
std::string WithParts(const std::vector<std::string>& parts, const std::string& type = "mixed") {
  std::string text =
      "Subject: outer\nContent-Type: multipart/" + type + "; boundary=outer\n\n--outer\n\ntext\n";
  for (const std::string& part : parts) text += "--outer\n" + part + "\n";
  return text + "--outer--\n";
}

TEST(MailAttachmentTest, DescribesEachAndGivesItsBytes) {
  OpenedMail mail(WithParts(
      {"Content-Type: Image/PNG; name=b.png\nContent-Disposition: inline; filename=a.png\n"
       "Content-ID: <id@x>\nContent-Location: http://x/a.png\nContent-Transfer-Encoding: base64\n"
       "\naGVsbG8=\n",
       "Content-Type: application/pdf\n\nbytes\r\nas they are"}));
  const std::vector<Attachment> list = mail->attachments();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].kind, AttachmentKind::Data);
  EXPECT_EQ(list[0].name, "a.png");
  EXPECT_EQ(list[0].mediaType, "image/png");
  EXPECT_EQ(list[0].contentId, "id@x");
  EXPECT_EQ(list[0].contentLocation, "http://x/a.png");
  EXPECT_TRUE(list[0].isInline);
  EXPECT_FALSE(list[0].size.has_value());
  EXPECT_EQ(AttachmentBytes(*mail, 0), "hello");
  EXPECT_EQ(list[1].name, "");
  EXPECT_EQ(list[1].mediaType, "application/pdf");
  EXPECT_FALSE(list[1].isInline);
  EXPECT_EQ(list[1].size, 18u);
  EXPECT_EQ(AttachmentBytes(*mail, 1), "bytes\r\nas they are");
  EXPECT_EQ(mail.fields().attachmentCount, 2u);
  EXPECT_TRUE(mail.fields().hasAttachments);
  EXPECT_EQ(AttachmentBytes(*mail, 2), "trouble: there is no such attachment");
}

TEST(MailAttachmentTest, NamesTheCharsetOfTexts) {
  OpenedMail mail(WithParts({"Content-Type: text/calendar; charset=ISO-8859-1\n\nx",
                             "Content-Type: text/calendar\n\nx",
                             "Content-Type: image/png; charset=utf-8\n\nx"}));
  const std::vector<Attachment> list = mail->attachments();
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0].charset, "ISO-8859-1");
  EXPECT_EQ(list[1].charset, "");
  EXPECT_EQ(list[2].charset, "");
}

TEST(MailAttachmentTest, ReadsTwoAtOnce) {
  OpenedMail mail(WithParts({"Content-Type: a/b\n\nfirst", "Content-Type: a/b\n\nother"}));
  const auto one = mail->open(0);
  const auto two = mail->open(1);
  const auto again = mail->open(0);
  std::array<char, 3> buffer;
  for (const auto* source : {&one, &two, &again}) {
    ASSERT_TRUE(source->ok());
    EXPECT_EQ(*(**source)->read(buffer), 3u);
  }
  EXPECT_EQ(*ReadAll(**one, 100), "st");
  EXPECT_EQ(*ReadAll(**two, 100), "er");
  EXPECT_EQ(*ReadAll(**again, 100), "st");
}

// The line end before a delimiter is its own, however the delimiter's line ends.
TEST(MailAttachmentTest, EndsWhereTheLineEndOfTheDelimiterBegins) {
  for (const std::string delimiterEnd : {"\n", "\r\n"}) {
    for (const std::string lineEnd : {"\n", "\r\n"}) {
      for (const std::string content :
           {"", "a", "ab", "ab\n", "ab\r\n", "\n", "\n\n", "\r\n", "a\n--", "--b1"}) {
        const std::string part = "--b" + delimiterEnd + "Content-Type: a/b\n\n" + content + lineEnd;
        OpenedMail mail("Content-Type: multipart/mixed; boundary=b\n\n" + part + part + "--b--" +
                        delimiterEnd);
        SCOPED_TRACE(part);
        ASSERT_EQ(mail->attachments().size(), 2u);
        for (size_t index = 0; index < 2; ++index) {
          EXPECT_EQ(AttachmentBytes(*mail, index), content);
          EXPECT_EQ(mail->attachments()[index].size, content.size());
        }
      }
    }
  }
}

TEST(MailAttachmentTest, DecodesNamesRightAndUsualWrongOnes) {
  OpenedMail mail(WithParts({
      "Content-Type: a/b; name*=utf-8''h%C3%A4.txt\n\n",
      "Content-Type: a/b; name*0=\"a long \"; name*1=\"name.txt\"\n\n",
      "Content-Type: a/b; name*0*=iso-8859-1''%E4; name*1*=%F6; name*2=u.txt\n\n",
      "Content-Type: a/b; name=\"=?utf-8?q?h=C3=A4.txt?=\"\n\n",
      "Content-Type: a/b; name==?utf-8?q?h=C3=A4.txt?=\n\n",
      "Content-Type: a/b; name=\"h\xC3\xA4.txt\"\n\n",
      "Content-Type: a/b; name=\"h\xE4.txt\"\n\n",
      "Content-Type: a/b; name=two words.txt\n\n",
      "Content-Type: a/b; name=\"../up\\\\x.txt\"\n\n",
      "Content-Type: a/b; name=\"C:\\temp\\x.txt\"\n\n",
      "Content-Disposition: inline; filename=\"C:\\a \\\"b\\\".txt\"\n\n",
      "Content-Disposition: inline; filename=\"one\"\nContent-Type: a/b; name=\"C:\\two\"\n\n",
  }));
  std::vector<std::string> names;
  for (const Attachment& attachment : mail->attachments()) names.push_back(attachment.name);
  EXPECT_EQ(names, (std::vector<std::string>{
                       "h\xC3\xA4.txt", "a long name.txt", "\xC3\xA4\xC3\xB6u.txt", "h\xC3\xA4.txt",
                       "h\xC3\xA4.txt", "h\xC3\xA4.txt", "h\xC3\xA4.txt", "two words.txt",
                       "../up\\x.txt", "C:\\temp\\x.txt", "C:\\a \"b\".txt", "one"}));
}

TEST(MailAttachmentTest, JoinsTheWordsOfANameInBase64) {
  const std::string words = "\"=?utf-8?B?w7jDuA==?=\n =?utf-8?B?w6TDpC5wbmc=?=\"\n";
  OpenedMail mail(WithParts({
      "Content-Type: a/b\nContent-Disposition: attachment; filename=" + words,
      "Content-Type: a/b; name=" + words,
      "Content-Type: a/b; name=" + words + "Content-Disposition: attachment; filename=b.png\n",
      "Content-Type: a/b; name=x.png\nContent-Disposition: attachment; filename=" + words,
  }));
  const std::vector<Attachment> list = mail->attachments();
  ASSERT_EQ(list.size(), 4u);
  EXPECT_EQ(list[0].name, "\u00F8\u00F8\u00E4\u00E4.png");
  EXPECT_EQ(list[1].name, "\u00F8\u00F8\u00E4\u00E4.png");
  EXPECT_EQ(list[2].name, "b.png");
  EXPECT_EQ(list[3].name, "\u00F8\u00F8\u00E4\u00E4.png");
}

TEST(MailAttachmentTest, IsInlineWhereTheHtmlNamesIt) {
  OpenedMail mail(
      "Content-Type: multipart/related; boundary=b\n\n--b\nContent-Type: text/html\n\n"
      "<img src=\"cid:a%2Bb@x\"><img src=CID:c@x><img src='http://x/y.png'>\n"
      "--b\nContent-Type: image/png\nContent-ID: <a+b@x>\n\n1\n"
      "--b\nContent-Type: image/png\nContent-ID: <c@x>\n\n2\n"
      "--b\nContent-Type: image/png\nContent-ID: <d@x>\n\n3\n"
      "--b\nContent-Type: image/png\nContent-Location: http://x/y.png\n\n4\n"
      "--b\nContent-Type: image/png\nContent-Disposition: inline\n\n5\n--b--\n");
  std::string inlines;
  for (const Attachment& attachment : mail->attachments()) {
    inlines += attachment.isInline ? 'i' : '-';
  }
  EXPECT_EQ(inlines, "ii-i-");
}

TEST(MailAttachmentTest, TakesTheStartOfRelatedPartsForTheText) {
  OpenedMail mail(
      "Content-Type: multipart/related; boundary=b; start=\"<html@x>\"\n\n"
      "--b\nContent-Type: image/png\nContent-ID: <a@x>\n\n1\n"
      "--b\nContent-Type: text/html\nContent-ID: <html@x>\n\n<img src=cid:a@x>\n--b--\n");
  EXPECT_EQ(mail->bodies().html->bytes, "<img src=cid:a@x>");
  ASSERT_EQ(mail->attachments().size(), 1u);
  EXPECT_TRUE(mail->attachments()[0].isInline);
}

TEST(MailAttachmentTest, GivesAMailWithinAMail) {
  const std::string inner =
      "From: Bob <bob@example.com>\nSubject: inner\nContent-Type: multipart/mixed; "
      "boundary=inner\n\npreamble\n--inner  \n\none\n--inner\nContent-Type: a/b\n\ntwo\n--inner--\n"
      "epilogue";
  OpenedMail mail(WithParts(
      {"Content-Type: message/rfc822; name=fwd.eml\n\n" + inner, "Content-Type: a/b\n\nafter"}));
  const std::vector<Attachment> list = mail->attachments();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].kind, AttachmentKind::Item);
  EXPECT_EQ(list[0].name, "fwd.eml");
  EXPECT_EQ(list[0].mediaType, "message/rfc822");
  EXPECT_EQ(list[0].size, inner.size());
  EXPECT_EQ(AttachmentBytes(*mail, 0), inner);
  EXPECT_EQ(*mail->bodies().text, "text");

  const auto embedded = mail->embedded(0);
  ASSERT_TRUE(embedded.ok());
  Item& item = **embedded;
  EXPECT_EQ(item.place().id, "1/1");
  EXPECT_EQ(item.place().parent, "1");
  EXPECT_EQ(item.fields(Detail::Headline).subject, "inner");
  EXPECT_EQ(*item.bodies().text, "one");
  EXPECT_EQ(AttachmentBytes(item, 0), "two");
  EXPECT_EQ(*ReadAll(**item.original(), 10000), inner);
  EXPECT_EQ(*item.originalHeaders(), inner.substr(0, inner.find("\n\n") + 1));
  EXPECT_EQ(mail->embedded(1).trouble().reason, "the attachment is no mail");
}

TEST(MailAttachmentTest, GivesAMailWithinAMailWhereLinesEndWithCrLf) {
  OpenedMail mail(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: "
      "message/rfc822\r\n\r\nSubject: in\r\n\r\nbody\r\n\r\n--b--\r\n");
  EXPECT_EQ(AttachmentBytes(*mail, 0), "Subject: in\r\n\r\nbody\r\n");
}

TEST(MailAttachmentTest, GivesTheMailsOfADigest) {
  OpenedMail mail(
      "Content-Type: multipart/digest; boundary=b\n\n--b\n\nSubject: one\n\nbody1\n"
      "--b\nContent-Type: message/rfc822\n\nbody without headers\n--b\n\nFrom: a@b\n\n--b--\n");
  ASSERT_EQ(mail->attachments().size(), 3u);
  EXPECT_EQ(AttachmentBytes(*mail, 0), "Subject: one\n\nbody1");
  EXPECT_EQ((*mail->embedded(0))->fields(Detail::Headline).subject, "one");
  EXPECT_EQ(AttachmentBytes(*mail, 1), "body without headers");
  EXPECT_EQ(*(*mail->embedded(1))->bodies().text, "body without headers");
  EXPECT_EQ(AttachmentBytes(*mail, 2), "From: a@b\n");
}

TEST(MailAttachmentTest, GivesAMailWithinAMailThatHasNothing) {
  OpenedMail mail(
      "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: message/rfc822\n\n"
      "--b\nContent-Type: message/rfc822\n\n\n--b--\n");
  ASSERT_EQ(mail->attachments().size(), 2u);
  EXPECT_EQ(AttachmentBytes(*mail, 0), "");
  EXPECT_EQ(AttachmentBytes(*mail, 1), "");
  EXPECT_EQ((*mail->embedded(0))->fields(Detail::Headline).subject, "");
}

TEST(MailAttachmentTest, GivesAMailThatIsEncodedAgainstTheRules) {
  OpenedMail mail(
      WithParts({"Content-Type: message/rfc822\nContent-Transfer-Encoding: base64\n\n"
                 "U3ViamVjdDogaW5uZXIKCmhlbGxvCg==\n"}));
  ASSERT_EQ(mail->attachments().size(), 1u);
  EXPECT_EQ(mail->attachments()[0].kind, AttachmentKind::Item);
  EXPECT_EQ(AttachmentBytes(*mail, 0), "Subject: inner\n\nhello\n");
  EXPECT_EQ((*mail->embedded(0))->fields(Detail::Headline).subject, "inner");
}

TEST(MailAttachmentTest, FollowsMailsWithinMailsToADepth) {
  std::string text = "Subject: innermost\n\nbody\n";
  for (int i = 0; i < 40; ++i) text = "Content-Type: message/rfc822\n\n" + text;
  OpenedMail mail(text);
  std::vector<std::unique_ptr<Item>> items;
  Item* item = &*mail;
  for (int depth = 1; depth <= kDeepestItem; ++depth) {
    auto embedded = item->embedded(0);
    ASSERT_TRUE(embedded.ok()) << depth;
    items.push_back(std::move(*embedded));
    item = items.back().get();
  }
  EXPECT_TRUE(item->open(0).ok());
  EXPECT_EQ(item->embedded(0).trouble().kind, TroubleKind::TooDeep);
  while (!items.empty()) items.pop_back();
}

TEST(MailAttachmentTest, KeepsReportsAndHeadersAsAttachments) {
  OpenedMail mail(WithParts({"Content-Type: message/delivery-status\n\nReporting-MTA: dns; a\n",
                             "Content-Type: text/rfc822-headers\n\nSubject: x\n"},
                            "report; report-type=delivery-status"));
  ASSERT_EQ(mail->attachments().size(), 2u);
  EXPECT_EQ(mail->attachments()[0].mediaType, "message/delivery-status");
  EXPECT_EQ(AttachmentBytes(*mail, 0), "Reporting-MTA: dns; a\n");
  EXPECT_EQ(AttachmentBytes(*mail, 1), "Subject: x\n");
}

TEST(MailAttachmentTest, NamesWhereAnExternalBodyIs) {
  const std::string type = "Content-Type: message/external-body; access-type=";
  OpenedMail mail(WithParts({
      type + "URL; URL=\"http://example.com/a b\"\n\nContent-Type: a/b\n\n",
      type + "ANON-FTP; site=ftp.example.com; directory=pub; name=a.ps\n\nContent-Type: a/b\n\n",
      type + "local-file; name=\"/tmp/a.ps\"\n\nContent-Type: a/b\n\n",
      type + "mail-server; server=\"a@example.com\"\n\nContent-Type: a/b\n\n",
  }));
  std::vector<std::string> targets;
  for (const Attachment& attachment : mail->attachments()) {
    EXPECT_EQ(attachment.kind, AttachmentKind::Reference);
    targets.push_back(attachment.target);
  }
  EXPECT_EQ(targets,
            (std::vector<std::string>{"http://example.com/a b", "ftp://ftp.example.com/pub/a.ps",
                                      "/tmp/a.ps", "mailto:a@example.com"}));
  EXPECT_EQ(AttachmentBytes(*mail, 0), "trouble: the attachment is elsewhere");
}

TEST(MailAttachmentTest, KeepsWhatIsEncryptedAsItIs) {
  OpenedMail pgp(
      "Content-Type: multipart/encrypted; protocol=\"application/pgp-encrypted\"; boundary=b\n\n"
      "--b\nContent-Type: application/pgp-encrypted\n\nVersion: 1\n"
      "--b\nContent-Type: application/octet-stream; name=encrypted.asc\n\n-----BEGIN\n--b--\n");
  ASSERT_EQ(pgp->attachments().size(), 2u);
  EXPECT_EQ(pgp->attachments()[0].mediaType, "application/pgp-encrypted");
  EXPECT_EQ(pgp->attachments()[1].name, "encrypted.asc");
  EXPECT_EQ(AttachmentBytes(*pgp, 1), "-----BEGIN");
  OpenedMail smime(
      "Content-Type: application/pkcs7-mime; smime-type=enveloped-data; name=smime.p7m\n"
      "Content-Transfer-Encoding: base64\n\nMIIB\n");
  ASSERT_EQ(smime->attachments().size(), 1u);
  EXPECT_EQ(smime->attachments()[0].mediaType, "application/pkcs7-mime");
  EXPECT_EQ(AttachmentBytes(*smime, 0), "\x30\x82\x01");
}

TEST(MailAttachmentTest, NamesAPieceOfALongerMail) {
  OpenedMail mail(
      "Subject: x\nContent-Type: message/partial; id=\"a@b\"; number=2; total=3\n\npiece\n");
  ASSERT_EQ(mail->attachments().size(), 1u);
  EXPECT_EQ(mail->attachments()[0].mediaType, "message/partial");
  EXPECT_EQ(AttachmentBytes(*mail, 0), "piece\n");
  EXPECT_EQ(*mail->bodies().text, "[This mail is piece 2 of 3 of a longer one.]\n");
  EXPECT_TRUE(mail->troubles().empty());
}

TEST(MailAttachmentTest, ShowsTheTextWithinTheFirstPieceOfALongerMail) {
  const std::string header = "Subject: x\nContent-Type: message/partial; id=x; number=1\n\n";
  const std::string note = "This mail is piece 1 of a longer one.]\n";
  OpenedMail mail(header + "Subject: in\nContent-Transfer-Encoding: base64\n\naGVsbG8=\n");
  EXPECT_EQ(mail.fields().subject, "x");
  EXPECT_EQ(*mail->bodies().text, "[" + note + "\nhello");
  EXPECT_FALSE(mail->bodies().html.has_value());
  EXPECT_TRUE(mail->troubles().empty());
  EXPECT_EQ(mail->attachments().size(), 1u);
  OpenedMail html(header + "Content-Type: text/html; charset=us-ascii\n\n<b>x</b>\n");
  EXPECT_EQ(html->bodies().html->bytes, "<p>[" + note + "</p>\n<b>x</b>\n");
  EXPECT_EQ(html->bodies().html->charset, "us-ascii");
  EXPECT_FALSE(html->bodies().text.has_value());
  EXPECT_EQ(*OpenedMail(header)->bodies().text, "[" + note + "\n");
}

TEST(MailAttachmentTest, FindsFilesThatAreUuencodedInTexts) {
  OpenedMail mail(
      "Subject: x\n\nbefore\nbegin 644 a file.txt\n%:&5L;&\\\n`\nend\nafter\n"
      "begin 600 b\n#86)C\n \nend\nbegin 644 not a file\nreally\n");
  EXPECT_EQ(*mail->bodies().text, "before\nafter\nbegin 644 not a file\nreally\n");
  ASSERT_EQ(mail->attachments().size(), 2u);
  EXPECT_EQ(mail->attachments()[0].name, "a file.txt");
  EXPECT_EQ(mail->attachments()[1].name, "b");
  EXPECT_EQ(mail->attachments()[0].size, 5u);
  EXPECT_EQ(mail->attachments()[1].size, 3u);
  EXPECT_EQ(AttachmentBytes(*mail, 0), "hello");
  EXPECT_EQ(AttachmentBytes(*mail, 1), "abc");
  EXPECT_EQ(mail.fields().attachmentCount, 2u);
}

TEST(MailAttachmentTest, DecodesPartsThatAreUuencoded) {
  OpenedMail mail(
      WithParts({"Content-Type: a/b; name=a\nContent-Transfer-Encoding: x-uuencode\n\n"
                 "begin 644 a\n%:&5L;&\\`\n`\nend\n"}));
  EXPECT_EQ(AttachmentBytes(*mail, 0), "hello");
}

}  // namespace
}  // namespace tarn::archive

#include <gtest/gtest.h>

#include <regex>

#include "archive/mapi/FakeMessage.h"
#include "archive/writers/FakeItem.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

// With the boundaries' hashes as "#".
std::string EmlOf(const FakeContent& content, size_t lost = 0) {
  FakeItem item(content);
  TextSink sink;
  const Written written = WriteEml(item, sink);
  EXPECT_FALSE(written.full.has_value());
  EXPECT_EQ(written.lost.size(), lost);
  return std::regex_replace(sink.text, std::regex("=_[0-9A-F]{16}_"), "=_#_");
}

FakeContent Letter() {
  FakeContent content;
  content.fields.subject = "Hello";
  content.fields.from = {"Ann", "ann@example.com"};
  content.fields.to = {{"Bob", "bob@example.com"}};
  content.fields.sent = Moment{1714559696, 120};
  content.fields.messageId = "1@example.com";
  content.bodies.text = "Dear Bob,\n";
  return content;
}

constexpr const char* kLetterHeaders =
    "From: Ann <ann@example.com>\r\nTo: Bob <bob@example.com>\r\nSubject: Hello\r\n"
    "Date: Wed, 1 May 2024 12:34:56 +0200\r\nMessage-ID: <1@example.com>\r\n"
    "MIME-Version: 1.0\r\n";

TEST(WriteEmlTest, GivesTheVeryBytesOfInternetMail) {
  FakeContent content = Letter();
  content.mail = "Subject: x\nFrom: y\n\nz";
  EXPECT_EQ(EmlOf(content), *content.mail);
  content.mail = "";
  EXPECT_EQ(EmlOf(content), "");
}

TEST(WriteEmlTest, WritesText) {
  EXPECT_EQ(EmlOf(Letter()), std::string(kLetterHeaders) +
                                 "Content-Type: text/plain; charset=utf-8\r\n\r\nDear Bob,\r\n");
}

TEST(WriteEmlTest, EndsTheLastLine) {
  FakeContent content = Letter();
  content.bodies.text = "x";
  EXPECT_TRUE(EmlOf(content).ends_with("\r\n\r\nx\r\n"));
  content.bodies.text.reset();
  EXPECT_TRUE(EmlOf(content).ends_with("\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n\r\n"));
}

TEST(WriteEmlTest, WritesAlternatives) {
  FakeContent content = Letter();
  content.bodies.html = HtmlBody{"<p>\xE4</p>", "iso-8859-1"};
  EXPECT_EQ(EmlOf(content),
            std::string(kLetterHeaders) +
                "Content-Type: multipart/alternative; boundary=\"=_#_1\"\r\n\r\n"
                "\r\n--=_#_1\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nDear Bob,\r\n"
                "\r\n--=_#_1\r\nContent-Type: text/html; charset=iso-8859-1\r\n"
                "Content-Transfer-Encoding: quoted-printable\r\n\r\n<p>=E4</p>"
                "\r\n--=_#_1--\r\n");
}

TEST(WriteEmlTest, WritesPicturesBesideTheirHtmlAndAttachmentsAfter) {
  FakeContent content = Letter();
  content.bodies.text.reset();
  content.bodies.html = HtmlBody{"<img src=cid:a>", ""};
  content.attach("b.pdf", "application/pdf", "pdf");
  Attachment& picture = content.attach("a.gif", "image/gif", "gif");
  picture.contentId = "a";
  picture.isInline = true;
  EXPECT_EQ(EmlOf(content),
            std::string(kLetterHeaders) +
                "Content-Type: multipart/mixed; boundary=\"=_#_1\"\r\n\r\n"
                "\r\n--=_#_1\r\nContent-Type: multipart/related; boundary=\"=_#_2\"\r\n\r\n"
                "\r\n--=_#_2\r\nContent-Type: text/html\r\n\r\n<img src=cid:a>"
                "\r\n--=_#_2\r\nContent-Type: image/gif\r\n"
                "Content-Disposition: inline; filename=a.gif\r\n"
                "Content-Transfer-Encoding: base64\r\nContent-Id: <a>\r\n\r\nZ2lm\r\n"
                "\r\n--=_#_2--\r\n"
                "\r\n--=_#_1\r\nContent-Type: application/pdf\r\n"
                "Content-Disposition: attachment; filename=b.pdf\r\n"
                "Content-Transfer-Encoding: base64\r\n\r\ncGRm\r\n"
                "\r\n--=_#_1--\r\n");
}

TEST(WriteEmlTest, WritesEmbeddedItems) {
  FakeContent content = Letter();
  FakeContent& inner = content.attachItem("Inner");
  inner.fields.subject = "Inner";
  inner.bodies.text = "deep";
  inner.attach("x", "", "x");
  FakeContent& mail = content.attachItem("mail.eml");
  mail.mail = "Subject: y\n\nz";
  EXPECT_EQ(EmlOf(content),
            std::string(kLetterHeaders) +
                "Content-Type: multipart/mixed; boundary=\"=_#_1\"\r\n\r\n"
                "\r\n--=_#_1\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nDear Bob,\r\n"
                "\r\n--=_#_1\r\nContent-Type: message/rfc822\r\n"
                "Content-Disposition: attachment; filename=Inner\r\n\r\n"
                "Subject: Inner\r\nMIME-Version: 1.0\r\n"
                "Content-Type: multipart/mixed; boundary=\"=_#_2\"\r\n\r\n"
                "\r\n--=_#_2\r\nContent-Type: text/plain; charset=utf-8\r\n\r\ndeep"
                "\r\n--=_#_2\r\nContent-Type: application/octet-stream\r\n"
                "Content-Disposition: attachment; filename=x\r\n"
                "Content-Transfer-Encoding: base64\r\n\r\neA==\r\n"
                "\r\n--=_#_2--\r\n"
                "\r\n--=_#_1\r\nContent-Type: message/rfc822\r\n"
                "Content-Disposition: attachment; filename=mail.eml\r\n\r\nSubject: y\n\nz"
                "\r\n--=_#_1--\r\n");
}

TEST(WriteEmlTest, WritesReferences) {
  FakeContent content = Letter();
  content.bodies.text.reset();
  Attachment& far = content.list.emplace_back();
  far.kind = AttachmentKind::Reference;
  far.name = "far.doc";
  far.target = "\\\\far\\far.doc";
  EXPECT_EQ(EmlOf(content),
            std::string(kLetterHeaders) +
                "Content-Type: multipart/mixed; boundary=\"=_#_1\"\r\n\r\n"
                "\r\n--=_#_1\r\nContent-Type: message/external-body; access-type=URL; "
                "URL=\"\\\\\\\\far\\\\far.doc\"\r\n"
                "Content-Disposition: attachment; filename=far.doc\r\n\r\n"
                "Content-Type: application/octet-stream\r\n\r\n"
                "\r\n--=_#_1--\r\n");
}

TEST(WriteEmlTest, CarriesMailsAndStructuresAsBytes) {
  FakeContent content = Letter();
  content.attach("a.eml", "message/rfc822", "x");
  content.attach("b", "multipart/mixed", "x");
  content.attach("c", "no type", "x");
  const std::string eml = EmlOf(content);
  size_t count = 0;
  for (size_t at = 0; (at = eml.find("application/octet-stream\r\n", at)) != eml.npos; ++at)
    ++count;
  EXPECT_EQ(count, 3u);
}

TEST(WriteEmlTest, KeepsTheHeadersThatTheMailCameWith) {
  FakeContent content = Letter();
  content.headers =
      "Microsoft Mail Internet Headers Version 2.0\r\n"
      "Received: from a\r\n\tby b\r\n \t\r\nSUBJECT: Other\nContent-Type: multipart/mixed;\n"
      " boundary=x\nMime-Version: 1.0\nX-Odd : 1\n\n";
  EXPECT_EQ(EmlOf(content),
            "Received: from a\r\n\tby b\r\nSUBJECT: Other\r\nX-Odd : 1\r\n"
            "From: Ann <ann@example.com>\r\nTo: Bob <bob@example.com>\r\n"
            "Date: Wed, 1 May 2024 12:34:56 +0200\r\nMessage-ID: <1@example.com>\r\n"
            "MIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nDear Bob,\r\n");
}

TEST(WriteEmlTest, EncodesFields) {
  FakeContent content;
  content.fields.subject =
      "Gr\xC3\xBC\xC3\x9F"
      "e\r\nBcc: x@example.com";
  content.fields.from = {"J\xC3\xBCrgen, Dr.", "j@example.com"};
  content.fields.sender = Address{"", "/O=ORG/CN=ANN"};
  content.fields.cc = {{"Dan (home)", "dan@example.com"}, {"Eve", ""}, {"", ""}};
  content.fields.bcc = {{"", "x@example.com"}};
  content.fields.received = Moment{1714559696, {}};
  content.fields.messageId = "<a\r\nb>";
  EXPECT_EQ(EmlOf(content),
            "From: =?UTF-8?b?SsO8cmdlbiw=?= \"Dr.\" <j@example.com>\r\n"
            "Sender: /O=ORG/CN=ANN: ;\r\n"
            "Cc: \"Dan (home)\" <dan@example.com>, Eve: ;\r\n"
            "Bcc: x@example.com\r\n"
            "Subject: =?UTF-8?B?R3LDvMOfZQ==?=  Bcc: x@example.com\r\n"
            "Date: Wed, 1 May 2024 10:34:56 -0000\r\nMessage-ID: <ab>\r\nMIME-Version: 1.0\r\n"
            "Content-Type: text/plain; charset=utf-8\r\n\r\n\r\n");
}

TEST(WriteEmlTest, EncodesNamesOfFiles) {
  FakeContent content = Letter();
  content
      .attach(
          "Gr\xC3\xBC\xC3\x9F"
          "e \"1\".txt",
          "text/plain", "x")
      .contentLocation = "a b";
  EXPECT_NE(
      EmlOf(content).find("Content-Type: text/plain\r\nContent-Disposition: attachment; "
                          "filename*=iso-8859-1''Gr%FC%DFe%20%221%22.txt\r\n"
                          "Content-Transfer-Encoding: base64\r\nContent-Location: a b\r\n\r\n"),
      std::string::npos)
      << EmlOf(content);
}

TEST(WriteEmlTest, NamesTheMailThatIsAnswered) {
  mapi::FakeDescription description;
  description.properties.text(0x1042, u"<0@example.com>").text(0x1039, u"<x@y> <0@example.com>");
  mapi::FakeMessage message(description);
  FakeContent content;
  content.message = &message;
  EXPECT_TRUE(EmlOf(content).starts_with(
      "In-Reply-To: <0@example.com>\r\nReferences: <x@y> <0@example.com>\r\nMIME-Version"));
}

TEST(WriteEmlTest, WritesTheTextOfRtf) {
  FakeContent content;
  content.bodies.rtf = "{\\rtf1 Hi}";
  EXPECT_TRUE(EmlOf(content).ends_with("text/plain; charset=utf-8\r\n\r\nHi\r\n"));
}

TEST(WriteEmlTest, WritesWideHtmlInUtf8) {
  FakeContent content;
  content.bodies.html = HtmlBody{std::string("<\0p\0>\0", 6), "utf-16le"};
  EXPECT_TRUE(EmlOf(content).ends_with("text/html; charset=utf-8\r\n\r\n<p>\r\n"));
  content.bodies.html = HtmlBody{"<p>", "bad;name"};
  EXPECT_TRUE(EmlOf(content).ends_with("text/html; charset=utf-8\r\n\r\n<p>\r\n"));
}

// Their line ends are other bytes, and bytes that look like line ends are text.
TEST(WriteEmlTest, WritesHtmlInUtf8WhereItsCharsetHasNoAscii) {
  FakeContent content;
  content.bodies.html = HtmlBody{"\x0D\x4E\x0A\x4E", "utf-16le"};
  EXPECT_TRUE(EmlOf(content).find("text/html; charset=utf-8\r\n") != std::string::npos);
  EXPECT_TRUE(EmlOf(content).ends_with("\r\n\r\n5LiN5LiK\r\n"));
  content.bodies.html = HtmlBody{"\x4C\x97\x6E\xC1", "ibm037"};
  EXPECT_TRUE(EmlOf(content).ends_with("text/html; charset=utf-8\r\n\r\n<p>A\r\n"));
  for (const std::string charset : {"us-ascii", "iso-2022-jp", "shift_jis", "gb18030", "utf-7"}) {
    content.bodies.html = HtmlBody{"<p>A", charset};
    EXPECT_TRUE(EmlOf(content).ends_with("text/html; charset=" + charset + "\r\n\r\n<p>A\r\n"))
        << EmlOf(content);
  }
}

TEST(WriteEmlTest, IsWholeWhereThingsCannotBeRead) {
  FakeContent content = Letter();
  content.headersTrouble = Trouble{TroubleKind::Damaged, "no headers"};
  content.bodies.troubles = {{TroubleKind::Damaged, "no html"}};
  content.troubles = {{TroubleKind::Damaged, "no recipients"}};
  content.attach("a", "image/gif", "foo");
  content.broken = {0};
  content.list.emplace_back().kind = AttachmentKind::Item;
  content.list.emplace_back().trouble = Trouble{TroubleKind::Damaged, "no row"};
  EXPECT_EQ(EmlOf(content, 6),
            std::string(kLetterHeaders) +
                "Content-Type: multipart/mixed; boundary=\"=_#_1\"\r\n\r\n"
                "\r\n--=_#_1\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nDear Bob,\r\n"
                "\r\n--=_#_1\r\nContent-Type: image/gif\r\n"
                "Content-Disposition: attachment; filename=a\r\n"
                "Content-Transfer-Encoding: base64\r\n\r\nZm9v\r\n"
                "\r\n--=_#_1\r\nContent-Type: text/plain\r\n"
                "Content-Disposition: attachment\r\n\r\n"
                "\r\n--=_#_1--\r\n");
}

TEST(WriteEmlTest, WritesTheContentOfSignedMails) {
  FakeContent content = Letter();
  content.fields.messageClass = "IPM.Note.SMIME.MultipartSigned";
  const std::string part = "Content-type: multipart/signed; boundary=x\r\n\r\n--x\r\n";
  content.attach("smime.p7m", "multipart/signed", part);
  EXPECT_EQ(EmlOf(content), kLetterHeaders + part);
  content.broken = {0};
  EXPECT_EQ(EmlOf(content, 1), kLetterHeaders + part);
  content.broken.clear();
  // The version of MIME is there already.
  content.bytes[0] = "MIME-version: 1.0\r\n" + part;
  EXPECT_EQ(EmlOf(content), kLetterHeaders + part);
  // Bytes that are no part are carried as any others.
  for (const char* const other :
       {"x", "", "MIME-Version: 1.0", "MIME-Version: 1.0\r\nSubject: x"}) {
    content.bytes[0] = other;
    EXPECT_NE(EmlOf(content).find("Content-Type: multipart/mixed"), std::string::npos) << other;
  }
}

TEST(WriteEmlTest, WritesTheContentOfEncryptedMails) {
  FakeContent content = Letter();
  content.fields.messageClass = "IPM.Note.SMIME";
  content.attach("smime.p7m", "application/pkcs7-mime", "foo");
  EXPECT_EQ(EmlOf(content), std::string(kLetterHeaders) +
                                "Content-Type: application/pkcs7-mime\r\n"
                                "Content-Disposition: attachment; filename=smime.p7m\r\n"
                                "Content-Transfer-Encoding: base64\r\n\r\nZm9v\r\n");
  content.list[0].mediaType = "application/pdf";
  EXPECT_NE(EmlOf(content).find("Content-Type: multipart/mixed"), std::string::npos);
  content.list[0].mediaType = "application/x-pkcs7-mime";
  content.attach("other", "", "x");
  EXPECT_NE(EmlOf(content).find("Content-Type: multipart/mixed"), std::string::npos);
}

TEST(WriteEmlTest, TakesNothingOfTheTextForHeaders) {
  FakeContent content = Letter();
  content.headers =
      "Version 2.0 of something\r\n\r\nContent-Type: text/plain\r\nX-Mailer: y\r\n\r\n"
      "Note: this is text\r\nBcc: eve@example.com\r\n";
  EXPECT_EQ(EmlOf(content), "X-Mailer: y\r\n" + std::string(kLetterHeaders) +
                                "Content-Type: text/plain; charset=utf-8\r\n\r\nDear Bob,\r\n");
}

// Takes minutes where each recipient takes as long as those before it.
TEST(WriteEmlTest, WritesVeryManyRecipients) {
  FakeContent content = Letter();
  constexpr size_t kMany = 40000;
  content.fields.to.assign(kMany, {"", "bob@example.com"});
  content.fields.cc.assign(kMany, {"Bob", "no address"});
  const std::string mail = EmlOf(content);
  size_t mailboxes = 0;
  for (size_t at = 0; (at = mail.find("bob@example.com", at)) != mail.npos; ++at) ++mailboxes;
  EXPECT_EQ(mailboxes, kMany);
  size_t groups = 0;
  for (size_t at = 0; (at = mail.find(": ;", at)) != mail.npos; ++at) ++groups;
  EXPECT_EQ(groups, kMany);
}

TEST(WriteEmlTest, IsNoMultipartWhereNoAttachmentCanBeRead) {
  FakeContent content = Letter();
  content.list.emplace_back().trouble = Trouble{TroubleKind::Damaged, "no row"};
  EXPECT_EQ(EmlOf(content, 1), std::string(kLetterHeaders) +
                                   "Content-Type: text/plain; charset=utf-8\r\n\r\nDear Bob,\r\n");
  content.bodies.text.reset();
  EXPECT_EQ(EmlOf(content, 1),
            std::string(kLetterHeaders) + "Content-Type: text/plain; charset=utf-8\r\n\r\n\r\n");
}

TEST(WriteEmlTest, EndsWhereTheSinkIsFull) {
  FakeContent content = Letter();
  for (int i = 0; i < 5; ++i) content.attach("a", "", std::string(100000, 'x'));
  FakeItem item(content);
  SmallSink sink(1000);
  EXPECT_EQ(WriteEml(item, sink).full->reason, "the disk is full");
  EXPECT_EQ(sink.writesAfterFull, 0u);
  SmallSink mbox(1000);
  EXPECT_EQ(WriteMbox(item, mbox).full->reason, "the disk is full");
  EXPECT_EQ(mbox.writesAfterFull, 0u);
}

TEST(WriteEmlTest, WritesTheSameBytesForTheSameItem) {
  FakeContent content = Letter();
  content.attach("a", "", "b");
  FakeItem item(content);
  FakeItem again(content);
  TextSink first;
  TextSink second;
  WriteEml(item, first);
  WriteEml(again, second);
  EXPECT_EQ(first.text, second.text);
}

}  // namespace
}  // namespace tarn::archive

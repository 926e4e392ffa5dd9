// The text of mails.
#include "MailReading.h"

namespace tarn::archive {
namespace {

using test::OpenedMail;

std::string Multipart(const std::string& type, const std::vector<std::string>& parts) {
  std::string text = "Content-Type: multipart/" + type + "; boundary=\"b " + type + "\"\n\n";
  for (const std::string& part : parts) text += "--b " + type + "\n" + part + "\n";
  return text + "--b " + type + "--\n";
}

std::string Plain(const std::string& text) { return "Content-Type: text/plain\n\n" + text; }
std::string Html(const std::string& text) {
  return "Content-Type: text/html; charset=iso-8859-1\n\n" + text;
}

TEST(MailBodyTest, GivesTextInUtf8WithLinesOfLf) {
  OpenedMail mail(
      "Content-Type: text/plain; charset=iso-8859-15\nContent-Transfer-Encoding: "
      "quoted-printable\n\n=A4 5\r\nand=\r\n more\r\n");
  EXPECT_EQ(*mail->bodies().text, "\xE2\x82\xAC 5\nand more\n");
  EXPECT_FALSE(mail->bodies().html.has_value());
  EXPECT_FALSE(mail->bodies().rtf.has_value());
}

TEST(MailBodyTest, TakesUndeclaredBytesAsUtf8OrWindows1252) {
  EXPECT_EQ(*OpenedMail("Subject: x\n\n\xC3\xB6\n")->bodies().text, "\xC3\xB6\n");
  EXPECT_EQ(*OpenedMail("Subject: x\n\n\xF6 \x80\n")->bodies().text, "\xC3\xB6 \xE2\x82\xAC\n");
}

TEST(MailBodyTest, TakesATypeThatCannotBeReadAsText) {
  EXPECT_EQ(*OpenedMail("Content-Type: text\n\nhello")->bodies().text, "hello");
  EXPECT_EQ(*OpenedMail("Content-Type: ; charset=x\n\nhello")->bodies().text, "hello");
}

TEST(MailBodyTest, KeepsTheBytesOfHtml) {
  OpenedMail mail(Html("<p>\xF6</p>\r\n"));
  const Bodies bodies = mail->bodies();
  EXPECT_EQ(bodies.html->bytes, "<p>\xF6</p>\r\n");
  EXPECT_EQ(bodies.html->charset, "iso-8859-1");
  EXPECT_FALSE(bodies.text.has_value());
}

TEST(MailBodyTest, GivesBothAlternatives) {
  OpenedMail mail(
      Multipart("alternative", {Plain("text"), Multipart("related", {Html("<p>html"),
                                                                     "Content-Type: "
                                                                     "image/png\n\nx"})}));
  EXPECT_EQ(*mail->bodies().text, "text");
  EXPECT_EQ(mail->bodies().html->bytes, "<p>html");
  EXPECT_EQ(mail.fields().attachmentCount, 1u);
}

TEST(MailBodyTest, TakesEmptyTextBesideHtmlForNone) {
  OpenedMail mail(
      "Content-Type: multipart/alternative; boundary=b\n\n--b\n\n \n\n--b\n"
      "Content-Type: text/html\n\n<p>x\n--b--\n");
  EXPECT_EQ(mail->bodies().text, std::nullopt);
  EXPECT_EQ(mail->bodies().html->bytes, "<p>x");
}

TEST(MailBodyTest, JoinsTextsAroundAnAttachment) {
  OpenedMail mail(Multipart(
      "mixed", {Plain("one"), "Content-Type: image/png\n\nx", Plain("two\n"), Plain("three")}));
  EXPECT_EQ(*mail->bodies().text, "one\ntwo\nthree");
  EXPECT_EQ(mail.fields().attachmentCount, 1u);
}

TEST(MailBodyTest, JoinsPiecesOfHtmlAsUtf8) {
  OpenedMail mail(Multipart("mixed", {Html("<p>\xF6"), Html("<p>\xE4")}));
  EXPECT_EQ(mail->bodies().html->bytes, "<p>\xC3\xB6\n<p>\xC3\xA4");
  EXPECT_EQ(mail->bodies().html->charset, "utf-8");
}

TEST(MailBodyTest, PutsTextThatComesAfterHtmlIntoIt) {
  OpenedMail mail(Multipart("mixed", {Multipart("alternative", {Plain("text"), Html("<p>html")}),
                                      Plain("a <footer> & \xC3\xB6"), Plain(" \n")}));
  EXPECT_EQ(*mail->bodies().text, "text\na <footer> & \xC3\xB6\n \n");
  EXPECT_EQ(mail->bodies().html->bytes, "<p>html\n<pre>a &#60;footer&#62; &#38; &#246;</pre>\n");
}

TEST(MailBodyTest, ReadsFlowedText) {
  OpenedMail mail(
      "Content-Type: text/plain; format=flowed; delsp=yes\n\n> a \n> b\n one \ntwo\n-- \nAnn\n");
  EXPECT_EQ(*mail->bodies().text, "> ab\nonetwo\n-- \nAnn\n");
}

TEST(MailBodyTest, MakesHtmlOfEnrichedText) {
  OpenedMail mail("Content-Type: text/enriched\n\n<bold>Now</bold> or never\n");
  ASSERT_TRUE(mail->bodies().html.has_value());
  EXPECT_NE(mail->bodies().html->bytes.find("<b>Now</b> or never"), std::string::npos);
}

TEST(MailBodyTest, ReadsWhatIsThereOfAMultipartThatDoesNotEnd) {
  const std::string whole = Multipart("mixed", {Plain("one"), Plain("two")});
  OpenedMail mail(whole.substr(0, whole.rfind("\n--b") + 1));
  EXPECT_EQ(*mail->bodies().text, "one\ntwo\n");
}

TEST(MailBodyTest, ReadsBoundariesOfOddCharactersWithoutQuotes) {
  OpenedMail mail(
      "Content-Type: multipart/mixed; boundary=----=_a=b?c:(d)/e\n\n------=_a=b?c:(d)/e\n\nhello\n"
      "------=_a=b?c:(d)/e--\n");
  EXPECT_EQ(*mail->bodies().text, "hello");
}

TEST(MailBodyTest, ShowsAllOfAMultipartWithoutBoundary) {
  OpenedMail mail("Content-Type: multipart/mixed\n\n--b\n\nhello\n--b--\n");
  EXPECT_EQ(*mail->bodies().text, "--b\n\nhello\n--b--\n");
}

TEST(MailBodyTest, ReadsTheTextOfASignedMailAndLeavesInlineSignaturesAlone) {
  OpenedMail mail(Multipart("signed", {Plain("-----BEGIN PGP SIGNED MESSAGE-----\n\n- -- x"),
                                       "Content-Type: application/pgp-signature\n\nsig"}));
  EXPECT_EQ(*mail->bodies().text, "-----BEGIN PGP SIGNED MESSAGE-----\n\n- -- x");
  ASSERT_EQ(mail->attachments().size(), 1u);
  EXPECT_EQ(mail->attachments()[0].kind, AttachmentKind::Signature);
  EXPECT_EQ(test::AttachmentBytes(*mail, 0), "sig");
}

TEST(MailBodyTest, HasNoTextWhereThereIsOnlyAnAttachment) {
  OpenedMail mail("Content-Type: text/plain; name=a.txt\nContent-Disposition: attachment\n\nx");
  EXPECT_FALSE(mail->bodies().text.has_value());
  ASSERT_EQ(mail->attachments().size(), 1u);
  EXPECT_EQ(mail->attachments()[0].name, "a.txt");
}

TEST(MailBodyTest, TakesTextThatIsNamedForTextWhereItIsTheMail) {
  OpenedMail mail("Content-Type: text/plain; name=a.txt\n\nx");
  EXPECT_EQ(*mail->bodies().text, "x");
  EXPECT_TRUE(mail->attachments().empty());
}

TEST(MailBodyTest, DropsNulsAtTheEnd) {
  using namespace std::string_literals;
  EXPECT_EQ(*OpenedMail("Subject: x\n\na\0b\0\0"s)->bodies().text, "a\0b"s);
}

}  // namespace
}  // namespace tarn::archive

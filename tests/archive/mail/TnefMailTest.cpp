// Mails with a winmail.dat: the message in it is the mail's.
#include "MailReading.h"
#include "archive/mapi/Tags.h"
#include "support/TnefBuilder.h"

namespace tarn::archive {
namespace {

using namespace mapi;
using test::AttachmentBytes;
using test::OpenedMail;
using test::TnefAttachmentLevel;
using test::TnefBuilder;
using test::TnefList;
using test::TnefMessageLevel;

std::string Base64(const std::string& bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const std::string three = bytes.substr(i, 3);
    uint32_t bits = 0;
    for (size_t k = 0; k < 3; ++k) {
      bits = bits << 8 | (k < three.size() ? static_cast<unsigned char>(three[k]) : 0u);
    }
    for (size_t k = 0; k < 4; ++k) {
      text += k <= three.size() ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
    }
    if (text.size() % 77 == 76) text += '\n';
  }
  return text;
}

std::string MailWith(const std::string& text, const std::string& tnef) {
  return "Subject: outer\nContent-Type: multipart/mixed; boundary=b\n\n--b\n\n" + text +
         "\n--b\nContent-Type: a/b; name=first\n\n1\n--b\n"
         "Content-Type: application/ms-tnef; name=winmail.dat\n"
         "Content-Transfer-Encoding: base64\n\n" +
         Base64(tnef) + "\n--b\nContent-Type: a/b; name=last\n\n2\n--b--\n";
}

TnefBuilder Message() {
  TnefBuilder inner;
  inner.properties(TnefList().text(kTagSubject, u"Inner"));
  TnefBuilder message;
  message.codePage(1252).text8(TnefMessageLevel, 0x8008, "IPM.Microsoft Schedule.MtgReq");
  message.properties(TnefList().text(kTagBody, u"Hello").binary(kTagHtml, "<p>Hello</p>"));
  message.attachment().text8(TnefAttachmentLevel, 0x8010, "A.TXT").attachmentData("bytes");
  message.attachment().attachmentProperties(
      TnefList()
          .integer(kTagAttachMethod, 5)
          .object(kTagAttachData, test::kTnefMessageInterface, inner.write()));
  return message;
}

std::vector<std::string> NamesOf(Item& item) {
  std::vector<std::string> names;
  for (const Attachment& attachment : item.attachments()) names.push_back(attachment.name);
  return names;
}

TEST(TnefMailTest, GivesItsAttachmentsInItsPlace) {
  OpenedMail mail(MailWith("text", Message().write()));
  EXPECT_EQ(mail->fields(Detail::Headline).attachmentCount, 4u);
  EXPECT_EQ(NamesOf(*mail), (std::vector<std::string>{"first", "A.TXT", "Inner", "last"}));
  EXPECT_EQ(AttachmentBytes(*mail, 0), "1");
  EXPECT_EQ(AttachmentBytes(*mail, 1), "bytes");
  EXPECT_EQ(AttachmentBytes(*mail, 3), "2");
  const auto inner = mail->embedded(2);
  ASSERT_TRUE(inner.ok());
  EXPECT_EQ((*inner)->place().id, "1/3");
  EXPECT_EQ((*inner)->place().parent, "1");
  EXPECT_EQ((*inner)->fields(Detail::Headline).subject, "Inner");
  EXPECT_TRUE(mail->troubles().empty());
}

TEST(TnefMailTest, GivesItsTextWhereTheMailHasNone) {
  OpenedMail mail(MailWith("text", Message().write()));
  EXPECT_EQ(mail->bodies().text, "text");
  EXPECT_EQ(mail->bodies().html->bytes, "<p>Hello</p>");
  OpenedMail blank(MailWith(" ", Message().write()));
  EXPECT_EQ(blank->bodies().text, "Hello");
}

TEST(TnefMailTest, IsOfItsClassAndHasItsProperties) {
  OpenedMail mail(MailWith("text", Message().write()));
  EXPECT_EQ(mail.fields().subject, "outer");
  EXPECT_EQ(mail.fields().messageClass, "IPM.Schedule.Meeting.Request");
  ASSERT_NE(mail->properties(), nullptr);
  EXPECT_TRUE(mail->properties()->properties().typeOf(kTagBody).has_value());
  OpenedMail plain("Subject: x\n\n");
  EXPECT_EQ(plain->properties(), nullptr);
}

TEST(TnefMailTest, IsAFileWhereItCannotBeRead) {
  OpenedMail mail(MailWith("text", "no message"));
  EXPECT_EQ(NamesOf(*mail), (std::vector<std::string>{"first", "winmail.dat", "last"}));
  EXPECT_EQ(AttachmentBytes(*mail, 1), "no message");
  EXPECT_EQ(mail.fields().messageClass, "IPM.Note");
  ASSERT_EQ(mail->troubles().size(), 1u);
  EXPECT_EQ(mail->troubles()[0].kind, TroubleKind::Unsupported);
}

TEST(TnefMailTest, GivesWhatIsThereOfOneThatIsCutOff) {
  std::string bytes = Message().write();
  bytes.resize(bytes.size() - 40);
  OpenedMail mail(MailWith("text", bytes));
  EXPECT_EQ(NamesOf(*mail)[1], "A.TXT");
  EXPECT_FALSE(mail->troubles().empty());
}

}  // namespace
}  // namespace tarn::archive

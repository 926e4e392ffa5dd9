// Reads every MSG file below the folder that MAIL_CORPUS names, and compares what is in each with a
// table. What the table has was looked at once: pictures whose every chunk has its checksum and
// that end where they should, documents, signed mails and texts that are whole.

#include <glib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>

#include "archive/msg/MsgReader.h"

namespace tarn::archive {
namespace {

const std::map<std::string, std::string>& Expected() {
  static const std::map<std::string, std::string> expected = {
      {"attachment-with-a-bracket-in-the-name.msg",
       "Attachment with the name \"Attachment[1.pdf\" | Attachment[1.pdf fb6541eceb96b4b2"},
      {"attachments.msg",
       "Delivery delayed:RE: Bosco Fraud Cases [ 2 of 8] |  4102e66851930985 |  2e11e6ff04595ff7"},
      {"cc-duplicate-recipients-bug.msg", "Testing MSG"},
      {"chinese-message-garbled.msg", "测试邮件 | image001.png 9478424d94caed9f"},
      {"chinese-message-un-garbled.msg", "测试邮件 | image001.png 9478424d94caed9f"},
      {"chinese-message.msg", ""},
      {"embedded-image.msg", "email test | image001.png 42d5e995bf948470"},
      {"forward-with-attachments-and-embedded-images.msg",
       "FW: Delivery delayed:RE: Bosco Fraud Cases [ 2 of 8] |  4102e66851930985 |  "
       "2e11e6ff04595ff7 | image001.png 0253c2b663a1dade | image002.png 6d8fb10bcdf67e45"},
      {"html-mail-with-replyto-and-attachment-and-embedded-image.msg",
       "hey | thumbsup 0539848612ae11a7 | dresscode.txt ce3f6bf563471c64 | location.txt "
       "50b7817f3bd8d9f5"},
      {"issue-16-rtf-sample-email-with-attachment.msg",
       "RtfSampleEmailWithAttachment | SampleAttachment.pdf 4845736e5fd1fe35"},
      {"issue-16-rtf-sample-email.msg", "RtfSampleEmail"},
      {"issue-87-client-submit-time-corrected.msg",
       "test | image001.jpg 25237d76361c0cb8 | image002.png d2666eba6a7d3a8d"},
      {"issue-87-client-submit-time.msg",
       "test | image001.jpg 25237d76361c0cb8 | image002.png d2666eba6a7d3a8d"},
      {"nested-simple-mail.msg",
       "outlookmsg2html Testmail | outlookmsg2html Testmail [outlookmsg2html Testmail]"},
      {"outlookmessage-with-x500-dual-address.msg", "TestSigned2 | smime.p7m 64ef693d5793b85e"},
      {"plain-chain.msg", "RE: [Redmine - Bug #10180] redmine not truncating emails properly"},
      {"s-mime-test-message-encrypted.msg",
       "S/MIME test message encrypted | smime.p7m af66ed14f03a41bb"},
      {"s-mime-test-message-signed-encrypted.msg",
       "S/MIME test message signed & encrypted | smime.p7m 6941fb9c4818ba9f"},
      {"s-mime-test-message-signed.msg", "S/MIME test message signed |  4627583e26762c74"},
      {"simple-email-with-to-and-cc-multiple.msg", "Test E-Mail"},
      {"simple-email-with-to-and-cc-single.msg", "Test E-Mail"},
      {"simple-reply-with-cc.msg", "Re: Sent by CV Contact Form"},
      {"simple-sent.msg", "(outlookEMLandMSGconverter Trial Version Import) BitDaddys Software"},
      {"test-at-sign-in-personal-from-header.msg",
       "Test at sign in personal 3 ! the property PidTagSentRepresentingEmailAddress (0x0065) "
       "cannot be read: its stream is missing"},
      {"test-subject-duplicated-recipients.msg", "test subject duplicated recipients"},
      {"testgetmsgattch.msg",
       "测试多人邮件抄送msg格式 | 剑来.jpg c67410aa94417cc5 | test mail [test mail]"},
      {"tst-unicode.msg", "Testcase"},
      {"unsent-draft.msg", "MSG Test File"},
  };
  return expected;
}

std::string Sha256(const std::string& bytes) {
  char* const digest = g_compute_checksum_for_data(
      G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(bytes.data()), bytes.size());
  std::string text(digest);
  g_free(digest);
  return text;
}

// The subject; for each attachment its name and the first digits of its SHA-256; an embedded item
// in brackets; troubles at the end.
std::string Describe(Item& item) {
  std::string text = item.fields(Detail::Envelope).subject;
  const std::vector<Attachment> attachments = item.attachments();
  for (size_t index = 0; index < attachments.size(); ++index) {
    text += " | " + attachments[index].name + " ";
    if (attachments[index].kind == AttachmentKind::Item) {
      const auto embedded = item.embedded(index);
      text += embedded ? "[" + Describe(**embedded) + "]" : embedded.trouble().reason;
      continue;
    }
    const auto source = item.open(index);
    const auto bytes = source ? ReadAll(**source, size_t{1} << 28) : source.trouble();
    text += bytes ? Sha256(*bytes).substr(0, 16) : bytes.trouble().reason;
  }
  const Bodies bodies = item.bodies();
  for (const Trouble& trouble : bodies.troubles) text += " ! " + trouble.reason;
  for (const Trouble& trouble : item.troubles()) text += " ! " + trouble.reason;
  return text;
}

TEST(MsgCorpus, EveryMessage) {
  const char* const corpus = std::getenv("MAIL_CORPUS");
  if (corpus == nullptr) {
    std::cout << "MAIL_CORPUS names no folder of mail files; nothing to read\n";
    return;
  }
  size_t known = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    if (entry.path().extension() != ".msg") continue;
    const std::string name = entry.path().filename().string();
    SCOPED_TRACE(name);
    const auto reader = OpenMsg(entry.path());
    ASSERT_TRUE(reader.ok());
    std::optional<Entry> first = (*reader)->next();
    ASSERT_TRUE(first.has_value());
    const auto item = std::get<std::unique_ptr<Item>>(std::move(*first));
    const std::string found = Describe(*item);
    const auto expected = Expected().find(name);
    if (expected == Expected().end()) {
      std::cout << name << ": " << found << "\n";
      continue;
    }
    EXPECT_EQ(found, expected->second);
    ++known;
    EXPECT_FALSE((*reader)->next().has_value());
  }
  EXPECT_NE(known, 0u);
}

}  // namespace
}  // namespace tarn::archive

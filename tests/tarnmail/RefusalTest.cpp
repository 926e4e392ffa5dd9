// Why mails are refused: each reason with a file that has it, and files beside it that do not.

#include "TarnmailFixture.h"
#include "console/Json.h"
#include "support/RtfCompressor.h"
#include "support/SampleMails.h"
#include "support/msg/MsgBuilder.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {
namespace {

using nlohmann::json;

class Refusal : public TarnmailTest {
 protected:
  // The line that all four commands give for the bytes, without the file's name.
  std::string reasonOfAll(std::string_view bytes) {
    const std::string file = mail(bytes, "mail");
    const std::string line = failure(1, {"document", file});
    EXPECT_EQ(failure(1, {"info", "--json", file}), line);
    EXPECT_EQ(failure(1, {"document", "--text", "--temp-files", file}), line);
    EXPECT_EQ(failure(1, {"attachments", file}), line);
    EXPECT_EQ(failure(1, {"extract", file, "1"}), line);
    EXPECT_TRUE(line.starts_with("mail: ")) << line;
    return line.substr(6);
  }

  std::string reason(std::string_view bytes, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"document", mail(bytes, "mail")});
    const std::string line = failure(1, options);
    EXPECT_TRUE(line.starts_with("mail: ")) << line;
    return line.size() < 6 ? line : line.substr(6);
  }
};

const std::string kFrom = "From: a@example.com\r\n";
const std::string kTo = "To: b@example.com\r\n";
const std::string kDate = "Date: Sat, 21 Nov 2026 10:00:00 +0000\r\n";
const std::string kText = "\r\nSome text\r\n";

TEST_F(Refusal, NamesTheFieldsThatAMailLacks) {
  EXPECT_EQ(reasonOfAll(kFrom + kTo + kText), "the mail has no Date line (-9)");
  EXPECT_EQ(reasonOfAll(kDate + kTo + kText), "the mail has no From line (-9)");
  EXPECT_EQ(reasonOfAll(kDate + kFrom + kText), "the mail has no recipient (To, Cc or Bcc) (-9)");
  EXPECT_EQ(reasonOfAll(kDate + kText),
            "the mail has no From line and no recipient (To, Cc or Bcc) (-9)");
  EXPECT_EQ(reasonOfAll("Subject: Nothing else\r\n" + kText),
            "the mail has no From line, no Date line and no recipient (To, Cc or Bcc) (-9)");
  // What comes after the first empty line is no header.
  EXPECT_EQ(reasonOfAll(kFrom + kTo + kText + kDate), "the mail has no Date line (-9)");
  // The first empty line with CR LF is the first one, if there is any.
  output({"document", mail("From: a\nTo: b\n\nDate: c\r\n\r\n")});
}

TEST_F(Refusal, TakesEmptyFieldsAndEveryRecipient) {
  for (const char* recipient : {"To:\r\n", "Cc: c@example.com\r\n", "BCC: d@example.com\r\n"}) {
    output({"document", mail("From:\r\nDATE:\r\n" + std::string(recipient) + kText)});
  }
}

TEST_F(Refusal, SaysThatAFileIsNoMail) {
  const std::string line = "not a mail file: no From, Date, To, Cc or Bcc line in its header (-9)";
  EXPECT_EQ(reasonOfAll("%PDF-1.4 and so on"), line);
  EXPECT_EQ(reasonOfAll(std::string(500, '\xFF')), line);
  EXPECT_EQ(reasonOfAll("The text speaks of From: and To: and Date: within a line.\n"), line);
}

TEST_F(Refusal, NamesTheTypeThatCannotBeShown) {
  const std::string fields = kFrom + kTo + kDate;
  EXPECT_EQ(reasonOfAll(fields + "Content-Type: application/pdf; name=\"a\"\r\n" + kText),
            "a body of the type application/pdf cannot be shown, only text/plain and text/html "
            "(-9)");
  EXPECT_EQ(reasonOfAll(fields + "Content-Type:text/html\r\n" + kText),
            "the value of its Content-Type line does not come one blank after the colon (-9)");
  EXPECT_EQ(reasonOfAll(fields + "Content-Type: multipart/mixed\r\n" + kText),
            "the mail is a multipart that names no boundary in its header (-9)");
  EXPECT_EQ(reasonOfAll(fields + "Content-Type:\r\n" + kText),
            "its Content-Type line is empty (-9)");
  EXPECT_EQ(reasonOfAll(fields + "Content-Type: a\x1b[2J\r\n" + kText),
            "a body of the type a\\x1b[2J cannot be shown, only text/plain and text/html (-9)");
}

std::string Multipart(const std::string& parts) {
  return kFrom + kTo + kDate + "Content-Type: multipart/mixed; boundary=\"sep\"\r\n\r\n" + parts;
}

TEST_F(Refusal, SaysThatNoPartIsABody) {
  const std::string line = "the mail has no part that can be shown as its body (-9)";
  EXPECT_EQ(reasonOfAll(Multipart("--sep\r\nContent-Type: application/pdf\r\n\r\n%PDF\r\n--sep--")),
            line);
  EXPECT_EQ(reasonOfAll(Multipart("No part at all\r\n")), line);
}

TEST_F(Refusal, SaysThatAMultipartIsNotClosed) {
  EXPECT_EQ(reason(Multipart("--sep\r\nContent-Type: text/plain\r\n\r\nHi\r\n--sep\r\n"
                             "Content-Type: image/png; name=\"a.png\"\r\n\r\nabcdef\r\n")),
            "a multipart of the mail is not closed, and its last image has no place in the body "
            "(2)");
}

// Multiparts in one another, that many.
std::string Nested(int depth) {
  std::string text = kFrom + kTo + kDate;
  for (int i = 0; i < depth; ++i) {
    // None begins another.
    const std::string boundary = "level" + std::to_string(1000 + i);
    text += "Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\r\n\r\n--" + boundary +
            "\r\n";
  }
  return text + "Content-Type: text/plain\r\n\r\nDeep\r\n";
}

TEST_F(Refusal, SaysThatMultipartsNestTooDeep) {
  EXPECT_EQ(reasonOfAll(Nested(501)), "its multiparts nest more than 500 deep (-1)");
  output({"document", mail(Nested(500))});
}

TEST_F(Refusal, SaysThatAPartInBase64IsEmpty) {
  const std::string text = "--sep\r\nContent-Type: text/plain\r\n\r\nHi\r\n";
  const std::string empty =
      "--sep\r\nContent-Type: a/b\r\nContent-Transfer-Encoding: base64\r\n\r\n";
  EXPECT_EQ(reasonOfAll(Multipart(text + empty + "\r\n--sep--")).substr(0, 50),
            "a part of the mail is said to be base64 and is emp");
  // What is too deep, but comes later, is not the reason.
  EXPECT_EQ(reason(Multipart(empty + "\r\n--sep\r\n" + Nested(501))),
            "a part of the mail is said to be base64 and is empty (-1)");
}

TEST_F(Refusal, NamesWhatAStoresMessageLacks) {
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder& inbox = store.folder("Inbox").count(5);
  inbox.message().subject(u"LocalFreebusy").html("passed over");
  inbox.message().subject(u"Plain").body(u"only");
  inbox.message().subject(u"None");
  inbox.message().subject(u"Html").html("a");
  const std::string bytes = store.bytes();
  const std::string plain = "message 1 has nothing but a plain body, which --text shows (-9)";
  EXPECT_EQ(reason(bytes), plain);
  EXPECT_EQ(reason(bytes, {"-m", "2"}), "message 2 has no body (-9)");
  EXPECT_EQ(reason(bytes, {"-m", "2", "--text"}), "message 2 has no body (-9)");
  EXPECT_EQ(reason(bytes, {"-m", "3", "--text"}),
            "message 3 has no plain body; without --text its other body is shown (-9)");
  EXPECT_EQ(reason(bytes, {"-m", "4"}),
            "the store counts 5 messages and holds 3 that can be read (-9)");

  EXPECT_EQ(output({"info", "mail"}),
            "Format:      PST\n"
            "Messages:    5\n"
            "Message:     1\n"
            "Document:    none: " +
                plain +
                "\n"
                "Pages:       unknown\n"
                "Attachments: unknown\n");
  EXPECT_EQ(host::ParsedJson<json>(output({"info", "--json", "-m", "2", "mail"})),
            json({{"file", "mail"},
                  {"format", "PST"},
                  {"messages", 5},
                  {"message", 2},
                  {"document", nullptr},
                  {"pages", nullptr},
                  {"attachments", nullptr},
                  {"refusal", {{"code", -9}, {"reason", "message 2 has no body (-9)"}}}}));
}

TEST_F(Refusal, NamesDamagedRtfOfAStore) {
  std::string rtf = PackRtf("{\\rtf1 Hello}");
  rtf[12] ^= 1;  // of its checksum
  StoreBuilder store(PstLayout::Ansi);
  FolderBuilder& inbox = store.folder("Inbox");
  inbox.message().subject(u"First").html("a");
  inbox.message().subject(u"Damaged").rtf(rtf);
  inbox.message().subject(u"Last").html("b");
  const std::string bytes = store.bytes();
  EXPECT_EQ(reason(bytes, {"-m", "2"}),
            "the compressed RTF of message 2, or of one before it, is damaged (-9)");
  EXPECT_EQ(reason(bytes, {"-m", "3"}),
            "the compressed RTF of message 3, or of one before it, is damaged (-9)");
  output({"document", "-m", "1", "mail"});
}

TEST_F(Refusal, NamesAnEmptyStore) {
  StoreBuilder empty(PstLayout::Unicode);
  EXPECT_EQ(reasonOfAll(empty.bytes()), "the store has no messages (-13)");
  EXPECT_EQ(failure(1, {"info", "-m", "3", "mail"}), "mail: the store has no messages (-13)");
}

TEST_F(Refusal, NamesWhatAnMsgFileLacks) {
  std::string rtf = PackRtf("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\pard Hello}");
  MsgBuilder whole;
  whole.text(0x0037, u"Whole").binary(0x1009, rtf);
  output({"document", mail(whole.write())});

  rtf[12] ^= 1;  // of its checksum
  MsgBuilder damaged;
  damaged.text(0x0037, u"Damaged").binary(0x1009, rtf);
  EXPECT_EQ(reason(damaged.write()), "the message's compressed RTF is damaged (-9)");

  MsgBuilder empty;
  empty.text(0x0037, u"Empty").text(0x1000, u"");
  EXPECT_EQ(reason(empty.write()), "the message has no body that can be shown (-9)");

  MsgBuilder html;
  html.text(0x0037, u"Html").text(0x1000, u"").binary(0x1013, "<html>a</html>");
  EXPECT_EQ(reason(html.write(), {"--text"}),
            "the message has no plain body; without --text its other body is shown (-9)");
  output({"document", "mail"});

  EXPECT_EQ(reason("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 and nothing else"),
            "begins like an MSG file, but its compound file is damaged (-9)");
}

}  // namespace
}  // namespace tarn::test

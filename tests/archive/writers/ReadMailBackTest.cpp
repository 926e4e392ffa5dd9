// What is written as internet mail, read as such: the fields, texts and attachments are the same.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "archive/mail/MailBytes.h"
#include "archive/mail/MailItem.h"
#include "archive/mail/MboxScan.h"
#include "archive/writers/FakeItem.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

std::string EmlOf(const FakeContent& content) {
  FakeItem item(content);
  TextSink sink;
  EXPECT_TRUE(WriteEml(item, sink).lost.empty());
  return sink.text;
}

std::unique_ptr<Item> ReadBack(const std::string& eml) {
  ItemPlace place{"1", std::nullopt, std::make_shared<const std::vector<std::string>>()};
  auto source = mail::MailSourceOfFile(mail::BytesInMemory(eml), std::move(place));
  return mail::MakeMailItem(std::move(*source));
}

std::string TextOf(const Address& address) { return address.name + "|" + address.address; }

std::string TextOf(const std::vector<Address>& addresses) {
  std::string text;
  for (const Address& address : addresses) text += TextOf(address) + "\n";
  return text;
}

std::string Repeated(std::string_view text, size_t count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

std::string WithoutLastLineEnd(std::string text) {
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

std::string WithCrLf(std::string_view text) {
  std::string lines;
  for (const char c : text) lines += c == '\n' ? "\r\n" : std::string(1, c);
  return lines;
}

// Texts that a line of a header may not have as they are.
std::vector<std::string> HardTexts() {
  return {"x",
          "a  b",
          "a \"quoted\" b",
          "back\\slash",
          "\\\\server\\share",
          "C:\\new.txt",
          "comma, semi; colon: at@ <angle> (comment) [b]",
          "\u00FC",
          "\u00FC \u00E4 \u00F8",
          "a \u00FC b \u00E4",
          "100% _under_ =equal= ?what?",
          "=?",
          "?=",
          "it's '' 'quoted'",
          "utf-8''%41",
          "*0",
          "\U0001F600 smile",
          "\u4F1A\u8B70\u8CC7\u6599",
          "\u202Ertl\u202C",
          "trailing.",
          ".leading",
          "@",
          "a@b",
          "<a@b>",
          "\"",
          "(",
          ")",
          "\\",
          "\u00E9\\",
          "\u00E9\"",
          "\u00FC, \u00E4 <a@b>",
          Repeated("word ", 60) + "end",
          Repeated("x", 300),
          Repeated("\u00FC", 300),
          Repeated("\U0001F600", 100),
          Repeated("\u00FC ", 100) + "end",
          Repeated("ab\u00FC", 100),
          Repeated("longword", 30) + " \u00FC " + Repeated("longword", 30),
          Repeated("\"", 80),
          Repeated("a,b; ", 40) + "c",
          "end with \u00FC"};
}

TEST(ReadEmlBackTest, HasTheSameSubject) {
  for (const std::string& text : HardTexts()) {
    FakeContent content;
    content.fields.subject = text;
    const std::string eml = EmlOf(content);
    EXPECT_EQ(ReadBack(eml)->fields(Detail::Envelope).subject, text) << eml;
  }
}

TEST(ReadEmlBackTest, HasTheSameNames) {
  for (const std::string& text : HardTexts()) {
    FakeContent content;
    content.fields.from = {text, "ann@example.com"};
    content.fields.to = {{text, "bob@example.com"}, {"Eve", "eve@example.com"}, {text, "x@y"}};
    content.fields.cc = {{text, ""}, {"Eve", "eve@example.com"}};
    const std::string eml = EmlOf(content);
    const auto item = ReadBack(eml);
    const ItemFields& fields = item->fields(Detail::Envelope);
    EXPECT_EQ(TextOf(fields.from), TextOf(content.fields.from)) << eml;
    EXPECT_EQ(TextOf(fields.to), TextOf(content.fields.to)) << eml;
    EXPECT_EQ(TextOf(fields.cc), TextOf(content.fields.cc)) << eml;
  }
}

TEST(ReadEmlBackTest, HasTheSameAddresses) {
  for (const std::string address :
       {"a@b",   "a.b.c@d.e",   "a..b@c", ".a@b",     "a.@b",        "a+b=c@d",   "a'b@c",
        "a/b@c", "a@[1.2.3.4]", "a=b@c",  "\u00FC@b", "a@\u00FC.de", "!#$%&*-@b", "a@b..c",
        "{a}@b", "a@b_c",       "a[1]@b", "a@b/c",    "=?x?=@b",     "?@b",       "a@b?c"}) {
    for (const std::string name : {"", "Ann", "\u00FC"}) {
      FakeContent content;
      content.fields.from = {name, address};
      content.fields.to = {{name, address}, {"Eve", "eve@example.com"}};
      const std::string eml = EmlOf(content);
      const auto item = ReadBack(eml);
      const ItemFields& fields = item->fields(Detail::Envelope);
      EXPECT_EQ(TextOf(fields.from), TextOf(content.fields.from)) << eml;
      EXPECT_EQ(TextOf(fields.to), TextOf(content.fields.to)) << eml;
    }
  }
}

TEST(ReadEmlBackTest, HasTheSameNamesOfFiles) {
  for (const std::string& text : HardTexts()) {
    for (const std::string type : {"image/png", "text/plain", "message/rfc822", ""}) {
      FakeContent content;
      content.bodies.text = "x";
      content.attach(text, type, "bytes");
      Attachment& picture = content.attach("p.png", "image/png", "p");
      picture.contentId = text;
      picture.contentLocation = text;
      const std::string eml = EmlOf(content);
      const auto item = ReadBack(eml);
      ASSERT_EQ(item->attachments().size(), 2u) << eml;
      EXPECT_EQ(item->attachments()[0].name, text) << eml;
      EXPECT_EQ(item->attachments()[1].contentLocation, text) << eml;
      EXPECT_EQ(*ReadAll(**item->open(0), 100), "bytes") << eml;
    }
  }
}

TEST(ReadEmlBackTest, HasTheSameTargets) {
  for (const std::string& text : HardTexts()) {
    FakeContent content;
    content.bodies.text = "x";
    Attachment& added = content.list.emplace_back();
    added.kind = AttachmentKind::Reference;
    added.name = "n";
    added.target = text;
    const std::string eml = EmlOf(content);
    const auto item = ReadBack(eml);
    ASSERT_EQ(item->attachments().size(), 1u) << eml;
    EXPECT_EQ(item->attachments()[0].target, text) << eml;
    EXPECT_EQ(item->attachments()[0].name, "n") << eml;
  }
}

TEST(ReadEmlBackTest, HasTheSameIds) {
  for (const std::string id : {"a@b", "a", "a..b@", "\u00FC@b", "a\"b@c", "a,b@c", "a;b:c@d",
                               "[a]@b", "a\\b@c", "a@[b]", "$a%=?@b"}) {
    FakeContent content;
    content.fields.messageId = id;
    content.bodies.html = HtmlBody{"<img src=cid:x>", "utf-8"};
    Attachment& picture = content.attach("p.png", "image/png", "p");
    picture.contentId = id;
    picture.isInline = true;
    const std::string eml = EmlOf(content);
    const auto item = ReadBack(eml);
    EXPECT_EQ(item->fields(Detail::Envelope).messageId, id) << eml;
    ASSERT_EQ(item->attachments().size(), 1u) << eml;
    EXPECT_EQ(item->attachments()[0].contentId, id) << eml;
  }
  for (const size_t size : {100u, 1000u}) {
    FakeContent content;
    content.fields.messageId = std::string(size, 'x') + "@example.com";
    const std::string eml = EmlOf(content);
    EXPECT_EQ(ReadBack(eml)->fields(Detail::Envelope).messageId, content.fields.messageId) << eml;
  }
}

TEST(ReadEmlBackTest, HasTheSameTexts) {
  for (const std::string& text :
       std::vector<std::string>{"",
                                "\n",
                                "x",
                                "x\n",
                                "\nx",
                                " x",
                                "x ",
                                "x \ny",
                                "x\t\ny",
                                "From x\nFrom y",
                                ">From x",
                                "--\nAnn",
                                "--=_x",
                                "-- \nAnn",
                                ".\n",
                                "..\n.x",
                                "=",
                                "=41",
                                "a=\nb",
                                "\u00FC",
                                "\u00FC\n\n",
                                Repeated("x", 2000),
                                Repeated("\u00FC", 2000),
                                Repeated("\u4F1A", 2000) + "\n",
                                Repeated("x ", 2000),
                                Repeated("x=\u00FC ", 500),
                                "a\x01\x7F b",
                                "Content-Type: x\n\ny",
                                Repeated("x", 990) + " \n" + Repeated("x", 991),
                                Repeated("From ", 40) + "\u00FC"}) {
    for (const std::string& html : {std::string(), "<p>" + text + "</p>"}) {
      for (const bool isWithFile : {false, true}) {
        FakeContent content;
        content.bodies.text = text;
        if (!html.empty()) content.bodies.html = HtmlBody{html, "utf-8"};
        if (isWithFile) content.attach("a", "a/b", "x");
        const std::string eml = EmlOf(content);
        const Bodies back = ReadBack(eml)->bodies();
        EXPECT_EQ(WithoutLastLineEnd(back.text.value_or("")), WithoutLastLineEnd(text)) << eml;
        if (!html.empty()) {
          EXPECT_EQ(back.html ? back.html->bytes : "none", WithCrLf(html)) << eml;
        }
      }
    }
  }
}

// Mails of an mbox that other mails follow, whatever they end with and whatever their lines begin
// with.
TEST(ReadMboxBackTest, HasTheSameMails) {
  const std::vector<std::string> mails = {
      "A: b\n\nx\n",
      "A: b\n\nx",
      "A: b\n\n>",
      "A: b\n\n>>",
      "A: b\n\n>From",
      "A: b\n\nFrom x\n>From y\n>>From z",
      "A: b\n\nFrom ann@example.com Mon Jan  1 10:34:56 2024\nSubject: c\n\nd\n",
      "A: b\n\n\nFrom ann@example.com Mon Jan  1 10:34:56 2024\nSubject: c\n\nd\n",
      "A: b\n\n\n\n",
      "A: b\n\n",
      "A: b\nContent-Length: 2\n\nFrom x\n",
      "A: b\nContent-Length: 8\n\nx\nFrom y\n",
      "Subject: " + std::string(100000, 'x') + "\n\n" + std::string(100000, 'F') + "\nFrom x\n"};
  TextSink box;
  for (const std::string& mail : mails) {
    FakeContent content;
    content.mail = mail;
    FakeItem item(content);
    WriteMbox(item, box);
  }
  const mail::SharedBytes bytes = mail::BytesInMemory(box.text);
  mail::MboxScan scan(*bytes);
  uint64_t start = *scan.first();
  for (const std::string& mail : mails) {
    SCOPED_TRACE(mail.substr(0, 100));
    const auto found = scan.mailAt(start);
    ASSERT_TRUE(found.ok());
    start = found->next;
    const auto read = mail::RangeOf(bytes, found->text, found->end, found->quotes);
    const std::string lineEnd = mail.ends_with('\n') ? "" : "\n";
    EXPECT_EQ(*mail::ReadRange(*read, 0, box.text.size()), mail + lineEnd);
  }
  EXPECT_EQ(start, box.text.size());
}

}  // namespace
}  // namespace tarn::archive

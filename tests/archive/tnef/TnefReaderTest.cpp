#include "archive/tnef/TnefReader.h"

#include <gtest/gtest.h>

#include "archive/mapi/MapiItem.h"
#include "archive/mapi/Tags.h"
#include "support/TempDirectory.h"
#include "support/TnefBuilder.h"

namespace tarn::archive {
namespace {

using namespace mapi;
using test::TnefAttachmentLevel;
using test::TnefBuilder;
using test::TnefList;
using test::TnefMessageLevel;

constexpr uint64_t kTime = 133590332960000000;  // 2024-05-01T10:34:56Z

TnefBuilder Sample() {
  TnefBuilder inner;
  inner.text8(TnefMessageLevel, 0x8008, "IPM.Microsoft Mail.Note");
  inner.properties(TnefList().text(kTagSubject, u"Inner"));
  TnefBuilder mail;
  mail.codePage(1252).text8(TnefMessageLevel, 0x8008, "IPM.Microsoft Mail.Note");
  mail.text8(TnefMessageLevel, 0x8004,
             "Gr\xFC\xDF"
             "e");
  mail.properties(TnefList()
                      .time(kTagClientSubmitTime, kTime)
                      .text8(kTagSenderName, "Ann")
                      .text8(kTagSenderSmtpAddress, "ann@example.com")
                      .text8(kTagBody, "H\xE9llo")
                      .binary(kTagHtml, "<p>Hello</p>"));
  mail.recipients({TnefList()
                       .integer(kTagRecipientType, 1)
                       .text(kTagDisplayName, u"Bob")
                       .text(kTagSmtpAddress, u"bob@example.com")});
  mail.attachment().text8(TnefAttachmentLevel, 0x8010, "A.TXT").attachmentData("bytes");
  mail.attachmentProperties(
      TnefList().text(kTagAttachLongFilename, u"long name.txt").text8(kTagAttachMimeTag, "text/x"));
  mail.attachment().attachmentProperties(
      TnefList()
          .integer(kTagAttachMethod, 5)
          .object(kTagAttachData, test::kTnefMessageInterface, inner.write()));
  return mail;
}

TEST(TnefReaderTest, GivesOneItem) {
  const test::TempDirectory directory;
  const std::string bytes = Sample().write();
  const auto reader = std::move(*OpenTnef(directory.write("winmail.dat", bytes)));
  std::optional<Entry> entry = reader->next();
  ASSERT_TRUE(entry.has_value());
  const auto item = std::get<std::unique_ptr<Item>>(std::move(*entry));
  EXPECT_EQ(item->place().id, "1");
  const ItemFields fields = item->fields(Detail::Envelope);
  EXPECT_EQ(fields.messageClass, "IPM.Note");
  EXPECT_EQ(fields.subject, "Grüße");
  EXPECT_EQ(fields.from, (Address{"Ann", "ann@example.com"}));
  EXPECT_EQ(fields.to, (std::vector<Address>{{"Bob", "bob@example.com"}}));
  EXPECT_EQ(Iso8601(fields.sent.value()), "2024-05-01T10:34:56Z");
  EXPECT_EQ(fields.size, bytes.size());
  EXPECT_EQ(fields.attachmentCount, 2u);
  EXPECT_EQ(item->bodies().text, "Héllo");
  EXPECT_EQ(item->bodies().html.value().bytes, "<p>Hello</p>");
  const std::vector<Attachment> attachments = item->attachments();
  EXPECT_EQ(attachments[0].kind, AttachmentKind::Data);
  EXPECT_EQ(attachments[0].name, "long name.txt");
  EXPECT_EQ(attachments[0].mediaType, "text/x");
  EXPECT_EQ(attachments[0].size, 5u);
  EXPECT_EQ(*ReadAll(**item->open(0), 99), "bytes");
  EXPECT_EQ(attachments[1].kind, AttachmentKind::Item);
  EXPECT_EQ(attachments[1].name, "Inner");
  const auto inner = std::move(*item->embedded(1));
  EXPECT_EQ(inner->place().id, "1/2");
  EXPECT_EQ(inner->fields(Detail::Envelope).subject, "Inner");
  EXPECT_EQ(inner->fields(Detail::Envelope).messageClass, "IPM.Note");
  EXPECT_TRUE(item->troubles().empty());
  EXPECT_FALSE(reader->next().has_value());
}

TEST(TnefReaderTest, FindsItsItemOnly) {
  const test::TempDirectory directory;
  const auto reader = std::move(*OpenTnef(directory.write("winmail.dat", Sample().write())));
  EXPECT_EQ((*reader->find("1"))->fields(Detail::Headline).subject, "Grüße");
  EXPECT_EQ(reader->find("2").trouble().kind, TroubleKind::Missing);
}

TEST(TnefReaderTest, TellsWhyThereIsNone) {
  const test::TempDirectory directory;
  EXPECT_EQ(OpenTnef(directory.path() / "none").trouble().kind, TroubleKind::Unreadable);
  EXPECT_EQ(OpenTnef(directory.path()).trouble().kind, TroubleKind::Unreadable);
  EXPECT_EQ(OpenTnef(directory.write("a", "")).trouble().kind, TroubleKind::Unsupported);
  EXPECT_EQ(OpenTnef(directory.write("b", "From: x")).trouble().kind, TroubleKind::Unsupported);
  EXPECT_EQ(ReadTnef("\x78\x9F\x3E\x22").trouble().kind, TroubleKind::Unsupported);
  const auto large = directory.write("c", "");
  std::filesystem::resize_file(large, (uint64_t{1} << 30) + 1);
  EXPECT_EQ(OpenTnef(large).trouble().kind, TroubleKind::TooLarge);
}

TEST(TnefReaderTest, ReadsBytesInsideAMail) {
  const auto message = std::move(*ReadTnef(Sample().write()));
  EXPECT_EQ(*message->attachmentCount(), 2u);
  EXPECT_EQ(*message->properties().bytes(kTagSenderName, 9), "Ann");
}

TEST(TnefReaderTest, ItemsWithinItemsEndAtADepth) {
  std::string bytes = TnefBuilder().write();
  for (int depth = 0; depth < kDeepestItem + 5; ++depth) {
    bytes =
        TnefBuilder()
            .attachment()
            .attachmentProperties(TnefList()
                                      .integer(kTagAttachMethod, 5)
                                      .object(kTagAttachData, test::kTnefMessageInterface, bytes))
            .write();
  }
  const test::TempDirectory directory;
  const auto reader = std::move(*OpenTnef(directory.write("winmail.dat", bytes)));
  std::vector<std::unique_ptr<Item>> chain;
  chain.push_back(std::move(*reader->find("1")));
  for (;;) {
    auto next = chain.back()->embedded(0);
    if (!next) {
      EXPECT_EQ(next.trouble().kind, TroubleKind::TooDeep);
      break;
    }
    chain.push_back(std::move(*next));
  }
  EXPECT_EQ(chain.size(), size_t{kDeepestItem} + 1);
}

}  // namespace
}  // namespace tarn::archive

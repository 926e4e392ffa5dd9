#include "archive/msg/MsgReader.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"
#include "archive/msg/MsgStreamNames.h"
#include "archive/msg/StorageFile.h"
#include "support/KernelUsage.h"
#include "support/TempDirectory.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::archive {
namespace {

using namespace mapi;
using test::CompoundBuilder;
using test::CompoundImage;
using test::MsgAttachment;
using test::MsgBuilder;

constexpr int64_t kMoment = 1714559696;  // 2024-05-01T10:34:56Z

// A reader of bytes with its item.
struct Mail {
  explicit Mail(std::string_view bytes) {
    Outcome<std::unique_ptr<ItemReader>> opened = ReadMsg(bytes);
    if (!opened) throw std::runtime_error(opened.trouble().reason);
    reader = std::move(*opened);
    item = std::get<std::unique_ptr<Item>>(std::move(*reader->next()));
  }
  explicit Mail(const MsgBuilder& builder) : Mail(builder.write()) {}

  std::vector<std::string> reasons() {
    item->fields(Detail::Envelope);
    item->attachments();
    std::vector<std::string> reasons;
    for (const Trouble& trouble : item->troubles()) reasons.push_back(trouble.reason);
    return reasons;
  }

  std::unique_ptr<ItemReader> reader;
  std::unique_ptr<Item> item;
};

std::string BytesOfAttachment(Item& item, size_t index) {
  const auto source = item.open(index);
  return source ? *ReadAll(**source, 100000000) : source.trouble().reason;
}

MsgBuilder Sample() {
  MsgBuilder msg;
  msg.text(kTagMessageClass, u"IPM.Note").text(kTagSubject, u"Gr\u00FC\u00DFe");
  msg.text(kTagSenderName, u"Ann").text(kTagSenderSmtpAddress, u"ann@example.com");
  msg.submitTime(FileTimeOf(kMoment)).text(kTagBody, u"Hello\r\n");
  msg.binary(kTagHtml, "<p>Hello</p>").integer(kTagInternetCodepage, 65001);
  msg.recipient(u"Bob", u"bob@example.com").recipient(u"Cy", u"cy@example.com");
  msg.attachment(u"a.png", "png").contentId(u"a@x").mimeType(u"image/png");
  return msg;
}

TEST(MsgReaderTest, GivesOneItem) {
  const std::string bytes = Sample().write();
  const auto reader = std::move(*ReadMsg(bytes));
  std::optional<Entry> entry = reader->next();
  ASSERT_TRUE(entry.has_value());
  const auto item = std::get<std::unique_ptr<Item>>(std::move(*entry));
  EXPECT_EQ(item->place().id, "1");
  EXPECT_FALSE(item->place().parent.has_value());
  EXPECT_TRUE(item->place().folder->empty());
  const ItemFields fields = item->fields(Detail::Envelope);
  EXPECT_EQ(fields.messageClass, "IPM.Note");
  EXPECT_EQ(fields.subject, "Gr\u00FC\u00DFe");
  EXPECT_EQ(fields.from, (Address{"Ann", "ann@example.com"}));
  EXPECT_EQ(fields.sent, (Moment{kMoment, std::nullopt}));
  EXPECT_EQ(fields.to,
            (std::vector<Address>{{"Bob", "bob@example.com"}, {"Cy", "cy@example.com"}}));
  EXPECT_EQ(fields.size, bytes.size());
  EXPECT_EQ(fields.attachmentCount, 1u);
  const Bodies bodies = item->bodies();
  EXPECT_EQ(bodies.text, "Hello\r\n");
  EXPECT_EQ(bodies.html.value().bytes, "<p>Hello</p>");
  EXPECT_EQ(bodies.html.value().charset, "utf-8");
  const Attachment attachment = item->attachments().at(0);
  EXPECT_EQ(attachment.name, "a.png");
  EXPECT_EQ(attachment.mediaType, "image/png");
  EXPECT_EQ(attachment.contentId, "a@x");
  EXPECT_EQ(attachment.size, 3u);
  EXPECT_EQ(BytesOfAttachment(*item, 0), "png");
  EXPECT_TRUE(item->troubles().empty());
  EXPECT_FALSE(reader->next().has_value());
}

TEST(MsgReaderTest, FindsItsItemOnly) {
  const auto reader = std::move(*ReadMsg(Sample().write()));
  EXPECT_EQ((*reader->find("1"))->fields(Detail::Headline).subject, "Gr\u00FC\u00DFe");
  EXPECT_EQ(reader->find("2").trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(reader->find("").trouble().kind, TroubleKind::Missing);
}

TEST(MsgReaderTest, OpensFiles) {
  const test::TempDirectory directory;
  const auto reader = OpenMsg(directory.write("a.msg", Sample().write()));
  ASSERT_TRUE(reader.ok());
  EXPECT_EQ((*(*reader)->find("1"))->fields(Detail::Headline).subject, "Gr\u00FC\u00DFe");
  EXPECT_EQ(OpenMsg(directory.path() / "b.msg").trouble().kind, TroubleKind::Unreadable);
}

TEST(MsgReaderTest, ACompoundFileThatIsNoMessageIsUnsupported) {
  CompoundBuilder document;
  document.stream("WordDocument", "text").storage("ObjectPool");
  const auto reader = ReadMsg(document.write());
  ASSERT_FALSE(reader.ok());
  EXPECT_EQ(reader.trouble().kind, TroubleKind::Unsupported);
  EXPECT_EQ(reader.trouble().reason, "the file is a compound file and no message");
  EXPECT_EQ(ReadMsg("From: ann@example.com\n\n").trouble().reason, "the file is no compound file");
}

TEST(MsgReaderTest, ReadsTextOfCodePages) {
  MsgBuilder msg;
  msg.integer(kTagMessageCodepage, 1251).text8(kTagSubject, "\xCF\xF0\xE8\xE2\xE5\xF2");
  msg.attachment().integer(kTagAttachMethod, 1).text8(kTagAttachLongFilename, "\xE0.txt");
  Mail mail(msg);
  EXPECT_EQ(mail.item->fields(Detail::Headline).subject, "Привет");
  EXPECT_EQ(mail.item->attachments().at(0).name, "а.txt");
}

TEST(MsgReaderTest, FollowsNames) {
  MsgBuilder msg;
  const uint16_t id = msg.named(u"x-shop");
  msg.text(id, u"value");
  Mail mail(msg);
  MapiMessage* const message = mail.item->properties();
  ASSERT_NE(message, nullptr);
  const std::optional<PropertyName> name = message->nameOf(id);
  ASSERT_TRUE(name.has_value());
  EXPECT_EQ(name->name, u"x-shop");
  EXPECT_EQ(message->idOf(*name), id);
  EXPECT_EQ(*message->properties().bytes(id, 100), Wide(u"value"));
}

TEST(MsgReaderTest, GoesIntoEmbeddedMessages) {
  MsgBuilder msg = Sample();
  MsgBuilder& inner = msg.attachment().text(kTagDisplayName, u"shown").embedded();
  inner.text(kTagSubject, u"Inner").recipient(u"Di", u"di@example.com");
  inner.attachment().embedded().text(kTagSubject, u"Innermost");
  Mail mail(msg);
  const std::vector<Attachment> attachments = mail.item->attachments();
  ASSERT_EQ(attachments.size(), 2u);
  EXPECT_EQ(attachments[1].kind, AttachmentKind::Item);
  EXPECT_EQ(attachments[1].name, "shown");
  const auto embedded = std::move(*mail.item->embedded(1));
  EXPECT_EQ(embedded->place().id, "1/2");
  EXPECT_EQ(embedded->place().parent, "1");
  const ItemFields fields = embedded->fields(Detail::Envelope);
  EXPECT_EQ(fields.subject, "Inner");
  EXPECT_EQ(fields.to, (std::vector<Address>{{"Di", "di@example.com"}}));
  EXPECT_FALSE(fields.size.has_value());
  EXPECT_EQ(embedded->attachments().at(0).name, "Innermost");
  const auto innermost = std::move(*embedded->embedded(0));
  EXPECT_EQ(innermost->place().id, "1/2/1");
  EXPECT_EQ(innermost->fields(Detail::Headline).subject, "Innermost");
  EXPECT_TRUE(mail.reasons().empty());
}

TEST(MsgReaderTest, AnEmbeddedMessageMayBeMissing) {
  CompoundBuilder file;
  file.stream(msg::kPropertiesName, std::string(32, '\0'));
  const std::string part = std::string(8, '\0') + test::MsgRecord(kTypeInteger32, 0x3705, 5) +
                           test::MsgRecord(kTypeObject, 0x3701, 0);
  file.storage("__attach_version1.0_#00000000").stream(msg::kPropertiesName, part);
  file.storage("__attach_version1.0_#00000001")
      .stream(msg::kPropertiesName, part)
      .storage("__substg1.0_3701000D")
      .stream("Contents", "of another program");
  Mail mail(file.write());
  ASSERT_EQ(mail.item->attachments().size(), 2u);
  EXPECT_EQ(mail.item->embedded(0).trouble().reason,
            "the storage of the embedded message is missing");
  EXPECT_EQ(mail.item->embedded(1).trouble().reason,
            "the storage of the embedded message holds no message");
  EXPECT_EQ(mail.item->properties()->embedded(2).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(mail.item->properties()->object(2).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(mail.item->properties()->attachment(2).trouble().kind, TroubleKind::Missing);
}

TEST(MsgReaderTest, GivesObjectsAsFiles) {
  CompoundBuilder file;
  file.stream(msg::kPropertiesName, std::string(32, '\0'));
  const std::string part = std::string(8, '\0') + test::MsgRecord(kTypeInteger32, 0x3705, 6);
  file.storage("__attach_version1.0_#00000000")
      .stream(msg::kPropertiesName, part + test::MsgRecord(kTypeObject, 0x3701, 0))
      .storage("__substg1.0_3701000D")
      .stream("CONTENTS", "drawn");
  file.storage("__attach_version1.0_#00000001")
      .stream(msg::kPropertiesName, part + test::MsgRecord(kTypeBinary, 0x3701, 5))
      .stream("__substg1.0_37010102", "bytes");
  Mail mail(file.write());
  ASSERT_EQ(mail.item->attachments().size(), 2u);
  EXPECT_EQ(mail.item->attachments()[0].kind, AttachmentKind::Ole);
  const auto object = std::move(*msg::StorageFile::OfBytes(BytesOfAttachment(*mail.item, 0)));
  EXPECT_EQ(*object->read(*object->find(msg::kRootEntry, "CONTENTS"), 10), "drawn");
  EXPECT_EQ(BytesOfAttachment(*mail.item, 1), "bytes");
}

TEST(MsgReaderTest, PartsAreInTheOrderOfTheirNumbers) {
  CompoundBuilder file;
  file.stream(msg::kPropertiesName, std::string(32, '\0'));
  for (const char* const number : {"0000000A", "00000002", "0000000b", "odd"}) {
    file.storage(std::string("__attach_version1.0_#") + number)
        .stream(msg::kPropertiesName, std::string(8, '\0'))
        .stream("__substg1.0_3707001E", number);
  }
  file.stream("__attach_version1.0_#00000001", "no storage");
  Mail mail(file.write());
  std::vector<std::string> names;
  for (const Attachment& one : mail.item->attachments()) names.push_back(one.name);
  EXPECT_EQ(names, (std::vector<std::string>{"00000002", "0000000A", "0000000b", "odd"}));
}

TEST(MsgReaderTest, PartsThatAreMissingOrEmptyAreTold) {
  CompoundBuilder file;
  file.stream(msg::kPropertiesName, std::string(16, '\0') + LittleEndian(3, 4) +
                                        LittleEndian(2, 4) + std::string(8, '\0'));
  file.storage("__attach_version1.0_#00000000").stream(msg::kPropertiesName, "");
  Mail mail(file.write());
  ASSERT_EQ(mail.item->attachments().size(), 1u);
  EXPECT_EQ(mail.item->attachments()[0].trouble.value().reason, "its storage has no properties");
  const std::vector<std::string> reasons = mail.reasons();
  EXPECT_EQ(std::count(reasons.begin(), reasons.end(), "3 of 3 recipients are missing"), 1);
  EXPECT_EQ(std::count(reasons.begin(), reasons.end(), "1 of 2 attachments are missing"), 1);
  EXPECT_EQ(BytesOfAttachment(*mail.item, 0), "its storage has no properties");
}

TEST(MsgReaderTest, ADamagedDirectoryIsToldOnce) {
  CompoundImage image = Sample().image();
  const size_t stream = image.record("__substg1.0_1000001F");
  image.put(stream + test::RecordLeft, 0);
  Mail mail(image.bytes);
  const std::vector<std::string> reasons = mail.reasons();
  EXPECT_EQ(std::count(reasons.begin(), reasons.end(),
                       "the directory of the file is damaged, and parts may be missing"),
            1);
}

TEST(MsgReaderTest, AMessageWithoutRecordsGivesItsStreams) {
  CompoundBuilder file;
  file.stream("__substg1.0_0037001F", Wide(u"Kept"));
  Mail mail(file.write());
  EXPECT_EQ(mail.item->fields(Detail::Headline).subject, "Kept");
  EXPECT_EQ(mail.reasons(), std::vector<std::string>{"the stream of the properties is missing"});
}

TEST(MsgReaderTest, LargeAttachmentsAreNotHeldInMemory) {
  MsgBuilder msg;
  msg.attachment(u"a.bin", std::string(6000000, 'x'));
  const test::TempDirectory directory;
  const auto reader = std::move(*OpenMsg(directory.write("a.msg", msg.write())));
  const auto item = std::move(*reader->find("1"));
  item->attachments();
  const auto source = std::move(*item->open(0));
  const uint64_t before = test::Usage().liveBytes;
  std::string buffer(65536, '\0');
  uint64_t total = 0;
  uint64_t most = 0;
  while (const size_t count = *source->read(buffer)) {
    total += count;
    most = std::max(most, test::Usage().liveBytes - before);
  }
  EXPECT_EQ(total, 6000000u);
  EXPECT_LT(most, 100000u);
}

}  // namespace
}  // namespace tarn::archive

#include "archive/mapi/MapiAttachments.h"

#include <gtest/gtest.h>

#include "archive/mapi/FakeMessage.h"

namespace tarn::archive::mapi {
namespace {

struct Read {
  std::vector<Attachment> attachments;
  std::vector<Trouble> troubles;
};

Read ReadAll(const FakeDescription& description) {
  FakeMessage message(description);
  Read read;
  read.attachments = ReadAttachments(message, 1252, read.troubles);
  return read;
}

Attachment ReadOne(const FakeProperties& properties) {
  FakeDescription description;
  description.attachments.emplace_back(properties);
  Read read = ReadAll(description);
  EXPECT_EQ(read.attachments.size(), 1u);
  return read.attachments.at(0);
}

TEST(MapiAttachmentsTest, DescribesData) {
  FakeProperties file;
  file.integer(kTagAttachMethod, 1)
      .text(kTagAttachLongFilename, u"Long name.PNG")
      .text8(kTagAttachFilename, "LONGNA~1.PNG")
      .text(kTagDisplayName, u"shown")
      .text(kTagAttachMimeTag, u"Image/PNG")
      .text(kTagAttachContentId, u"<a@b>")
      .text(kTagAttachContentLocation, u"http://x/a.png")
      .integer(kTagAttachFlags, 4)
      .integer(kTagAttachSize, 4711)
      .binary(kTagAttachData, "bytes");
  const Attachment attachment = ReadOne(file);
  EXPECT_EQ(attachment.kind, AttachmentKind::Data);
  EXPECT_EQ(attachment.name, "Long name.PNG");
  EXPECT_EQ(attachment.mediaType, "image/png");
  EXPECT_EQ(attachment.contentId, "a@b");
  EXPECT_EQ(attachment.contentLocation, "http://x/a.png");
  EXPECT_TRUE(attachment.isInline);
  EXPECT_EQ(attachment.size, 5u);
  EXPECT_FALSE(attachment.trouble.has_value());
}

TEST(MapiAttachmentsTest, NamesGoFromLongToShortToShown) {
  FakeProperties file;
  file.integer(kTagAttachMethod, 1).text(kTagDisplayName, u"shown");
  EXPECT_EQ(ReadOne(file).name, "shown");
  file.text8(kTagAttachFilename, "SHORT~1.TXT");
  EXPECT_EQ(ReadOne(file).name, "SHORT~1.TXT");
}

TEST(MapiAttachmentsTest, TellsKinds) {
  struct Row {
    uint32_t method;
    uint16_t dataType;
    AttachmentKind kind;
  };
  for (const Row& row :
       {Row{0, kTypeBinary, AttachmentKind::Data}, Row{0, kTypeObject, AttachmentKind::Item},
        Row{1, kTypeBinary, AttachmentKind::Data}, Row{2, kTypeError, AttachmentKind::Reference},
        Row{3, kTypeBinary, AttachmentKind::Data}, Row{4, kTypeError, AttachmentKind::Reference},
        Row{5, kTypeObject, AttachmentKind::Item}, Row{5, kTypeBinary, AttachmentKind::Data},
        Row{6, kTypeObject, AttachmentKind::Ole}, Row{6, kTypeBinary, AttachmentKind::Ole},
        Row{7, kTypeError, AttachmentKind::Reference},
        Row{99, kTypeBinary, AttachmentKind::Data}}) {
    FakeProperties file;
    file.integer(kTagAttachMethod, row.method);
    if (row.dataType != kTypeError) file.put(kTagAttachData, row.dataType, "x");
    EXPECT_EQ(ReadOne(file).kind, row.kind) << row.method << ' ' << row.dataType;
  }
}

TEST(MapiAttachmentsTest, SignaturesAreNamed) {
  FakeProperties file;
  file.integer(kTagAttachMethod, 1).text(kTagAttachMimeTag, u"application/pkcs7-signature");
  EXPECT_EQ(ReadOne(file).kind, AttachmentKind::Signature);
}

TEST(MapiAttachmentsTest, ReferencesHaveATarget) {
  FakeProperties file;
  file.integer(kTagAttachMethod, 7)
      .text(kTagAttachPathname, u"\\\\S\\A~1")
      .text(kTagAttachLongPathname, u"https://example.com/a");
  EXPECT_EQ(ReadOne(file).target, "https://example.com/a");
  file.values.erase(kTagAttachLongPathname);
  EXPECT_EQ(ReadOne(file).target, "\\\\S\\A~1");
}

TEST(MapiAttachmentsTest, HiddenOnesAreInlineAndItemsAreNot) {
  FakeProperties file;
  file.integer(kTagAttachMethod, 1).boolean(kTagAttachmentHidden, true);
  EXPECT_TRUE(ReadOne(file).isInline);
  file.boolean(kTagAttachmentHidden, false).integer(kTagAttachFlags, 3);
  EXPECT_FALSE(ReadOne(file).isInline);
  file.integer(kTagAttachMethod, 5).boolean(kTagAttachmentHidden, true);
  EXPECT_FALSE(ReadOne(file).isInline);
}

TEST(MapiAttachmentsTest, ItemsWithoutANameAreCalledByTheirSubject) {
  FakeDescription description;
  description.attachments.emplace_back().emplace().integer(kTagAttachMethod, 5);
  description.attachments.emplace_back().emplace().integer(kTagAttachMethod, 5);
  description.embedded[0] = std::make_shared<FakeDescription>();
  description.embedded[0]->properties.text(kTagSubject, u"\u0001\u0005Re: Inner");
  const Read read = ReadAll(description);
  ASSERT_EQ(read.attachments.size(), 2u);
  EXPECT_EQ(read.attachments[0].name, "Re: Inner");
  EXPECT_EQ(read.attachments[1].name, "");  // its message is missing
}

TEST(MapiAttachmentsTest, ADamagedOneKeepsItsPlace) {
  FakeDescription description;
  description.attachments.emplace_back();
  description.attachments.emplace_back().emplace().text(kTagAttachLongFilename, u"b");
  const Read read = ReadAll(description);
  ASSERT_EQ(read.attachments.size(), 2u);
  ASSERT_TRUE(read.attachments[0].trouble.has_value());
  EXPECT_EQ(read.attachments[0].trouble->reason, "the row is damaged");
  EXPECT_EQ(read.attachments[1].name, "b");
  EXPECT_TRUE(read.troubles.empty());
}

TEST(MapiAttachmentsTest, OpensBytesThatOutliveTheirSet) {
  FakeDescription description;
  description.attachments.emplace_back().emplace().binary(kTagAttachData, "bytes");
  description.attachments.emplace_back();
  description.objects[0] = "object";
  FakeMessage message(description);
  auto data = OpenAttachment(message, 0, AttachmentKind::Data);
  ASSERT_TRUE(data.ok());
  EXPECT_EQ(*archive::ReadAll(**data, 100), "bytes");
  auto object = OpenAttachment(message, 0, AttachmentKind::Ole);
  ASSERT_TRUE(object.ok());
  EXPECT_EQ(*archive::ReadAll(**object, 100), "object");
  EXPECT_EQ(OpenAttachment(message, 1, AttachmentKind::Data).trouble().reason,
            "the row is damaged");
  EXPECT_EQ(OpenAttachment(message, 0, AttachmentKind::Item).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(OpenAttachment(message, 0, AttachmentKind::Reference).trouble().kind,
            TroubleKind::Missing);
}

}  // namespace
}  // namespace tarn::archive::mapi

// Attachments of a store's items, and what is embedded in them.

#include <gtest/gtest.h>

#include "StoreListing.h"
#include "archive/mapi/MapiMessage.h"
#include "support/pst/PstBytes.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using namespace archive;

constexpr uint16_t kLongPathname = 0x370D;
constexpr uint32_t kByReference = 2;
constexpr uint32_t kOle = 6;

class StoreAttachments : public ::testing::TestWithParam<PstLayout> {
 protected:
  MessageBuilder& message() { return *message_; }

  Item& item() {
    if (opened_ == nullptr) {
      opened_ = std::make_unique<OpenedStore>(store_);
      item_ = opened_->find("200024");
    }
    return *item_;
  }

 private:
  StoreBuilder store_{GetParam()};
  MessageBuilder* message_ = &store_.folder("Inbox").message().subject(u"Mail").from(u"Ann");
  std::unique_ptr<OpenedStore> opened_;
  std::unique_ptr<Item> item_;
};

INSTANTIATE_TEST_SUITE_P(Layouts, StoreAttachments,
                         ::testing::Values(PstLayout::Ansi, PstLayout::Unicode));

TEST_P(StoreAttachments, OfBytes) {
  // In the heap, in one block, in a tree of blocks.
  const std::vector<std::string> contents = {"", "small", Pattern(8000), Pattern(300000)};
  for (size_t i = 0; i < contents.size(); ++i) {
    message()
        .attach()
        .longName(u"a.png")
        .data(contents[i])
        .mimeTag(u"Image/PNG")
        .contentId(u"<id@x>");
  }
  ASSERT_EQ(item().attachments().size(), contents.size());
  for (size_t i = 0; i < contents.size(); ++i) {
    const Attachment& attachment = item().attachments()[i];
    EXPECT_EQ(attachment.kind, AttachmentKind::Data);
    EXPECT_EQ(attachment.name, "a.png");
    EXPECT_EQ(attachment.mediaType, "image/png");
    EXPECT_EQ(attachment.contentId, "id@x");
    EXPECT_EQ(attachment.size, contents[i].size());
    EXPECT_FALSE(attachment.trouble);
    EXPECT_TRUE(AttachmentBytes(item(), i) == contents[i]) << i;
  }
  EXPECT_EQ(AttachmentBytes(item(), 4), "!there is no such attachment");
  EXPECT_EQ(Reasons(item().troubles()), "");
}

TEST_P(StoreAttachments, Embedded) {
  MessageBuilder& inner = message().attach().embedded();
  inner.subject(u"Inner").from(u"Bob").body(u"Inner text").attachment(u"b.txt", "bytes");
  inner.attach().embedded().subject(u"Innermost");
  ASSERT_EQ(item().attachments().size(), 1U);
  EXPECT_EQ(item().attachments()[0].kind, AttachmentKind::Item);
  EXPECT_EQ(item().attachments()[0].name, "Inner");
  const auto embedded = item().embedded(0);
  ASSERT_TRUE(embedded);
  EXPECT_EQ((*embedded)->place().id, "200024/1");
  EXPECT_EQ((*embedded)->place().parent, "200024");
  EXPECT_EQ((*embedded)->fields(Detail::Envelope).from.name, "Bob");
  EXPECT_EQ((*embedded)->bodies().text, "Inner text");
  ASSERT_EQ((*embedded)->attachments().size(), 2U);
  EXPECT_EQ(AttachmentBytes(**embedded, 0), "bytes");
  const auto innermost = (*embedded)->embedded(1);
  ASSERT_TRUE(innermost);
  EXPECT_EQ((*innermost)->place().id, "200024/1/2");
  EXPECT_EQ((*innermost)->fields(Detail::Headline).subject, "Innermost");
}

TEST_P(StoreAttachments, EmbeddedToABoundedDepth) {
  MessageBuilder* inner = &message();
  for (int depth = 1; depth <= kDeepestItem + 1; ++depth) {
    inner = &inner->attach().embedded();
    inner->subject(u"Depth");
  }
  std::vector<std::unique_ptr<Item>> items;
  Item* outer = &item();
  for (int depth = 1; depth <= kDeepestItem; ++depth) {
    auto embedded = outer->embedded(0);
    ASSERT_TRUE(embedded) << depth;
    items.push_back(std::move(*embedded));
    outer = items.back().get();
    EXPECT_EQ(outer->fields(Detail::Headline).subject, "Depth");
  }
  ASSERT_FALSE(outer->embedded(0));
  EXPECT_EQ(outer->embedded(0).trouble().kind, TroubleKind::TooDeep);
  EXPECT_EQ(outer->attachments().size(), 1U);
  // The outermost outlives all others.
  while (!items.empty()) items.pop_back();
}

TEST_P(StoreAttachments, ObjectsOfOtherPrograms) {
  const std::string storage = Pattern(20000);
  AttachmentBuilder& ole = message().attach().method(kOle);
  ole.properties().object(kPropAttachData, 0x8025, 20000);
  ole.properties().subnode(
      0x8025, PstNodeParts::Stream(storage,
                                   GetParam() == PstLayout::Unicode ? size_t{8176} : size_t{8180}));
  message().attach().data("picture").method(kOle);
  ASSERT_EQ(item().attachments().size(), 2U);
  for (const size_t i : {0U, 1U}) EXPECT_EQ(item().attachments()[i].kind, AttachmentKind::Ole);
  EXPECT_TRUE(AttachmentBytes(item(), 0) == storage);
  EXPECT_EQ(AttachmentBytes(item(), 1), "picture");
  mapi::MapiMessage& message = *item().properties();
  auto set = message.attachment(0);
  ASSERT_TRUE(set);
  EXPECT_EQ((*set)->sizeOf(kPropAttachData), 20000U);
  EXPECT_TRUE(*(*set)->bytes(kPropAttachData, 20000) == storage);
  EXPECT_EQ((*set)->bytes(kPropAttachData, 19999).trouble().kind, TroubleKind::TooLarge);
  const auto stream = (*set)->stream(kPropAttachData);
  ASSERT_TRUE(stream);
  EXPECT_TRUE(*ReadAll(**stream, 20000) == storage);
}

TEST_P(StoreAttachments, References) {
  message()
      .attach()
      .method(kByReference)
      .longName(u"plan.doc")
      .properties()
      .text(kLongPathname, u"\\\\server\\plan.doc");
  ASSERT_EQ(item().attachments().size(), 1U);
  EXPECT_EQ(item().attachments()[0].kind, AttachmentKind::Reference);
  EXPECT_EQ(item().attachments()[0].target, "\\\\server\\plan.doc");
  EXPECT_EQ(AttachmentBytes(item(), 0), "!the attachment is kept elsewhere");
}

TEST_P(StoreAttachments, MoreThanABlockOfRows) {
  for (int i = 0; i < 400; ++i) message().attachment(u"a", std::to_string(i));
  ASSERT_EQ(item().attachments().size(), 400U);
  for (size_t i = 0; i < 400; ++i) EXPECT_EQ(AttachmentBytes(item(), i), std::to_string(i));
}

TEST_P(StoreAttachments, WithoutATable) {
  message().attachment(u"a", "first").attachment(u"b", "second").withoutAttachmentTable();
  ASSERT_EQ(item().attachments().size(), 2U);
  EXPECT_EQ(AttachmentBytes(item(), 0), "first");
  EXPECT_EQ(AttachmentBytes(item(), 1), "second");
  EXPECT_EQ(item().fields(Detail::Envelope).attachmentCount, 2U);
}

TEST_P(StoreAttachments, ThatAreNotThere) {
  message().attachment(u"a", "first").attach().longName(u"b").withoutNode();
  message().attachment(u"c", "third");
  ASSERT_EQ(item().attachments().size(), 3U);
  ASSERT_TRUE(item().attachments()[1].trouble);
  EXPECT_EQ(item().attachments()[1].trouble->reason,
            "the attachment cannot be read (it is not in the store)");
  EXPECT_EQ(AttachmentBytes(item(), 1), "!the attachment cannot be read (it is not in the store)");
  EXPECT_EQ(AttachmentBytes(item(), 2), "third");
}

TEST_P(StoreAttachments, OfItemsWithoutTheItem) {
  message().attach().method(5).longName(u"gone");
  message().attach().method(5).properties().object(kPropAttachData, 0x8025, 100);
  message().attach().method(kOle).longName(u"gone");
  ASSERT_EQ(item().attachments().size(), 3U);
  for (const size_t i : {0U, 1U}) {
    EXPECT_EQ(item().attachments()[i].kind, AttachmentKind::Item);
    const auto embedded = item().embedded(i);
    ASSERT_FALSE(embedded);
    EXPECT_EQ(embedded.trouble().reason,
              "the embedded message cannot be read (it is not in the store)");
  }
  EXPECT_EQ(AttachmentBytes(item(), 2), "!property 0x3701 is not there");
  mapi::MapiMessage& message = *item().properties();
  EXPECT_EQ(message.attachment(3).trouble().reason, "no such attachment");
  EXPECT_EQ(message.embedded(3).trouble().reason, "no such attachment");
  EXPECT_EQ(message.object(3).trouble().reason, "no such attachment");
  EXPECT_EQ(message.recipient(0).trouble().reason, "no such recipient");
}

}  // namespace
}  // namespace tarn::test

#include "archive/catalogue/CatalogueItem.h"

#include <gtest/gtest.h>

#include <string>

#include "archive/catalogue/SampleItems.h"

namespace tarn::archive {
namespace {

TEST(PackedItemTest, KeepsEveryField) {
  const CatalogueItem item = FullItem();
  const Outcome<CatalogueItem> read = UnpackedItem(PackedItem(item));
  ASSERT_TRUE(read.ok());
  EXPECT_EQ(read->source, "/mail/box.pst");
  EXPECT_EQ(read->id, "200024/1");
  EXPECT_EQ(read->parent, "200024");
  EXPECT_EQ(read->folder, (std::vector<std::string>{"Top", "Inbox"}));
  EXPECT_EQ(read->fields.messageClass, "IPM.Note");
  EXPECT_EQ(read->fields.subject, "Budget for May");
  EXPECT_EQ(read->fields.from, item.fields.from);
  EXPECT_EQ(read->fields.sent, item.fields.sent);
  EXPECT_EQ(read->fields.received, item.fields.received);
  EXPECT_EQ(read->fields.size, 4711U);
  EXPECT_TRUE(read->fields.hasAttachments);
  EXPECT_EQ(read->fields.to, item.fields.to);
  EXPECT_EQ(read->fields.cc, item.fields.cc);
  EXPECT_EQ(read->fields.bcc, item.fields.bcc);
  EXPECT_EQ(read->fields.sender, item.fields.sender);
  EXPECT_EQ(read->fields.messageId, "one@example.com");
  EXPECT_EQ(read->fields.attachmentCount, 2U);
  EXPECT_EQ(read->status, ExportStatus::Partial);
  EXPECT_EQ(read->reason, "an attachment is damaged");
  ASSERT_EQ(read->files.size(), 2U);
  EXPECT_EQ(read->files[1].path, "box/Inbox/Budget/attachments/plan.txt");
  EXPECT_EQ(read->files[1].role, "attachment");
  EXPECT_EQ(read->files[1].bytes, 9U);
  EXPECT_EQ(read->files[1].sha256, std::string(64, 'b'));
  EXPECT_EQ(read->files[1].name, "plan.txt");
  EXPECT_EQ(read->files[1].index, 1U);
  EXPECT_EQ(read->body, item.body);
  ASSERT_EQ(read->attachments.size(), 2U);
  EXPECT_EQ(read->attachments[0].index, 1U);
  EXPECT_EQ(read->attachments[0].name, "plan.txt");
  EXPECT_EQ(read->attachments[0].text, "Travel costs nothing.");
  // And what was not looked at here.
  EXPECT_EQ(PackedItem(*read), PackedItem(item));
}

TEST(PackedItemTest, KeepsWhatIsNotThere) {
  CatalogueItem item;
  item.fields.sent = Moment{-1, -330};
  const Outcome<CatalogueItem> read = UnpackedItem(PackedItem(item));
  ASSERT_TRUE(read.ok());
  EXPECT_EQ(read->parent, std::nullopt);
  EXPECT_EQ(read->fields.sent, (Moment{-1, -330}));
  EXPECT_EQ(read->fields.received, std::nullopt);
  EXPECT_EQ(read->fields.size, std::nullopt);
  EXPECT_EQ(read->fields.sender, std::nullopt);
  EXPECT_EQ(read->status, ExportStatus::Exported);
  EXPECT_TRUE(read->files.empty());
}

TEST(PackedItemTest, RefusesWhatIsTornAnywhere) {
  const std::string whole = PackedItem(FullItem());
  for (size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(UnpackedItem(whole.substr(0, length)).ok()) << length;
  }
  EXPECT_FALSE(UnpackedItem(whole + "x").ok());
}

// Whatever bytes a torn disk gives, an answer comes, and no number in them costs memory.
TEST(PackedItemTest, SurvivesEveryByteChanged) {
  const std::string whole = PackedItem(FullItem());
  size_t refused = 0;
  for (size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0xFF);
    if (!UnpackedItem(changed).ok()) ++refused;
  }
  // The others are letters of texts.
  EXPECT_GT(refused, 400U);
}

TEST(PackedItemTest, NamesTheStatus) {
  EXPECT_EQ(NameOf(ExportStatus::Exported), "exported");
  EXPECT_EQ(NameOf(ExportStatus::Partial), "partial");
  EXPECT_EQ(NameOf(ExportStatus::Failed), "failed");
}

}  // namespace
}  // namespace tarn::archive

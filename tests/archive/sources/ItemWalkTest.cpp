#include "archive/sources/ItemWalk.h"

#include <gtest/gtest.h>

#include "archive/FakeItems.h"

namespace tarn::archive {
namespace {

FakeItemText Plain(const std::string& id) {
  FakeItemText text;
  text.id = id;
  return text;
}

Attachment Data() { return {}; }

Attachment Embedded() {
  Attachment attachment;
  attachment.kind = AttachmentKind::Item;
  return attachment;
}

FakeItemText With(const std::string& id, std::vector<Attachment> attachments,
                  std::map<size_t, FakeItemText> embedded = {}) {
  FakeItemText text = Plain(id);
  text.fields.hasAttachments = true;
  text.attachments = std::move(attachments);
  text.embedded = std::move(embedded);
  return text;
}

// One line a step.
std::string Steps(ItemReader& reader, EmbeddedItems embedded) {
  std::string lines;
  ItemWalk walk(reader, embedded);
  while (const std::optional<WalkStep> step = walk.next()) {
    if (const auto* const folder = std::get_if<FolderStart>(&*step)) {
      lines += "folder " + folder->path->back() + "\n";
    } else if (const auto* const trouble = std::get_if<PlaceTrouble>(&*step)) {
      lines += "trouble " + trouble->place.id + ": " + trouble->trouble.reason + "\n";
    } else {
      const ItemPlace& place = std::get<Item*>(*step)->place();
      lines += "item " + place.id + (place.parent ? " in " + *place.parent : "") + "\n";
    }
  }
  return lines;
}

TEST(ItemWalk, GivesItemsFoldersAndTroublesInTheirOrder) {
  FakeReader reader({FolderStart{FolderOf({"Inbox"}), {}}, Plain("1"),
                     PlaceTrouble{{"2", {}, FolderOf({})}, {TroubleKind::Damaged, "broken"}},
                     Plain("3")});
  EXPECT_EQ(Steps(reader, EmbeddedItems::Walk),
            "folder Inbox\nitem 1\ntrouble 2: broken\nitem 3\n");
  EXPECT_EQ(reader.asked.attachments, 0U);
  EXPECT_EQ(reader.asked.alive, 0U);
  EXPECT_EQ(reader.asked.mostAlive, 1U);
}

TEST(ItemWalk, GoesIntoItemsWhereItIsAsked) {
  const FakeItemText inner = With("", {Embedded()}, {{0, Plain("")}});
  const std::vector<FakeReader::FakeEntry> entries = {
      With("a", {Data(), Embedded(), Data(), Embedded()}, {{1, inner}, {3, Plain("")}}),
      Plain("b")};
  FakeReader walked(entries);
  EXPECT_EQ(Steps(walked, EmbeddedItems::Walk),
            "item a\nitem a/2 in a\nitem a/2/1 in a/2\nitem a/4 in a\nitem b\n");
  EXPECT_EQ(walked.asked.mostAlive, 3U);
  FakeReader left(entries);
  EXPECT_EQ(Steps(left, EmbeddedItems::Leave), "item a\nitem b\n");
  EXPECT_EQ(left.asked.attachments, 0U);
}

TEST(ItemWalk, AsksTheItemItselfForAttachments) {
  FakeItemText item = With("a", {Embedded()}, {{0, Plain("")}});
  item.isHeadlineWrong = true;
  FakeReader walked({item});
  EXPECT_EQ(Steps(walked, EmbeddedItems::Walk), "item a\nitem a/1 in a\n");
  FakeReader left({item});
  EXPECT_EQ(Steps(left, EmbeddedItems::Leave), "item a\n");
  EXPECT_EQ(left.asked.envelopes, 0U);
}

TEST(ItemWalk, TellsWhatOfAnItemCannotBeRead) {
  FakeItemText item = With("a", {Embedded(), Data(), Embedded()}, {{2, Plain("")}});
  item.attachments[1].trouble = Trouble{TroubleKind::Damaged, "the row is broken"};
  item.troubles = {{TroubleKind::Damaged, "first"}, {TroubleKind::Damaged, "second"}};
  FakeReader reader({item});
  EXPECT_EQ(Steps(reader, EmbeddedItems::Walk),
            "item a\ntrouble a/1: no message in it\ntrouble a: attachment 2: the row is broken\n"
            "item a/3 in a\ntrouble a: first\ntrouble a: second\n");
  FakeReader left({item});
  EXPECT_EQ(Steps(left, EmbeddedItems::Leave), "item a\ntrouble a: first\ntrouble a: second\n");
}

FakeItemText Nested(int depth) {
  FakeItemText text = Plain("a");
  for (; depth != 0; --depth) text = With("a", {Embedded()}, {{0, text}});
  return text;
}

TEST(ItemWalk, EndsAtTheDeepestItem) {
  FakeReader fitting({Nested(kDeepestItem)});
  const std::string all = Steps(fitting, EmbeddedItems::Walk);
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), kDeepestItem + 1);
  EXPECT_EQ(all.find("trouble"), std::string::npos);
  FakeReader deeper({Nested(kDeepestItem + 5)});
  std::string id = "a";
  for (int depth = 0; depth <= kDeepestItem; ++depth) id += "/1";
  EXPECT_EQ(Steps(deeper, EmbeddedItems::Walk),
            all + "trouble " + id + ": is too deep within other items to be read\n");
}

TEST(ItemWalk, MayEndInTheMiddle) {
  FakeReader reader({Nested(3), Plain("b")});
  {
    ItemWalk walk(reader, EmbeddedItems::Walk);
    for (int step = 0; step < 3; ++step) ASSERT_TRUE(walk.next());
    EXPECT_EQ(reader.asked.alive, 3U);
  }
  EXPECT_EQ(reader.asked.alive, 0U);
}

class Find : public ::testing::Test {
 protected:
  std::string find(const std::string& id) {
    Outcome<ItemChain> found = FindItem(reader_, id);
    return found ? found->item().place().id : found.trouble().reason;
  }

  FakeReader reader_{{With("a", {Data(), Embedded()}, {{1, Nested(2)}}), Plain("cur/b"),
                      With("cur/c/1", {Embedded()}, {{0, Plain("")}}), With("d", {Embedded()})}};
};

TEST_F(Find, FindsItemsAndThoseWithinThem) {
  EXPECT_EQ(find("a"), "a");
  EXPECT_EQ(find("a/2"), "a/2");
  EXPECT_EQ(find("a/2/1/1"), "a/2/1/1");
  EXPECT_EQ(find("cur/b"), "cur/b");
  EXPECT_EQ(find("cur/c/1"), "cur/c/1");
  EXPECT_EQ(find("cur/c/1/1"), "cur/c/1/1");
}

TEST_F(Find, HasNoneForOtherIds) {
  for (const char* id :
       {"", "z", "z/1", "a/", "a/0", "a/x", "a/1x", "a/99999999999999999999", "/", "/1", "a/-1"}) {
    EXPECT_EQ(find(id), "no such item") << id;
  }
  for (const char* id : {"a/1", "a/3", "a/2/2", "a/2/1/1/1"}) {
    EXPECT_EQ(find(id), "no item is embedded there") << id;
  }
  EXPECT_EQ(find("d/1"), "no message in it");
}

TEST_F(Find, GoesNoDeeperThanItemsDo) {
  std::string id = "z";
  for (int i = 0; i < 100000; ++i) id += "/1";
  EXPECT_EQ(find(id), "no such item");
}

}  // namespace
}  // namespace tarn::archive

// Which folders and items a store gives, and in which order.

#include <gtest/gtest.h>

#include "StoreListing.h"
#include "support/pst/PstBytes.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using namespace archive;

TEST(StoreWalk, GivesFoldersBeforeTheirItemsAndItemsBeforeSubfolders) {
  for (const PstLayout layout : {PstLayout::Unicode, PstLayout::Ansi}) {
    for (const auto encoding : {PstEncoding::None, PstEncoding::Permute, PstEncoding::Cyclic}) {
      StoreBuilder store(layout, encoding);
      FolderBuilder& inbox = store.folder("Inbox");
      FolderBuilder& below = inbox.folder(u"Projekte");
      inbox.message().subject(u"First").from(u"Ann");
      below.message().subject(u"Third").from(u"Ann");
      inbox.message().subject(u"Second").from(u"Ann");
      store.folder("Sent").message().subject(u"Fourth").from(u"Ann");
      EXPECT_EQ(OpenedStore(store).listing(),
                "folder Deleted Items: 0\n"
                "folder Inbox: 2\n"
                "200024 in Inbox: First\n"
                "200064 in Inbox: Second\n"
                "folder Inbox/Projekte: 1\n"
                "200044 in Inbox/Projekte: Third\n"
                "folder Sent: 1\n"
                "200084 in Sent: Fourth\n");
    }
  }
}

TEST(StoreWalk, TellsTheFoldersOwnCount) {
  StoreBuilder store(PstLayout::Unicode);
  store.folder("Inbox").count(70);
  store.folder("Drafts").without(kPropContentCount);
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder Deleted Items: 0\nfolder Inbox: 70\nfolder Drafts: ?\n");
}

TEST(StoreWalk, GivesItemsOfTheUsersRootWithAnEmptyPath) {
  StoreBuilder store(PstLayout::Unicode);
  store.subtree().message().subject(u"At the top").from(u"Ann");
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder .: 1\n200024 in .: At the top\nfolder Deleted Items: 0\n");
}

TEST(StoreWalk, GivesItemsBesideTheUsersRootAfterTheOthers) {
  StoreBuilder store(PstLayout::Unicode);
  store.folder("Inbox").message().subject(u"Mail").from(u"Ann");
  store.folder(0x8422, kRootFolderNid, u"Empty");
  FolderBuilder& odd = store.folder(0x8442, kRootFolderNid, u"Odd");
  odd.message().subject(u"Elsewhere").from(u"Ann");
  odd.folder(u"Deep").message().subject(u"Deeper").from(u"Ann");
  store.root().message().subject(u"Uppermost").from(u"Ann");
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder Deleted Items: 0\n"
            "folder Inbox: 1\n"
            "200024 in Inbox: Mail\n"
            "folder .: 1\n"
            "200084 in .: Uppermost\n"
            "folder Odd: 1\n"
            "200044 in Odd: Elsewhere\n"
            "folder Odd/Deep: 1\n"
            "200064 in Odd/Deep: Deeper\n");
}

TEST(StoreWalk, GivesNoSearches) {
  StoreBuilder store(PstLayout::Unicode);
  store.folder(0x8423, u"Unread").message().subject(u"Found").from(u"Ann");
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder Deleted Items: 0\n"
            " in .! items that no folder lists and --recover adds: 1\n");
}

TEST(StoreWalk, MeetsAFolderThatIsNamedTwiceOnce) {
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder& inbox = store.folder("Inbox");
  FolderBuilder& other = store.folder("Other");
  inbox.subfolderRow(other.nid()).subfolderRow(inbox.nid()).subfolderRow(kSubtreeNid);
  other.message().subject(u"Once").from(u"Ann");
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder Deleted Items: 0\n"
            "folder Inbox: 0\n"
            "folder Other: 1\n"
            "200024 in Other: Once\n");
}

TEST(StoreWalk, MeetsAnItemThatTwoRowsNameOnce) {
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder& inbox = store.folder("Inbox");
  const uint32_t nid = inbox.message().subject(u"Mail").from(u"Ann").nid();
  inbox.row(nid).row(0x8122).row(0);
  inbox.message().subject(u"Next").from(u"Ann");
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder Deleted Items: 0\n"
            "folder Inbox: 5\n"
            "200024 in Inbox: Mail\n"
            "200044 in Inbox: Next\n"
            "8082 in Inbox! rows 2 to 4 of the folder's list: it names no message, or one that was "
            "listed before\n");
}

TEST(StoreWalk, BeginsAtTheRootOfTheStoreWhereNothingTellsTheUsers) {
  PropertyContextBuilder bag(PstLayout::Unicode);
  bag.binary(kPropRecordKey, "key");
  for (const std::string& entry : {std::string(), LeBytes(0, 20) + LeBytes(0x9999992, 4),
                                   LeBytes(0, 20) + LeBytes(kMessageStoreNid, 4)}) {
    StoreBuilder store(PstLayout::Unicode);
    if (!entry.empty()) bag.binary(kPropIpmSubtreeEntryId, entry);
    store.nodes().messageStore = bag.build();
    store.folder("Inbox").message().subject(u"Mail").from(u"Ann");
    EXPECT_EQ(OpenedStore(store).listing(),
              "folder Top of Personal Folders: 0\n"
              "folder Top of Personal Folders/Deleted Items: 0\n"
              "folder Top of Personal Folders/Inbox: 1\n"
              "200024 in Top of Personal Folders/Inbox: Mail\n");
  }
}

TEST(StoreWalk, GivesTheFoldersOfAStoreWithoutARoot) {
  StoreBuilder store(StoreOptions::Smallest(PstLayout::Unicode, PstEncoding::None));
  store.folder("Inbox").message().subject(u"Mail").from(u"Ann");
  EXPECT_EQ(
      OpenedStore(store).listing(),
      "21 in .! the properties of the store cannot be read (it is not in the store)\n"
      "122 in .! the store has no root folder\n"
      "folder Inbox: 1\n"
      "200024 in Inbox: Mail\n"
      "8082 in Inbox! the list of subfolders of folder \"Inbox\" cannot be read (it is not in "
      "the store)\n");
}

TEST(StoreWalk, FollowsFoldersToABoundedDepth) {
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder* folder = &store.folder("1");
  for (int depth = 2; depth <= 130; ++depth) folder = &folder->folder(u"n");
  folder->message().subject(u"Deep").from(u"Ann");
  const std::string listing = OpenedStore(store).listing();
  EXPECT_NE(listing.find("! folders are not followed more than 128 deep\n"), std::string::npos);
  EXPECT_NE(listing.find(" in .! items that no folder lists and --recover adds: 1\n"),
            std::string::npos);
  StoreBuilder again(PstLayout::Unicode);
  folder = &again.folder("1");
  for (int depth = 2; depth <= 128; ++depth) folder = &folder->folder(u"n");
  folder->message().subject(u"Deep").from(u"Ann");
  EXPECT_NE(OpenedStore(again).listing().find("/n: Deep\n"), std::string::npos);
}

TEST(StoreFind, GivesAnItemByItsId) {
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder& inbox = store.folder("Inbox");
  inbox.message().subject(u"First").from(u"Ann");
  inbox.folder(u"Deep").message().subject(u"Second").from(u"Ann");
  store.root().message().subject(u"Third").from(u"Ann");
  OpenedStore opened(store);
  const auto item = opened.find("200044");
  EXPECT_EQ(item->fields(Detail::Headline).subject, "Second");
  EXPECT_EQ(item->place().id, "200044");
  EXPECT_EQ(*item->place().folder, (std::vector<std::string>{"Inbox", "Deep"}));
  EXPECT_EQ(*opened.find("200064")->place().folder, std::vector<std::string>());
}

TEST(StoreFind, HasNoOtherIds) {
  StoreBuilder store(PstLayout::Unicode);
  store.folder("Inbox").message().subject(u"First").from(u"Ann");
  OpenedStore opened(store);
  for (const char* id :
       {"", "200044", "8082", "0200024", "200024 ", "200024/1", "20002A", "x", "1200000024"}) {
    const auto found = opened.reader().find(id);
    ASSERT_FALSE(found) << id;
    EXPECT_EQ(found.trouble().kind, TroubleKind::Missing) << id;
  }
}

TEST(StoreFind, DoesNotDisturbTheWalk) {
  StoreBuilder store(PstLayout::Unicode);
  FolderBuilder& inbox = store.folder("Inbox");
  for (int i = 0; i < 3; ++i) inbox.message().subject(u"Mail").from(u"Ann");
  OpenedStore opened(store);
  size_t items = 0;
  opened.forEachItem([&](Item&) {
    ++items;
    EXPECT_TRUE(opened.reader().find("200024"));
  });
  EXPECT_EQ(items, 3U);
}

TEST(StoreOpen, TellsWhyItDoesNotOpen) {
  const TempDirectory folder;
  const auto reason = [&](const std::filesystem::path& path) {
    const auto opened = OpenStore(path, {});
    return opened ? "" : opened.trouble().reason;
  };
  EXPECT_EQ(reason(folder.path() / "none.pst"), "the store cannot be opened");
  EXPECT_EQ(reason(folder.write("empty.pst", "")), "the store cannot be opened");
  EXPECT_EQ(reason(folder.write("short.pst", "!BDN")), "the store ends within its header");
  StoreBuilder store(PstLayout::Unicode);
  std::string image = store.bytes();
  EXPECT_EQ(reason(folder.write("cut.pst", image.substr(0, 600))),
            "the index of the store cannot be read (the file ends too early or cannot be read)");
  image[513] = 0x10;
  EXPECT_EQ(reason(folder.write("encrypted.pst", image)), "the store is encrypted");
  image = store.bytes();
  image[300] = static_cast<char>(image[300] ^ 1);
  EXPECT_EQ(reason(folder.write("header.pst", image)),
            "the store cannot be opened (the data is damaged)");
}

}  // namespace
}  // namespace tarn::test

// Stores that are damaged: each damage is one trouble, and all else is given.

#include <gtest/gtest.h>

#include <algorithm>

#include "StoreBreaker.h"
#include "StoreListing.h"
#include "archive/mapi/MapiMessage.h"
#include "support/pst/PstBytes.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using namespace archive;

constexpr uint16_t kSentRepresentingName = 0x0042;

const std::string kHead = "folder Deleted Items: 0\nfolder Inbox: 2\n";
const std::string kFirst = "200024 in Inbox: First\n";
const std::string kSecond = "200044 in Inbox: Second\n";
const std::string kOther = "folder Other: 1\n200064 in Other: Third\n";
const std::string kNoTable =
    "8082 in Inbox! the list of its items cannot be read (a block is damaged)\n";

class StoreDamage : public ::testing::TestWithParam<PstLayout> {
 protected:
  // Inbox (8082) with two messages, and Other (80a2) with one.
  void fill(StoreBuilder& store) {
    inbox_ = &store.folder(u"Inbox");
    FolderBuilder& other = store.folder(u"Other");
    add(*inbox_, u"First");
    add(*inbox_, u"Second");
    add(other, u"Third");
  }

  static MessageBuilder& add(FolderBuilder& folder, std::u16string_view subject) {
    MessageBuilder& message = folder.message().subject(subject).body(u"Text");
    message.properties().text(kSentRepresentingName, u"Ann");
    return message;
  }

  FolderBuilder& inbox() { return *inbox_; }

  static std::string listing(StoreBreaker& breaker, const ReaderOptions& options = {}) {
    return OpenedStore(breaker.image(), options).listing();
  }

 private:
  FolderBuilder* inbox_ = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Layouts, StoreDamage,
                         ::testing::Values(PstLayout::Ansi, PstLayout::Unicode));

TEST_P(StoreDamage, NoDamage) {
  StoreBuilder store(GetParam());
  fill(store);
  StoreBreaker breaker(store);
  EXPECT_EQ(listing(breaker), kHead + kFirst + kSecond + kOther);
}

// Folders and their tables ----------------------------------------------------------------------

TEST_P(StoreDamage, PropertiesOfTheStore) {
  StoreBuilder store(GetParam());
  fill(store);
  StoreBreaker breaker(store);
  EXPECT_EQ(listing(breaker.data({kMessageStoreNid})),
            "21 in .! the properties of the store cannot be read (a block is damaged)\n"
            "folder Top of Personal Folders: 0\n"
            "folder Top of Personal Folders/Deleted Items: 0\n"
            "folder Top of Personal Folders/Inbox: 2\n"
            "200024 in Top of Personal Folders/Inbox: First\n"
            "200044 in Top of Personal Folders/Inbox: Second\n"
            "folder Top of Personal Folders/Other: 1\n"
            "200064 in Top of Personal Folders/Other: Third\n");
}

TEST_P(StoreDamage, PropertiesOfAFolder) {
  StoreBuilder store(GetParam());
  fill(store);
  StoreBreaker breaker(store);
  EXPECT_EQ(
      listing(breaker.data({0x8082})),
      "folder Deleted Items: 0\n"
      "folder Inbox: ?\n"
      "8082 in Inbox! folder \"Inbox\": its properties cannot be read (a block is damaged)\n" +
          kFirst + kSecond + kOther);
}

TEST_P(StoreDamage, AFolderThatIsNotThere) {
  StoreBuilder store(GetParam());
  fill(store);
  inbox().withoutNode();
  StoreBreaker breaker(store);
  EXPECT_EQ(listing(breaker),
            "8022 in .! subfolders that the root folder names and the store does not have: 1\n"
            "folder Deleted Items: 0\n" +
                kOther + " in .! items that no folder lists and --recover adds: 2\n");
  EXPECT_EQ(listing(breaker, kRecover),
            "8022 in .! subfolders that the root folder names and the store does not have: 1\n"
            "folder Deleted Items: 0\n" +
                kOther +
                "folder Recovered: ?\n"
                "200024 in Recovered: First\n"
                "200044 in Recovered: Second\n");
}

TEST_P(StoreDamage, TheListOfSubfolders) {
  StoreBuilder store(GetParam());
  fill(store);
  StoreBreaker breaker(store);
  EXPECT_EQ(listing(breaker.data({HierarchyTableOf(kSubtreeNid)})),
            "8022 in .! the list of subfolders of the root folder cannot be read (a block is "
            "damaged)\n" +
                kHead + kFirst + kSecond + kOther);
}

TEST_P(StoreDamage, NoListOfSubfolders) {
  StoreBuilder store(GetParam());
  fill(store);
  inbox().withoutHierarchyTable().folder(u"Below").withoutRow();
  store.subtree().hierarchyTable(PstNodeParts::OfPages({"no table at all"}));
  EXPECT_EQ(OpenedStore(store).listing(),
            "8022 in .! the list of subfolders of the root folder cannot be read (the data is "
            "damaged)\n" +
                kHead + kFirst + kSecond +
                "8082 in Inbox! the list of subfolders of folder \"Inbox\" cannot be read (it is "
                "not in the store)\n"
                "folder Inbox/Below: 0\n" +
                kOther);
}

TEST_P(StoreDamage, ABlockOfTheListOfSubfolders) {
  StoreBuilder store(GetParam());
  FolderBuilder& inbox = store.folder(u"Inbox");
  constexpr size_t kFolders = 600;
  for (size_t i = 0; i < kFolders; ++i) inbox.folder(u"Below");
  StoreBreaker breaker(store);
  const uint32_t table = HierarchyTableOf(inbox.nid());
  const NodePath rows = {table, breaker.lastSubnode({table})};
  OpenedStore opened(breaker.dataBlock(rows, 1).image());
  size_t folders = 0;
  size_t troubles = 0;
  while (auto entry = opened.reader().next()) {
    if (std::holds_alternative<FolderStart>(*entry)) ++folders;
    if (auto* const trouble = std::get_if<PlaceTrouble>(&*entry)) {
      ++troubles;
      EXPECT_EQ(trouble->trouble.reason,
                "the list of subfolders of folder \"Inbox\" cannot be read");
    }
  }
  EXPECT_EQ(folders, kFolders + 2);
  EXPECT_EQ(troubles, 1U);
}

TEST_P(StoreDamage, TheListOfItems) {
  StoreBuilder store(GetParam());
  fill(store);
  StoreBreaker breaker(store);
  breaker.data({ContentsTableOf(0x8082)});
  EXPECT_EQ(listing(breaker), "folder Deleted Items: 0\nfolder Inbox: 2\n" + kNoTable + kOther +
                                  " in .! items that no folder lists and --recover adds: 2\n");
  EXPECT_EQ(listing(breaker, kRecover), "folder Deleted Items: 0\nfolder Inbox: 2\n" + kNoTable +
                                            kOther +
                                            "folder Recovered: ?\n"
                                            "200024 in Recovered: First\n"
                                            "200044 in Recovered: Second\n");
}

TEST_P(StoreDamage, NoListOfItems) {
  StoreBuilder store(GetParam());
  fill(store);
  inbox().withoutContentsTable();
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder Deleted Items: 0\n"
            "folder Inbox: 2\n"
            "8082 in Inbox! the list of its items cannot be read (it is not in the store)\n" +
                kOther + " in .! items that no folder lists and --recover adds: 2\n");
}

TEST_P(StoreDamage, ABlockOfTheListOfItems) {
  StoreBuilder store(GetParam());
  FolderBuilder& inbox = store.folder(u"Inbox");
  constexpr size_t kItems = 200;
  for (size_t i = 0; i < kItems; ++i) add(inbox, u"Mail");
  StoreBreaker breaker(store);
  // Of rows in a subnode: the heap has the texts of the cells.
  const uint32_t table = ContentsTableOf(inbox.nid());
  breaker.dataBlock({table, breaker.lastSubnode({table})}, 1);
  const std::string listed = listing(breaker);
  const std::string reason = " of the folder's list: it cannot be read (a block is damaged)\n";
  const size_t found = listed.find(reason);
  ASSERT_NE(found, std::string::npos) << listed;
  EXPECT_EQ(listed.find(reason, found + 1), std::string::npos);
  const size_t given = static_cast<size_t>(std::count(listed.begin(), listed.end(), '\n')) - 4;
  const size_t lost = kItems - given;
  EXPECT_NE(lost, 0U);
  EXPECT_NE(given, 0U);
  EXPECT_NE(listed.find(" in .! items that no folder lists and --recover adds: " +
                        std::to_string(lost) + "\n"),
            std::string::npos);
  const std::string recovered = listing(breaker, kRecover);
  size_t all = 0;
  for (size_t at = 0; (at = recovered.find(": Mail\n", at)) != std::string::npos; ++at) ++all;
  EXPECT_EQ(all, kItems);
}

TEST_P(StoreDamage, TheTextsOfTheListOfItems) {
  StoreBuilder store(GetParam());
  FolderBuilder& inbox = store.folder(u"Inbox");
  constexpr size_t kItems = 300;
  for (size_t i = 0; i < kItems; ++i) add(inbox, u"Mail");
  StoreBreaker breaker(store);
  breaker.dataBlock({ContentsTableOf(inbox.nid())}, 1);
  const std::string listed = listing(breaker);
  size_t all = 0;
  for (size_t at = 0; (at = listed.find(": Mail\n", at)) != std::string::npos; ++at) ++all;
  EXPECT_EQ(all, kItems);
  EXPECT_EQ(listed.find('!'), std::string::npos);
}

// The indexes -----------------------------------------------------------------------------------

TEST_P(StoreDamage, APageOfTheIndexOfNodes) {
  StoreOptions options;
  options.file.layout = GetParam();
  options.file.nbt.leafFanOut = 1;
  StoreBuilder store(options);
  fill(store);
  StoreBreaker breaker(store);
  breaker.nodePage(0x200044);
  const std::string pages = " in .! pages of the store's index that cannot be read: 1\n";
  EXPECT_EQ(listing(breaker), kHead + kFirst + kSecond + kOther + pages);
  OpenedStore opened(breaker.image());
  opened.forEachItem([](Item& item) {
    EXPECT_EQ(item.fields(Detail::Envelope).from.name, "Ann");
    EXPECT_EQ(Reasons(item.troubles()),
              item.place().id == "200044"
                  ? "the message cannot be read (a page of the index is damaged)\n"
                  : "");
  });
  EXPECT_EQ(opened.reader().find("200044").trouble().reason,
            "the item cannot be looked up (a page of the index is damaged)");
  // The contents table of the Inbox: the items are found without it.
  StoreBreaker table(store);
  table.nodePage(ContentsTableOf(0x8082));
  EXPECT_EQ(listing(table, kRecover),
            "folder Deleted Items: 0\n"
            "folder Inbox: 2\n"
            "8082 in Inbox! the list of its items cannot be read (a page of the index is "
            "damaged)\n" +
                kOther + "folder Recovered: ?\n" + pages +
                "200024 in Recovered: First\n"
                "200044 in Recovered: Second\n");
}

TEST_P(StoreDamage, APageOfTheIndexOfNodesAboveFolders) {
  StoreOptions options;
  options.file.layout = GetParam();
  options.file.nbt.leafFanOut = 1;
  StoreBuilder store(options);
  fill(store);
  StoreBreaker breaker(store);
  breaker.nodePage(0x8082);
  EXPECT_EQ(listing(breaker),
            "folder Deleted Items: 0\n"
            "folder Inbox: ?\n"
            "8082 in Inbox! folder \"Inbox\": its properties cannot be read (a page of the index "
            "is damaged)\n" +
                kFirst + kSecond + kOther +
                " in .! pages of the store's index that cannot be read: 1\n");
}

TEST_P(StoreDamage, APageOfTheIndexOfBlocks) {
  StoreOptions options;
  options.file.layout = GetParam();
  options.file.bbt.leafFanOut = 1;
  StoreBuilder store(options);
  fill(store);
  StoreBreaker breaker(store);
  breaker.blockPage(0x200044);
  EXPECT_EQ(listing(breaker), kHead + kFirst + kSecond + kOther);
  OpenedStore(breaker.image()).forEachItem([](Item& item) {
    item.fields(Detail::Envelope);
    EXPECT_EQ(Reasons(item.troubles()),
              item.place().id == "200044"
                  ? "the message cannot be read (a page of the index is damaged)\n"
                  : "");
  });
}

TEST_P(StoreDamage, TheRootsOfTheIndexes) {
  for (const PstExtentKind kind : {PstExtentKind::NbtPage, PstExtentKind::BbtPage}) {
    StoreBuilder store(StoreOptions::Smallest(GetParam(), PstEncoding::None));
    store.folder(u"Inbox").message();
    store.finish();
    PstDamage damage(store.file());
    damage.image()[damage.trailer(damage.at(kind)) + 2] ^= 1;
    EXPECT_THROW(
        {
          try {
            OpenedStore opened(damage.image());
          } catch (const std::runtime_error& caught) {
            EXPECT_STREQ(caught.what(),
                         "the index of the store cannot be read (the data is damaged)");
            throw;
          }
        },
        std::runtime_error);
  }
}

TEST_P(StoreDamage, AFileThatIsCutOff) {
  StoreOptions options;
  options.file.layout = GetParam();
  options.file.isTrimmed = true;
  options.file.leadingPages = 8;
  StoreBuilder store(options);
  fill(store);
  const std::string image = store.bytes();
  const std::string listed = OpenedStore(image.substr(0, image.size() - 64)).listing();
  EXPECT_NE(listed.find("cannot be read (the file ends too early or cannot be read)\n"),
            std::string::npos)
      << listed;
  EXPECT_NE(listed.find(kFirst + kSecond), std::string::npos) << listed;
}

TEST_P(StoreDamage, PagesOfAnotherSize) {
  StoreOptions options = StoreOptions::Smallest(PstLayout::Unicode, PstEncoding::None);
  options.file.version = 36;
  StoreBuilder store(options);
  store.folder("Inbox").message();
  store.finish();
  PstDamage damage(store.file());
  damage.image()[damage.trailer(damage.at(PstExtentKind::NbtPage)) + 2] ^= 1;
  const TempDirectory folder;
  const auto opened = OpenStore(folder.write("store.pst", damage.image()), {});
  ASSERT_FALSE(opened);
  EXPECT_EQ(opened.trouble().kind, TroubleKind::Unsupported);
}

TEST_P(StoreDamage, TheLastRowsOfAList) {
  StoreBuilder store(GetParam());
  fill(store);
  inbox().row(0x9999904 | 0x1F);
  EXPECT_EQ(OpenedStore(store).listing(),
            "folder Deleted Items: 0\nfolder Inbox: 3\n" + kFirst + kSecond +
                "8082 in Inbox! row 3 of the folder's list: it names no message, or one that was "
                "listed before\n" +
                kOther);
}

}  // namespace
}  // namespace tarn::test

// Maildirs: their folders, the order and the ids of their mails.
#include <filesystem>
#include <fstream>

#include "MailReading.h"
#include "ReaderWalk.h"
#include "archive/mail/MaildirNames.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using mail::FolderOfMaildirName;
using mail::UniquePart;
using test::EntriesOf;
using Texts = std::vector<std::string>;

class MaildirTest : public ::testing::Test {
 protected:
  MaildirTest() { addFolder(""); }

  void addFolder(const std::string& name) {
    for (const char* part : {"cur", "new", "tmp"}) fs::create_directories(root() / name / part);
  }

  void addMail(const std::string& path, const std::string& subject) {
    std::ofstream(root() / path) << "Subject: " << subject << "\n\n";
  }

  std::unique_ptr<ItemReader> open() {
    auto reader = OpenMaildir(root());
    EXPECT_TRUE(reader.ok());
    return reader ? std::move(*reader) : nullptr;
  }

  fs::path root() const { return directory_.path() / "Maildir"; }

  test::TempDirectory directory_;
};

TEST_F(MaildirTest, GivesReadAndNewMailsInTheOrderOfTheirNames) {
  addMail("cur/20.M1.host:2,S", "b");
  addMail("cur/10.M1.host:2,", "a");
  addMail("new/05.M1.host", "c");
  addMail("tmp/01.M1.host", "unfinished");
  addMail("cur/.hidden", "hidden");
  fs::create_directory(root() / "cur/folder");
  EXPECT_EQ(EntriesOf(*open()), (Texts{"[] 3", "10.M1.host a", "20.M1.host b", "05.M1.host c"}));
}

TEST_F(MaildirTest, NamesFoldersThatAreWhereMailsAre) {
  const auto line = [](const std::string& name) {
    return ": the folder \"" + name +
           "\" in it is not where a Maildir has folders, and is not read";
  };
  addFolder(".Sent");
  for (const char* name : {"cur/b", "cur/a", "new/b", ".Sent/cur/c", "cur/.hidden", "cur/empty"}) {
    fs::create_directories(root() / name);
  }
  for (const char* name : {"cur/b", "cur/a", "new/b", ".Sent/cur/c", "cur/.hidden"}) {
    addMail(std::string(name) + "/1.x", "lost");
  }
  addMail("cur/1.x:2,S", "root");
  EXPECT_EQ(EntriesOf(*open()), (Texts{"[] 1", line("cur/a"), line("cur/b"), line("new/b"),
                                       "1.x root", "[Sent] 0", line("cur/c")}));
}

TEST_F(MaildirTest, GivesTheFoldersBelow) {
  addFolder(".Sent.2024");
  addFolder(".Sent");
  addFolder(".Entw&APw-rfe");
  fs::create_directories(root() / ".no-maildir/cur");
  addMail("cur/1.x:2,S", "root");
  addMail(".Sent/cur/1.x:2,S", "sent");
  addMail(".Sent.2024/new/2.x", "old");
  EXPECT_EQ(EntriesOf(*open()), (Texts{"[] 1", "1.x root", "[Entw\u00fcrfe] 0", "[Sent] 1",
                                       ".Sent:1.x sent", "[Sent/2024] 1", ".Sent.2024:2.x old"}));
}

TEST_F(MaildirTest, FindsMailsByTheirIds) {
  addFolder(".Sent");
  addMail("cur/1.x:2,S", "read");
  addMail("new/1.x", "same");
  addMail("new/2.x", "new");
  addMail("new/.x:y", "hidden");
  addMail(".Sent/cur/1.x;2,S", "sent");
  EXPECT_EQ(EntriesOf(*open()),
            (Texts{"[] 3", "1.x read", "new:1.x same", "2.x new", "[Sent] 1", ".Sent:1.x sent"}));
  const auto reader = open();
  for (const auto& [id, subject] :
       {std::pair("1.x", "read"), {"new:1.x", "same"}, {"2.x", "new"}, {".Sent:1.x", "sent"}}) {
    const auto item = reader->find(id);
    ASSERT_TRUE(item.ok()) << id;
    EXPECT_EQ((*item)->place().id, id);
    EXPECT_EQ((*item)->fields(Detail::Headline).subject, subject);
  }
  for (const char* id : {"", "1", "1.x:2,S", ".Sent:2.x", ".Gone:1.x", ".Sent", "cur:1.x"}) {
    const auto item = reader->find(id);
    ASSERT_FALSE(item.ok()) << id;
    EXPECT_EQ(item.trouble().kind, TroubleKind::Missing);
  }
}

TEST_F(MaildirTest, FindsMailsOfFoldersWithColons) {
  for (const char* const name : {".a", ".a:b", ".a:cur"}) addFolder(name);
  addMail(".a/cur/1.x", "short");
  addMail(".a/cur/2.x", "first");
  addMail(".a/new/2.x", "second");
  addMail(".a:b/cur/1.x", "long");
  addMail(".a:cur/cur/3.x", "cur");
  const auto reader = open();
  for (const auto& [id, subject] : {std::pair(".a:1.x", "short"),
                                    {".a:2.x", "first"},
                                    {".a:new:2.x", "second"},
                                    {".a:b:1.x", "long"},
                                    {".a:cur:3.x", "cur"}}) {
    const auto item = reader->find(id);
    ASSERT_TRUE(item.ok()) << id;
    EXPECT_EQ((*item)->place().id, id);
    EXPECT_EQ((*item)->fields(Detail::Headline).subject, subject);
  }
  EXPECT_EQ(reader->find(".a:b:2.x").trouble().kind, TroubleKind::Missing);
}

TEST_F(MaildirTest, FindsMailsThatAreRenamedMeanwhile) {
  addMail("cur/1.x:2,", "a");
  addMail("new/2.x", "b");
  const auto reader = open();
  ASSERT_TRUE(reader->find("1.x").ok());
  fs::rename(root() / "cur/1.x:2,", root() / "cur/1.x:2,S");
  fs::rename(root() / "new/2.x", root() / "cur/2.x:2,");
  addMail("new/3.x", "c");
  for (const char* const id : {"1.x", "2.x", "3.x"}) EXPECT_TRUE(reader->find(id).ok()) << id;
  fs::remove(root() / "new/3.x");
  EXPECT_EQ(reader->find("3.x").trouble().kind, TroubleKind::Missing);
}

TEST_F(MaildirTest, TellsFilesOfTheSameUniquePartApart) {
  addMail("cur/1.x:2,RS", "a");
  addMail("cur/1.x:2,S", "b");
  EXPECT_EQ(EntriesOf(*open()), (Texts{"[] 2", "1.x a", "cur:1.x:2,S b"}));
  EXPECT_TRUE(open()->find("cur:1.x:2,S").ok());
}

TEST_F(MaildirTest, GoesOnAfterAMailThatCannotBeRead) {
  addMail("cur/1.x", "a");
  fs::create_symlink("nowhere", root() / "cur/2.x");
  addMail("cur/3.x", "c");
  EXPECT_EQ(EntriesOf(*open()),
            (Texts{"[] 3", "1.x a", "2.x: the file cannot be opened", "3.x c"}));
}

// They would be mails without sender, subject and text.
TEST_F(MaildirTest, TellsFilesThatAreNoMails) {
  const auto add = [this](const char* name, std::string_view bytes) {
    std::ofstream(root() / "cur" / name) << bytes;
  };
  add("1", "\x1F\x8B\x08");
  add("2", "");
  add("3", "!BDN");
  add("4", std::string_view("\0\0", 2));
  add("5", "no header\n");
  EXPECT_EQ(EntriesOf(*open()),
            (Texts{"[] 5", "1: the file is compressed (gzip), which is not read",
                   "2: the file is empty", "3: the file is no mail: a store",
                   "4: the file is no mail: it begins with a byte of zero", "5 "}));
}

TEST_F(MaildirTest, TellsThatAFolderIsNone) {
  fs::remove(root() / "new");
  const auto reader = OpenMaildir(root());
  ASSERT_FALSE(reader.ok());
  EXPECT_EQ(reader.trouble().kind, TroubleKind::Missing);
}

TEST(MaildirNamesTest, DecodesFolders) {
  EXPECT_EQ(FolderOfMaildirName(""), Texts());
  EXPECT_EQ(FolderOfMaildirName(".A.B.C"), (Texts{"A", "B", "C"}));
  EXPECT_EQ(FolderOfMaildirName(".A &- B"), Texts{"A & B"});
  EXPECT_EQ(FolderOfMaildirName(".&U,BTFw-"), Texts{"\u53f0\u5317"});
  EXPECT_EQ(FolderOfMaildirName(".R&D"), Texts{"R&D"});
  EXPECT_EQ(FolderOfMaildirName(".Entw\u00fcrfe"), Texts{"Entw\u00fcrfe"});
}

TEST(MaildirNamesTest, TakesFlagsAway) {
  EXPECT_EQ(UniquePart("1.x.host:2,FRS"), "1.x.host");
  EXPECT_EQ(UniquePart("1.x.host;2,"), "1.x.host");
  EXPECT_EQ(UniquePart("1.x.host!2,S"), "1.x.host");
  EXPECT_EQ(UniquePart("1.x.host"), "1.x.host");
  EXPECT_EQ(UniquePart("1.x,S=12:2,S"), "1.x,S=12");
}

}  // namespace
}  // namespace tarn::archive

#include "archive/catalogue/IndexWriter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "archive/catalogue/SampleItems.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

class IndexWriterTest : public testing::Test {
 protected:
  void write(const std::vector<CatalogueItem>& items) {
    auto writer = IndexWriter::create(directory_.path());
    ASSERT_TRUE(writer.ok()) << writer.trouble().reason;
    for (const CatalogueItem& item : items) ASSERT_FALSE((*writer)->add(item).has_value());
    const auto trouble = (*writer)->finish();
    ASSERT_FALSE(trouble.has_value()) << trouble->reason;
  }

  std::string file(const std::string& name) const {
    return test::ReadWholeFile(directory_.path() / name);
  }

  test::TempDirectory directory_;
};

TEST_F(IndexWriterTest, WritesRowsOfWhatThePageShows) {
  CatalogueItem failed = Mail("2", "It's \\ \"quoted\"", "");
  failed.status = ExportStatus::Failed;
  failed.reason = "damaged";
  failed.files.clear();
  failed.fields.from = {"", "ann@example.com"};
  failed.fields.sent = std::nullopt;
  write({FullItem(), failed});
  EXPECT_EQ(directory_.listing(),
            "index index.html index/about.js index/app.css index/app.js index/data-0001.js");
  EXPECT_EQ(file("index/about.js"),
            R"(mailAbout('{"pieces":1,"items":2,"folders":[["/mail/box.pst",["Top","Inbox"],1],)"
            R"(["/mail/box.mbox",[],1]]}');)"
            "\n");
  EXPECT_EQ(file("index/data-0001.js"),
            R"(mailPiece(1,'[[0,"2024-05-01T10:34:56Z","Ann Example","ann@example.com",)"
            R"("Budget for May","Bob, carl@example.com, Dora, Emil",4711,"IPM.Note",1,)"
            R"("an attachment is damaged",1,"box/Inbox/Budget/",["html","message.html"],)"
            R"(["plan.txt","attachments/plan.txt",9]],)"
            R"([1,"","ann@example.com","","It\'s \\\\ \\"quoted\\"","Bob",0,"IPM.Note",2,)"
            R"("damaged",0,"",[],[]]]');)"
            "\n");
}

TEST_F(IndexWriterTest, PartsManyItemsIntoPieces) {
  std::vector<CatalogueItem> items;
  for (int each = 0; each < 4001; ++each) items.push_back(Mail(std::to_string(each), "s", ""));
  write(items);
  EXPECT_EQ(directory_.listing(),
            "index index.html index/about.js index/app.css index/app.js index/data-0001.js "
            "index/data-0002.js index/data-0003.js");
  EXPECT_EQ(
      file("index/about.js"),
      "mailAbout('{\"pieces\":3,\"items\":4001,\"folders\":[[\"/mail/box.mbox\",[],4001]]}');\n");
  EXPECT_NE(file("index/data-0003.js").find("\"box/4000/\""), std::string::npos);
}

TEST_F(IndexWriterTest, CutsLongTextsAndEndsLargePieces) {
  CatalogueItem item = Mail("1", std::string(100'000, 's'), "");
  item.fields.to.assign(1000, Address{"Somebody", ""});
  write({item});
  EXPECT_LT(file("index/data-0001.js").size(), 3000u);
  // What an item needs here is not all bounded.
  item.reason = std::string(3 << 20, 'r');
  write({item, item, item});
  EXPECT_TRUE(std::filesystem::exists(directory_.path() / "index" / "data-0002.js"));
}

TEST_F(IndexWriterTest, TellsAWholePage) {
  write({Mail("1", "s", ""), Mail("2", "s", "")});
  EXPECT_TRUE(IsPageWhole(directory_.path(), 2));
  EXPECT_FALSE(IsPageWhole(directory_.path(), 3));
  std::filesystem::remove(directory_.path() / "index" / "data-0001.js");
  EXPECT_FALSE(IsPageWhole(directory_.path(), 2));
}

TEST_F(IndexWriterTest, WritesAPageWithoutItems) {
  write({});
  EXPECT_EQ(file("index/about.js"), "mailAbout('{\"pieces\":0,\"items\":0,\"folders\":[]}');\n");
  EXPECT_TRUE(file("index.html").starts_with("<!DOCTYPE html>\n"));
  EXPECT_TRUE(file("index/app.js").ends_with("load('about.js');\n"));
  EXPECT_TRUE(file("index/app.css").ends_with("}\n"));
}

// A page runs nothing but its own files, and loads nothing from elsewhere.
TEST_F(IndexWriterTest, ForbidsWhatIsNotItsOwn) {
  write({});
  const std::string page = file("index.html");
  EXPECT_NE(page.find("content=\"default-src 'none'; script-src 'self'; style-src 'self'; "
                      "frame-src 'self'; base-uri 'none'; form-action 'none'\""),
            std::string::npos);
  EXPECT_NE(page.find("sandbox=\"allow-popups allow-popups-to-escape-sandbox\""),
            std::string::npos);
  EXPECT_EQ(page.find("http:"), std::string::npos);
  EXPECT_EQ(page.find("https:"), std::string::npos);
}

TEST_F(IndexWriterTest, ReplacesAnOlderOne) {
  std::filesystem::create_directories(directory_.path() / "index.new" / "x");
  write({FullItem(), FullItem()});
  directory_.write("index/data-0009.js", "of a larger one");
  write({FullItem()});
  EXPECT_EQ(directory_.listing(),
            "index index.html index/about.js index/app.css index/app.js index/data-0001.js");
  const std::string first = file("index/data-0001.js");
  write({FullItem()});
  EXPECT_EQ(file("index/data-0001.js"), first);
}

TEST_F(IndexWriterTest, LeavesNothingWithoutFinish) {
  {
    auto writer = IndexWriter::create(directory_.path());
    ASSERT_TRUE(writer.ok());
    EXPECT_FALSE((*writer)->add(FullItem()).has_value());
  }
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(IndexWriterTest, SaysWhereItCannotBeWritten) {
  const auto writer = IndexWriter::create(directory_.path() / "missing");
  ASSERT_FALSE(writer.ok());
  EXPECT_EQ(writer.trouble().reason, (directory_.path() / "missing" / "index.new").string() +
                                         " cannot be written: No such file or directory");
  auto other = IndexWriter::create(directory_.path());
  ASSERT_TRUE(other.ok());
  std::filesystem::remove(directory_.path() / "index.new");
  const auto trouble = (*other)->finish();
  ASSERT_TRUE(trouble.has_value());
  EXPECT_EQ(trouble->reason, (directory_.path() / "index.new" / "about.js").string() +
                                 " cannot be written: No such file or directory");
  EXPECT_EQ((*other)->add(FullItem())->reason, trouble->reason);
}

TEST_F(IndexWriterTest, SaysWhereThePageCannotBePut) {
  std::filesystem::create_directories(directory_.path() / "index.html" / "in the way");
  auto writer = IndexWriter::create(directory_.path());
  ASSERT_TRUE(writer.ok());
  const auto trouble = (*writer)->finish();
  ASSERT_TRUE(trouble.has_value());
  EXPECT_EQ(trouble->reason,
            (directory_.path() / "index.html").string() + " cannot be written: Is a directory");
}

}  // namespace
}  // namespace tarn::archive

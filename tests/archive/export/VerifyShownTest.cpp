#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "archive/catalogue/Database.h"
#include "archive/export/ExportFixture.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;

// Catalogue and page have no hashes: they are compared with the manifest.
class VerifyShownTest : public ExportFixture {
 protected:
  VerifyShownTest() {
    options_.choices.catalogue = true;
    options_.paths = {directory_
                          .write("box", Mail("It's \"one\" \\ two", 1, "words") +
                                            MailWithFile("With a file", "plan.txt") +
                                            MailWithFile("With a file", "plan.txt") +
                                            Mail(std::string(3000, 'x'), 4, "words"))
                          .string()};
  }

  std::string said() {
    testing::internal::CaptureStderr();
    const ExitStatus status = Verify({options_.folder});
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(status == ExitStatus::Done, said.find("all as the manifest says") != said.npos);
    return said;
  }

  bool isSaid(const std::string& line) { return said().find(line) != std::string::npos; }

  void change(const char* statement) {
    Database(directory_.path() / "out" / "catalogue.sqlite", DatabaseUse::Make).run(statement);
  }

  void replace(const char* name, const std::string& text, const std::string& other) {
    const fs::path path = directory_.path() / "out" / name;
    std::string bytes = test::ReadWholeFile(path);
    const size_t at = bytes.find(text);
    ASSERT_NE(at, std::string::npos) << name;
    std::ofstream(path) << bytes.replace(at, text.size(), other);
  }

  static constexpr const char* kCatalogue =
      "catalogue.sqlite: does not hold the items of the manifest";
  static constexpr const char* kPage = "index.html: does not show the items of the manifest";
};

TEST_F(VerifyShownTest, FindsRowsOfTheCatalogueThatAreOthers) {
  for (const char* const statement :
       {"UPDATE items SET subject='other' WHERE item=4",
        "UPDATE items SET folder='other' WHERE item=1", "DELETE FROM files WHERE item=2",
        "UPDATE files SET sha256='00' WHERE item=2 AND place=1",
        "UPDATE files SET name='other' WHERE attachment=1",
        "INSERT INTO items SELECT 5, source, 'new', parent, folder, class, subject, from_name,"
        " from_address, message_id, sent, received, size, attachments, status, reason FROM items"
        " WHERE item=1",
        "DELETE FROM words_docsize WHERE id=2"}) {
    ASSERT_EQ(exportTo("out"), ExitStatus::Done);
    EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
    change(statement);
    EXPECT_TRUE(isSaid(kCatalogue)) << statement;
    fs::remove_all(directory_.path() / "out");
  }
}

TEST_F(VerifyShownTest, FindsRowsOfThePageThatAreOthers) {
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
  for (const char* const text : {"With a file", "message.txt", "It\\'s"}) {
    const std::string piece = test::ReadWholeFile(directory_.path() / "out/index/data-0001.js");
    replace("index/data-0001.js", text, "0");
    EXPECT_TRUE(isSaid(kPage)) << text;
    std::ofstream(directory_.path() / "out/index/data-0001.js") << piece;
  }
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
  replace("index/data-0001.js", "mailPiece(1,'[", "mailPiece(1,'[[],");
  EXPECT_TRUE(isSaid(kPage));
}

TEST_F(VerifyShownTest, TakesCopiesThatAreShownByFilesOfOthers) {
  options_.dedupe = true;
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
}

TEST_F(VerifyShownTest, GoesOnWithNoFinishedExportOfOtherOptions) {
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  options_.resume = true;
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  const auto before = tree("out");
  const auto expectRefusal = [&](const ExportOptions& other, const char* what) {
    const ExportOptions same = std::exchange(options_, other);
    EXPECT_TRUE(failureOf("out").ends_with(
        "holds a finished export with other options; export into a new folder"))
        << what;
    options_ = same;
  };
  ExportOptions other = options_;
  other.choices.forms = {ExportForm::Text};
  expectRefusal(other, "a form less");
  other.choices.forms = {ExportForm::Text, ExportForm::Mbox, ExportForm::Json};
  expectRefusal(other, "a form more");
  other = options_;
  other.choices.attachments = false;
  expectRefusal(other, "without attachments");
  other = options_;
  other.choices.catalogue = false;
  expectRefusal(other, "without a catalogue");
  other = options_;
  other.dedupe = true;
  expectRefusal(other, "without copies");
  EXPECT_EQ(tree("out"), before);
}

TEST_F(VerifyShownTest, SaysThatPdfsAreNotSearched) {
  options_.paths = {directory_.write("box", MailWithFile("One", "a.PDF")).string()};
  const std::string paths = std::getenv("PATH");
  setenv("PATH", "/nonexistent", 1);
  testing::internal::CaptureStderr();
  const ExitStatus status = exportTo("out");
  const std::string said = testing::internal::GetCapturedStderr();
  setenv("PATH", paths.c_str(), 1);
  EXPECT_EQ(status, ExitStatus::Done);
  EXPECT_NE(said.find("pdftotext is not installed: 1 PDF is found by name alone"), said.npos)
      << said;
}

}  // namespace
}  // namespace tarn::archive

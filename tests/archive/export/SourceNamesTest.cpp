#include <gtest/gtest.h>

#include <set>

#include "archive/common/TellableName.h"
#include "archive/export/ExportFixture.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;

TEST(TellableNameTest, IsThePathWhereThatIsText) {
  for (const char* const name : {"", "a/b.eml",
                                 "Gr\xC3\xBC\xC3\x9F"
                                 "e",
                                 "a\\b", "\\x", "\\xZZ"}) {
    EXPECT_EQ(TellableName(name), name);
  }
}

TEST(TellableNameTest, TellsEveryPathFromEveryOther) {
  EXPECT_EQ(TellableName("a\xFF.eml"), "a\\xFF.eml");
  EXPECT_EQ(TellableName("a\\xFF.eml"), "a\\x5CxFF.eml");
  EXPECT_EQ(TellableName("\\\xFE"), "\\\\xFE");
  EXPECT_EQ(TellableName("\xE2\x82"), "\\xE2\\x82");
}

class SourceNamesTest : public ExportFixture {
 protected:
  // The file of a mail, which begins after the line of an mbox.
  void write(const std::string& name, int number) {
    (void)directory_.write(name, Mail("Of " + std::to_string(number), number, "Body").substr(46));
  }
};

TEST_F(SourceNamesTest, GoesOnWithSourcesWhoseNamesAreNoText) {
  fs::create_directory(directory_.path() / "in");
  for (int number = 0; number < 20; ++number) {
    write("in/m" + std::to_string(number) + (number % 3 == 0 ? "\xFF" : "") + ".eml", number);
  }
  write("in/!\xFE.eml", 20);
  write("in/!\xFD.eml", 21);
  options_.paths = {(directory_.path() / "in").string()};
  options_.choices.forms = {ExportForm::Mbox};
  options_.batchItems = 2;
  ASSERT_EQ(exportTo("whole"), ExitStatus::Done);
  std::set<std::string> names;
  for (const nlohmann::json& row : manifest("whole")) names.insert(row["source"]);
  EXPECT_EQ(names.size(), 22u);
  int killed = 0;
  for (const int change : {10, 25, 40}) {
    options_.resume = false;
    killed += isKilledAt("out", change) ? 1 : 0;
    options_.resume = true;
    EXPECT_EQ(exportTo("out"), ExitStatus::Done);
    EXPECT_EQ(tree("out"), tree("whole")) << change;
    fs::remove_all(directory_.path() / "out");
  }
  EXPECT_EQ(killed, 3);
}

TEST_F(SourceNamesTest, KeepsSourcesThatHaveNamesOfTheExportsOwnFiles) {
  options_.choices.catalogue = true;
  const std::vector<std::string> names = {
      "catalogue.sqlite", "catalogue.sqlite.new", "index", "index.html",
      "index.new",        "manifest.jsonl"};
  for (const std::string& name : names) {
    write(name, 1);
    options_.paths.push_back((directory_.path() / name).string());
  }
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  EXPECT_EQ(Verify({options_.folder}), ExitStatus::Done);
  const auto files = tree("out");
  for (const nlohmann::json& row : manifest("out")) {
    for (const nlohmann::json& file : row.value("files", nlohmann::json::array())) {
      EXPECT_TRUE(files.contains(file["path"])) << file["path"];
    }
  }
  EXPECT_EQ(manifest("out").size(), 2 * names.size());
}

TEST_F(SourceNamesTest, FindsTheSourcesAfterOneWhoseNameIsNoText) {
  write("\xFF.eml", 1);
  options_.paths = {(directory_.path() / "\xFF.eml").string(),
                    (directory_.path() / "\xFF.zzz").string()};
  EXPECT_EQ(exportTo("out"), ExitStatus::Usage);
}

}  // namespace
}  // namespace tarn::archive

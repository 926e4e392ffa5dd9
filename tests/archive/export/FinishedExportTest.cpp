// What --resume says of an export that is finished.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "archive/UnreadableMails.h"
#include "archive/export/ExportFixture.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;

using FinishedExportTest = ExportFixture;

const std::string kMail = Mail("Plans", 1, "First.");

TEST_F(FinishedExportTest, IsRefusedToOtherFiles) {
  makeSources(2);
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  options_.resume = true;
  const std::string refusal = "holds a finished export of other files; export into a new folder";
  options_.paths.pop_back();
  EXPECT_TRUE(failureOf("out").ends_with(refusal));
  makeSources(2);
  options_.paths.push_back(directory_.write("third", kMail).string());
  EXPECT_TRUE(failureOf("out").ends_with(refusal));
  options_.paths.pop_back();
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
}

// Of these alone there are no rows.
TEST_F(FinishedExportTest, IsOfFilesBesideThoseOfOtherPrograms) {
  makeSources(2);
  fs::create_directory(directory_.path() / "in");
  options_.paths.push_back((directory_.path() / "in").string());
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  options_.resume = true;
  (void)directory_.write("in/letter.doc", LetterOfOtherProgram());
  EXPECT_EQ(exportTo("out"), ExitStatus::Done);
  (void)directory_.write("in/letter.msg", LetterOfOtherProgram());
  EXPECT_TRUE(failureOf("out").ends_with(
      "holds a finished export of other files; export into a new folder"));
}

TEST_F(FinishedExportTest, IsRefusedToAFileThatHasChanged) {
  makeSources(2);
  ASSERT_EQ(exportTo("out"), ExitStatus::Done);
  options_.resume = true;
  const std::string grown = options_.paths.back();
  std::ofstream(grown, std::ios::app) << Mail("Later", 99, "Body");
  EXPECT_TRUE(failureOf("out").ends_with("holds a finished export, and " + grown +
                                         " has changed since; export into a new folder"));
}

// A loop that goes on until all is well would end as if it were.
TEST_F(FinishedExportTest, EndsAsBeforeWhereItHasFailures) {
  fs::create_directory(directory_.path() / "in");
  (void)directory_.write("in/box", kMail);
  (void)directory_.write("in/lost.pst", "no store any more");
  options_.paths = {(directory_.path() / "in").string()};
  EXPECT_EQ(exportTo("out"), ExitStatus::Failed);
  options_.resume = true;
  EXPECT_EQ(exportTo("out"), ExitStatus::Failed);
}

}  // namespace
}  // namespace tarn::archive

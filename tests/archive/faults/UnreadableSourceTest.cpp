// Exports of sources of which a read fails.
#include <set>

#include "archive/faults/FaultFixture.h"

namespace tarn::archive {
namespace {

using nlohmann::json;

// Forms and attachments with their sums; the names of folders are left out.
std::multiset<std::string> ContentOf(const json& row) {
  std::multiset<std::string> content;
  for (const json& file : row["files"]) {
    content.insert(file["role"].get<std::string>() + " " + file["sha256"].get<std::string>());
  }
  return content;
}

class UnreadableSource : public FaultyExport {
 protected:
  using Rows = std::map<std::string, json>;

  // By source and id; sources by their name.
  Rows rowsOf(const std::string& folder) const {
    Rows rows;
    for (json& row : manifest(folder)) {
      std::string name = row["source"];
      if (row["type"] == "item") name += " " + row["id"].get<std::string>();
      rows[name] = std::move(row);
    }
    return rows;
  }

  // An item is the same, or tells why not, or its source does.
  static void expectAllAccountedFor(const Rows& whole, const Rows& rows, bool isDone) {
    for (const auto& [name, expected] : whole) {
      if (expected["type"] == "source") {
        const json& row = rows.at(name);
        EXPECT_FALSE(isDone && (row.contains("reason") || row.contains("troubles"))) << row;
        continue;
      }
      const auto found = rows.find(name);
      if (found == rows.end()) {
        const json& source = rows.at(expected["source"]);
        EXPECT_TRUE(source.contains("reason") || source.contains("troubles")) << name;
        continue;
      }
      const json& row = found->second;
      if (row["status"] == "exported") {
        EXPECT_EQ(ContentOf(row), ContentOf(expected)) << name;
        // Folders have other names where theirs cannot be read.
        EXPECT_TRUE(row["folder"] == expected["folder"] || !isDone) << row;
        EXPECT_EQ(row["subject"], expected["subject"]) << name;
      } else {
        EXPECT_NE(row["reason"], "") << name;
        EXPECT_FALSE(isDone && row["status"] == "failed") << row;
      }
    }
  }
};

TEST_F(UnreadableSource, IsToldWhereItCostsAnything) {
  makeSources(6);
  const std::vector<std::string> options = {"--to", "eml,text"};
  ASSERT_EQ(exportInto("whole", options).exitStatus, 0);
  const Rows whole = rowsOf("whole");
  ASSERT_EQ(exportInto("out", options, {"read", 0, "in"}).exitStatus, 0);
  const uint64_t reads = calls_;
  ASSERT_GT(reads, 50u);
  int told = 0;
  for (uint64_t at = 1; at <= reads; at += 2) {
    SCOPED_TRACE("read " + std::to_string(at) + " of " + std::to_string(reads));
    std::filesystem::remove_all(path("out"));
    const test::ProgramResult result = exportInto("out", options, {"read", at, "in"});
    EXPECT_TRUE(result.exitStatus == 0 || result.exitStatus == 1) << result.err;
    expectAllAccountedFor(whole, rowsOf("out"), result.exitStatus == 0);
    told += result.exitStatus;
    EXPECT_EQ(run({"verify", path("out")}).exitStatus, 0);
    if (HasFailure()) return;
  }
  EXPECT_GT(told, 10);
}

}  // namespace
}  // namespace tarn::archive

// An export is killed in the middle of a change that it makes, and goes on.
#include <algorithm>
#include <random>

#include "archive/faults/FaultFixture.h"

namespace tarn::archive {
namespace {

struct Way {
  const char* name;
  std::vector<std::string> options;
  int mails;
  int points;
  unsigned seed;
};

void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

class KilledExport : public FaultyExport, public ::testing::WithParamInterface<Way> {};

TEST_P(KilledExport, EndsWithTheSameTree) {
  makeSources(GetParam().mails);
  const std::vector<std::string>& options = GetParam().options;
  ASSERT_EQ(exportInto("whole", options).exitStatus, 0);
  const Tree whole = tree("whole");
  ASSERT_EQ(exportInto("out", options).exitStatus, 0);
  ASSERT_EQ(difference(tree("out"), whole), "");
  const uint64_t changes = calls_;
  ASSERT_GT(changes, 50u);

  std::vector<std::string> resumed = options;
  resumed.push_back("--resume");
  std::mt19937 random(GetParam().seed);
  for (int point = 0; point < GetParam().points; ++point) {
    std::filesystem::remove_all(path("out"));
    const uint64_t at = random() % changes + 1;
    SCOPED_TRACE("killed at change " + std::to_string(at) + " of " + std::to_string(changes));
    ASSERT_EQ(exportInto("out", options, {"kill", at}).exitStatus, -1);
    expectNothingHalf("out", whole);
    // Every third one is killed once more.
    if (point % 3 == 0) (void)exportInto("out", resumed, {"kill", random() % changes + 1});
    const test::ProgramResult result = exportInto("out", resumed);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(difference(tree("out"), whole), "");
    if (HasFailure()) return;
  }
  EXPECT_EQ(run({"verify", path("out")}).exitStatus, 0);
}

class DamagedExport : public FaultyExport {
 protected:
  // Changes, cuts, lengthens or removes one of the files there; its name.
  std::string damage(std::mt19937& random) const {
    std::vector<std::filesystem::path> files;
    const bool isOfItems = random() % 2 == 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path("out"))) {
      const std::string name = entry.path().string();
      if (name.find("/work/") != std::string::npos) continue;
      const bool isStaged = name.find("/.tarn-staging/") != std::string::npos;
      if (entry.is_regular_file() && entry.file_size() != 0 && isStaged != isOfItems) {
        files.push_back(entry.path());
      }
    }
    if (files.empty()) return "nothing is damaged";
    std::sort(files.begin(), files.end());
    const std::filesystem::path& file = files[random() % files.size()];
    std::string bytes = test::ReadWholeFile(file);
    const size_t at = random() % bytes.size();
    const char* what = "";
    switch (random() % 4) {
      case 0:
        what = "changed";
        bytes[at] = static_cast<char>(bytes[at] ^ 1);
        break;
      case 1:
        what = "cut";
        bytes.resize(at);
        break;
      case 2:
        what = "lengthened";
        bytes += "{}\n";
        break;
      default:
        std::filesystem::remove(file);
        return "removed " + file.string();
    }
    std::ofstream(file, std::ios::binary) << bytes;
    return what + (" " + file.string());
  }
};

TEST_F(DamagedExport, EndsWithTheSameTreeToo) {
  makeSources(24);
  const std::vector<std::string> options = {"--to", "text,mbox"};
  ASSERT_EQ(exportInto("whole", options).exitStatus, 0);
  const Tree whole = tree("whole");
  ASSERT_EQ(exportInto("out", options).exitStatus, 0);
  const uint64_t changes = calls_;
  std::mt19937 random(21);
  int finished = 0;
  constexpr int kPoints = 24;
  for (int point = 0; point < kPoints; ++point) {
    std::filesystem::remove_all(path("out"));
    // In the last third, where all kinds of files are there.
    const uint64_t at = changes - random() % (changes / 3) - 8;
    ASSERT_EQ(exportInto("out", options, {"kill", at}).exitStatus, -1);
    // It is finished, and verify finds what is damaged.
    if (std::filesystem::exists(path("out/manifest.jsonl"))) continue;
    SCOPED_TRACE(damage(random) + " after change " + std::to_string(at));
    const test::ProgramResult result = exportInto("out", {"--to", "text,mbox", "--resume"});
    // Of the settings nobody can say whether they are the same.
    if (result.exitStatus == 2) {
      EXPECT_NE(result.err.find("was begun with other files or options"), std::string::npos);
      continue;
    }
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(difference(tree("out"), whole), "");
    if (HasFailure()) return;
    ++finished;
  }
  EXPECT_GT(finished, kPoints / 2);
}

TEST_F(DamagedExport, DoesNotTrustItsOwnRecords) {
  makeSources(8);
  const std::vector<std::string> options = {"--to", "text"};
  ASSERT_EQ(exportInto("whole", options).exitStatus, 0);
  const Tree whole = tree("whole");
  ASSERT_EQ(exportInto("out", options).exitStatus, 0);
  uint64_t at = calls_;
  // Before the manifest is in its place.
  do {
    at -= 10;
    std::filesystem::remove_all(path("out"));
    ASSERT_EQ(exportInto("out", options, {"kill", at}).exitStatus, -1);
  } while (std::filesystem::exists(path("out/manifest.jsonl")));
  const std::string journal = "out/.tarn-staging/journal";
  std::string text = test::ReadWholeFile(path(journal));
  const size_t subject = text.find("\"Subject 3\"");
  ASSERT_NE(subject, std::string::npos);
  text[subject + 1] = 's';
  write(journal, text);
  EXPECT_EQ(exportInto("out", {"--to", "text", "--resume"}).exitStatus, 0);
  EXPECT_EQ(difference(tree("out"), whole), "");
}

INSTANTIATE_TEST_SUITE_P(
    Ways, KilledExport,
    ::testing::Values(Way{"Html", {"--to", "html"}, 24, 14, 16},
                      Way{"MboxAndMore", {"--to", "mbox,eml,json,text"}, 24, 12, 17},
                      Way{"Dedupe", {"--to", "mbox,text", "--dedupe"}, 24, 12, 18},
                      Way{"TwoWorkers", {"--to", "html,mbox", "-j2", "--dedupe"}, 24, 12, 19}),
    [](const auto& way) { return way.param.name; });

#ifdef HAS_PAGES
INSTANTIATE_TEST_SUITE_P(Pages, KilledExport,
                         ::testing::Values(Way{"Pdf", {"--to", "pdf,mbox"}, 2, 8, 20}),
                         [](const auto& way) { return way.param.name; });
#endif

}  // namespace
}  // namespace tarn::archive

// An export is killed in the middle of a change that it makes, and goes on.
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

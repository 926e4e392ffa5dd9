// Exports for which the disk has no room.
#include "archive/faults/FaultFixture.h"

namespace tarn::archive {
namespace {

class FullDisk : public FaultyExport {
 protected:
  // Exports with such a fault at every change for a while, then at each that comes a step later.
  void exportWithFaults(const std::string& kind, uint64_t step) {
    makeSources(6);
    const std::vector<std::string> options = {"--to", "html,mbox"};
    ASSERT_EQ(exportInto("whole", options).exitStatus, 0);
    const Tree whole = tree("whole");
    ASSERT_EQ(exportInto("out", options, {kind, 0}).exitStatus, 0);
    const uint64_t changes = calls_;
    ASSERT_GT(changes, 100u);
    constexpr uint64_t kBegin = 12;
    for (uint64_t at = 1; at <= changes; at += at < kBegin ? 1 : step) {
      SCOPED_TRACE("change " + std::to_string(at) + " of " + std::to_string(changes));
      std::filesystem::remove_all(path("out"));
      const test::ProgramResult full = exportInto("out", options, {kind, at});
      expectNothingHalf("out", whole);
      // There may be another way, as a copy for a link, where there is room again.
      const bool isDone = kind == "once" && full.exitStatus == 0;
      EXPECT_EQ(std::filesystem::exists(path("out/manifest.jsonl")), isDone);
      if (!isDone) expectClearLine(full);
      const test::ProgramResult result = exportInto("out", {"--to", "html,mbox", "--resume"});
      EXPECT_EQ(result.exitStatus, 0) << result.err;
      EXPECT_EQ(difference(tree("out"), whole), "");
      if (HasFailure()) return;
    }
  }
};

TEST_F(FullDisk, CostsNothingThatResumeDoesNotMake) { exportWithFaults("full", 11); }

TEST_F(FullDisk, IsToldWhereThereIsRoomAgainAtOnce) { exportWithFaults("once", 13); }

}  // namespace
}  // namespace tarn::archive

#include "archive/cluster/Calibration.h"

#include <gtest/gtest.h>

#include "console/Failure.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

// Seconds of tasks whose messages cost so many bytes.
TimedTask Timed(double bytes, double messages, double cost) {
  return {bytes, messages, (bytes + cost * messages) / 1e7};
}

TEST(Calibration, FindsWhatAMessageCosts) {
  EXPECT_EQ(MessageCostOf({Timed(1e8, 100, 50'000), Timed(2e7, 3000, 50'000)}), 50'000u);
  EXPECT_EQ(MessageCostOf({Timed(1e8, 100, 1000), Timed(2e7, 3000, 1000), Timed(5e7, 10, 1000)}),
            1000u);
}

TEST(Calibration, StaysWithinReason) {
  EXPECT_EQ(MessageCostOf({{1e8, 100, 10}, {1e8, 1000, 5}}), 1u);
  EXPECT_EQ(MessageCostOf({{1e8, 100, 1}, {1e6, 1000, 10}}), uint64_t{16} << 20);
}

TEST(Calibration, SaysThatTasksOfOneKindTellNothing) {
  EXPECT_EQ(MessageCostOf({}), std::nullopt);
  EXPECT_EQ(MessageCostOf({Timed(1e8, 100, 1000)}), std::nullopt);
  EXPECT_EQ(MessageCostOf({Timed(1e8, 100, 1000), Timed(2e8, 200, 1000)}), std::nullopt);
}

TEST(Calibration, ReadsTheLogBesideAManifest) {
  const test::TempDirectory directory;
  std::filesystem::create_directory(directory.path() / "out");
  const auto manifest = directory.write("out/manifest.jsonl", "");
  (void)directory.write(
      "out.attempts.jsonl",
      "{\"type\":\"plan\",\"plan\":\"x\"}\n"
      "{\"type\":\"attempt\",\"inputBytes\":\"x\",\"messages\":[],\"seconds\":1}\n"
      "{\"type\":7}\n"
      "{\"type\":\"attempt\",\"inputBytes\":1000000,\"messages\":10,\"seconds\":1.1}\n"
      "{\"type\":\"attempt\",\"inputBytes\":1000000,\"messages\":100,\"seconds\":2}\n");
  EXPECT_EQ(CalibratedCost(manifest.string()), 10'000u);
  EXPECT_EQ(CalibratedCost((directory.path() / "out.attempts.jsonl").string()), 10'000u);
}

TEST(Calibration, RefusesWhatTellsNoTimes) {
  const test::TempDirectory directory;
  const auto log = directory.write("log", "{\"type\":\"plan\"}\nnonsense\n");
  EXPECT_THROW(CalibratedCost(log.string()), host::Failure);
  EXPECT_THROW(CalibratedCost((directory.path() / "none").string()), host::Failure);
}

}  // namespace
}  // namespace tarn::archive

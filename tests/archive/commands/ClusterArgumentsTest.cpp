// Numbers that plan and run-task do not take.

#include "ArchiveFixture.h"

namespace tarn::archive {
namespace {

using ClusterArguments = ArchiveCommand;

TEST_F(ClusterArguments, ACostIsASize) {
  for (const char* cost : {"-1", "0", "0K", "-1K", "1.5G", "5X", "", "G", "99999999999999G"}) {
    EXPECT_EQ(failure(2, {"plan", "mail.eml", "-o", "plan", "--target-cost", cost}),
              "tarnmail: --target-cost: " + std::string(*cost != '\0' ? cost : "an empty text") +
                  " is no size as 300M or 16G; see tarnmail plan --help\n");
  }
  EXPECT_EQ(failure(2, {"plan", "mail.eml", "-o", "plan", "--target-cost", "16G"}),
            "tarnmail: mail.eml: no such file\n");
}

TEST_F(ClusterArguments, ATaskIsANumberFromZero) {
  for (const char* option : {"--task", "--task-offset"}) {
    EXPECT_EQ(failure(2, {"run-task", "plan", "-o", "out", option, "-1"}),
              "tarnmail: " + std::string(option) +
                  ": -1 is no number from 0; see tarnmail run-task --help\n");
  }
  EXPECT_EQ(directory_.listing(), "");
}

}  // namespace
}  // namespace tarn::archive

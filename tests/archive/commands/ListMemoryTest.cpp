// The memory that list takes of the system.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "archive/commands/ArchiveFixture.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::archive {
namespace {

class ListMemory : public ArchiveCommand {
 protected:
  // In kilobytes, of a list of an mbox with as many mails.
  long peakOf(int mails) {
    {
      std::ofstream box(directory_.path() / "box", std::ios::binary);
      for (int i = 0; i < mails; ++i) {
        box << "From a Wed May  1 00:00:00 2024\n" << MailWith({std::to_string(i)}) << "\n";
      }
    }
    test::ProgramCall call = callOf({"list", "box"});
    call.program = TARNMAIL_ARCHIVE_PATH;
    test::RunningProgram program(call, {});
    EXPECT_EQ(program.wait(), 0);
    return program.peakMemory();
  }
};

TEST_F(ListMemory, IsTheSameForTenTimesAsManyMails) {
  constexpr long kAllowed = 2048;
  const long few = peakOf(2000);
  EXPECT_GT(few, 0);
  EXPECT_NEAR(static_cast<double>(peakOf(20000)), static_cast<double>(few), kAllowed);
}

}  // namespace
}  // namespace tarn::archive

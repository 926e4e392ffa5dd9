// LimitsFixture.h - archive commands of which a test wants to know the memory.
#ifndef TARN_TESTS_ARCHIVE_LIMITS_LIMITSFIXTURE_H
#define TARN_TESTS_ARCHIVE_LIMITS_LIMITSFIXTURE_H

#include <sys/wait.h>

#include "archive/commands/ArchiveFixture.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::archive {

class LimitsTest : public ArchiveCommand {
 protected:
  struct Run {
    int status = -1;
    long peak = 0;  // of the largest process, in kilobytes
  };

  Run runOf(const std::vector<std::string>& arguments) const {
    test::RunningProgram program(callOf(arguments), {});
    const int status = program.wait();
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, program.peakMemory()};
  }

  std::string path(const std::string& name) const { return (directory_.path() / name).string(); }
};

}  // namespace tarn::archive

#endif

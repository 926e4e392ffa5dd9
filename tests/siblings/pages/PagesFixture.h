// PagesFixture.h - tarnmail pages as a process that something happens to.
#ifndef TARN_TESTS_SIBLINGS_PAGES_PAGESFIXTURE_H
#define TARN_TESTS_SIBLINGS_PAGES_PAGESFIXTURE_H

#include <string>
#include <string_view>
#include <vector>

#include "siblings/client/ProcessHandle.h"
#include "tarnmail/TarnmailFixture.h"
#include "tarnmail/posix/RunningProgram.h"

namespace tarn::test {

// An MSG file with that body.
std::string RtfMail(std::string_view rtf);

class PagesFixture : public TarnmailTest {
 protected:
  // Mails with far more pages than are made until something happens; their names.
  std::string longTextMail();
  std::string longRtfMail();

  ProgramCall pagesCall(const std::vector<std::string>& words) const;

  // Wait for the first page to be written to where it is hidden in that folder, and for a helper to
  // be started. False: the program has ended.
  static bool waitForAPage(const std::filesystem::path& parent, const RunningProgram& program);
  static bool waitForAHelper(const RunningProgram& program);

  // The helpers that the program has started.
  static std::vector<pid_t> helpersOf(const RunningProgram& program);

  // A hold on each process that the program has started.
  static std::vector<pages::Descriptor> startedBy(const RunningProgram& program);
  // Fails the test where one of them goes on, and ends it.
  static void expectGone(const std::vector<pages::Descriptor>& processes);
};

}  // namespace tarn::test

#endif

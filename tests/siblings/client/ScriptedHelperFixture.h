// ScriptedHelperFixture.h - a PageHelper whose programs have the scripted engine.
#ifndef TARN_TESTS_SIBLINGS_CLIENT_SCRIPTEDHELPERFIXTURE_H
#define TARN_TESTS_SIBLINGS_CLIENT_SCRIPTEDHELPERFIXTURE_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "siblings/Processes.h"
#include "siblings/client/PageHelper.h"
#include "support/TempDirectory.h"

namespace tarn::test {

// Without sanitizers, which take memory as they like.
#ifdef TARN_PAGES_SANITIZED
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

// What a process has started that runs a scripted helper.
std::vector<pid_t> HelpersOf(pid_t process);

// Files that this process has open.
size_t CountOpenFiles();

// Each test fails that leaves a process, an open file or a temporary file behind.
class ScriptedHelperTest : public ::testing::Test {
 protected:
  ScriptedHelperTest();
  ~ScriptedHelperTest() override;

  // Behind walls, on a machine that has those for both helpers.
  static pages::HelperOptions options();
  static pages::DocumentOnPaper document(std::string_view script);

  // The log of a script, which is run through layOut and pdf.
  static std::string logOf(pages::PageHelper& helper, std::string_view script);
  static std::string logOf(pages::PageHelper& helper, const pages::DocumentOnPaper& document);

  // What a call must throw, as "Trouble: line".
  template <class Call>
  static std::string failureOf(const Call& call) {
    try {
      call();
    } catch (const pages::PageFailure& failure) {
      return describe(failure);
    }
    return "no failure";
  }

  // The document after it works as if nothing had been.
  static void expectWell(pages::PageHelper& helper);

  const TempDirectory temporary_;

 private:
  static std::string describe(const pages::PageFailure& failure);

  const size_t openFiles_;
  const std::optional<std::string> temporaryBefore_;
};

}  // namespace tarn::test

#endif

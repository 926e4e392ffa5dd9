// Helpers on machines that allow less than this one: each wall by itself, and what is said where
// there is none. A thread that may make fewer system calls is such a machine for all that it
// starts.

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "ScriptedHelperFixture.h"
#include "ThisMachine.h"
#include "siblings/client/PageHelper.h"

namespace tarn::pages {
namespace {

using test::Machine;

class OtherMachinesTest : public test::ScriptedHelperTest,
                          public ::testing::WithParamInterface<Machine> {
 protected:
  // What is left of the wanted machine on this one.
  static Machine machine() { return test::BothOf(GetParam(), test::ThisMachine()); }
  static bool keepsReadersApart() { return machine().hasNamespaces || machine().hasSeccomp; }
  static bool keepsWritersApart() {
    return machine().hasNamespaces || (machine().hasSeccomp && machine().hasLandlock);
  }

  static void onMachine(const std::function<void()>& work) {
    std::thread([&] {
      if (test::ThisMachine().hasSeccomp) {
        ASSERT_TRUE(test::BecomeMachine(GetParam()));
      }
      work();
    }).join();
  }

  static DocumentOnPaper rtf(std::string_view script) {
    DocumentOnPaper document = OtherMachinesTest::document(script);
    document.kind = DocumentKind::Rtf;
    return document;
  }

  static HelperOptions walledOptions() {
    HelperOptions options = OtherMachinesTest::options();
    options.sandbox = true;
    return options;
  }

  struct Attempt {
    std::string what;
    bool isRefused = false;
  };

  static void expectAttempts(PageHelper& helper, DocumentOnPaper document,
                             const std::vector<Attempt>& attempts) {
    std::string script;
    std::string log;
    for (const Attempt& attempt : attempts) {
      script += "layOut " + attempt.what + "\n";
      log += attempt.what + (attempt.isRefused ? ": refused\n" : ": done\n");
    }
    document.bytes = script;
    EXPECT_EQ(logOf(helper, document), log);
  }

  // Each time that it is asked.
  static void expectRefusal(const DocumentOnPaper& document, const std::string& helper,
                            const std::string& reason) {
    onMachine([&] {
      PageHelper refused(walledOptions());
      for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(failureOf([&] { refused.layOut(document); }),
                  "NoSandbox: " + helper + " cannot be kept apart on this machine (" + reason +
                      "); --no-sandbox does without");
      }
      EXPECT_TRUE(test::DescendantsOf(getpid()).empty());
    });
  }
};

// Without seccomp no other machine can be made of this one.
std::vector<Machine> Machines() {
  if (!test::ThisMachine().hasSeccomp) return {test::ThisMachine()};
  return {{},
          {.hasLandlock = false},
          {.hasSeccomp = false},
          {.hasNamespaces = false},
          {.hasNamespaces = false, .hasLandlock = false},
          {.hasNamespaces = false, .hasSeccomp = false}};
}

INSTANTIATE_TEST_SUITE_P(Machines, OtherMachinesTest, ::testing::ValuesIn(Machines()),
                         [](const ::testing::TestParamInfo<Machine>& machine) {
                           return std::string(machine.param.hasNamespaces ? "" : "NoNamespaces") +
                                  (machine.param.hasLandlock ? "" : "NoLandlock") +
                                  (machine.param.hasSeccomp ? "" : "NoSeccomp") + "Machine";
                         });

TEST_P(OtherMachinesTest, KeepReadersApart) {
  if (!keepsReadersApart()) return expectRefusal(document(""), "tarnmail-pages", "no seccomp");
  onMachine([this] {
    PageHelper helper(walledOptions());
    helper.prepare(DocumentKind::Html);
    expectWell(helper);
    // bubblewrap is two processes around the helper.
    EXPECT_EQ(test::DescendantsOf(getpid()).size(), machine().hasNamespaces ? 3u : 1u);
    const bool hidesFiles = machine().hasNamespaces || machine().hasLandlock;
    expectAttempts(helper, document(""),
                   {{"open /etc/passwd", hidesFiles},
                    {"open /usr", false},
                    {"socket", machine().hasSeccomp},
                    {"signal " + std::to_string(getpid()), true},
                    {"write /usr/tarnmail-test", true},
                    {"write " + (temporary_.path() / "new").string(), true}});
  });
}

TEST_P(OtherMachinesTest, KeepWritersApart) {
  const char* const reason =
      machine().hasLandlock ? "no seccomp" : "no Landlock, and it writes files";
  if (!keepsWritersApart()) return expectRefusal(rtf(""), "tarnmail-office", reason);
  onMachine([this] {
    PageHelper helper(walledOptions());
    expectAttempts(helper, rtf(""),
                   {{"open /etc/passwd", true},
                    {"open /usr", false},
                    {"socket", machine().hasSeccomp},
                    {"write /usr/tarnmail-test", true},
                    {"write " + (temporary_.path() / "new").string(), true}});
  });
}

TEST_P(OtherMachinesTest, DoWithoutWallsWhenToldTo) {
  onMachine([] {
    HelperOptions without = options();
    without.sandbox = false;
    PageHelper helper(without);
    expectWell(helper);
    EXPECT_EQ(logOf(helper, "layOut open /etc/passwd"), "open /etc/passwd: done\n");
  });
}

}  // namespace
}  // namespace tarn::pages

// Helpers on machines that allow less than this one: each wall by itself, and what is said where
// there is none. A thread that may make fewer system calls is such a machine for all that it
// starts.

#include <gtest/gtest.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "ScriptedHelperFixture.h"
#include "siblings/client/PageHelper.h"

namespace tarn::pages {
namespace {

struct Machine {
  bool hasNamespaces = true;
  bool hasLandlock = true;
  bool hasSeccomp = true;
};

class OtherMachinesTest : public test::ScriptedHelperTest {
 protected:
  static void on(const Machine& machine, const std::function<void()>& work) {
    std::thread([&] {
      ASSERT_TRUE(becomes(machine));
      work();
    }).join();
  }

  static DocumentOnPaper rtf(std::string_view script) {
    DocumentOnPaper document = OtherMachinesTest::document(script);
    document.kind = DocumentKind::Rtf;
    return document;
  }

 private:
  static bool becomes(const Machine& machine) {
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    int errors = 0;
    const auto refuse = [&](int call, int error, std::vector<scmp_arg_cmp> conditions) {
      errors |= seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(static_cast<uint16_t>(error)), call,
                                       static_cast<unsigned>(conditions.size()), conditions.data());
    };
    if (!machine.hasNamespaces) {
      refuse(SCMP_SYS(unshare), EPERM, {});
      refuse(SCMP_SYS(clone), EPERM, {{0, SCMP_CMP_MASKED_EQ, CLONE_NEWNS, CLONE_NEWNS}});
    }
    if (!machine.hasLandlock) refuse(SCMP_SYS(landlock_create_ruleset), ENOSYS, {});
    if (!machine.hasSeccomp) {
      refuse(SCMP_SYS(seccomp), EINVAL, {});
      refuse(SCMP_SYS(prctl), EINVAL, {{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0}});
    }
    const bool isSet = errors == 0 && seccomp_load(filter) == 0;
    seccomp_release(filter);
    return isSet;
  }
};

TEST_F(OtherMachinesTest, WithAllHaveNamespaces) {
  on({}, [] {
    PageHelper helper(options());
    expectWell(helper);
    // bubblewrap is two processes around the helper.
    EXPECT_EQ(test::DescendantsOf(getpid()).size(), 3u);
  });
}

TEST_F(OtherMachinesTest, WithoutNamespacesHaveTheOtherWall) {
  on({.hasNamespaces = false}, [] {
    PageHelper helper(options());
    helper.prepare(DocumentKind::Html);
    EXPECT_EQ(logOf(helper, "layOut open /etc/passwd\nlayOut socket\nlayOut open /usr"),
              "open /etc/passwd: refused\nsocket: refused\nopen /usr: done\n");
    EXPECT_EQ(test::DescendantsOf(getpid()).size(), 1u);
    EXPECT_EQ(logOf(helper, rtf("layOut open /etc/passwd\nlayOut write /usr/tarnmail-test")),
              "open /etc/passwd: refused\nwrite /usr/tarnmail-test: refused\n");
  });
}

TEST_F(OtherMachinesTest, WithoutLandlockReadFilesAndWriteNone) {
  on({.hasNamespaces = false, .hasLandlock = false}, [this] {
    PageHelper helper(options());
    const std::string file = (temporary_.path() / "new").string();
    EXPECT_EQ(logOf(helper, "layOut open /etc/passwd\nlayOut socket\nlayOut write " + file),
              "open /etc/passwd: done\nsocket: refused\nwrite " + file + ": refused\n");
    EXPECT_EQ(failureOf([&] { helper.layOut(rtf("")); }),
              "NoSandbox: tarnmail-office cannot be kept apart on this machine "
              "(no Landlock, and it writes files); --no-sandbox does without");
  });
}

TEST_F(OtherMachinesTest, WithoutSeccompHaveNamespacesAlone) {
  on({.hasSeccomp = false}, [] {
    PageHelper helper(options());
    const std::string self = std::to_string(getpid());
    EXPECT_EQ(logOf(helper, "layOut open /etc/passwd\nlayOut socket\nlayOut signal " + self +
                                "\nlayOut write /usr/tarnmail-test"),
              "open /etc/passwd: refused\nsocket: done\nsignal " + self +
                  ": refused\nwrite /usr/tarnmail-test: refused\n");
  });
}

TEST_F(OtherMachinesTest, WithoutAnyWallAreRefused) {
  on({.hasNamespaces = false, .hasSeccomp = false}, [] {
    PageHelper helper(options());
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(failureOf([&] { helper.layOut(document("")); }),
                "NoSandbox: tarnmail-pages cannot be kept apart on this machine (no seccomp); "
                "--no-sandbox does without");
    }
    HelperOptions without = options();
    without.sandbox = false;
    PageHelper alone(without);
    expectWell(alone);
  });
}

}  // namespace
}  // namespace tarn::pages

#include "ThisMachine.h"

#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <thread>
#include <vector>

namespace tarn::test {
namespace {

// A filter that allows all but what is refused.
class Refusals {
 public:
  Refusals() : filter_(seccomp_init(SCMP_ACT_ALLOW)) {}
  Refusals(const Refusals&) = delete;
  Refusals& operator=(const Refusals&) = delete;
  ~Refusals() { seccomp_release(filter_); }

  void add(int call, int error, const std::vector<scmp_arg_cmp>& conditions) {
    errors_ |= seccomp_rule_add_array(filter_, SCMP_ACT_ERRNO(static_cast<uint16_t>(error)), call,
                                      static_cast<unsigned>(conditions.size()), conditions.data());
  }

  bool load() const { return errors_ == 0 && seccomp_load(filter_) == 0; }

 private:
  const scmp_filter_ctx filter_;
  int errors_ = 0;
};

bool HasNamespaces() {
  return std::system(
             "bwrap --unshare-all --die-with-parent --cap-drop ALL --ro-bind / / "
             "/bin/true >/dev/null 2>&1") == 0;
}

bool HasSeccomp() {
  bool has = false;
  std::thread([&has] { has = Refusals().load(); }).join();
  return has;
}

Machine Found() {
  Machine machine;
  machine.hasNamespaces = HasNamespaces();
  machine.hasLandlock =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) >= 1;
  machine.hasSeccomp = HasSeccomp();
  return machine;
}

}  // namespace

const Machine& ThisMachine() {
  static const Machine machine = Found();
  return machine;
}

bool BecomeMachine(const Machine& machine) {
  Refusals refusals;
  if (!machine.hasNamespaces) {
    refusals.add(SCMP_SYS(unshare), EPERM, {});
    refusals.add(SCMP_SYS(clone), EPERM, {{0, SCMP_CMP_MASKED_EQ, CLONE_NEWNS, CLONE_NEWNS}});
  }
  if (!machine.hasLandlock) refusals.add(SCMP_SYS(landlock_create_ruleset), ENOSYS, {});
  if (!machine.hasSeccomp) {
    refusals.add(SCMP_SYS(seccomp), EINVAL, {});
    refusals.add(SCMP_SYS(prctl), EINVAL, {{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0}});
  }
  return refusals.load();
}

Machine BothOf(const Machine& one, const Machine& other) {
  return {one.hasNamespaces && other.hasNamespaces, one.hasLandlock && other.hasLandlock,
          one.hasSeccomp && other.hasSeccomp};
}

}  // namespace tarn::test

// The wall around files. The C library has no functions for Landlock's system calls.
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "siblings/client/Descriptor.h"
#include "siblings/client/HelperCall.h"
#include "siblings/helper/Sandbox.h"

namespace tarn::pages {
namespace {

// Of the third version, which headers may be older than.
constexpr uint64_t kTruncate = uint64_t{1} << 14;

constexpr uint64_t kReadFile = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr uint64_t kReadFolder = LANDLOCK_ACCESS_FS_READ_DIR;
constexpr uint64_t kWriteFile = LANDLOCK_ACCESS_FS_WRITE_FILE;
constexpr uint64_t kOtherWriting = LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                   LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                                   LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                                   LANDLOCK_ACCESS_FS_MAKE_SYM;
constexpr uint64_t kNeverAllowed =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_BLOCK;

// What this system can forbid, of what is told apart here.
uint64_t Forbidden(long version) {
  uint64_t rights = kReadFile | kReadFolder | kWriteFile | kOtherWriting | kNeverAllowed;
  if (version >= 3) rights |= kTruncate;
  return rights;
}

class Rules {
 public:
  explicit Rules(uint64_t forbidden) : forbidden_(forbidden) {
    landlock_ruleset_attr attributes = {};
    attributes.handled_access_fs = forbidden;
    rules_ = Descriptor(
        static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
  }

  // Nothing when there is no such place.
  void allow(const char* path, uint64_t rights) {
    const Descriptor place(open(path, O_PATH | O_CLOEXEC));
    struct stat status = {};
    if (!place || fstat(place.get(), &status) != 0) return;
    // Of a file there is only this.
    if (!S_ISDIR(status.st_mode)) rights &= kReadFile | kWriteFile | kTruncate;
    landlock_path_beneath_attr attributes = {};
    attributes.allowed_access = rights & forbidden_;
    attributes.parent_fd = place.get();
    // What could not be allowed stays forbidden.
    (void)syscall(SYS_landlock_add_rule, rules_.get(), LANDLOCK_RULE_PATH_BENEATH, &attributes, 0);
  }

  bool enforce() const {
    return rules_ && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_landlock_restrict_self, rules_.get(), 0) == 0;
  }

 private:
  const uint64_t forbidden_;
  Descriptor rules_;
};

}  // namespace

bool WallOffFiles(const std::filesystem::path& folder) {
  const long version =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return false;
  Rules rules(Forbidden(version));
  for (const char* const place : kReadablePlaces) rules.allow(place, kReadFile | kReadFolder);
  rules.allow("/proc/self", kReadFile | kReadFolder);
  for (const char* const device : {"/dev/null", "/dev/zero"}) {
    rules.allow(device, kReadFile | kWriteFile);
  }
  for (const char* const device : {"/dev/random", "/dev/urandom"}) rules.allow(device, kReadFile);
  rules.allow(folder.c_str(), kReadFile | kReadFolder | kWriteFile | kTruncate | kOtherWriting);
  return rules.enforce();
}

}  // namespace tarn::pages

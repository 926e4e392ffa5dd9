#include <stdlib.h>
#include <unistd.h>

#include <cstdio>

#include "siblings/office/OfficeProfile.h"

namespace tarn::pages {

void SetOfficeEnvironment(const std::filesystem::path& temporaryFiles) {
  const auto set = [](const char* name, const char* value) { setenv(name, value, 1); };
  set("TMPDIR", temporaryFiles.c_str());
  set("LC_ALL", "C.UTF-8");
  set("TZ", "UTC");
  // No display, no printers, no scanning for extensions, no recovery of what an earlier run left.
  set("SAL_USE_VCLPLUGIN", "svp");
  set("SAL_DISABLE_DEFAULTPRINTER", "1");
  set("SAL_DISABLE_PRINTERLIST", "1");
  set("DISABLE_EXTENSION_SYNCHRONIZATION", "1");
  set("OOO_DISABLE_RECOVERY", "1");
  set("SAL_DISABLE_USERMIGRATION", "1");
  set("SAL_DISABLE_OPENCL", "1");
  set("SAL_NOLOCK_PROFILE", "1");
  // Names and numbers that would be random are the same in each run.
  set("SAL_RAND_REPEATABLE", "1");
}

void EndWithoutOffice() {
  on_exit(
      [](int status, void*) {
        std::fflush(nullptr);
        _exit(status);
      },
      nullptr);
}

}  // namespace tarn::pages

#include "support/LocalZone.h"

#include <stdlib.h>
#include <time.h>

namespace tarn::test {

LocalZone::LocalZone() {
  const char* const zone = getenv("TZ");
  if (zone != nullptr) before_ = zone;
  use("UTC0");
}

LocalZone::~LocalZone() {
  if (before_) {
    setenv("TZ", before_->c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  tzset();
}

void LocalZone::use(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

}  // namespace tarn::test

#include "WriteAll.h"

#include <unistd.h>

#include <cerrno>

namespace tarn::host {

std::error_code LastError() { return {errno, std::generic_category()}; }

std::error_code WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return LastError();
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return {};
}

}  // namespace tarn::host

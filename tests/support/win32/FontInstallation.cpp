#include "support/FontInstallation.h"

#include <windows.h>

#include <stdexcept>

namespace tarn::test {

FontInstallation::FontInstallation(const std::filesystem::path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder / "fonts")) {
    if (AddFontResourceExW(entry.path().c_str(), FR_PRIVATE, nullptr) == 0) {
      throw std::runtime_error("not a font: " + entry.path().string());
    }
    added_.push_back(entry.path());
  }
}

FontInstallation::~FontInstallation() {
  for (const std::filesystem::path& file : added_) {
    RemoveFontResourceExW(file.c_str(), FR_PRIVATE, nullptr);
  }
}

}  // namespace tarn::test

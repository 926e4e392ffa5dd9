// FontInstallation.h - makes font files fonts of this process, for as long as it lives.
#ifndef TARN_TESTS_SUPPORT_FONTINSTALLATION_H
#define TARN_TESTS_SUPPORT_FONTINSTALLATION_H

#include <filesystem>
#include <vector>

namespace tarn::test {

// Where fontconfig finds the fonts, a fonts.conf in the folder becomes its configuration: it knows
// no other font, keeps its cache in the folder, and would put "Arial" in place of "Helvetica" for
// whoever asks for the best match. It stays set.
//
// On Windows the fonts are added to those of the machine, for this process alone.
class FontInstallation {
 public:
  // The folder has the files in its folder "fonts".
  explicit FontInstallation(const std::filesystem::path& folder);
  FontInstallation(const FontInstallation&) = delete;
  FontInstallation& operator=(const FontInstallation&) = delete;
  ~FontInstallation();

 private:
  std::vector<std::filesystem::path> added_;
};

}  // namespace tarn::test

#endif

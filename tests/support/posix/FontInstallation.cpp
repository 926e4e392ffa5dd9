#include "support/FontInstallation.h"

#include <stdlib.h>

#include <fstream>
#include <string>

namespace tarn::test {

FontInstallation::FontInstallation(const std::filesystem::path& folder) {
  const std::filesystem::path configuration = folder / "fonts.conf";
  std::ofstream(configuration, std::ios::binary)
      << "<?xml version=\"1.0\"?>\n"
         "<!DOCTYPE fontconfig SYSTEM \"urn:fontconfig:fonts.dtd\">\n"
         "<fontconfig>\n"
         "<dir>"
      << (folder / "fonts").string() << "</dir>\n<cachedir>" << (folder / "cache").string()
      << "</cachedir>\n"
         "<alias binding=\"same\"><family>Helvetica</family>"
         "<prefer><family>Arial</family></prefer></alias>\n"
         "</fontconfig>\n";
  unsetenv("FONTCONFIG_PATH");
  unsetenv("FONTCONFIG_SYSROOT");
  setenv("FONTCONFIG_FILE", configuration.c_str(), 1);
}

FontInstallation::~FontInstallation() = default;

}  // namespace tarn::test

// InstalledHelpers.h - the helper programs that are installed with this one.
#ifndef TARN_SIBLINGS_CLIENT_INSTALLEDHELPERS_H
#define TARN_SIBLINGS_CLIENT_INSTALLEDHELPERS_H

#include <filesystem>

#include "console/PrivateFolder.h"
#include "siblings/client/PageHelper.h"

namespace tarn::pages {

// What a message ends with that says that helpers, or what they need, are missing.
inline constexpr const char* kHowToInstallHelpers =
    "install the package tarnpst-pages, or let ./run pages of the sources build them";

// Where they are. Throws host::Failure (Broken) with what to install where there are none.
std::filesystem::path FolderOfHelpers();

// They have their own folders in `folder`, or in the system's for temporary files where that cannot
// be made. Throws as FolderOfHelpers does.
HelperOptions InstalledHelpers(host::PrivateFolder& folder, bool sandbox);

}  // namespace tarn::pages

#endif

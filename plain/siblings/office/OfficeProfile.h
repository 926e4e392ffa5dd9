// OfficeProfile.h - the settings that the office library starts with.
//
// With them it shows a page as it would be printed (no frames around fields and cells, no corners
// of the page, no marks), runs no macros, fetches nothing for a document, keeps no list of
// documents, speaks English whatever the machine speaks, and takes itself for one that was started
// before: a first start would test the graphics for half a second.
#ifndef TARN_SIBLINGS_OFFICE_OFFICEPROFILE_H
#define TARN_SIBLINGS_OFFICE_OFFICEPROFILE_H

#include <filesystem>

namespace tarn::pages {

// Writes the settings into a folder of the profile's own, which is made.
void WriteOfficeProfile(const std::filesystem::path& profile,
                        const std::filesystem::path& installation);

// The environment that the office library reads, for this process.
void SetOfficeEnvironment(const std::filesystem::path& temporaryFiles);

// To be called after the library was opened: when the process exits, its own destructors are not
// run. Its threads would use what they destroy.
void EndWithoutOffice();

}  // namespace tarn::pages

#endif

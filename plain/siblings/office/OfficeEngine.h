// OfficeEngine.h - pages of RTF, by the office library of this machine (LibreOfficeKit).
//
// A document is made harmless first (HarmlessRtf.h). Where it says nothing of its paper it gets the
// one asked for; a size of its own stays.
#ifndef TARN_SIBLINGS_OFFICE_OFFICEENGINE_H
#define TARN_SIBLINGS_OFFICE_OFFICEENGINE_H

#include <filesystem>
#include <memory>

#include "siblings/layout/Engine.h"

namespace tarn::pages {

// Starts the library, which can be done once in a process: the first folder is the one that is
// used, for the profile, for documents and for temporary files. It lives until the process ends,
// and sets variables of the process's environment, so call it while there is one thread.
// Trouble::NotInstalled where there is none.
//
// Its engines lay out Rtf alone, and are for one thread. Trouble::BadDocument for what is not RTF,
// or what the library cannot read.
std::unique_ptr<Engine> MakeOfficeEngine(const std::filesystem::path& privateFolder);

}  // namespace tarn::pages

#endif

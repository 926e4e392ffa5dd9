// Settings.h - what the command line says about the kernel under the filter.
#ifndef TARN_TARNMAIL_SETTINGS_H
#define TARN_TARNMAIL_SETTINGS_H

#include <cstdint>
#include <optional>
#include <string>

#include "console/PrivateFolder.h"

namespace tarn::host {

// How an HTML document and its images reach whoever lays them out.
enum class Route { InMemory, TempFiles };

struct Settings {
  std::optional<uint32_t> language;          // a LANGID; else the kernel's
  bool inMemory = false;                     // asks for a route; at most one of the two is set
  bool tempFiles = false;                    //
  std::optional<std::string> tempDirectory;  // else the system's
};

// The route that the settings ask for, else `usual`.
Route RouteOf(const Settings& settings, Route usual);

// Sets the kernel up, with its temporary files in the folder. Where that cannot be made, all goes
// by memory, unless the settings ask for temporary files or name a place for them: then it throws
// Failure (Usage).
void ApplySettings(const Settings& settings, Route route, PrivateFolder& folder);

// Temporary files from now on, in the folder. Throws Failure (Usage) when it cannot be made.
void UseTempFiles(PrivateFolder& folder);

// What the kernel still holds besides the blocks in use, as text ("3 blocks, 1 open file"); empty
// when that is nothing.
std::string WhatIsLeftInTheKernel(uint64_t blocksInUse);

}  // namespace tarn::host

#endif

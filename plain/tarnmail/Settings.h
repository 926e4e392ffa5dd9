// Settings.h - what the command line says about the kernel under the filter.
#ifndef TARN_TARNMAIL_SETTINGS_H
#define TARN_TARNMAIL_SETTINGS_H

#include <cstdint>
#include <optional>
#include <string>

namespace tarn::host {

struct Settings {
  std::optional<uint32_t> language;          // a LANGID; else the kernel's
  bool inMemory = false;                     // no temporary files
  std::optional<std::string> tempDirectory;  // else the system's
};

// Sets the kernel up. Throws Failure (Usage) for a temporary directory that does not exist or is no
// directory.
void ApplySettings(const Settings& settings);

// What the kernel still holds besides the blocks in use, as text ("3 blocks, 1 open file"); empty
// when that is nothing.
std::string WhatIsLeftInTheKernel(uint64_t blocksInUse);

}  // namespace tarn::host

#endif

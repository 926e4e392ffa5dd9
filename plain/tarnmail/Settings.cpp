#include "Settings.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "Failure.h"
#include "Paths.h"
#include "SystemFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "Text.h"

namespace tarn::host {
namespace {

// The kernel makes temporary files only below paths that do not climb, so that the directory is
// given without any "..".
std::u16string TempDirectory(const std::string& directory) {
  if (directory.empty()) throw Failure(ExitStatus::Usage, "empty directory name");
  std::error_code error;
  const std::filesystem::path full = FullDirectory(PathFromUtf8(directory), error);
  const FileKind kind = error ? FileKind::Missing : KindOfFile(full, error);
  if (kind == FileKind::Missing) throw Failure(ExitStatus::Usage, directory, "no such directory");
  if (kind != FileKind::Directory) {
    throw Failure(ExitStatus::Usage, directory, "is not a directory");
  }
  const std::optional<std::u16string> wide = WideFromUtf8(Utf8FromPath(full));
  if (!wide) throw Failure(ExitStatus::Usage, directory, "the name is not UTF-8");
  return *wide;
}

void Count(std::string& text, uint64_t count, const char* what) {
  if (count == 0) return;
  if (!text.empty()) text += ", ";
  text += std::to_string(count) + " " + what;
}

}  // namespace

void ApplySettings(const Settings& settings) {
  if (settings.language) PlainKernelSetLanguage(*settings.language);
  if (settings.inMemory) PlainKernelSetIoMode(KERNEL_IO_IN_MEMORY);
  if (settings.tempDirectory) {
    PlainKernelSetTempDirectory(TempDirectory(*settings.tempDirectory).c_str());
  }
}

std::string WhatIsLeftInTheKernel(uint64_t blocksInUse) {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  std::string text;
  Count(text, usage.liveBlocks - blocksInUse, "blocks");
  Count(text, usage.liveTrackedObjects, "tracked objects");
  Count(text, usage.openHandles, "open files");
  Count(text, usage.reportedBytes, "reported bytes");
  Count(text, usage.temporaryFiles, "temporary files");
  return text;
}

}  // namespace tarn::host

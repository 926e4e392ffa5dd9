#include "Settings.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "Tarnbase/PlainKernel.h"
#include "console/Failure.h"
#include "console/Paths.h"
#include "console/Text.h"

namespace tarn::host {
namespace {

constexpr int32_t kTempFiles = 0;  // the kernel's mode that is not KERNEL_IO_IN_MEMORY

void Count(std::string& text, uint64_t count, const char* what) {
  if (count == 0) return;
  if (!text.empty()) text += ", ";
  text += std::to_string(count) + " " + what;
}

}  // namespace

Route RouteOf(const Settings& settings, Route usual) {
  if (settings.inMemory) return Route::InMemory;
  return settings.tempFiles ? Route::TempFiles : usual;
}

void ApplySettings(const Settings& settings, Route route, PrivateFolder& folder) {
  if (settings.language) PlainKernelSetLanguage(*settings.language);
  std::error_code error;
  if (route == Route::TempFiles) folder.path(error);
  const bool mayGoElsewhere = !settings.tempFiles && !settings.tempDirectory;
  if (route == Route::InMemory || (error && mayGoElsewhere)) {
    PlainKernelSetIoMode(KERNEL_IO_IN_MEMORY);
  } else {
    UseTempFiles(folder);
  }
}

void UseTempFiles(PrivateFolder& folder) {
  const std::optional<std::u16string> path = WideFromUtf8(Utf8FromPath(folder.path()));
  // The folder is in a directory of such a name.
  if (!path) throw Failure(ExitStatus::Usage, Utf8FromPath(folder.path()), "the name is not UTF-8");
  PlainKernelSetTempDirectory(path->c_str());
  PlainKernelSetIoMode(kTempFiles);
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

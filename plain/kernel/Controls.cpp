// The language, the usage record and the loader entry: what is left of the kernel.
#include <atomic>

#include "Budget.h"
#include "Handles.h"
#include "Memory.h"
#include "MemoryFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "TemporaryFiles.h"
#include "TrackedObjects.h"

namespace tarn::kernel {
namespace {

constinit std::atomic<uint32_t> language{0x0409};  // English (United States)

}  // namespace
}  // namespace tarn::kernel

using namespace tarn::kernel;

void PlainKernelSetLanguage(uint32_t langId) { language.store(langId); }

uint32_t KernelGetLanguage(void) { return language.load(); }

int64_t KernelLoaderEntry(void* /*caller*/, uint64_t /*a*/, uint64_t /*b*/, uint64_t /*c*/) {
  return 1;
}

void PlainKernelUsage(PlainKernelUsageRecord* out) {
  if (out == nullptr) return;
  ReportBlocks(*out);
  out->liveTrackedObjects = TrackedObjects().size() + GraphicsObjects().size();
  out->openHandles = LiveHandles() + UnendedMemoryFiles();
  out->reportedBytes = ReportedBytes();
  out->temporaryFiles = NotedFiles();
}

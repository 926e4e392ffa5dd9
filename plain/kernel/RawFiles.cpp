// Temporary files outside the host's I/O: made to be opened by name, and deleted by name.
//
// Names of inline images come out of mail, which may be hostile: no operation here follows a path
// with a ".." component or anything else that MayNameTemporary refuses, so that no image climbs out
// of the directory made for it, and deleting after a refused create deletes nothing else either.
// Others may put links in its place in a shared directory: none is followed below the temporary
// directory.
#include "Faults.h"
#include "Fence.h"
#include "PathRules.h"
#include "Paths.h"
#include "SystemFiles.h"
#include "Tarnbase/Kernel.h"
#include "TemporaryFiles.h"

namespace tarn::kernel {
namespace {

// The file stays, noted, when no handle can be given out: it may be deleted by its name.
uint64_t CreateRaw(const std::string& path) {
  if (!MayNameTemporary(path)) return KERNEL_BAD_HANDLE;
  const TemporaryPlace place = {path, DefaultTempDirectory()};
  std::shared_ptr<OpenFile> file;
  MakeNotedFile(path, [&] { return (file = OpenTemporary(place)) != nullptr; });
  return GiveHandle(HandleGroup::Raw, std::move(file));
}

}  // namespace
}  // namespace tarn::kernel

using namespace tarn::kernel;

uint64_t KernelRawFileCreate(const char16_t* path, int32_t /*reserved*/) {
  if (FaultDue(PlainKernelFaultOpen)) return KERNEL_BAD_HANDLE;
  return Fenced<uint64_t>(KERNEL_BAD_HANDLE, [&] { return CreateRaw(PathFromWide(path)); });
}

void KernelDeleteFile(const char16_t* path) {
  Fenced(false, [&] {
    DeleteNotedFile(PathFromWide(path));
    return true;
  });
}

void KernelDeleteFileUtf8(const char* path) {
  if (path == nullptr) return;
  Fenced(false, [&] {
    DeleteNotedFile(path);
    return true;
  });
}

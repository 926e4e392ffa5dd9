// Handles.h - the handles that the kernel gives out for open files of any kind.
//
// A handle names a slot and the slot's generation, never a descriptor of the system: a handle that
// was closed, or never given out, finds nothing instead of another file.
//
//   bits 63..32  generation of the slot, from 1
//   bits 31..0   slot number plus 1
//
// Host files (with memory files) and raw files are closed to each other's operations.
#ifndef TARN_KERNEL_HANDLES_H
#define TARN_KERNEL_HANDLES_H

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace tarn::kernel {

// An open file. Closes itself when the last holder lets go, so that an operation in another thread
// ends on the file it began with.
class OpenFile {
 public:
  OpenFile() = default;
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  virtual ~OpenFile() = default;

  // The number of bytes moved, as many as possible.
  virtual uint64_t Read(std::span<char> room) = 0;
  virtual uint64_t Write(std::string_view bytes) = 0;

  // The new position; all ones on failure, and then the position stays.
  virtual uint64_t Seek(int64_t offset, int32_t origin) = 0;
};

enum class HandleGroup { Host, Raw };

// A handle for the file; KERNEL_BAD_HANDLE for a null file. May throw std::bad_alloc.
uint64_t GiveHandle(HandleGroup group, std::shared_ptr<OpenFile> file);

// The file of a handle of the group; null when there is none.
std::shared_ptr<OpenFile> FileOfHandle(HandleGroup group, uint64_t handle) noexcept;

// Takes the handle back and lets go of its file; false when there is none.
bool DropHandle(HandleGroup group, uint64_t handle) noexcept;

uint64_t LiveHandles() noexcept;

}  // namespace tarn::kernel

#endif

#include "KernelFile.h"

#include "TarnPst.h"

namespace tarn::host {

int32_t ReadWholeFile(const char16_t* path, std::string& bytes) {
  const KernelFile file(path);
  if (!file.isOpen()) return StatusOpenFailed;
  const uint64_t size = KernelFileSeek(file.handle(), 0, KERNEL_SEEK_END);
  if (size == UINT64_MAX || KernelFileSeek(file.handle(), 0, KERNEL_SEEK_START) != 0) {
    return StatusSeekFailed;
  }
  bytes.resize(size);
  const bool whole = KernelFileReadLarge(file.handle(), bytes.data(), size) == size;
  return whole ? StatusOk : StatusReadFailed;
}

std::string ReadFront(const char16_t* path, uint32_t most) {
  const KernelFile file(path);
  std::string front(file.isOpen() ? most : 0, '\0');
  if (file.isOpen()) front.resize(KernelFileRead(file.handle(), front.data(), most));
  return front;
}

}  // namespace tarn::host

#include "Internal/Tarnclasses_.h"

#include <cstdarg>
#include <cstdio>

namespace tarn {

void SizedBytes::release() {
  if (data != nullptr) KernelFree(data, TARN_HERE);
  data = nullptr;
  length = 0;
}

int32_t AppendTerminated(SizedBytes& target, const char* source, uint64_t length) {
  if (source == nullptr) length = 0;
  if (length == kNulTerminated) length = std::strlen(source);
  const uint64_t kept = target.text().size();
  if (length >= UINT64_MAX - kept) return StatusOutOfMemory;

  uint64_t sum = kept + length;
  auto* const block = static_cast<char*>(KernelRealloc(target.data, sum + 1, TARN_HERE));
  if (block == nullptr) return StatusOutOfMemory;
  if (length != 0) std::memcpy(block + kept, source, length);
  if (sum == 0 || block[sum - 1] != '\0') block[sum++] = '\0';
  target.data = block;
  target.length = sum;
  return StatusOk;
}

int32_t MemoryMeter::set(uint64_t bytes) {
  if (bytes == current) return StatusOk;

  if (bytes < current) {
    if (reported != 0) KernelMemoryReport(KERNEL_MEMORY_RETURN, current - bytes, 0);
    current = bytes;
    return StatusOk;
  }
  if (reported == 0 && bytes <= threshold) {
    current = bytes;
    return StatusOk;
  }
  const uint64_t wanted = reported != 0 ? bytes - current : bytes;
  const int32_t granted = KernelMemoryReport(KERNEL_MEMORY_WANT, wanted, 0);
  if (granted != StatusOk) return granted;
  current = bytes;
  reported = 1;
  return StatusOk;
}

int32_t AppendFormat(TrackedBuffer<char>& buffer, int32_t& flag, const char* format, ...) {
  if (format == nullptr || flag == 0) return 0;

  va_list arguments;
  va_start(arguments, format);
  // The analyzer does not see that va_start has set the list.
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
  const int needed = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);

  flag = 0;
  if (needed < 0) return flag;
  const auto size = static_cast<uint64_t>(needed);
  if (buffer.data == nullptr) buffer.length = 0;
  if (buffer.reserve(buffer.length + size + 1) == nullptr) return flag;
  va_start(arguments, format);
  std::vsnprintf(buffer.data + buffer.length, size + 1, format, arguments);
  va_end(arguments);
  buffer.length += size;
  return flag = 1;
}

}  // namespace tarn

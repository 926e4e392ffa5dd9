#include "Internal/Tarnclasses_.h"

#include <cstdarg>
#include <cstdio>

namespace tarn {

Status SizedBytes::append(std::string_view source) {
  const uint64_t kept = text().size();
  if (source.size() >= UINT64_MAX - kept) return StatusOutOfMemory;
  const auto put = [&](char* block) {
    uint64_t sum = kept + source.copy(block + kept, source.size());
    if (sum == 0 || block[sum - 1] != '\0') block[sum++] = '\0';
    return sum;
  };
  return overwrite(kept + source.size() + 1, put) ? StatusOk : StatusOutOfMemory;
}

Status SizedBytes::splice(uint64_t position, uint64_t count, std::string_view replacement) {
  if (position > length_ || count > length_ - position) return StatusFailed;
  const uint64_t kept = length_ - count;
  if (replacement.size() > UINT64_MAX - kept) return StatusFailed;

  const uint64_t newLength = kept + replacement.size();
  if (newLength > length_ && !resizeBlock(newLength)) return StatusFailed;
  length_ = newLength;
  char* const place = block_.get() + position;
  const uint64_t tail = kept - position;
  if (tail != 0 && replacement.size() != count)
    std::memmove(place + replacement.size(), place + count, tail);
  replacement.copy(place, replacement.size());
  return StatusOk;
}

Status AppendTerminated(SizedBytes& target, const char* source, uint64_t length) {
  if (source == nullptr) length = 0;
  if (length == kNulTerminated) length = std::strlen(source);
  return target.append({source, length});
}

Status SpliceBytes(SizedBytes& text, uint64_t offset, uint64_t removed, const char* bytes,
                   uint64_t count) {
  return text.splice(offset, removed, {bytes, count});
}

Status MemoryMeter::set(uint64_t bytes) {
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
  const Status granted = Status::FromCode(KernelMemoryReport(KERNEL_MEMORY_WANT, wanted, 0));
  if (!granted.ok()) return granted;
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
  if (buffer.reserve(buffer.length() + size + 1) == nullptr) return flag;
  va_start(arguments, format);
  std::vsnprintf(buffer.data() + buffer.length(), size + 1, format, arguments);
  va_end(arguments);
  buffer.setLength(buffer.length() + size);
  return flag = 1;
}

}  // namespace tarn

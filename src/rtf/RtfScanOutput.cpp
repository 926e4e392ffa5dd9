#include "rtf/RtfScanOutput.h"

#include <algorithm>
#include <charconv>

namespace tarn {

bool RtfScanOutput::start(uint64_t longest) {
  longest_ = longest;
  block_ = AllocateBlock<char>(kStartCapacity, TARN_HERE);
  if (!block_) return false;
  capacity_ = allocated_ = kStartCapacity;
  return true;
}

bool RtfScanOutput::reserve(uint64_t bytes) {
  const uint64_t needed = std::max(capacity_, bytes);
  if (needed <= allocated_) return true;
  uint64_t larger = std::max(needed, allocated_ * 2);
  if (needed <= longest_) larger = std::min(larger, longest_);
  char* const moved = static_cast<char*>(KernelRealloc(block_.get(), larger, TARN_HERE));
  if (moved == nullptr) return false;
  block_.take();
  block_.reset(moved);
  allocated_ = larger;
  return true;
}

// Each of the steps would grow the capacity by 1024 if its byte came closer than 128 bytes to the
// limit. Where a hex run has gone far beyond that, the first few do so each. Then the next `slack`
// steps do not, the one behind them does, and after it every 1024th.
bool RtfScanOutput::copyInSteps(const char* source, uint64_t count) {
  uint64_t at = length_;
  uint64_t left = count;
  for (; left > 0 && at + kMargin >= limit(); ++at, --left) capacity_ += kGrowth;
  if (left > 0) {
    const uint64_t slack = limit() - kMargin - at;
    if (left > slack) capacity_ += kGrowth * (1 + (left - 1 - slack) / kGrowth);
  }
  if (!reserve(length_ + count)) return false;
  write(std::string_view(source, count));
  return true;
}

bool RtfScanOutput::makeRoomForUnits(uint64_t offset, uint64_t rawBytes, uint64_t units) {
  const uint64_t wanted = offset + kLongestUnit * rawBytes;
  if (wanted > capacity_) capacity_ = wanted + kGrowth;
  return reserve(offset + kLongestUnit * units);
}

void RtfScanOutput::writeReference(int32_t value) {
  char text[kLongestReference] = {'&', '#'};
  char* end = std::to_chars(text + 2, text + sizeof text, value).ptr;
  *end++ = ';';
  const uint64_t room = limit() > length_ ? limit() - length_ : 0;
  write(std::string_view(text, std::min(static_cast<uint64_t>(end - text), room)));
}

bool RtfScanOutput::finish(SizedBytes& text) {
  if (length_ == 0 || block_[length_ - 1] != '\0') {
    if (!reserve(length_ + 1)) return false;
    put('\0');
  }
  if (char* const fitted = static_cast<char*>(KernelRealloc(block_.get(), length_, TARN_HERE))) {
    block_.take();
    block_.reset(fitted);
  }
  text.adopt(std::move(block_), length_);
  return true;
}

}  // namespace tarn

#include "rtf/RtfScanOutput.h"

#include <algorithm>
#include <charconv>

namespace tarn {

bool RtfScanOutput::start(uint64_t longest) {
  longest_ = longest;
  capacity_ = kStartCapacity;
  return bytes_.reserve(kStartCapacity);
}

bool RtfScanOutput::reserve(uint64_t bytes) {
  const uint64_t needed = std::max(capacity_, bytes);
  if (needed <= bytes_.capacity()) return true;
  const uint64_t larger = std::max<uint64_t>(needed, 2 * bytes_.capacity());
  return bytes_.reserve(needed <= longest_ ? std::min(larger, longest_) : larger);
}

// Each of the steps would grow the capacity by 1024 if its byte came closer than 128 bytes to the
// limit. Where a hex run has gone far beyond that, the first few do so each. Then the next `slack`
// steps do not, the one after them does, and then every 1024th.
bool RtfScanOutput::copyInSteps(std::string_view text) {
  uint64_t at = length();
  uint64_t left = text.size();
  for (; left > 0 && at + kMargin >= limit(); ++at, --left) capacity_ += kGrowth;
  if (left > 0) {
    const uint64_t slack = limit() - kMargin - at;
    if (left > slack) capacity_ += kGrowth * (1 + (left - 1 - slack) / kGrowth);
  }
  if (!reserve(length() + text.size())) return false;
  write(text);
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
  write(std::string_view(text, end).substr(0, limit() - std::min(limit(), length())));
}

bool RtfScanOutput::finish(SizedBytes& text) {
  if (bytes_.empty() || bytes_.back() != '\0') {
    if (!reserve(length() + 1)) return false;
    put('\0');
  }
  bytes_.shrink();
  const uint64_t made = length();
  text.adopt(bytes_.take(), made);
  return true;
}

}  // namespace tarn

// RtfScanOutput.h - the text that RtfToHtml makes: a growing block with two ideas of its room.
//
//   block      |<- length ->|                 |<- kReserve = 1024 ->|
//                           ^ next byte       ^ limit               ^ capacity
//
// `capacity` counts as if the block grew by 1024 bytes before each step of the scan that finds its
// end closer than 128 bytes to the limit, and the limit decides how much of a "&#N;" is written
// (see writeReference). Results depend on it to the byte, so it is kept exactly. The room that is
// really allocated doubles instead, that a large text is not copied once for every 1024 bytes; it
// is never less than the capacity.
//
// Functions that need memory give false when there is none; the output is of no further use then.
#ifndef TARN_RTF_RTFSCANOUTPUT_H
#define TARN_RTF_RTFSCANOUTPUT_H

#include <cstdint>
#include <string_view>

#include "Common/KernelArray.h"
#include "Internal/Tarnclasses_.h"

namespace tarn {

class RtfScanOutput {
 public:
  static constexpr uint64_t kStartCapacity = 2048;
  static constexpr uint64_t kGrowth = 1024;
  static constexpr uint64_t kReserve = 1024;  // between limit and capacity
  static constexpr uint64_t kMargin = 128;    // more than a step writes
  static constexpr uint64_t kLongestReference = 20;

  // Gets the first block. Texts of up to `longest` bytes take no block that is longer than that,
  // or than their capacity; longer ones work as well.
  bool start(uint64_t longest = UINT64_MAX);

  uint64_t length() const { return bytes_.size(); }
  uint64_t limit() const { return capacity_ - kReserve; }
  uint64_t capacity() const { return capacity_; }

  // To be called before every step of the scan; up to kMargin bytes may be written then.
  bool makeRoom() { return length() + kMargin < limit() || growBy(kGrowth); }

  // A step for each byte, which writes that byte.
  bool copyInSteps(std::string_view text);

  // One byte of a hex run, which looks for room at the limit only.
  bool putRaw(char byte) {
    if (length() >= limit() && !growBy(kGrowth)) return false;
    bytes_.put(byte);
    return true;
  }

  // Room for a hex run of `rawBytes` from `offset` on that became `units` units, each of which may
  // take kLongestUnit bytes.
  static constexpr uint64_t kLongestUnit = 8;  // "&#xFFFF;"
  bool makeRoomForUnits(uint64_t offset, uint64_t rawBytes, uint64_t units);

  // Within the room that the functions above have made.
  void write(std::string_view text) { bytes_.put(text); }
  void put(char byte) { bytes_.put(byte); }

  // "&#N;", cut to what fits before the limit. A long hex run can leave no room there; then
  // nothing is written.
  void writeReference(int32_t value);

  // The bytes from offset on. They stay valid until more room is made.
  std::string_view from(uint64_t offset) const {
    return std::string_view(bytes_.data(), length()).substr(offset);
  }
  // Drops the bytes from offset on.
  void rewind(uint64_t offset) { bytes_.truncate(offset); }

  // Sees to a NUL at the end, gives the slack back, and gives the text away.
  bool finish(SizedBytes& text);

 private:
  bool growBy(uint64_t bytes) {
    capacity_ += bytes;
    return reserve(length() + kGrowth);
  }
  // Sees to a block of the capacity and, whatever a conversion has written, of so many bytes.
  bool reserve(uint64_t bytes);

  KernelArray<char> bytes_;
  uint64_t capacity_ = 0;
  uint64_t longest_ = UINT64_MAX;
};

}  // namespace tarn

#endif

// PatternedRecord.h - a host record whose every byte holds a pattern until somebody sets it, so
// that a test can tell exactly which bytes a call has changed.
#ifndef TARN_TESTS_SUPPORT_PATTERNEDRECORD_H
#define TARN_TESTS_SUPPORT_PATTERNEDRECORD_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tarn::test {

// A run of bytes of a record: offset and size.
struct ByteRange {
  size_t offset;
  size_t size;
};

// A field of a packed record by value: a reference to it might be misaligned.
template <typename Field>
Field Copy(Field field) {
  return field;
}

template <typename Record>
class PatternedRecord {
 public:
  PatternedRecord() : bytes_(sizeof(Record) + kGuard) { fill(); }

  // The pattern in all bytes again; the record stays where it is.
  void fill() {
    for (size_t i = 0; i < bytes_.size(); ++i) bytes_[i] = static_cast<uint8_t>(0xA5 + i * 7);
  }

  Record* get() { return reinterpret_cast<Record*>(bytes_.data()); }
  Record* operator->() { return get(); }

  void remember() { before_ = bytes_; }

  // The bytes of the record and of the guard after it, now and at the last remember().
  std::string bytes() const { return {bytes_.begin(), bytes_.end()}; }
  std::string remembered() const { return {before_.begin(), before_.end()}; }

  // The offsets of bytes outside `allowed` that differ from what remember() saw, as text for a
  // failure message; empty when there are none. Bytes after the record count as well.
  std::string changesOutside(const std::vector<ByteRange>& allowed) const {
    std::string changes;
    for (size_t i = 0; i < bytes_.size(); ++i) {
      if (bytes_[i] == before_[i]) continue;
      bool fine = false;
      for (const ByteRange& range : allowed) {
        fine = fine || (i >= range.offset && i < range.offset + range.size);
      }
      if (!fine) changes += std::to_string(i) + " ";
    }
    return changes;
  }

 private:
  static constexpr size_t kGuard = 64;
  std::vector<uint8_t> bytes_;
  std::vector<uint8_t> before_;
};

}  // namespace tarn::test

#endif

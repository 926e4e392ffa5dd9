#include "support/PeFile.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

constexpr size_t kExportDirectory = 0;
constexpr size_t kImportDirectory = 1;
constexpr uint64_t kByOrdinal = uint64_t{1} << 63;
constexpr uint32_t kMostEntries = 65536;

}  // namespace

PeFile::PeFile(const std::filesystem::path& path) : bytes_(ReadWholeFile(path)) {
  const size_t header = at<uint32_t>(0x3C);
  if (at<uint16_t>(0) != 0x5A4D || at<uint32_t>(header) != 0x4550 ||
      at<uint16_t>(header + 24) != 0x20B) {
    ADD_FAILURE() << path << " is no 64-bit program or library";
    return;
  }
  optionalHeader_ = header + 24;
  const size_t sections = optionalHeader_ + at<uint16_t>(header + 20);
  for (size_t i = 0; i < at<uint16_t>(header + 6); ++i) {
    const size_t record = sections + 40 * i;
    sections_.push_back(
        {at<uint32_t>(record + 12), at<uint32_t>(record + 16), at<uint32_t>(record + 20)});
  }
}

template <typename Number>
Number PeFile::at(size_t offset) const {
  Number number = 0;
  if (offset > bytes_.size() || bytes_.size() - offset < sizeof number) {
    ADD_FAILURE() << "nothing at " << offset;
    return 0;
  }
  std::memcpy(&number, bytes_.data() + offset, sizeof number);
  return number;
}

size_t PeFile::offsetOf(uint32_t address) const {
  for (const Section& section : sections_) {
    if (address >= section.address && address - section.address < section.size) {
      return size_t{section.offset} + (address - section.address);
    }
  }
  return bytes_.size();
}

template <typename Number>
Number PeFile::loaded(uint32_t address) const {
  return at<Number>(offsetOf(address));
}

std::string PeFile::text(uint32_t address) const {
  const size_t offset = offsetOf(address);
  const size_t end = bytes_.find('\0', offset);
  return end == std::string::npos ? std::string() : bytes_.substr(offset, end - offset);
}

uint32_t PeFile::directory(size_t number) const {
  const bool there = optionalHeader_ != 0 && at<uint32_t>(optionalHeader_ + 108) > number;
  return there ? at<uint32_t>(optionalHeader_ + 112 + 8 * number) : 0;
}

PeExports PeFile::exports() const {
  PeExports result;
  const uint32_t table = directory(kExportDirectory);
  if (table == 0) return result;
  const uint32_t base = loaded<uint32_t>(table + 16);
  const uint32_t addresses = loaded<uint32_t>(table + 28);
  for (uint32_t i = 0; i < loaded<uint32_t>(table + 20) && i < kMostEntries; ++i) {
    if (loaded<uint32_t>(addresses + 4 * i) != 0) result.ordinals.insert(base + i);
  }
  const uint32_t names = loaded<uint32_t>(table + 32);
  for (uint32_t i = 0; i < loaded<uint32_t>(table + 24) && i < kMostEntries; ++i) {
    result.names.insert(text(loaded<uint32_t>(names + 4 * i)));
  }
  return result;
}

std::vector<PeImport> PeFile::imports() const {
  std::vector<PeImport> result;
  const uint32_t table = directory(kImportDirectory);
  for (uint32_t record = table; table != 0 && loaded<uint32_t>(record + 12) != 0; record += 20) {
    PeImport import;
    import.library = text(loaded<uint32_t>(record + 12));
    for (uint32_t place = loaded<uint32_t>(record); loaded<uint64_t>(place) != 0; place += 8) {
      const uint64_t entry = loaded<uint64_t>(place);
      if ((entry & kByOrdinal) != 0) {
        import.ordinals.insert(static_cast<uint32_t>(entry & 0xFFFF));
      } else {
        import.names.insert(text(static_cast<uint32_t>(entry) + 2));
      }
    }
    result.push_back(std::move(import));
  }
  return result;
}

}  // namespace tarn::test

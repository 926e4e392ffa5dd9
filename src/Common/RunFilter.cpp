#include "Common/RunFilter.h"

namespace tarn {
namespace {

constexpr size_t kRun = 8;
constexpr unsigned kBitsOfHash = 22;
constexpr uint64_t kWords = (uint64_t{1} << kBitsOfHash) / 64;

uint64_t HashOf(const char* run) {
  uint64_t bytes;
  std::memcpy(&bytes, run, kRun);
  bytes ^= bytes >> 31;
  return bytes * 0x9E3779B97F4A7C15U >> (64 - kBitsOfHash);
}

uint64_t MaskOf(uint64_t hash) { return uint64_t{1} << hash % 64; }

}  // namespace

void RunFilter::add(std::string_view text) {
  if (text.size() < kRun || isBlind_) return;
  if (!bits_) bits_ = AllocateZeroBlock<uint64_t>(kWords, TARN_HERE);
  if (!bits_) isBlind_ = true;
  for (size_t i = 0; i + kRun <= text.size() && bits_; ++i) {
    const uint64_t hash = HashOf(text.data() + i);
    bits_[hash / 64] |= MaskOf(hash);
  }
}

bool RunFilter::mayHold(std::string_view text) const {
  if (text.size() < kRun || isBlind_) return true;
  if (!bits_) return false;
  for (size_t i = 0; i + kRun <= text.size(); ++i) {
    const uint64_t hash = HashOf(text.data() + i);
    if ((bits_[hash / 64] & MaskOf(hash)) == 0) return false;
  }
  return true;
}

void RunFilter::clear() {
  bits_.reset();
  isBlind_ = false;
}

}  // namespace tarn

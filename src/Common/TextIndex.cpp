#include "Common/TextIndex.h"

#include <algorithm>
#include <bit>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

// The hash of a window is the sum of its bytes times the powers of this, in 64 bits that wrap.
constexpr uint64_t kBase = 0x9E3779B97F4A7C15U;

// A step along a chain reads memory at a place of its own, which takes as long as reading so many
// bytes in a row.
constexpr uint64_t kBytesPerStep = 64;

uint64_t HashOf(const char* bytes, uint64_t length) {
  uint64_t hash = 0;
  for (uint64_t i = length; i-- > 0;) hash = hash * kBase + static_cast<unsigned char>(bytes[i]);
  return hash;
}

uint64_t BucketCount(uint64_t textLength) {
  return std::max<uint64_t>(std::bit_ceil(textLength) / 2, 2);
}

}  // namespace

uint64_t TextIndex::Windows::MemoryFor(uint64_t textLength) {
  return (textLength + BucketCount(textLength)) * sizeof(uint32_t);
}

uint64_t TextIndex::Windows::bucketOf(uint64_t hash) const {
  return (hash ^ hash >> 29) * kBase >> shift_;
}

// From the last window to the first, so that each chain begins with its first one.
bool TextIndex::Windows::build(std::string_view text, uint64_t length) {
  const uint64_t buckets = BucketCount(text.size());
  KernelBlock<uint32_t> heads = AllocateZeroBlock<uint32_t>(buckets, TARN_HERE);
  nexts_ = AllocateBlock<uint32_t>(text.size() - length + 1, TARN_HERE);
  if (!heads || !nexts_) return false;
  length_ = length;
  shift_ = static_cast<unsigned>(64 - std::countr_zero(buckets));

  uint64_t power = 1;  // of the byte that leaves the window
  for (uint64_t i = 1; i < length; ++i) power *= kBase;
  uint64_t place = text.size() - length;
  uint64_t hash = HashOf(text.data() + place, length);
  for (;;) {
    uint32_t& head = heads[bucketOf(hash)];
    nexts_[place] = head;
    head = static_cast<uint32_t>(place + 1);
    if (place == 0) break;
    --place;
    hash -= power * static_cast<unsigned char>(text[place + length]);
    hash = hash * kBase + static_cast<unsigned char>(text[place]);
  }
  heads_ = std::move(heads);
  return true;
}

uint64_t TextIndex::Windows::first(const char* bytes) const {
  return Place(heads_[bucketOf(HashOf(bytes, length_))]);
}

unsigned TextIndex::LevelOf(uint64_t needleLength) {
  return static_cast<unsigned>(std::bit_width(needleLength)) - 1;
}

const TextIndex::Windows* TextIndex::windowsFor(uint64_t needleLength) {
  constexpr unsigned kFirstLevel = 2;  // shorter windows are everywhere
  const unsigned i = LevelOf(needleLength);
  if (i < kFirstLevel || i >= levels_.size() || text_.size() < needleLength) return nullptr;
  Level& level = levels_[i];
  if (level.windows.isBuilt()) return &level.windows;
  if (level.isRefused || level.read / limits_.readings < text_.size()) return nullptr;

  const uint64_t memory = Windows::MemoryFor(text_.size());
  level.isRefused = text_.size() >= UINT32_MAX || memory > limits_.memory - memory_ ||
                    !level.windows.build(text_, uint64_t{1} << i);
  if (level.isRefused) return nullptr;
  memory_ += memory;
  return &level.windows;
}

void TextIndex::countReading(uint64_t needleLength, uint64_t bytes) {
  const unsigned i = LevelOf(needleLength);
  if (i < levels_.size()) levels_[i].read += bytes;
}

Occurrences::Occurrences(TextIndex& index, std::string_view needle)
    : index_(index),
      needle_(needle),
      windows_(index.windowsFor(needle.size())),
      stepsLeft_(index.text().size() / kBytesPerStep + 1) {
  if (windows_ == nullptr) return;
  front_ = startChain(0);
  back_ = startChain(needle.size() - std::bit_floor(needle.size()));
}

// A window so near to the start of the text that the needle would begin before it is passed over.
Occurrences::Chain Occurrences::startChain(uint64_t offset) const {
  Chain chain;
  chain.offset = offset;
  uint64_t window = windows_->first(needle_.data() + offset);
  while (window != kNoPlace && window < offset) window = windows_->next(window);
  if (window != kNoPlace) chain.place = window - offset;
  return chain;
}

void Occurrences::advance(Chain& chain) const {
  const uint64_t window = windows_->next(chain.place + chain.offset);
  chain.place = window == kNoPlace ? kNoPlace : window - chain.offset;
}

bool Occurrences::isAt(uint64_t place) const {
  return index_.text().substr(place, needle_.size()) == needle_;
}

uint64_t Occurrences::read(uint64_t from) {
  const std::string_view text = index_.text();
  if (from > text.size()) return kNoPlace;
  const uint64_t hit = FindBytes(text, needle_, from);
  const uint64_t bytes = std::min(hit, text.size()) - from;
  index_.countReading(needle_.size(), bytes);
  cost_ += bytes;
  return hit;
}

// Each chain names all occurrences in order, so that the first one that it names is the first.
uint64_t Occurrences::next(uint64_t from) {
  while (windows_ != nullptr && stepsLeft_ != 0) {
    for (Chain* const chain : {&front_, &back_}) {
      --stepsLeft_;
      cost_ += kBytesPerStep;
      if (chain->place == kNoPlace) return kNoPlace;
      if (chain->place >= from && isAt(chain->place)) return chain->place;
      advance(*chain);
      if (stepsLeft_ == 0) break;
    }
  }
  return read(from);
}

}  // namespace tarn

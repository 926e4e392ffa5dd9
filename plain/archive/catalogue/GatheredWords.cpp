#include "archive/catalogue/GatheredWords.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "archive/catalogue/IndexNumber.h"
#include "archive/catalogue/SegmentPages.h"

namespace tarn::archive {
namespace {

constexpr size_t kFirstSlots = size_t{1} << 12;
// A piece begins with the place of the next one.
constexpr uint32_t kLink = sizeof(uint32_t);
constexpr uint32_t kFirstPiece = 16;
constexpr uint32_t kMostDoublings = 6;

// FTS5 can have indexes of beginnings of words too; this begins the terms of that of whole words.
constexpr char kOfWholeWords = '0';

uint64_t Load(const char* bytes, size_t count) {
  uint64_t number = 0;
  std::memcpy(&number, bytes, count);
  return number;
}

uint64_t Mixed(uint64_t number) {
  number *= 0x9E3779B97F4A7C15U;
  return number ^ number >> 32;
}

uint32_t HashOf(std::string_view word) {
  const char* const bytes = word.data();
  const size_t size = word.size();
  uint64_t hash = size;
  if (size >= 8) {
    for (size_t at = 0; at + 8 < size; at += 8) hash = Mixed(hash ^ Load(bytes + at, 8));
    hash = Mixed(hash ^ Load(bytes + size - 8, 8));
  } else if (size >= 4) {
    hash = Mixed(hash ^ (Load(bytes, 4) << 32 | Load(bytes + size - 4, 4)));
  } else if (size != 0) {
    const auto byte = [&](size_t at) { return uint64_t{static_cast<unsigned char>(bytes[at])}; };
    hash = Mixed(hash ^ (byte(0) << 32 | byte(size / 2) << 16 | byte(size - 1) << 8));
  }
  return static_cast<uint32_t>(hash);
}

// The first eight bytes as a number that compares as they do.
uint64_t Beginning(std::string_view bytes) {
  uint64_t number = 0;
  if (bytes.size() >= sizeof number) {
    std::memcpy(&number, bytes.data(), sizeof number);
  } else {
    std::memcpy(&number, bytes.data(), bytes.size());
  }
  return std::endian::native == std::endian::little ? __builtin_bswap64(number) : number;
}

}  // namespace

GatheredWords::GatheredWords() : slots_(kFirstSlots) {}

void GatheredWords::beginItem(int64_t number) {
  if (isEmpty()) first_ = number;
  item_ = static_cast<uint32_t>(number - first_);
}

size_t GatheredWords::memory() const {
  return slots_.size() * sizeof(Slot) + terms_.size() * sizeof(Term) + bytes_.size();
}

void GatheredWords::add(std::string_view word, uint8_t column, uint32_t place) {
  Term& term = find(word);
  if (term.item != item_) {
    put(term, 0);
    put(term, item_ - term.item);
    term.item = item_;
    term.column = 0;
    term.place = 0;
  }
  if (term.column != column) {
    put(term, 1);
    put(term, column);
    term.column = column;
    term.place = 0;
  }
  put(term, place - term.place + 2);
  term.place = place;
}

GatheredWords::Term& GatheredWords::find(std::string_view word) {
  const uint32_t hash = HashOf(word);
  const size_t mask = slots_.size() - 1;
  for (size_t at = hash & mask;; at = (at + 1) & mask) {
    Slot& slot = slots_[at];
    if (slot.term == 0) return insert(word, slot, hash);
    if (slot.hash != hash) continue;
    Term& term = terms_[slot.term - 1];
    if (textOf(term).substr(1) == word) return term;
  }
}

GatheredWords::Term& GatheredWords::insert(std::string_view word, Slot& slot, uint32_t hash) {
  Term term = {};
  term.text = newBytes(1 + word.size() + kFirstPiece);
  term.length = static_cast<uint32_t>(1 + word.size());
  bytes_[term.text] = kOfWholeWords;
  std::memcpy(bytes_.data() + term.text + 1, word.data(), word.size());
  term.item = item_;
  term.at = term.firstPiece() + kLink;
  term.end = term.firstPiece() + kFirstPiece;
  terms_.push_back(term);
  slot = {hash, static_cast<uint32_t>(terms_.size())};
  put(terms_.back(), item_);
  if (terms_.size() * 2 > slots_.size()) grow();
  return terms_.back();
}

void GatheredWords::grow() {
  std::vector<Slot> slots(slots_.size() * 2);
  const size_t mask = slots.size() - 1;
  for (const Slot& slot : slots_) {
    if (slot.term == 0) continue;
    size_t at = slot.hash & mask;
    while (slots[at].term != 0) at = (at + 1) & mask;
    slots[at] = slot;
  }
  slots_ = std::move(slots);
}

uint32_t GatheredWords::newBytes(size_t size) {
  const size_t at = bytes_.size();
  bytes_.resize(at + size);
  return static_cast<uint32_t>(at);
}

void GatheredWords::put(Term& term, uint32_t number) {
  for (int shift = 28; number >= 0x80 && shift != 0; shift -= 7) {
    if (number >> shift != 0) putByte(term, static_cast<uint8_t>((number >> shift & 0x7F) | 0x80));
  }
  putByte(term, number & 0x7F);
}

void GatheredWords::putByte(Term& term, uint8_t byte) {
  if (term.at == term.end) addPiece(term);
  bytes_[term.at++] = static_cast<char>(byte);
}

void GatheredWords::addPiece(Term& term) {
  const uint32_t last = term.end - (kFirstPiece << term.doublings);
  if (term.doublings < kMostDoublings) ++term.doublings;
  const uint32_t size = kFirstPiece << term.doublings;
  const uint32_t piece = newBytes(size);
  std::memcpy(bytes_.data() + last, &piece, kLink);
  term.at = piece + kLink;
  term.end = piece + size;
}

void GatheredWords::joinPieces(const Term& term, std::string& bytes) const {
  bytes.clear();
  uint32_t piece = term.firstPiece();
  for (uint32_t doublings = 0;; doublings = std::min(doublings + 1, kMostDoublings)) {
    const uint32_t end = piece + (kFirstPiece << doublings);
    const uint32_t used = end == term.end ? term.at : end;
    bytes.append(bytes_.data() + piece + kLink, used - piece - kLink);
    if (end == term.end) return;
    std::memcpy(&piece, bytes_.data() + piece, kLink);
  }
}

std::vector<GatheredWords::Sorted> GatheredWords::sorted() const {
  std::vector<Sorted> sorted;
  sorted.reserve(terms_.size());
  for (uint32_t number = 0; number < terms_.size(); ++number) {
    const std::string_view text = textOf(terms_[number]);
    sorted.push_back({{Beginning(text), text.size() > 8 ? Beginning(text.substr(8)) : 0}, number});
  }
  std::sort(sorted.begin(), sorted.end(), [this](const Sorted& one, const Sorted& other) {
    if (one.begin[0] != other.begin[0]) return one.begin[0] < other.begin[0];
    if (one.begin[1] != other.begin[1]) return one.begin[1] < other.begin[1];
    return textOf(terms_[one.term]) < textOf(terms_[other.term]);
  });
  return sorted;
}

void GatheredWords::moveTo(SegmentPages& pages) {
  std::string joined;
  std::string list;
  const std::vector<Sorted> sorted = this->sorted();
  for (size_t each = 0; each < sorted.size(); ++each) {
    // Terms are all over the memory, which is waited for unless it is asked for some time before.
    // (GCC leaves a function out that does nothing else.)
    constexpr size_t kBefore = 16;
    if (each + 2 * kBefore < sorted.size()) {
      const Term& soon = terms_[sorted[each + kBefore].term];
      __builtin_prefetch(bytes_.data() + soon.text);
      __builtin_prefetch(bytes_.data() + soon.firstPiece() + kFirstPiece - 1);
      __builtin_prefetch(&terms_[sorted[each + 2 * kBefore].term]);
    }
    const Term& term = terms_[sorted[each].term];
    std::string_view pieces = {bytes_.data() + term.firstPiece() + kLink,
                               term.at - term.firstPiece() - kLink};
    if (term.doublings != 0) {
      joinPieces(term, joined);
      pieces = joined;
    }
    makeList(pieces, list);
    pages.add(textOf(term), list);
  }
  clear();
}

// What comes of all items but the last ends with 0.
void GatheredWords::makeList(std::string_view pieces, std::string& list) const {
  const char* at = pieces.data();
  const char* const end = at + pieces.size();
  for (list.clear(); at != end;) {
    const uint64_t distance = ReadIndexNumber(at);
    const char* const places = at;
    // A 0 that ends a longer number has a byte from 0x80 before it.
    while (at != end && (*at != 0 || static_cast<unsigned char>(at[-1]) >= 0x80)) ++at;
    const auto size = static_cast<size_t>(at - places);
    if (at != end) ++at;
    AppendIndexNumber(list, distance + (list.empty() ? static_cast<uint64_t>(first_) : 0));
    AppendIndexNumber(list, size * 2);
    list.append(places, size);
  }
}

void GatheredWords::clear() {
  slots_.assign(kFirstSlots, {});
  terms_.clear();
  bytes_.clear();
}

}  // namespace tarn::archive

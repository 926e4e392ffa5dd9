#include "archive/catalogue/SegmentPages.h"

#include <algorithm>
#include <cstring>

#include "archive/catalogue/IndexNumber.h"

namespace tarn::archive {
namespace {

// Ids of pages: 31 bits of its number, 5 of the level of an index of a list, 1 that it is one.
constexpr int kLevelBit = 31;
constexpr int kListIndexBit = 36;

// Where the first item is, of a list that goes on, and where the offsets of terms begin.
constexpr size_t kHeader = 4;
constexpr size_t kFirstItemAt = 0;
constexpr size_t kEndAt = 2;

// A list over fewer pages has no index.
constexpr size_t kLeastPagesOfIndex = 4;

void PutAt(std::string& leaf, size_t at, size_t number) {
  leaf[at] = static_cast<char>(number >> 8);
  leaf[at + 1] = static_cast<char>(number & 0xFF);
}

size_t CommonPrefix(std::string_view one, std::string_view other) {
  const size_t most = std::min(one.size(), other.size());
  size_t common = 0;
  for (; common + sizeof(uint64_t) <= most; common += sizeof(uint64_t)) {
    if (std::memcmp(one.data() + common, other.data() + common, sizeof(uint64_t)) != 0) break;
  }
  while (common < most && one[common] == other[common]) ++common;
  return common;
}

// Of bytes that are numbers, as many as fit into the room, and at least one number.
size_t WholeNumbers(std::string_view bytes, size_t room) {
  const char* at = bytes.data();
  (void)ReadIndexNumber(at);
  auto end = static_cast<size_t>(at - bytes.data());
  if (end >= room) return end;
  // From the room back to the end of a number.
  end = std::min(room, bytes.size());
  while (static_cast<unsigned char>(bytes[end - 1]) >= 0x80) --end;
  return end;
}

}  // namespace

SegmentPages::SegmentPages(size_t pageSize) : pageSize_(pageSize), listIndex_(1) { beginLeaf(); }

void SegmentPages::beginLeaf() {
  leaf_.assign(kHeader, '\0');
  offsets_.clear();
  lastOffset_ = 0;
  hasTerm_ = false;
  hasItem_ = false;
}

void SegmentPages::put(int64_t id, std::string_view bytes) {
  pages_.push_back({id, bytes_.size(), bytes.size()});
  bytes_ += bytes;
}

void SegmentPages::add(std::string_view term, std::string_view list) {
  addTerm(term);
  if (used() + list.size() + 1 <= pageSize_) {
    leaf_ += list;
  } else {
    addList(list);
  }
}

void SegmentPages::finish() {
  if (leaf_.size() > kHeader) endLeaf();
  endLead();
}

void SegmentPages::addTerm(std::string_view term) {
  if (used() + term.size() + 2 >= pageSize_ && leaf_.size() > kHeader) endLeaf();
  AppendIndexNumber(offsets_, leaf_.size() - lastOffset_);
  lastOffset_ = leaf_.size();
  const size_t common = CommonPrefix(term_, term);
  if (hasTerm_) {
    AppendIndexNumber(leaf_, common);
    AppendIndexNumber(leaf_, term.size() - common);
    leaf_ += term.substr(common);
  } else {
    // One byte more than it has in common with what is before tells them apart.
    if (page_ != 1) lead(term.substr(0, term_.empty() ? term.size() : common + 1));
    AppendIndexNumber(leaf_, term.size());
    leaf_ += term;
  }
  term_ = term;
  hasTerm_ = true;
  listIndex_.front().page = page_;
}

void SegmentPages::addList(std::string_view list) {
  int64_t item = 0;
  const char* at = list.data();
  const char* const end = at + list.size();
  while (at != end) {
    const uint64_t distance = ReadIndexNumber(at);
    item += static_cast<int64_t>(distance);
    beginItem(distance, item);
    const char* const begin = at;
    const uint64_t size = ReadIndexNumber(at) / 2;
    at += size;
    addPlaces({begin, static_cast<size_t>(at - begin)});
  }
}

void SegmentPages::beginItem(uint64_t distance, int64_t item) {
  if (!hasTerm_ && !hasItem_) {
    PutAt(leaf_, kFirstItemAt, leaf_.size());
    AppendIndexNumber(leaf_, static_cast<uint64_t>(item));
    hasItem_ = true;
    addToListIndex(item);
  } else {
    AppendIndexNumber(leaf_, distance);
  }
}

void SegmentPages::addPlaces(std::string_view places) {
  while (!places.empty()) {
    const size_t room = used() < pageSize_ ? pageSize_ - used() : 0;
    const size_t count = places.size() <= room ? places.size() : WholeNumbers(places, room);
    leaf_ += places.substr(0, count);
    places.remove_prefix(count);
    if (used() >= pageSize_) endLeaf();
  }
}

void SegmentPages::lead(std::string_view term) {
  endLead();
  leadTerm_ = term;
  leadPage_ = page_;
}

void SegmentPages::endLead() {
  if (leadPage_ == 0) return;
  const bool hasIndex =
      !listIndex_.front().bytes.empty() && pagesWithoutTerm_ >= kLeastPagesOfIndex;
  for (size_t level = 0; level < listIndex_.size(); ++level) {
    ListIndex& index = listIndex_[level];
    if (index.bytes.empty()) break;
    if (hasIndex) {
      put(int64_t{1} << kListIndexBit | static_cast<int64_t>(level) << kLevelBit | index.page,
          index.bytes);
    }
    index.bytes.clear();
    index.hasLast = false;
  }
  pagesWithoutTerm_ = 0;
  leads_.push_back({leadTerm_, leadPage_ * 2 + (hasIndex ? 1 : 0)});
  leadPage_ = 0;
}

void SegmentPages::endLeaf() {
  PutAt(leaf_, kEndAt, leaf_.size());
  if (hasTerm_) {
    leaf_ += offsets_;
  } else {
    // A page in the midst of the places of one item.
    if (!hasItem_ && !listIndex_.front().bytes.empty()) {
      AppendIndexNumber(listIndex_.front().bytes, 0);
    }
    ++pagesWithoutTerm_;
  }
  put(page_, leaf_);
  ++page_;
  beginLeaf();
}

void SegmentPages::addToListIndex(int64_t item) {
  for (size_t level = 0;; ++level) {
    const bool isFull = listIndex_[level].bytes.size() >= pageSize_;
    if (isFull) pushUp(level);
    ListIndex& index = listIndex_[level];
    if (!index.hasLast) {
      index.bytes += static_cast<char>(isFull ? 1 : 0);
      AppendIndexNumber(index.bytes,
                        static_cast<uint64_t>(level == 0 ? page_ : listIndex_[level - 1].page));
    }
    AppendIndexNumber(index.bytes, static_cast<uint64_t>(index.hasLast ? item - index.last : item));
    index.hasLast = true;
    index.last = item;
    if (!isFull) return;
  }
}

// A full page of a list's index is not the root, and the level above leads to it.
void SegmentPages::pushUp(size_t level) {
  if (listIndex_.size() == level + 1) listIndex_.emplace_back();
  ListIndex& index = listIndex_[level];
  ListIndex& above = listIndex_[level + 1];
  index.bytes.front() = 1;
  put(int64_t{1} << kListIndexBit | static_cast<int64_t>(level) << kLevelBit | index.page,
      index.bytes);
  if (above.bytes.empty()) {
    const char* at = index.bytes.data() + 1;
    (void)ReadIndexNumber(at);
    const auto first = static_cast<int64_t>(ReadIndexNumber(at));
    above.page = index.page;
    above.bytes += '\0';
    AppendIndexNumber(above.bytes, static_cast<uint64_t>(index.page));
    AppendIndexNumber(above.bytes, static_cast<uint64_t>(first));
    above.hasLast = true;
    above.last = first;
  }
  index.bytes.clear();
  index.hasLast = false;
  ++index.page;
}

}  // namespace tarn::archive

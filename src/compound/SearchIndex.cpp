#include "compound/SearchIndex.h"

#include <algorithm>
#include <compare>
#include <new>

#include "compound/DirectoryTree.h"

namespace tarn {
namespace {

using Entries = KernelVector<DirectoryEntry>;

// The names with which searches come to an entry: those between the names of two entries.
struct Range {
  uint64_t low = kNoEntry;  // kNoEntry: no bound
  uint64_t high = kNoEntry;

  bool isBelow(const Entries& entries, std::string_view name) const {
    return high != kNoEntry && std::is_gteq(CompareNames(name, entries[high].name));
  }
  bool isAbove(const Entries& entries, std::string_view name) const {
    return low != kNoEntry && std::is_lteq(CompareNames(name, entries[low].name));
  }
};

struct Visit {
  uint64_t entry;
  Range range;
};

// Whether a search follows the link. The first child is no link: it may be entry 0.
bool IsFollowed(const Entries& entries, uint64_t link) {
  return link != 0 && link < entries.size();
}

}  // namespace

// A circle of links in which the range does not become smaller ends with the looks.
bool SearchIndex::collect(const Entries& entries, uint64_t first, Order& order) {
  KernelVector<Visit> open;
  const auto follow = [&](uint64_t link, const Range& range) {
    if (IsFollowed(entries, link)) open.push_back({link, range});
  };
  open.push_back({first, {}});
  while (!open.empty()) {
    const Visit visit = open.back();
    open.pop_back();
    if (looks_ >= 2 * entries.size()) return false;
    ++looks_;
    const DirectoryEntry& entry = entries[visit.entry];
    if (!entry.valid) continue;
    if (visit.range.isAbove(entries, entry.name)) {
      follow(entry.next, visit.range);
    } else if (visit.range.isBelow(entries, entry.name)) {
      follow(entry.prev, visit.range);
    } else {
      order.push_back(visit.entry);
      follow(entry.next, {visit.entry, visit.range.high});
      follow(entry.prev, {visit.range.low, visit.entry});
    }
  }
  std::sort(order.begin(), order.end(), [&entries](uint64_t left, uint64_t right) {
    return std::is_lt(CompareNames(entries[left].name, entries[right].name));
  });
  return true;
}

void SearchIndex::add(const Entries& entries, uint64_t parent) noexcept {
  try {
    Order order;
    if (collect(entries, entries[parent].child, order)) storages_[parent] = std::move(order);
  } catch (const std::bad_alloc&) {
    // Searches go on along the links.
  }
}

std::optional<uint64_t> SearchIndex::find(const Entries& entries, uint64_t parent,
                                          std::string_view name) const {
  const auto storage = storages_.find(parent);
  if (storage == storages_.end()) return std::nullopt;
  const Order& order = storage->second;
  const auto at =
      std::lower_bound(order.begin(), order.end(), name, [&](uint64_t entry, std::string_view key) {
        return std::is_lt(CompareNames(entries[entry].name, key));
      });
  return at != order.end() && entries[*at].name == name ? *at : kNoEntry;
}

}  // namespace tarn

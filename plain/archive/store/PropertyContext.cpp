#include "archive/store/PropertyContext.h"

#include <algorithm>
#include <new>

#include "Common/LittleEndian.h"
#include "archive/mapi/Tags.h"
#include "pststore/Disk.h"
#include "pststore/Errors.h"

namespace tarn::archive::store {
namespace {

using pststore::disk::load;

constexpr unsigned char kIndexSignature = 0xB5;
constexpr size_t kKeyWidth = 2;
constexpr size_t kEntryWidth = 6;
constexpr size_t kLeafRecord = 8;
constexpr size_t kInnerRecord = 6;

// 65,536 properties in leaves of two records would be 15 levels.
constexpr unsigned kMostLevels = 16;

}  // namespace

PropertyContext::PropertyContext(const pststore::node& data)
    : StoredProperties(pststore::open_heap(data, pststore::heap_sig_pc)) {
  readIndex();
  const auto before = [](const Record& a, const Record& b) { return a.id < b.id; };
  if (!std::is_sorted(records_.begin(), records_.end(), before)) {
    std::stable_sort(records_.begin(), records_.end(), before);
  }
  const auto same = [](const Record& a, const Record& b) { return a.id == b.id; };
  records_.erase(std::unique(records_.begin(), records_.end(), same), records_.end());
}

void PropertyContext::readIndex() {
  const pststore::byte_vector header = heap()->read(heap()->get_root_id());
  if (header.size() < 8 || header[0] != kIndexSignature || header[1] != kKeyWidth ||
      header[2] != kEntryWidth || header[3] > kMostLevels) {
    throw pststore::database_corrupt("index of properties with a damaged header");
  }
  // No record is in two places.
  uint64_t budget = node().size();
  readPart(load<uint32_t>(header, 4), header[3], budget);
}

void PropertyContext::readPart(uint32_t hid, unsigned level, uint64_t& budget) {
  const pststore::byte_vector bytes = heap()->read(hid);
  if (bytes.size() > budget) throw pststore::database_corrupt("index larger than its node");
  budget -= bytes.size();
  const size_t width = level == 0 ? kLeafRecord : kInnerRecord;
  for (size_t at = 0; at + width <= bytes.size(); at += width) {
    if (level == 0) {
      records_.push_back({load<uint16_t>(bytes, at), load<uint16_t>(bytes, at + 2),
                          load<uint32_t>(bytes, at + 4)});
      continue;
    }
    try {
      readPart(load<uint32_t>(bytes, at + kKeyWidth), level - 1, budget);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {
      isWhole_ = false;
    }
  }
}

std::vector<mapi::PropertyTag> PropertyContext::tags() {
  std::vector<mapi::PropertyTag> tags;
  tags.reserve(records_.size());
  for (const Record& record : records_) tags.push_back({record.id, record.type});
  return tags;
}

std::optional<StoredValue> PropertyContext::find(uint16_t id) const {
  const auto found = std::lower_bound(records_.begin(), records_.end(), id,
                                      [](const Record& a, uint16_t b) { return a.id < b; });
  if (found == records_.end() || found->id != id) return std::nullopt;
  std::array<unsigned char, 4> entry;
  StoreLittleEndian<uint32_t>(entry.data(), found->value);
  const size_t width = mapi::WidthOfNumber(found->type);
  return MakeStoredValue(found->type, {reinterpret_cast<const char*>(entry.data()), entry.size()},
                         width <= entry.size() ? width : 0);
}

}  // namespace tarn::archive::store

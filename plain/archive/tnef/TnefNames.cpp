#include "archive/tnef/TnefNames.h"

#include <tuple>

namespace tarn::archive::tnef {

using mapi::PropertyName;

constexpr uint32_t kIdsEnd = 0xFFFF;  // the last 16-bit number is no id

bool TnefNames::Less::operator()(const PropertyName& left, const PropertyName& right) const {
  return std::tie(left.set, left.number, left.name) < std::tie(right.set, right.number, right.name);
}

std::optional<uint16_t> TnefNames::add(uint16_t id, const PropertyName& name) {
  const auto known = ids_.find(name);
  if (known != ids_.end()) return known->second;
  if (id < 0x8000 || id >= kIdsEnd || names_.count(id) != 0) {
    while (nextFree_ < kIdsEnd && names_.count(static_cast<uint16_t>(nextFree_)) != 0) ++nextFree_;
    if (nextFree_ == kIdsEnd) return std::nullopt;
    id = static_cast<uint16_t>(nextFree_);
  }
  ids_.emplace(name, id);
  names_.emplace(id, name);
  return id;
}

std::optional<uint16_t> TnefNames::idOf(const PropertyName& name) const {
  const auto at = ids_.find(name);
  if (at == ids_.end()) return std::nullopt;
  return at->second;
}

std::optional<PropertyName> TnefNames::nameOf(uint16_t id) const {
  const auto at = names_.find(id);
  if (at == names_.end()) return std::nullopt;
  return at->second;
}

}  // namespace tarn::archive::tnef

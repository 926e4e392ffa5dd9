#include "support/compound/CompoundBuilder.h"

#include <stdexcept>

namespace tarn::test {
namespace {

constexpr size_t kMostUnits = 31;

std::u16string Widen(std::string_view name) {
  std::u16string wide;
  for (const char c : name) wide.push_back(static_cast<unsigned char>(c));
  return wide;
}

}  // namespace

CompoundFolder& CompoundFolder::child(std::u16string_view name, bool isStream) {
  if (name.empty() || name.size() > kMostUnits) throw std::length_error("name of an entry");
  const auto known = byName_.find(name);
  if (known != byName_.end()) {
    known->second->isStream_ = isStream;
    return *known->second;
  }
  children_.push_back(std::make_unique<CompoundFolder>());
  CompoundFolder& made = *children_.back();
  made.name_ = name;
  made.isStream_ = isStream;
  byName_.emplace(made.name_, &made);
  return made;
}

CompoundFolder& CompoundFolder::stream(std::u16string_view name, std::string_view bytes) {
  child(name, true).bytes_ = bytes;
  return *this;
}

CompoundFolder& CompoundFolder::stream(std::string_view name, std::string_view bytes) {
  return stream(Widen(name), bytes);
}

CompoundFolder& CompoundFolder::storage(std::u16string_view name) { return child(name, false); }

CompoundFolder& CompoundFolder::storage(std::string_view name) { return storage(Widen(name)); }

CompoundFolder& CompoundFolder::classId(const std::array<unsigned char, 16>& id) {
  classId_ = id;
  return *this;
}

CompoundBuilder::CompoundBuilder(CompoundVersion version) { options_.version = version; }

CompoundBuilder::CompoundBuilder(const CompoundOptions& options) : options_(options) {}

CompoundBuilder& CompoundBuilder::stream(std::string_view name, std::string_view bytes) {
  root_.stream(name, bytes);
  return *this;
}

CompoundFolder& CompoundBuilder::at(std::string_view path) {
  CompoundFolder* folder = &root_;
  while (!path.empty()) {
    const size_t end = path.find('/');
    folder = &folder->storage(path.substr(0, end));
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
  }
  return *folder;
}

}  // namespace tarn::test

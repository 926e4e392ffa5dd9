#include "NaiveCompound.h"

#include <algorithm>

namespace tarn::test {
namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr uint32_t kMeta = 0xFFFFFFFC;
constexpr uint32_t kLimit = 4096;
constexpr uint32_t kSlice = 64;  // of a stream, that lies in one piece wherever it lies

std::string Word(uint64_t value, int width) {
  std::string bytes;
  for (int i = 0; i < width; ++i) bytes.push_back(static_cast<char>(value >> (8 * i)));
  return bytes;
}

}  // namespace

NaiveCompound::NaiveCompound() {
  entries_.push_back({"Root Entry", kNone, true});
  for (uint32_t i = 0; i < 4; ++i) set(big_, i, kEnd);
  big_.dirty = {0};
}

uint32_t NaiveCompound::firstFree(Table& table) {
  if (table.search) {
    for (uint32_t i = 0; i < table.entries.size(); ++i) {
      if (table.entries[i] == kNone) return i;
    }
  }
  table.search = false;
  return static_cast<uint32_t>(table.entries.size());
}

void NaiveCompound::set(Table& table, uint32_t index, uint32_t value) {
  while (table.entries.size() <= index) table.entries.push_back(kNone);
  table.entries[index] = value;
  if (value == kNone) table.search = true;
}

bool NaiveCompound::less(const std::string& left, const std::string& right) {
  if (left.size() != right.size()) return left.size() < right.size();
  return left < right;
}

uint32_t NaiveCompound::entry(uint32_t parent, const std::string& name, bool isDirectory) {
  for (uint32_t i = 1; i < entries_.size(); ++i) {
    if (entries_[i].parent == parent && entries_[i].name == name) return i;
  }
  const auto index = static_cast<uint32_t>(entries_.size());
  entries_.push_back({name, parent, isDirectory});
  hang(index);
  dirtyDirectory_.insert(index / 4);
  growDirectory(index / 4);
  return index;
}

// Down the unbalanced tree to its end.
void NaiveCompound::hang(uint32_t index) {
  const Entry& made = entries_[index];
  uint32_t* link = &entries_[made.parent].child;
  uint32_t owner = made.parent;
  while (*link != kNone) {
    owner = *link;
    link = less(entries_[owner].name, made.name) ? &entries_[owner].next : &entries_[owner].prev;
  }
  *link = index;
  dirtyDirectory_.insert(owner / 4);
}

uint32_t NaiveCompound::pathEntry(const std::string& path) {
  const size_t slash = path.find('/');
  if (slash == std::string::npos) return entry(0, path, false);
  return entry(entry(0, path.substr(0, slash), true), path.substr(slash + 1), false);
}

void NaiveCompound::growDirectory(uint32_t index) {
  while (directory_.size() <= index) {
    const uint32_t block = firstFree(big_);
    set(big_, directory_.back(), block);
    big_.dirty.insert(directory_.back() / 128);
    set(big_, block, kEnd);
    big_.dirty.insert(block / 128);
    directory_.push_back(block);
    cover(block);
  }
}

void NaiveCompound::cover(uint32_t block) {
  while (block / 64 >= tableBlocks_.size()) addTableBlock();
}

void NaiveCompound::addTableBlock() {
  const uint32_t block = firstFree(big_);
  set(big_, block, kMeta);
  if (tableBlocks_.size() >= 109 && (tableBlocks_.size() - 109) / 63 == metaBlocks_.size()) {
    const uint32_t meta = firstFree(big_);
    set(big_, meta, kMeta);
    metaBlocks_.push_back(meta);
  }
  tableBlocks_.push_back(block);
}

void NaiveCompound::extend(Numbers& chain) {
  const uint32_t block = firstFree(big_);
  set(big_, block, kEnd);
  cover(block);
  big_.dirty.insert(block / 128);
  if (!chain.empty()) {
    set(big_, chain.back(), block);
    big_.dirty.insert(chain.back() / 128);
  }
  chain.push_back(block);
}

void NaiveCompound::extendSmall(Entry& stream) {
  const uint32_t block = firstFree(small_);
  if (!stream.chain.empty()) {
    set(small_, stream.chain.back(), block);
    small_.dirty.insert(stream.chain.back() / 128);
  }
  set(small_, block, kEnd);
  small_.dirty.insert(block / 128);
  stream.chain.push_back(block);
  while (block / 128 >= smallTable_.size()) extend(smallTable_);
  while (block / 8 >= container_.size()) {
    extend(container_);
    dirtyDirectory_.insert(0);
  }
}

size_t NaiveCompound::place(const Entry& stream, uint32_t position) const {
  if (stream.size >= kLimit)
    return (size_t{stream.chain[position / 512]} + 1) * 512 + position % 512;
  const size_t inContainer = size_t{stream.chain[position / 64]} * 64 + position % 64;
  return (size_t{container_[inContainer / 512]} + 1) * 512 + inContainer % 512;
}

std::string NaiveCompound::contents(const Entry& stream, uint32_t length) const {
  std::string all;
  const uint32_t blockSize = stream.size >= kLimit ? 512 : 64;
  for (uint32_t i = 0; i < length && i / blockSize < stream.chain.size(); i += kSlice) {
    const size_t at = place(stream, i);
    all.resize(i, '\0');
    if (at < bytes_.size()) all += bytes_.substr(at, kSlice);
  }
  // What was never written is zeros.
  all.resize(length, '\0');
  return all;
}

void NaiveCompound::setSize(uint32_t index, uint32_t size) {
  Entry& stream = entries_[index];
  if (stream.size == size) return;
  if ((stream.size < kLimit) == (size < kLimit)) {
    stream.size = size;
    dirtyDirectory_.insert(index / 4);
    return;
  }
  const std::string kept = contents(stream, std::min(stream.size, size));
  Table& table = size < kLimit ? big_ : small_;
  for (uint32_t i = 0; i < stream.chain.size(); ++i) {
    set(table, stream.chain[i], kNone);
    table.dirty.insert(i / 128);
  }
  stream.chain.clear();
  stream.size = size;
  stream.start = kNone;
  dirtyDirectory_.insert(index / 4);
  writeAt(index, 0, kept);
}

void NaiveCompound::writeAt(uint32_t index, uint32_t position, const std::string& bytes) {
  if (bytes.empty()) return;
  const auto end = position + static_cast<uint32_t>(bytes.size());
  if (end > entries_[index].size) setSize(index, end);
  Entry& stream = entries_[index];
  if (stream.size >= kLimit) {
    while ((end - 1) / 512 >= stream.chain.size()) extend(stream.chain);
  } else {
    while ((end - 1) / 64 >= stream.chain.size()) extendSmall(stream);
  }
  for (uint32_t i = 0; i < bytes.size();) {
    const uint32_t part = kSlice - (position + i) % kSlice;
    put(place(stream, position + i), bytes.substr(i, part));
    i += part;
  }
  if (stream.start != stream.chain.front()) {
    stream.start = stream.chain.front();
    dirtyDirectory_.insert(index / 4);
  }
}

void NaiveCompound::append(const std::string& path, const std::string& bytes) {
  const uint32_t index = pathEntry(path);
  writeAt(index, entries_[index].size, bytes);
}

void NaiveCompound::resize(const std::string& path, uint32_t size) {
  setSize(pathEntry(path), size);
}

void NaiveCompound::put(size_t at, const std::string& bytes) {
  if (bytes_.size() < at + bytes.size()) bytes_.resize(at + bytes.size(), '\0');
  std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
}

void NaiveCompound::putTable(Table& table, const Numbers& blocks) {
  std::string image;
  for (const uint32_t value : table.entries) image += Word(value, 4);
  image.resize(blocks.size() * 512, '\xFF');
  for (const uint32_t i : table.dirty) {
    if (i < blocks.size()) put((size_t{blocks[i]} + 1) * 512, image.substr(i * 512, 512));
  }
}

std::string NaiveCompound::record(uint32_t index) const {
  const Entry& entry = entries_[index];
  std::string bytes;
  for (const char c : entry.name.substr(0, 32)) bytes += std::string{c, '\0'};
  const size_t nameSize = bytes.size() + 2;
  bytes.resize(64, '\0');
  bytes += Word(nameSize, 2);
  bytes += index == 0 ? '\5' : entry.isDirectory ? '\1' : '\2';
  bytes += index == 0 ? '\0' : '\1';
  bytes += Word(entry.prev, 4) + Word(entry.next, 4) + Word(entry.child, 4);
  bytes += std::string(36, '\0');
  if (index == 0) {
    bytes += Word(container_.front(), 4) + Word(container_.size() * 512, 4);
  } else if (entry.isDirectory) {
    bytes += Word(kNone, 4) + Word(0, 4);
  } else {
    bytes += Word(entry.start, 4) + Word(entry.size, 4);
  }
  return bytes + Word(0, 4);
}

void NaiveCompound::clearMarks() {
  big_.dirty.clear();
  small_.dirty.clear();
  dirtyDirectory_.clear();
}

std::string NaiveCompound::flush() {
  std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  header += std::string(16, '\0') + Word(62, 2) + Word(3, 2) + Word(0xFFFE, 2) + Word(9, 2) +
            Word(6, 2) + std::string(10, '\0') + Word(tableBlocks_.size(), 4) +
            Word(directory_.front(), 4) + Word(0, 4) + Word(4096, 4) +
            Word(smallTable_.front(), 4) + Word(smallTable_.size(), 4) +
            Word(metaBlocks_.empty() ? kEnd : metaBlocks_.front(), 4) + Word(metaBlocks_.size(), 4);
  for (size_t i = 0; i < 109; ++i)
    header += Word(i < tableBlocks_.size() ? tableBlocks_[i] : kNone, 4);
  put(0, header);
  putTable(big_, tableBlocks_);
  if (!small_.dirty.empty()) putTable(small_, smallTable_);

  std::string records;
  for (uint32_t i = 0; i < entries_.size(); ++i) records += record(i);
  for (const uint32_t i : dirtyDirectory_) {
    put((size_t{directory_[i]} + 1) * 512, records.substr(i * 512, 512));
  }

  std::string groups;
  for (size_t i = 109; i < tableBlocks_.size(); ++i) {
    groups += Word(tableBlocks_[i], 4);
    const size_t numbers = i - 108;
    if (numbers % 63 != 0) continue;
    const size_t next = numbers / 63;
    groups += Word(next < metaBlocks_.size() ? metaBlocks_[next] : kEnd, 4);
  }
  groups.resize(metaBlocks_.size() * 512, '\xFF');
  for (size_t i = 0; i < metaBlocks_.size(); ++i) {
    put((size_t{metaBlocks_[i]} + 1) * 512, groups.substr(i * 512, 512));
  }
  return bytes_;
}

}  // namespace tarn::test

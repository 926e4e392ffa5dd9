#include "NaiveReader.h"

#include <algorithm>

namespace tarn::test {
namespace {

uint64_t Number(const std::string& bytes, uint64_t offset, uint64_t width) {
  uint64_t value = 0;
  for (uint64_t i = width; i-- > 0;) {
    const uint64_t at = offset + i;
    value = value << 8 | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0u);
  }
  return value;
}

NaiveReader::Numbers Words(const std::string& bytes) {
  NaiveReader::Numbers words;
  for (uint64_t i = 0; i + 4 <= bytes.size(); i += 4) words.push_back(Number(bytes, i, 4));
  return words;
}

NaiveReader::Entry Record(const std::string& bytes) {
  NaiveReader::Entry entry;
  const uint64_t nameSize = std::min<uint64_t>(Number(bytes, 64, 2), 64);
  for (uint64_t i = 0; i < nameSize && bytes[i] != '\0'; i += 2) entry.name += bytes[i];
  if (static_cast<unsigned char>(bytes[0]) < 32 && !entry.name.empty()) entry.name.erase(0, 1);
  const uint64_t type = Number(bytes, 66, 1);
  entry.valid = (type == 1 || type == 2 || type == 5) && nameSize != 0;
  entry.isDirectory = type != 2;
  entry.start = Number(bytes, 116, 4);
  entry.size = Number(bytes, 120, 4);
  return entry;
}

}  // namespace

NaiveReader::NaiveReader(const std::string& bytes) : file_(bytes) {
  if (file_.substr(0, 8) != "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1") return;
  result_ = 3;
  if (!readHeader()) return;
  bigSize_ = uint64_t{1} << number(30, 2);
  smallSize_ = uint64_t{1} << number(32, 2);
  bigTable_ = Words(whole(tableBlocks()));
  const Numbers small = chain(bigTable_, number(60, 4));
  if (!small.empty()) smallTable_ = Words(whole(small));
  const std::string directory = whole(chain(bigTable_, number(48, 4)));
  for (uint64_t i = 0; i + 128 <= directory.size(); i += 128) {
    entries_.push_back(Record(directory.substr(i, 128)));
  }
  if (!entries_.empty()) container_ = chain(bigTable_, entries_[0].start);
  result_ = 0;
}

uint64_t NaiveReader::number(uint64_t offset, uint64_t width) const {
  return Number(file_, offset, width);
}

bool NaiveReader::readHeader() const {
  const uint64_t tables = number(44, 4);
  const uint64_t bigShift = number(30, 2);
  if (number(56, 4) != 4096 || tables == 0) return false;
  if (tables < 109 && number(72, 4) != 0) return false;
  if (number(32, 2) > bigShift || bigShift < 7 || bigShift > 30) return false;
  for (uint64_t i = 0; i < tables && i < 109; ++i) {
    if (number(76 + 4 * i, 4) == 0xFFFFFFFF) return false;
  }
  return true;
}

bool NaiveReader::bigBlock(uint64_t block, uint64_t length, std::string& bytes) const {
  const uint64_t position = (block + 1) * bigSize_;
  bytes.clear();
  if (position > file_.size()) return false;
  bytes = file_.substr(position, std::min(length, bigSize_));
  return true;
}

std::string NaiveReader::whole(const Numbers& blocks) const {
  const uint64_t length = blocks.size() * bigSize_;
  std::string all;
  std::string bytes;
  for (const uint64_t block : blocks) {
    if (!bigBlock(block, length - all.size(), bytes)) break;
    all += bytes;
  }
  all.resize(length, '\0');
  return all;
}

NaiveReader::Numbers NaiveReader::tableBlocks() const {
  const uint64_t count = number(44, 4);
  const uint64_t metas = number(72, 4);
  Numbers list(count, 0);
  for (uint64_t i = 0; i < count && i < 109; ++i) list[i] = number(76 + 4 * i, 4);
  if (count < 110) return list;
  uint64_t place = 109;
  for (uint64_t r = 0; r < metas; ++r) {
    uint64_t meta = number(68, 4);
    if (r != 0) meta = list[--place];
    const Numbers words = Words(whole({meta}));
    for (uint64_t i = 0; i < words.size() && place < count; ++i) list[place++] = words[i];
  }
  return list;
}

NaiveReader::Numbers NaiveReader::chain(const Numbers& table, uint64_t start) {
  Numbers blocks;
  for (uint64_t p = start; p < table.size();) {
    blocks.push_back(p);
    const uint64_t next = table[p];
    if (std::find(blocks.begin(), blocks.end(), next) != blocks.end()) break;
    p = next;
  }
  return blocks;
}

std::string NaiveReader::smallBlock(uint64_t block) const {
  const uint64_t position = block * smallSize_;
  const uint64_t index = position / bigSize_;
  if (index >= container_.size()) return {};
  const uint64_t from = (container_[index] + 1) * bigSize_ + position % bigSize_;
  std::string bytes = from < file_.size() ? file_.substr(from, smallSize_) : std::string();
  bytes.resize(smallSize_, '\0');
  return bytes;
}

std::string NaiveReader::read(const Entry& entry, uint64_t position, uint64_t length) const {
  if (position >= entry.size) return {};
  length = std::min(length, entry.size - position);
  const bool big = entry.size >= 4096;
  const Numbers blocks = chain(big ? bigTable_ : smallTable_, entry.start);
  const uint64_t size = big ? bigSize_ : smallSize_;
  uint64_t offset = position % size;
  std::string all;
  for (uint64_t i = position / size; i < blocks.size() && all.size() < length; ++i) {
    std::string scratch;
    if (big) {
      bigBlock(blocks[i], size, scratch);
    } else {
      scratch = smallBlock(blocks[i]);
    }
    if (offset < scratch.size()) all += scratch.substr(offset, length - all.size());
    offset = 0;
  }
  return all;
}

}  // namespace tarn::test

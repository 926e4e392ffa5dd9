// The directory between its records and the tree in memory.

#include <algorithm>
#include <array>
#include <utility>

#include "Common/LittleEndian.h"
#include "compound/DirectoryTree.h"

namespace tarn {
namespace {

constexpr uint64_t kNameBytes = 64;
constexpr uint64_t kNameSizeOffset = 64;
constexpr uint64_t kTypeOffset = 66;
constexpr uint64_t kColourOffset = 67;
constexpr uint64_t kPrevOffset = 68;
constexpr uint64_t kNextOffset = 72;
constexpr uint64_t kChildOffset = 76;
constexpr uint64_t kClassIdOffset = 80;

enum RecordType : unsigned char {
  RecordInvalid = 0,
  RecordStorage = 1,
  RecordStream = 2,
  RecordRoot = 5
};

struct LinkField {
  uint64_t offset;
  uint64_t DirectoryEntry::*field;
};

constexpr LinkField kLinks[] = {
    {kPrevOffset, &DirectoryEntry::prev},
    {kNextOffset, &DirectoryEntry::next},
    {kChildOffset, &DirectoryEntry::child},
};

using ClassId = std::array<unsigned char, 16>;

constexpr ClassId RootClassId(uint32_t kind) {
  switch (kind) {
    case 1:
      return {0x06, 0x09, 0x02, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    case 2:
      return {0x06, 0x08, 0x02, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    case 3:
      return {0x10, 0x8D, 0x81, 0x64, 0x9B, 0x4F, 0xCF, 0x11,
              0x86, 0xEA, 0x00, 0xAA, 0x00, 0xB9, 0x29, 0xE8};
    default:
      return {};
  }
}

DirectoryEntry ReadRecord(const unsigned char* record) {
  DirectoryEntry entry;
  const uint64_t nameSize =
      std::min<uint64_t>(LoadLittleEndian<uint16_t>(record + kNameSizeOffset), kNameBytes);
  for (uint64_t i = 0; i < nameSize && record[i] != 0; i += 2) {
    entry.name.push_back(static_cast<char>(record[i]));
  }
  if (record[0] < 32 && !entry.name.empty()) entry.name.erase(0, 1);
  const unsigned char type = record[kTypeOffset];
  entry.valid =
      (type == RecordStorage || type == RecordStream || type == RecordRoot) && nameSize != 0;
  entry.isDirectory = type != RecordStream;
  for (const LinkField& link : kLinks)
    entry.*link.field = LoadLittleEndian<uint32_t>(record + link.offset);
  entry.start = LoadLittleEndian<uint32_t>(record + kRecordStartOffset);
  entry.size = LoadLittleEndian<uint32_t>(record + kRecordSizeOffset);
  return entry;
}

void WriteName(unsigned char* record, std::string_view name) {
  name = name.substr(0, kNameBytes / 2);
  for (uint64_t i = 0; i < name.size(); ++i) record[2 * i] = static_cast<unsigned char>(name[i]);
  StoreLittleEndian<uint16_t>(record + kNameSizeOffset, 2 * name.size() + 2);
}

void WriteRoot(unsigned char* record, const DirectoryTree& tree) {
  WriteName(record, "Root Entry");
  record[kTypeOffset] = RecordRoot;
  StoreLittleEndian<uint32_t>(record + kPrevOffset, kNoEntry);
  StoreLittleEndian<uint32_t>(record + kNextOffset, kNoEntry);
  StoreLittleEndian<uint32_t>(record + kChildOffset, tree.entries()[0].child);
  const ClassId id = RootClassId(tree.rootKind);
  std::copy(id.begin(), id.end(), record + kClassIdOffset);
  StoreLittleEndian<uint32_t>(record + kRecordStartOffset, kNoEntry);
}

void WriteEntry(unsigned char* record, const DirectoryEntry& entry) {
  WriteName(record, entry.name);
  record[kTypeOffset] = !entry.valid        ? RecordInvalid
                        : entry.isDirectory ? RecordStorage
                                            : RecordStream;
  record[kColourOffset] = 1;
  for (const LinkField& link : kLinks)
    StoreLittleEndian<uint32_t>(record + link.offset, entry.*link.field);
  StoreLittleEndian<uint32_t>(record + kRecordStartOffset, entry.start);
  StoreLittleEndian<uint32_t>(record + kRecordSizeOffset, entry.size);
}

}  // namespace

void LoadDirectory(DirectoryTree& tree, ByteView bytes) {
  DirectoryTree::Entries entries;
  const uint64_t count = bytes.size() / kDirectoryRecordSize;
  entries.reserve(count);
  for (uint64_t i = 0; i < count; ++i) {
    entries.push_back(ReadRecord(bytes.data() + i * kDirectoryRecordSize));
  }
  const uint32_t rootKind = tree.rootKind;
  tree = DirectoryTree(std::move(entries));
  tree.rootKind = rootKind;
}

KernelVector<unsigned char> SaveDirectory(DirectoryTree& tree) {
  const DirectoryTree::Entries& entries = tree.entries();
  KernelVector<unsigned char> bytes(entries.size() * kDirectoryRecordSize, 0);
  if (!entries.empty()) WriteRoot(bytes.data(), tree);
  for (uint64_t i = 1; i < entries.size(); ++i) {
    if (entries[i].isDirectory) tree.setExtent(i, kNoEntry, 0);
    WriteEntry(bytes.data() + i * kDirectoryRecordSize, entries[i]);
  }
  return bytes;
}

}  // namespace tarn

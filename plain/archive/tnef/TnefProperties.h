// TnefProperties.h - a list of properties in TNEF (MS-OXTNEF 2.1.3.4): of a message, a recipient or
// an attachment.
//
//   count 4, and then for each property:
//   type 2, id 2; from id 0x8000 on a name: set 16, kind 4, and a number, or a length and UTF-16;
//   of types without one width, and of several values, how many 4; each value, of types without one
//   width after its length 4; names and values fill up to 4 bytes
#ifndef TARN_ARCHIVE_TNEFPROPERTIES_H
#define TARN_ARCHIVE_TNEFPROPERTIES_H

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/tnef/TnefNames.h"

namespace tarn::archive::tnef {

// What is left of bytes that are read from their start.
class ListBytes {
 public:
  explicit ListBytes(std::string_view bytes) : rest_(bytes) {}

  std::optional<uint16_t> number16();
  std::optional<uint32_t> number32();
  // With what fills them up to 4 bytes, as far as it is there.
  std::optional<std::string_view> filled(size_t size);
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

// Bytes that are in memory and outlive the source.
std::unique_ptr<ByteSource> SourceOf(std::string_view bytes);

class TnefProperties final : public mapi::PropertySet {
 public:
  // Adds the list that the bytes begin with; they outlive this. What comes before a damage is read.
  void readList(std::string_view bytes, TnefNames& names);

  // Add a value where the set has none of the id; or put it in place of what it has.
  void add(mapi::PropertyTag tag, std::string value);
  void addView(mapi::PropertyTag tag, std::string_view value);  // outlives this
  void replace(mapi::PropertyTag tag, std::string value);
  void replaceView(mapi::PropertyTag tag, std::string_view value);  // outlives this
  void addTrouble(Trouble trouble) { troubles_.push_back(std::move(trouble)); }

  std::vector<mapi::PropertyTag> tags() override;
  std::optional<uint16_t> typeOf(uint16_t id) override;
  std::optional<uint64_t> sizeOf(uint16_t id) override;
  Outcome<std::string> bytes(uint16_t id, size_t limit) override;
  Outcome<std::unique_ptr<ByteSource>> stream(uint16_t id) override;
  Outcome<std::vector<std::string>> values(uint16_t id, size_t limit) override;
  std::vector<Trouble> troubles() override { return troubles_; }

  // The bytes that the last list takes; none for one that is damaged.
  std::optional<size_t> sizeOfList() const { return sizeOfList_; }

  // A value in the bytes, an object without the id of its interface; none for one that is not
  // there.
  std::optional<std::string_view> view(uint16_t id) const;

 private:
  struct Row {
    mapi::PropertyTag tag;
    size_t first = 0;  // of values_
    size_t count = 0;
  };

  bool readProperty(ListBytes& list, TnefNames& names);
  std::optional<mapi::PropertyName> readName(ListBytes& list);
  bool readValues(ListBytes& list, Row& row);
  std::optional<std::string_view> readValue(ListBytes& list, uint16_t type);
  void addRow(const Row& row);
  const Row* find(uint16_t id) const;
  std::string_view valueOf(const Row& row) const;

  std::vector<Row> rows_;
  std::map<uint16_t, size_t> rowOf_;  // by id
  std::vector<std::string_view> values_;
  std::deque<std::string> made_;  // values that are not in the bytes
  std::optional<size_t> sizeOfList_;
  std::vector<Trouble> troubles_;
};

// The bytes of each row of a table of recipients (MS-OXTNEF 2.1.3.5): lists, one after the other.
struct RowsOfTable {
  std::vector<std::string_view> rows;
  uint32_t declared = 0;  // as the table claims
};
RowsOfTable ReadTable(std::string_view bytes);

}  // namespace tarn::archive::tnef

#endif

// MsgProperties.h - the properties of a storage of an MSG file (MS-OXMSG 2.1 to 2.4).
//
// "__properties_version1.0" has a record of 16 bytes for each property, after a header that only
// its storage's kind tells. Values of up to 8 bytes are in the record, others in streams named by
// id and type; those of a property with several values have the length of each in the stream of
// that name, and are in further ones. A stream without a record is a property too: what a damaged
// file still holds is not lost.
#ifndef TARN_ARCHIVE_MSGPROPERTIES_H
#define TARN_ARCHIVE_MSGPROPERTIES_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/msg/StorageFile.h"

namespace tarn::archive::msg {

// Of the file itself 32 bytes, of an embedded message 24: the length of the stream tells which.
enum class SetOf : uint8_t { Message, Part };

class MsgProperties final : public mapi::PropertySet {
 public:
  // The file outlives this.
  MsgProperties(StorageFile& file, EntryNumber storage, SetOf kind);

  std::vector<mapi::PropertyTag> tags() override;
  std::optional<uint16_t> typeOf(uint16_t id) override;
  std::optional<uint64_t> sizeOf(uint16_t id) override;
  Outcome<std::string> bytes(uint16_t id, size_t limit) override;
  Outcome<std::unique_ptr<ByteSource>> stream(uint16_t id) override;
  Outcome<std::vector<std::string>> values(uint16_t id, size_t limit) override;
  std::vector<Trouble> troubles() override { return troubles_; }

  // The storage that is the value of a property of type object.
  std::optional<EntryNumber> storageOf(uint16_t id) const;

  // What the header of a message claims.
  uint32_t declaredRecipients() const { return declaredRecipients_; }
  uint32_t declaredAttachments() const { return declaredAttachments_; }

 private:
  struct Row {
    mapi::PropertyTag tag;
    std::array<unsigned char, 8> value{};
    std::optional<EntryNumber> entry;
  };

  void collectStreams(EntryNumber storage);
  void readRecords(EntryNumber stream, SetOf kind);
  void addRecord(const unsigned char* record);
  void addStreamsWithoutRecord();
  const Row* find(uint16_t id) const;
  Outcome<std::string> streamOf(const Row& row, size_t limit);
  Outcome<std::vector<std::string>> fixedValues(const Row& row, size_t limit);
  Outcome<std::vector<std::string>> variableValues(const Row& row, size_t limit);

  StorageFile& file_;
  std::vector<Row> rows_;                           // in the order of the source
  std::map<uint16_t, size_t> rowOf_;                // by id
  std::map<uint32_t, EntryNumber> streams_;         // by id and type
  std::map<uint64_t, EntryNumber> furtherStreams_;  // by id, type and place among the values
  uint32_t declaredRecipients_ = 0;
  uint32_t declaredAttachments_ = 0;
  std::vector<Trouble> troubles_;
};

// Whether a storage holds a message, as far as names tell.
bool IsMessageStorage(const StorageFile& file, EntryNumber storage);

}  // namespace tarn::archive::msg

#endif

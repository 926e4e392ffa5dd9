// DocumentMemory.h - which document a sibling got when, so that the next one can be compared.
#ifndef TARN_FUZZ_HOST_DOCUMENTMEMORY_H
#define TARN_FUZZ_HOST_DOCUMENTMEMORY_H

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>

#include "host/Expect.h"

namespace tarn::fuzz {

// What a document depends on, besides the file as it was at first.
struct Circumstances {
  int32_t message = 1;
  int32_t textOnly = 0;
  uint32_t language = 0;
  int32_t ioMode = 0;
  uint8_t fileChange = 0;

  bool operator<(const Circumstances& other) const { return tie() < other.tie(); }

 private:
  std::tuple<int32_t, int32_t, uint32_t, int32_t, uint8_t> tie() const {
    return {message, textOnly, language, ioMode, fileChange};
  }
};

// Documents are told apart by a number made of all their bytes.
class DocumentMemory {
 public:
  // A record was found in the slot: it gives this document every time.
  void compareRecord(const void* record, uint64_t document) {
    if (record == record_ && ofRecord_) {
      Expect(*ofRecord_ == document, "a record's document has changed");
    }
    record_ = record;
    ofRecord_ = document;
  }
  void forgetRecord() { ofRecord_.reset(); }

  // A message that is read again gives the same document again.
  void compareReading(const Circumstances& now, uint64_t document) {
    const auto known = readings_.emplace(now, document).first;
    Expect(known->second == document, "a message read again is another document");
  }

 private:
  const void* record_ = nullptr;
  std::optional<uint64_t> ofRecord_;
  std::map<Circumstances, uint64_t> readings_;
};

}  // namespace tarn::fuzz

#endif

// PstReading.h - a store that a builder wrote, opened and read as the filter's driver does.
#ifndef TARN_TESTS_ROAD_PSTREADING_H
#define TARN_TESTS_ROAD_PSTREADING_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "FileFormats/Pst/StoreWalk.h"
#include "pststore/DbContext.h"
#include "support/TempDirectory.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {

inline constexpr PstLayout kBothLayouts[] = {PstLayout::Ansi, PstLayout::Unicode};

// A few messages in 2 to 3 kB.
inline StoreOptions SmallStore(PstLayout layout = PstLayout::Unicode) {
  return StoreOptions::Smallest(layout, PstEncoding::Permute);
}

class PstReading {
 public:
  explicit PstReading(StoreBuilder& store) : fileSize(store.bytes().size()) {
    path_ = directory_.write("store.pst", store.bytes()).u16string();
    context = pststore::open_database(path_.c_str());
  }
  PstReading(const PstReading&) = delete;
  PstReading& operator=(const PstReading&) = delete;
  ~PstReading() { ReleaseMessageList(list); }

  Status count() { return CountStoreMessages(list, context, fileSize); }
  Status walk(int32_t selected) {
    wanted_ = selected;
    StoreReading reading(data, request, fileSize);
    if (limits) limits(reading);
    return WalkStoreMessages(*list, context, selected, kind, reading);
  }
  // Counts and walks.
  Status read(int32_t selected) {
    const Status counted = count();
    return counted.ok() ? walk(selected) : counted;
  }

  // Of the message that the last walk was to read: there is no other record.
  MailMessage& record(int32_t index) {
    EXPECT_EQ(index, wanted_);
    return *list->records;
  }
  std::string text(int32_t index) { return std::string(record(index).text.view()); }
  std::string body(int32_t index) { return std::string(record(index).body.view()); }

  // The bodies of the first messages one after the other, each of a reading of its own.
  std::string bodies(int32_t messages) {
    std::string all;
    for (int32_t index = 0; index < messages; ++index) {
      ReleaseMessageList(std::exchange(list, nullptr));
      EXPECT_EQ(read(index), StatusOk);
      all += body(index);
    }
    return all;
  }

  const char16_t* path() const { return path_.c_str(); }
  const std::u16string directory() const { return directory_.wide(); }

  const uint64_t fileSize;
  Store context;
  PstFilterData data;
  const AttachmentRequest* request = nullptr;
  std::function<void(StoreReading&)> limits;  // changes what a walk may cost
  MessageList* list = nullptr;
  TarnDocumentKind kind = DocumentNone;

 private:
  int32_t wanted_ = 0;
  TempDirectory directory_;
  std::u16string path_;
};

}  // namespace tarn::test

#endif

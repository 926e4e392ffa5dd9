// StoreListing.h - what the reader of stores gives, as lines of text.
#ifndef TARN_TESTS_ARCHIVE_STORE_STORELISTING_H
#define TARN_TESTS_ARCHIVE_STORE_STORELISTING_H

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "archive/store/StoreReader.h"
#include "support/TempDirectory.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {

// An image as a file, and its reader.
class OpenedStore {
 public:
  explicit OpenedStore(const std::string& image, const archive::ReaderOptions& options = {});
  explicit OpenedStore(StoreBuilder& store, const archive::ReaderOptions& options = {})
      : OpenedStore(store.bytes(), options) {}

  archive::ItemReader& reader() { return *reader_; }

  // Every entry to the end, a line each:
  //   folder PATH: DECLARED     "?" where the folder claims nothing; the root's path is "."
  //   ID in PATH: SUBJECT       with "!REASON" for every trouble of the item
  //   ID in PATH! REASON        of what is no item
  std::string listing();

  // Gives every item to the function.
  void forEachItem(const std::function<void(archive::Item&)>& look);

  // The item of an id; fails the test where there is none.
  std::unique_ptr<archive::Item> find(std::string_view id);

 private:
  TempDirectory folder_;
  std::unique_ptr<archive::ItemReader> reader_;
};

inline constexpr archive::ReaderOptions kRecover = {.recover = true};

// "a, b": each as "Name <address>".
std::string AddressText(const std::vector<archive::Address>& people);
std::string AddressText(const archive::Address& person);

// The reasons, a line each.
std::string Reasons(const std::vector<archive::Trouble>& troubles);

// The bytes of an attachment, or "!" and the reason.
std::string AttachmentBytes(archive::Item& item, size_t index);

}  // namespace tarn::test

#endif

#include "StoreReason.h"

#include <exception>

#include "StoreSearch.h"
#include "pststore/StoreObjects.h"

namespace tarn::host {
namespace {

int32_t Count(const Store& store) {
  uint32_t total = 0;
  const pststore::folder_iterator end = pststore::folder_end(store);
  for (pststore::folder_iterator at = pststore::folder_begin(store); at != end; ++at) {
    const pststore::folder folder = pststore::make_folder(at);
    const pststore::property_bag& properties = folder.get_property_bag();
    if (properties.read_prop<pststore::wstring>(PR_DISPLAY_NAME) == u"Freebusy Data") continue;
    total += properties.get_value_4(PR_CONTENT_COUNT);
  }
  return static_cast<int32_t>(total);
}

}  // namespace

std::optional<int32_t> CountMessages(const char16_t* path) noexcept {
  try {
    return Count(pststore::open_database(path));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::optional<std::string> StoreReason(const char16_t* path, int32_t messageNumber) {
  const Store store = pststore::open_database(path);
  const int32_t count = Count(store);
  StoreSearch search(store, messageNumber);
  search.run();
  const std::string name = "message " + std::to_string(messageNumber);
  if (!search.isFound()) {
    return "the store counts " + std::to_string(count) + " messages and holds " +
           std::to_string(search.found()) + " that can be read";
  }
  if (search.hasRtf()) return "the compressed RTF of " + name + ", or of one before it, is damaged";
  if (!search.lastHasBody()) return name + " has no body";
  return std::nullopt;
}

}  // namespace tarn::host

#include "StoreReason.h"

#include <array>
#include <exception>
#include <memory>
#include <string_view>

#include "pststore/DbContext.h"
#include "pststore/StoreObjects.h"

namespace tarn::host {
namespace {

enum Property : pststore::ushort {
  PR_SUBJECT = 0x0037,
  PR_BODY = 0x1000,
  PR_RTF_COMPRESSED = 0x1009,
  PR_HTML = 0x1013,
  PR_DISPLAY_NAME = 0x3001,
  PR_CONTENT_COUNT = 0x3602,
};

using Store = std::shared_ptr<pststore::db_context>;

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

// Whether the message takes no number. A subject that the filter cannot read throws here too.
bool IsPassedOver(const pststore::property_bag& properties) {
  if (!properties.prop_exists(PR_SUBJECT)) return false;
  const auto subject = properties.read_prop<pststore::wstring>(PR_SUBJECT);
  std::u16string_view text(subject.data(), subject.size());
  if (text.starts_with(u'\1')) text = std::u16string_view(subject).substr(2);
  return text == u"LocalFreebusy";
}

// A body that cannot be read to its end throws.
void ReadThrough(const pststore::property_bag& properties, pststore::ushort id) {
  std::array<char, 1 << 13> buffer;
  pststore::hnid_stream_device body = properties.open_prop_stream(id);
  while (body.read(buffer.data(), std::ssize(buffer)) > 0) {
  }
}

// One pass over the messages up to the wanted one, by the rules of the filter: a folder ends at a
// message that cannot be read, and the next one takes its number.
class Search {
 public:
  Search(Store store, int32_t wanted) : store_(std::move(store)), wanted_(wanted) {}

  void run() {
    const pststore::folder_iterator end = pststore::folder_end(store_);
    for (pststore::folder_iterator at = pststore::folder_begin(store_); at != end; ++at) {
      try {
        const pststore::folder folder = pststore::make_folder(at);
        readRows(*pststore::get_contents_table(folder));
      } catch (const std::exception&) {
        continue;
      }
      if (isFound()) return;
    }
  }

  bool isFound() const { return found_ == wanted_; }
  int32_t found() const { return found_; }       // messages, up to the wanted one
  bool hasRtf() const { return hasRtf_; }        // any of them
  bool lastHasBody() const { return hasBody_; }  // of any kind

 private:
  void readRows(const pststore::table& contents) {
    const pststore::message_iterator end(contents.end(), store_);
    for (pststore::message_iterator at(contents.begin(), store_); at != end; ++at) {
      if (isFound()) return;
      const pststore::property_bag properties = pststore::make_message_bag(at);
      if (IsPassedOver(properties)) continue;
      bool hasBody = false;
      for (const pststore::ushort id : {PR_BODY, PR_HTML, PR_RTF_COMPRESSED}) {
        if (!properties.prop_exists(id)) continue;
        ReadThrough(properties, id);
        hasBody = true;
        hasRtf_ = hasRtf_ || id == PR_RTF_COMPRESSED;
      }
      hasBody_ = hasBody;
      ++found_;
    }
  }

  const Store store_;
  const int32_t wanted_;
  int32_t found_ = 0;
  bool hasRtf_ = false;
  bool hasBody_ = false;
};

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
  Search search(store, messageNumber);
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

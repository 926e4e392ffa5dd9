#include "StoreSearch.h"

#include <array>
#include <exception>
#include <string_view>
#include <utility>

#include "pststore/StoreObjects.h"

namespace tarn::host {
namespace {

// Whether the message takes no number. A subject that the filter cannot read throws here too.
bool IsPassedOver(const pststore::property_bag& properties) {
  const std::optional<pststore::wstring> subject = SubjectOf(properties);
  return subject && *subject == u"LocalFreebusy";
}

// A body that cannot be read to its end throws.
void ReadThrough(const pststore::property_bag& properties, pststore::ushort id) {
  std::array<char, 1 << 13> buffer;
  pststore::hnid_stream_device body = properties.open_prop_stream(id);
  while (body.read(buffer.data(), std::ssize(buffer)) > 0) {
  }
}

}  // namespace

std::optional<pststore::wstring> SubjectOf(const pststore::property_bag& properties) {
  if (!properties.prop_exists(PR_SUBJECT)) return std::nullopt;
  auto subject = properties.read_prop<pststore::wstring>(PR_SUBJECT);
  if (subject.starts_with(u'\1')) subject = subject.substr(2);
  return subject;
}

void StoreSearch::run() {
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

void StoreSearch::readRows(const pststore::table& contents) {
  const pststore::message_iterator end(contents.end(), store_);
  for (pststore::message_iterator at(contents.begin(), store_); at != end; ++at) {
    if (isFound()) return;
    pststore::property_bag properties = pststore::make_message_bag(at);
    if (IsPassedOver(properties)) continue;
    bool hasBody = false;
    for (const pststore::ushort id : {PR_BODY, PR_HTML, PR_RTF_COMPRESSED}) {
      if (!properties.prop_exists(id)) continue;
      ReadThrough(properties, id);
      hasBody = true;
      hasRtf_ = hasRtf_ || id == PR_RTF_COMPRESSED;
    }
    hasBody_ = hasBody;
    last_.emplace(std::move(properties));
    ++found_;
  }
}

}  // namespace tarn::host

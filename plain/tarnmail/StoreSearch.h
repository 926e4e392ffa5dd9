// StoreSearch.h - one message of a store by its number, as the filter counts messages.
#ifndef TARN_TARNMAIL_STORESEARCH_H
#define TARN_TARNMAIL_STORESEARCH_H

#include <cstdint>
#include <memory>
#include <optional>

#include "pststore/DbContext.h"
#include "pststore/PropertyBag.h"
#include "pststore/Table.h"

namespace tarn::host {

// The properties of messages and folders that are read here, by their published names.
enum StoreProperty : pststore::ushort {
  PR_SUBJECT = 0x0037,
  PR_CLIENT_SUBMIT_TIME = 0x0039,
  PR_SENDER_NAME = 0x0C1A,
  PR_BODY = 0x1000,
  PR_RTF_COMPRESSED = 0x1009,
  PR_HTML = 0x1013,
  PR_DISPLAY_NAME = 0x3001,
  PR_CONTENT_COUNT = 0x3602,
};

using Store = std::shared_ptr<pststore::db_context>;

// The subject without the marker of two characters that it may start with; nothing when there is
// none. What the store throws passes.
std::optional<pststore::wstring> SubjectOf(const pststore::property_bag& properties);

// One pass over the messages up to the wanted one, by the rules of the filter: a folder ends at a
// message that cannot be read, and the next one takes its number.
class StoreSearch {
 public:
  StoreSearch(Store store, int32_t wanted) : store_(std::move(store)), wanted_(wanted) {}

  void run();

  bool isFound() const { return found_ == wanted_; }
  int32_t found() const { return found_; }       // messages, up to the wanted one
  bool hasRtf() const { return hasRtf_; }        // any of them
  bool lastHasBody() const { return hasBody_; }  // of any kind
  // Of the last message that was found.
  const std::optional<pststore::property_bag>& last() const { return last_; }

 private:
  void readRows(const pststore::table& contents);

  const Store store_;
  const int32_t wanted_;
  int32_t found_ = 0;
  bool hasRtf_ = false;
  bool hasBody_ = false;
  std::optional<pststore::property_bag> last_;
};

}  // namespace tarn::host

#endif

#include "archive/store/StoreTrouble.h"

#include <stdexcept>
#include <string>

#include "pststore/Errors.h"

namespace tarn::archive::store {
namespace {

bool IsMissing(const std::exception& caught) {
  return dynamic_cast<const pststore::key_not_found<pststore::ushort>*>(&caught) != nullptr ||
         dynamic_cast<const pststore::key_not_found<pststore::ulong>*>(&caught) != nullptr;
}

// The store layer tells these apart by their text alone.
bool IsFileTrouble(const std::exception& caught) {
  const std::string_view text = caught.what();
  return text == "fopen failed" || text == "fseek failed" || text == "fread failed";
}

}  // namespace

Trouble TroubleOf(std::string_view reason, const std::exception& caught) {
  const std::string what(reason);
  if (IsMissing(caught)) return {TroubleKind::Missing, what + " (it is not in the store)"};
  if (dynamic_cast<const pststore::key_not_found<pststore::ulonglong>*>(&caught) != nullptr) {
    return {TroubleKind::Damaged, what + " (a block of it is not in the store)"};
  }
  if (IsFileTrouble(caught)) {
    return {TroubleKind::Unreadable, what + " (the file ends too early or cannot be read)"};
  }
  if (dynamic_cast<const pststore::unexpected_page*>(&caught) != nullptr) {
    return {TroubleKind::Damaged, what + " (a page of the index is damaged)"};
  }
  if (dynamic_cast<const pststore::unexpected_block*>(&caught) != nullptr) {
    return {TroubleKind::Damaged, what + " (a block is damaged)"};
  }
  return {TroubleKind::Damaged, what + " (the data is damaged)"};
}

}  // namespace tarn::archive::store

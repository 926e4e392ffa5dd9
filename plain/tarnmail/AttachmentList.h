// AttachmentList.h - the filter's list of attachments as the host keeps it: texts in UTF-8.
#ifndef TARN_TARNMAIL_ATTACHMENTLIST_H
#define TARN_TARNMAIL_ATTACHMENTLIST_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TarnPst.h"

namespace tarn::host {

struct Attachment {
  uint64_t number = 0;  // 1-based
  std::optional<std::string> name;
  std::optional<std::string> description;
  std::optional<uint64_t> size;    // bytes; nothing when the reader did not have them at hand
  std::optional<int64_t> created;  // seconds since 1970, UTC
  std::optional<int64_t> modified;
  std::vector<std::pair<std::string, std::string>> properties;  // as they came; names may repeat

  // Values of the properties that are known by name, the first of each; empty when there is none.
  std::string mediaType() const;
  std::string disposition() const;
  std::string contentId() const;
  // All properties but those, in their order.
  std::vector<std::pair<std::string, std::string>> otherProperties() const;
};

// Copies the block, which stays the caller's, and frees nothing.
std::vector<Attachment> CopyAttachments(const AttachmentInfoBlock& block);

// Frees the block and all that hangs on it. Null is fine.
void ReleaseAttachments(AttachmentInfoBlock* block);

}  // namespace tarn::host

#endif

#include "FileFormats/Pst/PstDocument.h"

#include <algorithm>

#include "FileFormats/Pst/DocumentText.h"
#include "FileFormats/Pst/StoreWalk.h"
#include "pststore/DbContext.h"

namespace tarn {
namespace {

constexpr DocumentRules kPstRules = {true, "\xFF\xFE", {}};

class ListGuard {
 public:
  ListGuard() = default;
  ListGuard(const ListGuard&) = delete;
  ListGuard& operator=(const ListGuard&) = delete;
  ~ListGuard() { ReleaseMessageList(list); }

  MessageList* list = nullptr;
};

}  // namespace

Status ReadPstDocument(const DocumentRequest& request, PstFilterData& data,
                       DocumentResult& result) {
  const Store store = pststore::open_database(request.path);
  const uint64_t fileSize = KernelFileSeek(request.handle, 0, KERNEL_SEEK_END);
  if (fileSize == KERNEL_BAD_HANDLE) return StatusSeekFailed;
  StoreReading reading(data, request.attachments, fileSize);
  ListGuard messages;
  const Status counted = CountStoreMessages(messages.list, store, fileSize);
  if (!counted.ok()) return counted;
  data.messageCount = messages.list->count;
  result.index = std::clamp(request.index, 0, messages.list->count - 1);

  TarnDocumentKind bodyKind = DocumentNone;
  const Status walked = WalkStoreMessages(*messages.list, store, result.index, bodyKind, reading);
  if (!walked.ok()) return walked;
  if (request.attachments == nullptr) {
    MailMessage& message = *messages.list->records;
    const Status made = request.textOnly
                            ? MakeTextDocument(message, kPstRules, data.document)
                            : MakeBodyDocument(message, bodyKind, kPstRules, data.document);
    if (!made.ok()) return made;
    result.kind = request.textOnly ? DocumentText : bodyKind;
  }
  data.readerFormat = FormatPst;
  return StatusOk;
}

}  // namespace tarn

#include "FileFormats/Pst/PstDocument.h"

#include <algorithm>
#include <string_view>

#include "FileFormats/Pst/DocumentText.h"
#include "FileFormats/Pst/StoreWalk.h"
#include "pststore/DbContext.h"
#include "render/HtmlDocument.h"
#include "render/Renderer.h"

namespace tarn {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

class ListGuard {
 public:
  ListGuard() = default;
  ListGuard(const ListGuard&) = delete;
  ListGuard& operator=(const ListGuard&) = delete;
  ~ListGuard() { ReleaseMessageList(list); }

  MessageList* list = nullptr;
};

int32_t MakeBodyDocument(MailMessage& record, uint32_t kind, TrackedBuffer<char>& document) {
  if (record.body.data() == nullptr) return StatusNotSupported;
  if (RenderMailMessage(&record, kind) != StatusOk) return StatusOutOfMemory;

  const std::string_view body = record.body.text();
  const bool wrapped = kind == DocumentHtml;
  document.setLength(body.size());
  if (document.reserve(body.size() + (wrapped ? kHtmlOpen.size() + kHtmlClose.size() : 0)) ==
      nullptr) {
    return StatusOutOfMemory;
  }
  char* out = document.data();
  if (wrapped) out = PutBytes(out, kHtmlOpen);
  out = PutBytes(out, body);
  if (wrapped) out = PutBytes(out, kHtmlClose);
  document.setLength(static_cast<uint64_t>(out - document.data()));
  return StatusOk;
}

// The text is UTF-16 as the store has it, the rows in front of it are UTF-8, and the mark is not
// part of the length, so that the last two bytes of the text fall outside: hosts have always got
// these documents so.
int32_t MakeTextDocument(MailMessage& record, TrackedBuffer<char>& document) {
  if (record.text.data() == nullptr) return StatusNotSupported;
  if (RenderMailMessage(&record, DocumentText) != StatusOk) return StatusOutOfMemory;

  const std::string_view text = record.text.text();
  document.setLength(text.size());
  if (document.reserve(text.size() + kUtf16Mark.size()) == nullptr) return StatusOutOfMemory;
  PutBytes(PutBytes(document.data(), kUtf16Mark), text);
  return StatusOk;
}

}  // namespace

int32_t ReadPstDocument(const char16_t* path, PstFilterData& data, int32_t& index, uint32_t& kind,
                        bool textOnly, uint64_t handle, const AttachmentRequest* request) {
  const Store store = pststore::open_database(path);
  const uint64_t fileSize = KernelFileSeek(handle, 0, KERNEL_SEEK_END);
  if (fileSize == KERNEL_BAD_HANDLE) return StatusSeekFailed;
  StoreReading reading(data, request, fileSize);
  ListGuard messages;
  const int32_t counted = CountStoreMessages(messages.list, store, reading.fileSize);
  if (counted != StatusOk) return counted;
  data.messageCount = messages.list->count;
  index = std::clamp(index, 0, messages.list->count - 1);

  uint32_t bodyKind = DocumentNone;
  const int32_t walked = WalkStoreMessages(*messages.list, store, index, bodyKind, reading);
  if (walked != StatusOk) return walked;
  if (request == nullptr) {
    MailMessage& record = *messages.list->records;
    const int32_t made = textOnly ? MakeTextDocument(record, data.document)
                                  : MakeBodyDocument(record, bodyKind, data.document);
    if (made != StatusOk) return made;
    kind = textOnly ? uint32_t{DocumentText} : bodyKind;
  }
  data.readerFormat = FormatPst;
  return StatusOk;
}

}  // namespace tarn

#include "FileFormats/Pst/MsgDocument.h"

#include <cstring>
#include <utility>

#include "FileFormats/Pst/DocumentText.h"
#include "msg/MsgReader.h"
#include "render/HtmlDocument.h"
#include "render/Renderer.h"

namespace tarn {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Moves a text's block into the document, whose length stays 0, and makes room for `count` bytes:
// a large text is not there twice. -1 without memory or budget, and then it is gone.
int32_t MoveIntoDocument(SizedBytes& text, uint64_t count, TrackedBuffer<char>& document) {
  document.adopt(text.take(), 0, 0);
  if (document.reserve(count) != nullptr) return StatusOk;
  document.release();
  return StatusOutOfMemory;
}

int32_t MakeBodyDocument(MailMessage& message, uint32_t& kind, TrackedBuffer<char>& document) {
  const bool rtf = message.body.view().starts_with("{\\rtf");
  kind = rtf ? DocumentRtf : DocumentHtml;
  if (RenderMailMessage(&message, kind) != StatusOk) return StatusOutOfMemory;

  const std::string_view body = message.body.text();
  const bool wrapped = !rtf && !OpensWithHtmlElement(body);
  const uint64_t bodySize = body.size();
  const uint64_t size = bodySize + (wrapped ? kHtmlOpen.size() + kHtmlClose.size() : 0);
  const int32_t moved = MoveIntoDocument(message.body, size + 1, document);
  if (moved != StatusOk) return moved;
  document.setLength(size);
  if (wrapped) {
    std::memmove(document.data() + kHtmlOpen.size(), document.data(), bodySize);
    PutBytes(document.data(), kHtmlOpen);
    PutBytes(document.data() + kHtmlOpen.size() + bodySize, kHtmlClose);
  }
  document.data()[size] = '\0';
  return StatusOk;
}

// The length counts from the mark, so that the last two bytes of the text fall outside: hosts have
// always got these documents so.
int32_t MakeTextDocument(MailMessage& message, uint32_t& kind, TrackedBuffer<char>& document) {
  kind = DocumentText;
  if (message.text.data() == nullptr) return StatusNotSupported;
  if (RenderMailMessage(&message, DocumentText) != StatusOk) return StatusOutOfMemory;
  if (message.text.data() == nullptr) return StatusOk;

  const uint64_t size = message.text.text().size();
  const int32_t moved = MoveIntoDocument(message.text, size + 1 + kUtf8Mark.size(), document);
  if (moved != StatusOk) return moved;
  document.setLength(size + 1);
  std::memmove(document.data() + kUtf8Mark.size(), document.data(), size);
  PutBytes(document.data(), kUtf8Mark);
  document.data()[kUtf8Mark.size() + size] = '\0';
  return StatusOk;
}

// Reads the message and makes its document, but for the declaration of a charset.
int32_t MakeDocument(const char16_t* path, PstFilterData& data, uint32_t& kind, bool textOnly,
                     int32_t& inlineStatus) {
  MailMessage message;
  const int32_t read = ReadMsgFile(message, data, path, nullptr);
  if (read != StatusOk) return read;
  inlineStatus = message.inlineStatus;
  // A body without bytes is none.
  const bool hasBody = message.body.data() != nullptr && message.body.length() != 0;
  return !textOnly && hasBody ? MakeBodyDocument(message, kind, data.document)
                              : MakeTextDocument(message, kind, data.document);
}

// For a while the document is there twice; the message is not any more.
int32_t DeclareCharset(TrackedBuffer<char>& document) {
  if (EnsureHtmlCharsetMeta(document) != StatusOk) {
    document.release();
    return StatusOutOfMemory;
  }
  document.data()[document.length()] = '\0';
  return StatusOk;
}

}  // namespace

int32_t ReadMsgDocument(const char16_t* path, PstFilterData& data, uint32_t& kind, bool textOnly,
                        const AttachmentRequest* request) {
  int32_t inlineStatus = StatusOk;
  if (request != nullptr) {
    MailMessage unused;
    const int32_t walked = ReadMsgFile(unused, data, path, request);
    if (walked != StatusOk) return walked;
  } else {
    uint32_t made = DocumentNone;
    int32_t status = MakeDocument(path, data, made, textOnly, inlineStatus);
    if (status == StatusOk && made == DocumentHtml) status = DeclareCharset(data.document);
    if (status != StatusOk) return status;
    kind = made;
  }
  data.readerFormat = FormatMsg;
  data.attachmentStatus = inlineStatus;
  return StatusOk;
}

}  // namespace tarn

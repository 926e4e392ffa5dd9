#include "FileFormats/Pst/MsgDocument.h"

#include "FileFormats/Pst/DocumentText.h"
#include "msg/MsgReader.h"
#include "render/HtmlDocument.h"
#include "render/Renderer.h"

namespace tarn {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

int32_t MakeBodyDocument(MailMessage& message, uint32_t& kind, TrackedBuffer<char>& document) {
  const bool rtf = message.body.bytes().starts_with("{\\rtf");
  kind = rtf ? DocumentRtf : DocumentHtml;
  if (RenderMailMessage(&message, kind) != StatusOk) return StatusOutOfMemory;

  const std::string_view body = message.body.text();
  const bool wrapped = !rtf && !OpensWithHtmlElement(body);
  const uint64_t size = body.size() + (wrapped ? kHtmlOpen.size() + kHtmlClose.size() : 0);
  if (document.reserve(size + 1) == nullptr) return StatusOutOfMemory;
  document.length = size;
  char* out = document.data;
  if (wrapped) out = PutBytes(out, kHtmlOpen);
  out = PutBytes(out, body);
  if (wrapped) PutBytes(out, kHtmlClose);
  if (!rtf) {
    if (EnsureHtmlCharsetMeta(document.data, document.length) != StatusOk) {
      document.release();
      return StatusOutOfMemory;
    }
    // A new document has room for the NUL, and for one more.
    if (document.length != size) document.capacity = document.length + 1;
  }
  document.data[document.length] = '\0';
  return StatusOk;
}

// The length counts from the mark, so that the last two bytes of the text fall outside: hosts have
// always got these documents so.
int32_t MakeTextDocument(MailMessage& message, uint32_t& kind, TrackedBuffer<char>& document) {
  kind = DocumentText;
  if (message.text.data == nullptr) return StatusNotSupported;
  if (RenderMailMessage(&message, DocumentText) != StatusOk) return StatusOutOfMemory;
  if (message.text.data == nullptr) return StatusOk;

  const std::string_view text = message.text.text();
  if (document.reserve(text.size() + 1 + kUtf8Mark.size()) == nullptr) return StatusOutOfMemory;
  document.length = text.size() + 1;
  *PutBytes(PutBytes(document.data, kUtf8Mark), text) = '\0';
  return StatusOk;
}

}  // namespace

int32_t ReadMsgDocument(const char16_t* path, PstFilterData& data, uint32_t& kind, bool textOnly,
                        const AttachmentRequest* request) {
  MailMessage message;
  const int32_t read = ReadMsgFile(message, data, path, request);
  if (read != StatusOk) return read;
  if (request == nullptr) {
    // A body without bytes is none.
    const bool hasBody = message.body.data != nullptr && message.body.length != 0;
    uint32_t made = DocumentNone;
    const int32_t status = !textOnly && hasBody ? MakeBodyDocument(message, made, data.document)
                                                : MakeTextDocument(message, made, data.document);
    if (status != StatusOk) return status;
    kind = made;
  }
  data.readerFormat = FormatMsg;
  data.attachmentStatus = message.inlineStatus;
  return StatusOk;
}

}  // namespace tarn

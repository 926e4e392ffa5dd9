#include "FileFormats/Pst/MessageDriver.h"

#include <utility>

#include "FileFormats/Pst/MsgDocument.h"
#include "FileFormats/Pst/PstDocument.h"
#include "eml/EmlReader.h"
#include "render/Renderer.h"
#include "rtf/ScrubHtmlBody.h"

namespace tarn {
namespace {

// The body's block becomes the document's, without a copy.
void MoveBodyIntoDocument(SizedBytes& body, TrackedBuffer<char>& document) {
  const uint64_t length = body.length();
  document.adopt(body.take(), length, length);
}

Status MakeEmlDocument(EmlMessage& message, PstFilterData& data, DocumentResult& result) {
  const Status rendered = RenderEmlMessage(message);
  if (!rendered.ok()) return rendered;
  const Status scrubbed = ScrubHtmlBody(message.body.data(), message.body.length());
  if (!scrubbed.ok()) return scrubbed;

  MoveBodyIntoDocument(message.body, data.document);
  data.inlineCount = message.inlineCount;
  data.attachmentCount = message.attachmentCount;
  const Status declared = EnsureHtmlCharsetMeta(data.document);
  if (!declared.ok()) {
    data.document.release();
    return declared;
  }
  result.kind = message.documentKind;
  return StatusOk;
}

// Asking for text has no effect on this road: the file's own body decides.
Status ReadEmlDocument(const DocumentRequest& request, PstFilterData& data,
                       DocumentResult& result) {
  EmlMessage message;
  const Status read = ReadEmlMessage(message, request.handle, data, request.attachments);
  if (!read.ok()) return read;
  if (!message.body.hasBlock()) return StatusNotSupported;
  message.releaseFile();
  if (request.attachments == nullptr) {
    const Status made = MakeEmlDocument(message, data, result);
    if (!made.ok()) return made;
  }
  data.readerFormat = FormatEml;
  return StatusOk;
}

}  // namespace

Status ReadMessageDocument(const DocumentRequest& request, PstFilterData& data,
                           DocumentResult& result) {
  result = {DocumentNone, request.index};
  // These two are opened by their path.
  const bool needsPath = request.format == FormatPst || request.format == FormatMsg;
  if (needsPath && request.path == nullptr) return StatusNullArgument;
  switch (request.format) {
    case FormatPst:
      return ReadPstDocument(request, data, result);
    case FormatMsg:
      return ReadMsgDocument(request, data, result);
    case FormatEml:
      return ReadEmlDocument(request, data, result);
    default:
      return StatusNotSupported;
  }
}

}  // namespace tarn

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

int32_t MakeEmlDocument(EmlMessage& message, PstFilterData& data, uint32_t& kind) {
  const int32_t rendered = RenderEmlMessage(message);
  if (rendered != StatusOk) return rendered;
  const int32_t scrubbed = ScrubHtmlBody(message.body.data(), message.body.length());
  if (scrubbed != StatusOk) return scrubbed;

  MoveBodyIntoDocument(message.body, data.document);
  data.inlineCount = message.inlineCount;
  data.attachmentCount = message.attachmentCount;
  const int32_t declared = EnsureHtmlCharsetMeta(data.document);
  if (declared != StatusOk) {
    data.document.release();
    return declared;
  }
  kind = message.documentKind;
  return StatusOk;
}

// Asking for text has no effect on this road: the file's own body decides.
int32_t ReadEmlDocument(PstFilterData& data, uint32_t& kind, uint64_t handle,
                        const AttachmentRequest* request) {
  EmlMessage message;
  const int32_t read = ReadEmlMessage(message, handle, data, request);
  if (read != StatusOk) return read;
  if (message.body.data() == nullptr) return StatusNotSupported;
  message.releaseFile();
  if (request == nullptr) {
    const int32_t made = MakeEmlDocument(message, data, kind);
    if (made != StatusOk) return made;
  }
  data.readerFormat = FormatEml;
  return StatusOk;
}

}  // namespace

int32_t ReadMessageDocument(const char16_t* path, PstFilterData& data, int32_t& format,
                            int32_t& index, uint32_t& kind, bool textOnly, uint64_t handle,
                            const AttachmentRequest* request) {
  // These two are opened by their path.
  const bool needsPath = format == FormatPst || format == FormatMsg;
  if (needsPath && path == nullptr) return StatusNullArgument;
  switch (format) {
    case FormatPst:
      return ReadPstDocument(path, data, index, kind, textOnly, handle, request);
    case FormatMsg:
      return ReadMsgDocument(path, data, kind, textOnly, request);
    case FormatEml:
      return ReadEmlDocument(data, kind, handle, request);
    default:
      return StatusNotSupported;
  }
}

}  // namespace tarn

#include "FileFormats/Pst/MsgDocument.h"

#include "FileFormats/Pst/DocumentText.h"
#include "msg/MsgReader.h"
#include "render/Renderer.h"

namespace tarn {
namespace {

constexpr DocumentRules kMsgRules = {false, "\xEF\xBB\xBF", {"\0", 1}};

// Reads the message and makes its document, but for the declaration of a charset.
Status MakeDocument(const DocumentRequest& request, PstFilterData& data, TarnDocumentKind& kind,
                    Status& inlineStatus) {
  MailMessage message;
  const Status read = ReadMsgFile(message, data, request.path, nullptr);
  if (!read.ok()) return read;
  inlineStatus = message.inlineStatus;
  // A body without bytes is none.
  if (request.textOnly || message.body.length() == 0) {
    kind = DocumentText;
    return MakeTextDocument(message, kMsgRules, data.document);
  }
  kind = message.body.view().starts_with("{\\rtf") ? DocumentRtf : DocumentHtml;
  return MakeBodyDocument(message, kind, kMsgRules, data.document);
}

// For a while the document is there twice; the message is not any more.
Status DeclareCharset(TrackedBuffer<char>& document) {
  if (!EnsureHtmlCharsetMeta(document).ok()) {
    document.release();
    return StatusOutOfMemory;
  }
  document.data()[document.length()] = '\0';
  return StatusOk;
}

}  // namespace

Status ReadMsgDocument(const DocumentRequest& request, PstFilterData& data,
                       DocumentResult& result) {
  Status inlineStatus;
  if (request.attachments != nullptr) {
    MailMessage unused;
    const Status walked = ReadMsgFile(unused, data, request.path, request.attachments);
    if (!walked.ok()) return walked;
  } else {
    TarnDocumentKind kind = DocumentNone;
    Status status = MakeDocument(request, data, kind, inlineStatus);
    if (status.ok() && kind == DocumentHtml) status = DeclareCharset(data.document);
    if (!status.ok()) return status;
    result.kind = kind;
  }
  data.readerFormat = FormatMsg;
  data.attachmentStatus = inlineStatus;
  return StatusOk;
}

}  // namespace tarn

#include "render/Renderer.h"

#include "render/HtmlDocument.h"
#include "render/RtfDocument.h"
#include "render/TextDocument.h"

namespace tarn {

Status RenderMailMessage(MailMessage* message, TarnDocumentKind kind) {
  if (message == nullptr) return StatusFailed;
  switch (kind) {
    case DocumentHtml:
      return RenderMailHtml(*message);
    case DocumentRtf:
      return RenderMailRtf(*message);
    case DocumentText:
      return RenderMailText(*message);
    default:
      return StatusOk;
  }
}

}  // namespace tarn

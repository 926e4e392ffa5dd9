#include "FileFormats/Pst/DocumentText.h"

#include <cstring>

#include "render/HtmlDocument.h"
#include "render/Renderer.h"

namespace tarn {
namespace {

// What goes around a text.
struct Frame {
  std::string_view front;
  std::string_view back;
  std::string_view end;
};

// Puts the text, less one trailing NUL, and its frame into the document, which then counts all of
// it.
Status MoveIntoDocument(SizedBytes& text, const Frame& frame, TrackedBuffer<char>& document) {
  const uint64_t size = text.text().size();
  const uint64_t place = frame.front.size();
  const uint64_t whole = place + size + frame.back.size() + frame.end.size();
  document.adopt(text.take(), 0, 0);
  char* const out = document.reserve(whole);
  if (out == nullptr) {
    document.release();
    return StatusOutOfMemory;
  }
  if (place != 0) std::memmove(out + place, out, size);
  frame.front.copy(out, place);
  frame.back.copy(out + place + size, frame.back.size());
  frame.end.copy(out + place + size + frame.back.size(), frame.end.size());
  document.setLength(whole);
  return StatusOk;
}

}  // namespace

Status MakeBodyDocument(MailMessage& message, TarnDocumentKind kind, const DocumentRules& rules,
                        TrackedBuffer<char>& document) {
  if (!message.body.hasBlock()) return StatusNotSupported;
  if (!RenderMailMessage(&message, kind).ok()) return StatusOutOfMemory;

  Frame frame = {{}, {}, rules.end};
  const bool isWhole = !rules.framesAllHtml && OpensWithHtmlElement(message.body.text());
  if (kind == DocumentHtml && !isWhole) frame = {kHtmlOpen, kHtmlClose, rules.end};
  const Status moved = MoveIntoDocument(message.body, frame, document);
  if (moved.ok()) document.setLength(document.length() - rules.end.size());
  return moved;
}

Status MakeTextDocument(MailMessage& message, const DocumentRules& rules,
                        TrackedBuffer<char>& document) {
  if (!message.text.hasBlock()) return StatusNotSupported;
  if (!RenderMailMessage(&message, DocumentText).ok()) return StatusOutOfMemory;
  if (!message.text.hasBlock()) return StatusOk;

  const Status moved = MoveIntoDocument(message.text, {rules.mark, {}, rules.end}, document);
  if (moved.ok()) document.setLength(document.length() - rules.mark.size());
  return moved;
}

}  // namespace tarn

// RenderSupport.h - fields and texts of messages, made and compared as byte strings.
#ifndef TARN_TESTS_RENDER_RENDERSUPPORT_H
#define TARN_TESTS_RENDER_RENDERSUPPORT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "Internal/MailMessage.h"
#include "support/KernelUsage.h"

namespace tarn::test {

// Exactly these bytes, in a block of their size.
inline void Set(SizedBytes& field, std::string_view bytes) {
  KernelBlock<char> block = AllocateBlock<char>(bytes.size(), TARN_HERE);
  bytes.copy(block.get(), bytes.size());
  field.adopt(std::move(block), bytes.size());
}

// The bytes and a NUL after them.
inline void SetTerminated(SizedBytes& field, std::string_view text) {
  Set(field, std::string(text) + '\0');
}

// A text for every row of the header block.
inline void SetAllFields(MailMessage& message) {
  SetTerminated(message.from, "Ann");
  SetTerminated(message.sent, "Thu Jan 01, 1970 12:00 AM");
  SetTerminated(message.to, "Bob");
  SetTerminated(message.cc, "Cy");
  SetTerminated(message.bcc, "Di");
  SetTerminated(message.subject, "Hello");
  SetTerminated(message.importance, "High");
}

inline std::string Bytes(const SizedBytes& text) { return std::string(text.view()); }

// The text with the NUL that a finished document counts.
inline std::string Terminated(std::string_view text) { return std::string(text) + '\0'; }

}  // namespace tarn::test

#endif

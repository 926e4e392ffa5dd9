// RenderSupport.h - fields and texts of messages, made and compared as byte strings.
#ifndef TARN_TESTS_RENDER_RENDERSUPPORT_H
#define TARN_TESTS_RENDER_RENDERSUPPORT_H

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "Internal/MailMessage.h"
#include "Internal/Tarnclasses_.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {

// Exactly these bytes, in a block of their size.
inline void Set(SizedBytes& field, std::string_view bytes) {
  field.release();
  field.setData(static_cast<char*>(KernelAlloc(bytes.size(), 1, TARN_HERE)));
  if (!bytes.empty()) std::memcpy(field.data(), bytes.data(), bytes.size());
  field.setLength(bytes.size());
}

// The bytes and a NUL behind them.
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

// A length without a pointer, until the end of the scope.
class BrokenField {
 public:
  BrokenField(SizedBytes& field, uint64_t length) : field_(field) {
    field_.release();
    field_.setLength(length);
  }
  BrokenField(const BrokenField&) = delete;
  BrokenField& operator=(const BrokenField&) = delete;
  ~BrokenField() { field_.setLength(0); }

 private:
  SizedBytes& field_;
};

inline std::string Bytes(const SizedBytes& text) { return std::string(text.view()); }

// The text with the NUL that a finished document counts.
inline std::string Terminated(std::string_view text) { return std::string(text) + '\0'; }

inline uint64_t AllocationCalls() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage.allocationCalls;
}

}  // namespace tarn::test

#endif

// Status.h - what an operation came to.
//
// A status is one of the TarnStatus values of TarnPst.h, or a code that the kernel or the host gave
// for its own reasons, such as a refused budget. It cannot be dropped unseen, and is a number again
// only where an export or a callback of the host returns it.
//
//   if (const Status read = ReadHeader(file, header); !read.ok()) return read;
#ifndef TARN_INTERNAL_STATUS_H
#define TARN_INTERNAL_STATUS_H

#include <cstdint>

#include "TarnPst.h"

namespace tarn {

class [[nodiscard]] Status {
 public:
  // StatusOk.
  constexpr Status() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): every named status is one.
  constexpr Status(TarnStatus status) : code_(status) {}
  // A code of the kernel or the host.
  static constexpr Status FromCode(int32_t code) { return {code, Raw{}}; }

  constexpr int32_t code() const { return code_; }
  constexpr bool ok() const { return code_ == StatusOk; }
  // StatusFailed or below: neither StatusOk nor StatusDone.
  constexpr bool failed() const { return code_ < StatusOk; }

  // For a result that nothing depends on.
  constexpr void ignore() const {}

  friend constexpr bool operator==(Status, Status) = default;

  // For logs and failed expectations: "-1 (out of memory, ...)".
  template <typename Stream>
  friend Stream& operator<<(Stream& out, Status status) {
    out << status.code() << " (" << TarnStatusText(status.code()) << ')';
    return out;
  }

 private:
  struct Raw {};
  constexpr Status(int32_t code, Raw /*tag*/) : code_(code) {}

  int32_t code_ = StatusOk;
};

}  // namespace tarn

#endif

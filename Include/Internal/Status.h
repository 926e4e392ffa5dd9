// Status.h - what an operation came to.
//
// A status is one of the TarnStatus values of TarnPst.h, or a code that the kernel or the host gave
// for its own reasons, such as a refused budget. It cannot be dropped unseen, and is a number again
// only where an export or a callback of the host returns it.
//
//   if (const Status read = ReadHeader(file, header); !read.ok()) return read;
#ifndef TARN_INTERNAL_STATUS_H
#define TARN_INTERNAL_STATUS_H

#include <compare>
#include <concepts>
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

  // For code that still counts in numbers.
  template <std::same_as<int32_t> Number>
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr Status(Number code) : code_(code) {}
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr operator int32_t() const { return code_; }
  friend constexpr bool operator==(Status a, TarnStatus b) { return a.code_ == b; }
  friend constexpr auto operator<=>(Status a, TarnStatus b) { return a.code_ <=> int32_t{b}; }
  friend constexpr bool operator==(Status a, int32_t b) { return a.code_ == b; }
  friend constexpr auto operator<=>(Status a, int32_t b) { return a.code_ <=> b; }

 private:
  struct Raw {};
  constexpr Status(int32_t code, Raw /*tag*/) : code_(code) {}

  int32_t code_ = StatusOk;
};

}  // namespace tarn

#endif

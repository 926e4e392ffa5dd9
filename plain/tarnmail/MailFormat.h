// MailFormat.h - what the first bytes of a file say about its format, as the filter takes them.
#ifndef TARN_TARNMAIL_MAILFORMAT_H
#define TARN_TARNMAIL_MAILFORMAT_H

#include <cstdint>
#include <string_view>

namespace tarn::host {

// No format is told from fewer bytes than these.
inline constexpr uint64_t kBytesOfFormat = 12;

enum class MailFormat { TooShort, Store, Msg, Mail };

inline MailFormat FormatOf(std::string_view front) {
  using namespace std::literals;
  if (front.size() < kBytesOfFormat) return MailFormat::TooShort;
  if (front.starts_with("!BDN"sv)) return MailFormat::Store;
  return front.starts_with("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv) ? MailFormat::Msg
                                                                 : MailFormat::Mail;
}

}  // namespace tarn::host

#endif

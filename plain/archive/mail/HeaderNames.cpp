#include "archive/mail/HeaderNames.h"

#include <algorithm>
#include <array>

#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

// In lower case.
constexpr std::array<std::string_view, 27> kUsualNames = {
    "authentication-results",
    "bcc",
    "cc",
    "content-disposition",
    "content-transfer-encoding",
    "content-type",
    "date",
    "delivered-to",
    "dkim-signature",
    "envelope-to",
    "errors-to",
    "from",
    "in-reply-to",
    "list-id",
    "list-unsubscribe",
    "message-id",
    "mime-version",
    "received",
    "references",
    "reply-to",
    "resent-from",
    "return-path",
    "sender",
    "subject",
    "thread-topic",
    "to",
    "x-mailer",
};

}  // namespace

std::string_view NameOfHeader(std::string_view line) {
  constexpr size_t kLongestName = 256;
  const size_t colon = line.substr(0, kLongestName).find(':');
  if (colon == std::string_view::npos) return {};
  const std::string_view name = TrimmedRight(line.substr(0, colon));
  const bool isName =
      std::all_of(name.begin(), name.end(), [](char c) { return c >= '!' && c <= '~'; });
  return isName ? name : std::string_view();
}

bool IsUsualHeader(std::string_view name) {
  return std::any_of(kUsualNames.begin(), kUsualNames.end(),
                     [&](std::string_view usual) { return EqualsNoCase(usual, name); });
}

}  // namespace tarn::archive::mail

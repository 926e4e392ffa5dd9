#include "EmlReason.h"

#include <algorithm>
#include <vector>

#include "Common/ByteSearch.h"
#include "MimeTrouble.h"
#include "TarnPst.h"
#include "eml/HeaderSearch.h"

namespace tarn::host {
namespace {

// The header block as the search for the fields of a mail has it: up to the first empty line.
std::string_view TopHeader(std::string_view mail) {
  size_t length = mail.find("\r\n\r\n");
  if (length == std::string_view::npos) length = mail.find("\n\n");
  return mail.substr(0, length);
}

bool HasLine(std::string_view header, std::string_view name) {
  return FindHeaderLine(header, name) != std::string_view::npos;
}

// "a", "a and b", "a, b and c".
std::string Joined(const std::vector<std::string>& texts) {
  std::string joined = texts.front();
  for (size_t i = 1; i < texts.size(); ++i) {
    joined += (i + 1 == texts.size() ? " and " : ", ") + texts[i];
  }
  return joined;
}

// Whether other lines than those that are missing say that this is a mail.
bool LooksLikeMail(std::string_view header) {
  for (const char* name : {"Subject:", "Received:", "Message-ID:", "MIME-Version:", "Content-Type:",
                           "Return-Path:", "Sender:", "Reply-To:"}) {
    if (HasLine(header, name)) return true;
  }
  return false;
}

// What a mail must have and this does not; nothing when all is there. An empty field is one.
std::optional<std::string> MissingFields(std::string_view mail) {
  const std::string_view header = TopHeader(mail);
  const bool hasRecipient =
      HasLine(header, "To:") || HasLine(header, "CC:") || HasLine(header, "BCC:");
  std::vector<std::string> missing;
  if (!HasLine(header, "From:")) missing.emplace_back("no From line");
  if (!HasLine(header, "Date:")) missing.emplace_back("no Date line");
  if (!hasRecipient) missing.emplace_back("no recipient (To, Cc or Bcc)");
  if (missing.empty()) return std::nullopt;
  if (missing.size() == 3 && !LooksLikeMail(header)) {
    return "not a mail file: no From, Date, To, Cc or Bcc line in its header";
  }
  return "the mail has " + Joined(missing);
}

bool IsMultipart(std::string_view mail) {
  return FindIgnoringCase(mail.substr(0, FindHeaderEnd(mail)), "boundary=") !=
         std::string_view::npos;
}

std::string_view WithoutBlanks(std::string_view text) {
  const size_t first = std::min(text.find_first_not_of(" \t"), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

// Why the type of a mail that is no multipart is not taken; nothing when it is. The filter reads
// the first Content-Type line of the whole file, one byte after its colon.
std::optional<std::string> TypeTrouble(std::string_view mail) {
  constexpr std::string_view kName = "Content-Type:";
  constexpr size_t kMostShown = 60;
  const size_t line = FindHeaderLine(mail, kName);
  if (line == std::string_view::npos) return std::nullopt;
  const size_t value = line + kName.size();
  const std::string_view all = mail.substr(value, FindLineEnd(mail, value) - value);
  const auto isShown = [](std::string_view type) {
    return StartsWithIgnoringCase(type, "text/plain") || StartsWithIgnoringCase(type, "text/html");
  };
  if (isShown(all.substr(std::min<size_t>(all.size(), 1)))) return std::nullopt;
  const std::string_view type = WithoutBlanks(all.substr(0, all.find(';')));
  if (isShown(type))
    return "the value of its Content-Type line does not come one blank after the colon";
  if (StartsWithIgnoringCase(type, "multipart/")) {
    return "the mail is a multipart that names no boundary in its header";
  }
  if (type.empty()) return "its Content-Type line is empty";
  return "a body of the type " + std::string(type.substr(0, kMostShown)) +
         " cannot be shown, only text/plain and text/html";
}

std::string NotSupported(std::string_view mail) {
  std::optional<std::string> reason = MissingFields(mail);
  if (reason) return *reason;
  if (!IsMultipart(mail)) reason = TypeTrouble(mail);
  return reason.value_or("the mail has no part that can be shown as its body");
}

}  // namespace

std::optional<std::string> EmlReason(std::string_view mail, int32_t status) {
  switch (status) {
    case StatusNotSupported:
      return NotSupported(mail);
    case StatusDone:
      return "a multipart of the mail is not closed, and its last image has no place in the body";
    case StatusOutOfMemory:
      return DescribeMimeTrouble(FindMimeTrouble(mail));
    default:
      return std::nullopt;
  }
}

}  // namespace tarn::host

#include "MimeTrouble.h"

#include <algorithm>
#include <vector>

#include "Common/ByteSearch.h"
#include "Common/SearchBudget.h"
#include "TarnPst.h"
#include "eml/HeaderMemo.h"
#include "eml/HeaderSearch.h"
#include "eml/MimeBoundary.h"
#include "eml/PartWalker.h"
#include "eml/TransferDecoding.h"

namespace tarn::host {
namespace {

constexpr size_t npos = std::string_view::npos;

// A multipart that is open. An empty delimiter is that of a mail which is none.
struct Multipart {
  size_t end;
  size_t next;
  std::string delimiter;
};

class Walk {
 public:
  explicit Walk(std::string_view mail)
      : mail_(mail), headers_(mail), budget_(SearchBudget::ForDelimiters(mail.size())) {}

  MimeTrouble run();

 private:
  bool open(size_t end, size_t headerEnd);
  bool passDelimiter(Multipart& multipart);
  size_t findDelimiter(const Multipart& multipart);
  bool isEmbeddedMessage(size_t end);
  static bool isEmptyBase64(std::string_view part);
  void close();
  MimeTrouble takePart();

  // From the cursor up to `end`.
  std::string_view upTo(size_t end) const { return mail_.substr(cursor_, end - cursor_); }

  std::string_view mail_;
  size_t cursor_ = 0;
  HeaderMemo headers_;
  SearchBudget budget_;
  std::vector<Multipart> open_;
};

// Opens the multipart that begins at the cursor; false when there is none.
bool Walk::open(size_t end, size_t headerEnd) {
  TrackedBuffer<char> delimiter;
  size_t inner = 0;
  const HeaderStretch header = {mail_.substr(cursor_), headerEnd - cursor_};
  if (!FindBoundaryInHeader(header, delimiter, inner).ok()) return false;
  cursor_ += inner;
  open_.push_back({end, end, std::string(delimiter.view())});
  return true;
}

void Walk::close() {
  open_.pop_back();
  if (!open_.empty()) cursor_ = open_.back().next;
}

size_t Walk::findDelimiter(const Multipart& multipart) {
  const size_t hit = FindIgnoringCase(mail_.substr(0, multipart.end), multipart.delimiter, cursor_);
  budget_.spend((hit != npos ? hit : multipart.end) - cursor_);
  return hit;
}

bool Walk::passDelimiter(Multipart& multipart) {
  size_t hit = findDelimiter(multipart);
  if (hit == npos && multipart.delimiter.starts_with("\r\n")) {
    multipart.delimiter.erase(0, 1);
    hit = findDelimiter(multipart);
  }
  if (hit == npos) return false;
  cursor_ = hit + multipart.delimiter.size();
  return !upTo(multipart.end).starts_with("--");
}

bool Walk::isEmbeddedMessage(size_t end) {
  const size_t line = headers_.contentTypeLine(cursor_, end);
  if (line == npos) return false;
  const std::string_view text = mail_.substr(0, end);
  const size_t value = FixedValue(text, line, "Content-Type:");
  return StartsWithIgnoringCase(text.substr(value), "message/rfc822");
}

bool Walk::isEmptyBase64(std::string_view part) {
  part.remove_prefix(std::min<size_t>(part.size(), part.starts_with('\r') ? 2 : 1));
  if (FindHeaderEnd(part) != part.size()) return false;
  const size_t value = FindFixedValue(part, "Content-Transfer-Encoding:");
  return value != npos && ClassifyTransferEncoding(part.substr(value)) == TransferBase64 &&
         FindHeaderLine(part, "Content-Disposition:") == npos;
}

MimeTrouble Walk::takePart() {
  Multipart& multipart = open_.back();
  if (cursor_ >= multipart.end) {
    close();
    return MimeTrouble::None;
  }
  multipart.next = multipart.end;
  if (!multipart.delimiter.empty()) {
    if (!passDelimiter(multipart)) {
      close();
      return MimeTrouble::None;
    }
    const size_t next = findDelimiter(multipart);
    if (next != npos) multipart.next = next;
  }
  const size_t next = multipart.next;
  if (cursor_ < next && !isEmbeddedMessage(next) && open(next, headers_.headerEnd(cursor_, next))) {
    return open_.size() > kMaxMultipartDepth ? MimeTrouble::TooDeep : MimeTrouble::None;
  }
  const bool isEmpty = cursor_ < next && isEmptyBase64(upTo(next));
  cursor_ = next;
  return isEmpty ? MimeTrouble::EmptyBase64 : MimeTrouble::None;
}

MimeTrouble Walk::run() {
  if (!open(mail_.size(), FindHeaderEnd(mail_))) open_.push_back({mail_.size(), mail_.size(), ""});
  MimeTrouble trouble = MimeTrouble::None;
  while (trouble == MimeTrouble::None && !open_.empty() && !budget_.isSpent()) trouble = takePart();
  return trouble;
}

}  // namespace

MimeTrouble FindMimeTrouble(std::string_view mail) { return Walk(mail).run(); }

std::optional<std::string> DescribeMimeTrouble(MimeTrouble trouble) {
  switch (trouble) {
    case MimeTrouble::TooDeep:
      return "its multiparts nest more than " + std::to_string(kMaxMultipartDepth) + " deep";
    case MimeTrouble::EmptyBase64:
      return "a part of the mail is said to be base64 and is empty";
    default:
      return std::nullopt;
  }
}

}  // namespace tarn::host

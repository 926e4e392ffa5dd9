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

// A multipart that is open. An empty delimiter is that of a mail which is none.
struct Multipart {
  const char* end;
  const char* next;
  std::string delimiter;
};

class Walk {
 public:
  explicit Walk(std::string_view mail)
      : fileEnd_(mail.data() + mail.size()),
        cursor_(mail.data()),
        headers_(fileEnd_),
        budget_(SearchBudget::ForDelimiters(mail.size())) {}

  MimeTrouble run();

 private:
  bool open(const char* end, const char* headerEnd);
  bool passDelimiter(Multipart& multipart);
  const char* findDelimiter(const Multipart& multipart);
  bool isEmbeddedMessage(const char* end);
  static bool isEmptyBase64(const char* start, const char* end);
  void close();
  MimeTrouble takePart();

  const char* const fileEnd_;
  const char* cursor_;
  HeaderMemo headers_;
  SearchBudget budget_;
  std::vector<Multipart> open_;
};

// Opens the multipart that begins at the cursor; false when there is none.
bool Walk::open(const char* end, const char* headerEnd) {
  TrackedBuffer<char> delimiter;
  const char* inner = nullptr;
  if (FindBoundaryInHeader(cursor_, headerEnd, fileEnd_, delimiter, &inner) != StatusOk) {
    return false;
  }
  cursor_ = inner;
  open_.push_back({end, end, std::string(delimiter.data(), delimiter.length())});
  return true;
}

void Walk::close() {
  open_.pop_back();
  if (!open_.empty()) cursor_ = open_.back().next;
}

const char* Walk::findDelimiter(const Multipart& multipart) {
  const char* const hit = FindIgnoringCase(cursor_, multipart.end, multipart.delimiter);
  budget_.spend(static_cast<uint64_t>((hit != nullptr ? hit : multipart.end) - cursor_));
  return hit;
}

bool Walk::passDelimiter(Multipart& multipart) {
  const char* hit = findDelimiter(multipart);
  if (hit == nullptr && multipart.delimiter.starts_with("\r\n")) {
    multipart.delimiter.erase(0, 1);
    hit = findDelimiter(multipart);
  }
  if (hit == nullptr) return false;
  cursor_ = hit + multipart.delimiter.size();
  return !StartsWith(cursor_, multipart.end, "--");
}

bool Walk::isEmbeddedMessage(const char* end) {
  constexpr ptrdiff_t kToValue = 14;
  const char* const line = headers_.contentTypeLine(cursor_, end);
  return line != nullptr &&
         StartsWithIgnoringCase(line + std::min(end - line, kToValue), end, "message/rfc822");
}

bool Walk::isEmptyBase64(const char* start, const char* end) {
  constexpr ptrdiff_t kToValue = 27;
  const char* const header = start + std::min<ptrdiff_t>(end - start, *start == '\r' ? 2 : 1);
  const char* const headerEnd = FindHeaderEnd(header, end);
  const char* const line = FindHeaderLine(header, headerEnd, "Content-Transfer-Encoding:");
  if (line == nullptr || headerEnd != end) return false;
  const char* const value = line + std::min(headerEnd - line, kToValue);
  return ClassifyTransferEncoding(value, headerEnd) == TransferBase64 &&
         FindHeaderLine(header, headerEnd, "Content-Disposition:") == nullptr;
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
    const char* const next = findDelimiter(multipart);
    if (next != nullptr) multipart.next = next;
  }
  const char* const next = multipart.next;
  if (cursor_ < next && !isEmbeddedMessage(next) && open(next, headers_.headerEnd(cursor_, next))) {
    return open_.size() > kMaxMultipartDepth ? MimeTrouble::TooDeep : MimeTrouble::None;
  }
  const bool isEmpty = cursor_ < next && isEmptyBase64(cursor_, next);
  cursor_ = next;
  return isEmpty ? MimeTrouble::EmptyBase64 : MimeTrouble::None;
}

MimeTrouble Walk::run() {
  if (!open(fileEnd_, FindHeaderEnd(cursor_, fileEnd_))) open_.push_back({fileEnd_, fileEnd_, ""});
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

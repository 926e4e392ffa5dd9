#include "eml/PartWalker.h"

#include <algorithm>
#include <string_view>

#include "Common/ByteSearch.h"
#include "Common/SearchBudget.h"
#include "eml/BodyChoice.h"
#include "eml/HeaderMemo.h"
#include "eml/MimeBoundary.h"
#include "eml/MimePart.h"

namespace tarn {
namespace {

uint64_t FileSize(const EmlMessage& message) {
  return static_cast<uint64_t>(message.end - message.data);
}

class PartWalker {
 public:
  PartWalker(EmlMessage& message, InlineImageContext& context, SearchBudget& imageBudget,
             const AttachmentRequest* request)
      : message_(message),
        context_(context),
        request_(request),
        headers_(message.end),
        delimiterBudget_(SearchBudget::ForDelimiters(FileSize(message))),
        imageBudget_(imageBudget) {}

  int32_t walk(const char* cursor, const char* end, std::string_view delimiter);

 private:
  // A multipart that is being walked, or the whole file when it is none. The delimiters of all
  // open ones stand behind one another in delimiters_.
  struct Multipart {
    const char* end;
    const char* next;  // where the part in hand ends
    uint64_t delimiterAt;
    uint32_t withoutCr;  // 1: the CR that the delimiter begins with is not part of it any more
    int32_t result;
  };

  Multipart& innermost() { return open_.data()[open_.length() - 1]; }
  int32_t open(const char* end, std::string_view delimiter);
  int32_t close(int32_t result);
  int32_t takePart();
  int32_t openOrReadLeaf(const Multipart& multipart);
  int32_t readLeaf(const Multipart& multipart);
  bool isEmbeddedMessage(const char* end);
  void releasePart();

  std::string_view delimiterOf(const Multipart& multipart) const;
  const char* findDelimiter(std::string_view delimiter, const char* end);
  bool passDelimiter(Multipart& multipart);

  EmlMessage& message_;
  InlineImageContext& context_;
  const AttachmentRequest* request_;
  HeaderMemo headers_;
  SearchBudget delimiterBudget_;
  SearchBudget& imageBudget_;
  const char* cursor_ = nullptr;
  EmlPart part_;  // the leaf in hand
  TrackedBuffer<Multipart> open_{0, 16};
  TrackedBuffer<char> delimiters_{0, 256};
  TrackedBuffer<char> subDelimiter_{0, 256};
};

int32_t PartWalker::walk(const char* cursor, const char* end, std::string_view delimiter) {
  cursor_ = cursor;
  int32_t status = open(end, delimiter);
  while (status == StatusOk && open_.length() != 0) status = takePart();
  return status;
}

int32_t PartWalker::open(const char* end, std::string_view delimiter) {
  if (open_.length() == kMaxMultipartDepth) return StatusOutOfMemory;
  const Multipart multipart = {end, end, delimiters_.length(), 0, StatusOk};
  if (delimiters_.append(delimiter.data(), delimiter.size()) != StatusOk) return StatusOutOfMemory;
  return open_.append(&multipart, 1) == StatusOk ? StatusOk : StatusOutOfMemory;
}

// Ends the innermost walk. The one around it goes on behind it, or ends, too, if the result is not
// 1: the status of the whole walk.
int32_t PartWalker::close(int32_t result) {
  delimiters_.setLength(innermost().delimiterAt);
  open_.setLength(open_.length() - 1);
  if (open_.length() != 0) cursor_ = innermost().next;
  return result;
}

void PartWalker::releasePart() {
  part_.decoded.reset();
  part_.decodedLength = 0;
  part_.raw = {};
  part_.name.reset();
}

std::string_view PartWalker::delimiterOf(const Multipart& multipart) const {
  const uint64_t at = multipart.delimiterAt + multipart.withoutCr;
  return {delimiters_.data() + at, delimiters_.length() - at};
}

// From the cursor on, or null.
const char* PartWalker::findDelimiter(std::string_view delimiter, const char* end) {
  const char* const hit = FindIgnoringCase(cursor_, end, delimiter);
  delimiterBudget_.spend(static_cast<uint64_t>((hit != nullptr ? hit : end) - cursor_));
  return hit;
}

// Moves the cursor behind the next delimiter; false when the multipart ends, by a closing one or
// for want of any.
bool PartWalker::passDelimiter(Multipart& multipart) {
  std::string_view delimiter = delimiterOf(multipart);
  const char* hit = findDelimiter(delimiter, multipart.end);
  if (hit == nullptr && delimiter.starts_with("\r\n")) {
    delimiter.remove_prefix(1);
    hit = findDelimiter(delimiter, multipart.end);
    if (hit != nullptr) multipart.withoutCr = 1;
  }
  if (hit == nullptr) return false;
  cursor_ = hit + delimiter.size();
  return !StartsWith(cursor_, multipart.end, "--");
}

int32_t PartWalker::takePart() {
  releasePart();
  Multipart& multipart = innermost();
  if (cursor_ == nullptr || cursor_ >= multipart.end) return close(multipart.result);

  multipart.next = multipart.end;
  if (!delimiterOf(multipart).empty()) {
    if (!passDelimiter(multipart)) return close(StatusOk);
    const char* const next = findDelimiter(delimiterOf(multipart), multipart.end);
    if (next != nullptr) multipart.next = next;
  }
  if (delimiterBudget_.isSpent()) return StatusOutOfMemory;
  return isEmbeddedMessage(multipart.next) ? readLeaf(multipart) : openOrReadLeaf(multipart);
}

bool PartWalker::isEmbeddedMessage(const char* end) {
  const char* const line = headers_.contentTypeLine(cursor_, end);
  if (line == nullptr) return false;
  // Behind the name and the one byte that follows it.
  const char* const value = line + std::min<ptrdiff_t>(end - line, 14);
  return StartsWithIgnoringCase(value, end, "message/rfc822");
}

int32_t PartWalker::openOrReadLeaf(const Multipart& multipart) {
  const char* inner = nullptr;
  const char* const headerEnd = headers_.headerEnd(cursor_, multipart.next);
  const int32_t found =
      FindBoundaryInHeader(cursor_, headerEnd, message_.end, subDelimiter_, &inner);
  if (found == StatusDone) return readLeaf(multipart);
  if (found != StatusOk) return found;
  cursor_ = inner;
  return open(multipart.next, {subDelimiter_.data(), subDelimiter_.length()});
}

int32_t PartWalker::readLeaf(const Multipart& multipart) {
  part_.start = cursor_;
  const int32_t status = ParseMimePart(part_, message_, &cursor_, multipart.next, request_);
  if (status != StatusOk) return status;
  return UsePart(part_, message_, context_, imageBudget_, innermost().result);
}

}  // namespace

int32_t WalkMimeParts(EmlMessage& message, const char* cursor, const char* end,
                      const TrackedBuffer<char>& delimiter, InlineImageContext& context,
                      SearchBudget& imageBudget, const AttachmentRequest* request) {
  PartWalker walker(message, context, imageBudget, request);
  return walker.walk(cursor, end, {delimiter.data(), delimiter.length()});
}

}  // namespace tarn

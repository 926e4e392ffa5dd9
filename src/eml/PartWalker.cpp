#include "eml/PartWalker.h"

#include "Common/ByteSearch.h"
#include "eml/HeaderMemo.h"
#include "eml/MimeBoundary.h"
#include "eml/MimePart.h"

namespace tarn {
namespace {

class PartWalker {
 public:
  PartWalker(EmlMessage& message, const ImagePlacing& images, const AttachmentRequest* request)
      : message_(message),
        file_(message.file()),
        images_(images),
        request_(request),
        headers_(file_),
        delimiterBudget_(SearchBudget::ForDelimiters(file_.size())) {}

  Status walk(size_t cursor, std::string_view delimiter);

 private:
  // A multipart that is being walked, or the whole file when it is none. The delimiters of all
  // open ones follow one another in delimiters_.
  struct Multipart {
    size_t end;
    size_t next;  // where the part in hand ends
    uint64_t delimiterAt;
    bool withoutCr;  // the CR that the delimiter begins with is not part of it any more
    bool lastImageIsLost;
  };

  Multipart& innermost() { return open_[open_.length() - 1]; }
  Status open(size_t end, std::string_view delimiter);
  Status close(Status result);
  Status takePart();
  Status openOrReadLeaf(size_t end);
  Status readLeaf(size_t end);
  bool isEmbeddedMessage(size_t end);
  void releasePart();

  std::string_view delimiterOf(const Multipart& multipart) const {
    return delimiters_.view().substr(multipart.delimiterAt + (multipart.withoutCr ? 1 : 0));
  }
  size_t findDelimiter(std::string_view delimiter, size_t end);
  bool passDelimiter(Multipart& multipart);

  EmlMessage& message_;
  std::string_view file_;
  const ImagePlacing& images_;
  const AttachmentRequest* request_;
  HeaderMemo headers_;
  SearchBudget delimiterBudget_;
  size_t cursor_ = 0;
  EmlPart part_;  // the leaf in hand
  TrackedBuffer<Multipart> open_{0, 16};
  TrackedBuffer<char> delimiters_{0, 256};
  TrackedBuffer<char> subDelimiter_{0, 256};
};

Status PartWalker::walk(size_t cursor, std::string_view delimiter) {
  cursor_ = cursor;
  Status status = open(file_.size(), delimiter);
  while (status.ok() && open_.length() != 0) status = takePart();
  return status;
}

Status PartWalker::open(size_t end, std::string_view delimiter) {
  if (open_.length() == kMaxMultipartDepth) return StatusOutOfMemory;
  const Multipart multipart = {end, end, delimiters_.length(), false, false};
  const bool kept = delimiters_.append(delimiter).ok() && open_.append(&multipart, 1).ok();
  return kept ? StatusOk : StatusOutOfMemory;
}

// Ends the innermost walk. The one around it goes on after it, or ends, too, if the result is not
// StatusOk: the status of the whole walk.
Status PartWalker::close(Status result) {
  delimiters_.setLength(innermost().delimiterAt);
  open_.setLength(open_.length() - 1);
  if (open_.length() != 0) cursor_ = innermost().next;
  return result;
}

void PartWalker::releasePart() {
  part_.decoded.release();
  part_.raw = {};
  part_.name.release();
}

// From the cursor on, as a position in the file, or npos.
size_t PartWalker::findDelimiter(std::string_view delimiter, size_t end) {
  const size_t hit = FindIgnoringCase(file_.substr(0, end), delimiter, cursor_);
  delimiterBudget_.spend((hit != npos ? hit : end) - cursor_);
  return hit;
}

// Moves the cursor after the next delimiter; false when the multipart ends, by a closing one or
// for want of any.
bool PartWalker::passDelimiter(Multipart& multipart) {
  std::string_view delimiter = delimiterOf(multipart);
  size_t hit = findDelimiter(delimiter, multipart.end);
  if (hit == npos && delimiter.starts_with("\r\n")) {
    delimiter.remove_prefix(1);
    hit = findDelimiter(delimiter, multipart.end);
    if (hit != npos) multipart.withoutCr = true;
  }
  if (hit == npos) return false;
  cursor_ = hit + delimiter.size();
  return !file_.substr(cursor_, multipart.end - cursor_).starts_with("--");
}

Status PartWalker::takePart() {
  releasePart();
  Multipart& multipart = innermost();
  if (cursor_ >= multipart.end) return close(multipart.lastImageIsLost ? StatusDone : StatusOk);

  multipart.next = multipart.end;
  if (!delimiterOf(multipart).empty()) {
    if (!passDelimiter(multipart)) return close(StatusOk);
    const size_t next = findDelimiter(delimiterOf(multipart), multipart.end);
    if (next != npos) multipart.next = next;
  }
  if (delimiterBudget_.isSpent()) return StatusOutOfMemory;
  const size_t end = multipart.next;
  return isEmbeddedMessage(end) ? readLeaf(end) : openOrReadLeaf(end);
}

bool PartWalker::isEmbeddedMessage(size_t end) {
  const size_t line = headers_.contentTypeLine(cursor_, end);
  if (line == npos) return false;
  const std::string_view text = file_.substr(0, end);
  const size_t value = FixedValue(text, line, "Content-Type:");
  return StartsWithIgnoringCase(text.substr(value), "message/rfc822");
}

Status PartWalker::openOrReadLeaf(size_t end) {
  const HeaderStretch header = {file_.substr(cursor_), headers_.headerEnd(cursor_, end) - cursor_};
  size_t inner = 0;
  const Status found = FindBoundaryInHeader(header, subDelimiter_, inner);
  if (found == StatusDone) return readLeaf(end);
  if (!found.ok()) return found;
  cursor_ += inner;
  return open(end, subDelimiter_.view());
}

Status PartWalker::readLeaf(size_t end) {
  part_.start = cursor_;
  const Status read = ParseMimePart(part_, message_, cursor_, end, request_);
  return read.ok() ? UsePart(part_, message_, images_, innermost().lastImageIsLost) : read;
}

}  // namespace

Status WalkMimeParts(EmlMessage& message, size_t cursor, std::string_view delimiter,
                     const ImagePlacing& images, const AttachmentRequest* request) {
  return PartWalker(message, images, request).walk(cursor, delimiter);
}

}  // namespace tarn

#include "archive/writers/MboxSink.h"

#include <algorithm>
#include <utility>

namespace tarn::archive {
namespace {

constexpr std::string_view kFrom = "From ";
constexpr size_t kLongestDropped = 1000;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string_view WithoutQuotes(std::string_view line) {
  return line.substr(std::min(line.find_first_not_of('>'), line.size()));
}

// What comes after "From" and blanks.
std::string_view AfterName(std::string_view line) {
  return line.substr(std::min(line.find_first_not_of(" \t", kFrom.size()), line.size()));
}

// Gives the rest of the line.
std::string_view PutFieldName(std::string_view line, SinkBuffer& out) {
  out.put(kFrom.substr(0, kFrom.size() - 1));
  return AfterName(line);
}

}  // namespace

std::optional<Trouble> MboxSink::write(std::string_view bytes) {
  if (out_.isFull()) return out_.finish();
  std::string joined;
  if (!held_.empty()) {
    joined = std::exchange(held_, {}) + std::string(bytes);
    bytes = joined;
  }
  if (!hasSeenBytes_ && !bytes.empty()) {
    if (bytes.size() < kUtf8Mark.size() && kUtf8Mark.starts_with(bytes)) {
      held_ = bytes;
      return std::nullopt;
    }
    hasSeenBytes_ = true;
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  }
  while (!bytes.empty()) {
    const size_t end = bytes.find('\n');
    if (end == bytes.npos) {
      takePartOfLine(bytes);
      break;
    }
    std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    takeLine(line);
  }
  return std::nullopt;
}

void MboxSink::takeLine(std::string_view line) {
  const bool isFromField = isField(line);
  if (!hasBegun_ && !isFromField && (line.empty() || line.starts_with(kFrom))) return;
  hasBegun_ = true;
  if (line.empty() && atLineStart_ && !hasOpenQuotes_) isInHeaders_ = false;
  if (isFromField) {
    line = PutFieldName(line, out_);
  } else if (atLineStart_ && WithoutQuotes(line).starts_with(kFrom)) {
    out_.put(">");
  }
  out_.put(line).put("\n");
  atLineStart_ = true;
  hasOpenQuotes_ = false;
}

void MboxSink::takePartOfLine(std::string_view part) {
  if (atLineStart_) {
    const std::string_view rest = WithoutQuotes(part);
    const bool mayBeDropped =
        !hasBegun_ && !isField(part) && rest.starts_with(kFrom) && rest.size() < kLongestDropped;
    if (kFrom.starts_with(rest) || rest == "\r" || mayBeDropped || mayBeField(part)) {
      // Quotes may go ahead: one more of them is one more wherever it is.
      if (rest.size() != part.size()) hasBegun_ = hasOpenQuotes_ = true;
      out_.put(part.substr(0, part.size() - rest.size()));
      held_ = rest;
      return;
    }
    if (isField(part)) {
      part = PutFieldName(part, out_);
    } else if (rest.starts_with(kFrom)) {
      out_.put(">");
    }
  }
  hasBegun_ = true;
  atLineStart_ = false;
  if (part.ends_with('\r')) {
    held_ = "\r";
    part.remove_suffix(1);
  }
  out_.put(part);
}

// "From" and nothing but blanks.
bool MboxSink::mayBeField(std::string_view line) const {
  return isInHeaders_ && atLineStart_ && !hasOpenQuotes_ && line.starts_with(kFrom) &&
         line.size() < kLongestDropped && AfterName(line).empty();
}

bool MboxSink::isField(std::string_view line) const {
  return isInHeaders_ && atLineStart_ && !hasOpenQuotes_ && line.starts_with(kFrom) &&
         AfterName(line).starts_with(':');
}

void MboxSink::finish() {
  if (!held_.empty() && held_ != "\r") takeLine(std::exchange(held_, {}));
  if (!atLineStart_ || hasOpenQuotes_) out_.put("\n");
  out_.put("\n");
}

}  // namespace tarn::archive

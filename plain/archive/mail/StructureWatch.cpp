#include "archive/mail/StructureWatch.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <memory>

#include "archive/mail/GObjectPtr.h"
#include "archive/mail/ParseMail.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

constexpr std::string_view kDescribing = "content-";

size_t CountOf(std::string_view text, char wanted) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), wanted));
}

bool IsContinuation(std::string_view line) {
  return !line.empty() && (line[0] == ' ' || line[0] == '\t');
}

std::string_view ValueOf(std::string_view field) {
  return field.substr(std::min(field.find(':'), field.size() - 1) + 1);
}

// The boundary of a field where it is a quoted string of plain characters, as nearly all are. Empty
// for any other. The field comes in lower case too.
std::string_view PlainBoundary(std::string_view field, std::string_view lowered) {
  constexpr std::string_view kName = "boundary";
  constexpr std::string_view kStart = "=\"";
  const size_t name = lowered.find(kName);
  if (name == std::string_view::npos || name != lowered.rfind(kName)) return {};
  if (!TrimmedRight(field.substr(0, name)).ends_with(';')) return {};
  field.remove_prefix(name + kName.size());
  if (!field.starts_with(kStart)) return {};
  field.remove_prefix(kStart.size());
  const size_t end = field.find('"');
  if (end == std::string_view::npos) return {};
  const std::string_view after = Trimmed(field.substr(end + 1));
  if (!after.empty() && after[0] != ';') return {};
  const std::string_view boundary = field.substr(0, end);
  const bool isPlain = std::all_of(boundary.begin(), boundary.end(),
                                   [](char c) { return c >= ' ' && c < 127 && c != '\\'; });
  return isPlain && boundary.find("=?") == std::string_view::npos ? boundary : std::string_view();
}

// How many bytes of whole lines are before one that may be a delimiter or begin a uuencoded file.
size_t DullLines(std::string_view text) {
  size_t at = 0;
  while (at < text.size() && text[at] != '-' && text[at] != 'b') {
    const size_t newline = text.find('\n', at);
    if (newline == std::string_view::npos) break;
    at = newline + 1;
  }
  return at;
}

}  // namespace

size_t StructureWatch::allow(std::string_view bytes) {
  size_t at = 0;
  while (at < bytes.size() && reason_.empty()) {
    if (in_ == In::Body && !inLine_) at += DullLines(bytes.substr(at));
    if (at == bytes.size()) break;
    const size_t newline = bytes.find('\n', at);
    const bool ends = newline != std::string_view::npos;
    const std::string_view piece = bytes.substr(at, (ends ? newline + 1 : bytes.size()) - at);
    if (!mayPass(piece)) break;
    if (ends && !inLine_) {
      endLine(piece);
    } else {
      keep(piece);
      if (ends) endLine(line_);
    }
    if (ends) line_.clear();
    inLine_ = !ends;
    at += piece.size();
  }
  return at;
}

// Counts the piece where it is.
bool StructureWatch::mayPass(std::string_view piece) {
  if (in_ == In::Headers) return mayPassHeaders(piece);
  if (in_ == In::Body) return true;
  outsideBytes_ += piece.size();
  return outsideBytes_ <= limits_.outsideBytes ||
         stop(limits_.outsideBytes, "bytes outside of its parts");
}

bool StructureWatch::mayPassHeaders(std::string_view piece) {
  if (!inLine_) {
    if (!IsContinuation(piece)) endField();
    ++headerLines_;
  }
  headerBytes_ += piece.size();
  const size_t semicolons = CountOf(piece, ';');
  listItems_ += semicolons + CountOf(piece, ',');
  parameters_ += semicolons;
  colons_ += CountOf(piece, ':');
  if (field_.size() < kDescribing.size() || StartsWithNoCase(field_, kDescribing)) field_ += piece;
  if (headerLines_ > limits_.headerLines) return stop(limits_.headerLines, "lines of headers");
  if (headerBytes_ > limits_.headerBytes) return stop(limits_.headerBytes, "bytes of headers");
  if (listItems_ > limits_.listItems) return stop(limits_.listItems, "items in lists of headers");
  if (colons_ > limits_.colons) return stop(limits_.colons, "colons in a header");
  if (parameters_ > limits_.parameters && StartsWithNoCase(field_, kDescribing)) {
    return stop(limits_.parameters, "parameters of a part");
  }
  return true;
}

// Of a line in pieces no more is kept than tells a delimiter.
void StructureWatch::keep(std::string_view piece) {
  const size_t wanted = std::max<size_t>(longestBoundary_ + 8, 32);
  if (line_.size() < wanted) line_ += piece.substr(0, wanted - line_.size());
}

void StructureWatch::endLine(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  if (line.starts_with("--") && takeDelimiter(line.substr(2))) return;
  if (in_ == In::Headers) {
    endHeaderLine(line);
  } else if (line.starts_with("begin ") && line.size() > 10) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '7'; };
    sawUuencode_ |= isDigit(line[6]) && isDigit(line[7]) && isDigit(line[8]);
  }
}

void StructureWatch::endHeaderLine(std::string_view line) {
  if (line.empty()) endSection();
}

void StructureWatch::endField() {
  if (StartsWithNoCase(field_, "content-type")) {
    const std::string lowered = LoweredAscii(field_);
    isMessage_ |= lowered.find("message/") != std::string::npos;
    if (lowered.find("multipart") != std::string::npos) {
      isMultipart_ = true;
      inDigest_ |= lowered.find("digest") != std::string::npos;
      const std::string_view plain = PlainBoundary(field_, lowered);
      plain.empty() ? addParsedBoundary() : addBoundary(plain);
    }
  } else if (StartsWithNoCase(field_, "content-transfer-encoding")) {
    const GMimeContentEncoding encoding =
        g_mime_content_encoding_from_string(std::string(Trimmed(ValueOf(field_))).c_str());
    isEncoded_ |= encoding == GMIME_CONTENT_ENCODING_BASE64 ||
                  encoding == GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE ||
                  encoding == GMIME_CONTENT_ENCODING_UUENCODE;
  }
  field_.clear();
  parameters_ = 0;
  colons_ = 0;
}

StructureWatch::StructureWatch(const StructureLimits& limits) : limits_(limits) {
  ReadingOptions();  // GMime itself is made ready with them
}

// GMime itself says what the boundary is, so that both look for the same.
void StructureWatch::addParsedBoundary() {
  const std::string value(ValueOf(field_));
  const GObjectPtr<GMimeContentType> type(g_mime_content_type_parse(nullptr, value.c_str()));
  const char* boundary =
      type == nullptr ? nullptr : g_mime_content_type_get_parameter(type.get(), "boundary");
  if (boundary != nullptr && *boundary != '\0') addBoundary(boundary);
}

void StructureWatch::addBoundary(std::string_view boundary) {
  longestBoundary_ = std::max(longestBoundary_, boundary.size());
  boundaries_.emplace(TrimmedRight(boundary));
}

void StructureWatch::endSection() {
  endField();
  const bool isMessage = (isMessage_ || (inDigest_ && !isMultipart_)) && !isEncoded_;
  startSection(isMultipart_ ? In::Outside : isMessage ? In::Headers : In::Body);
}

void StructureWatch::startSection(In in) {
  in_ = in;
  field_.clear();
  parameters_ = 0;
  colons_ = 0;
  isMultipart_ = false;
  isMessage_ = false;
  isEncoded_ = false;
}

// What comes after the two dashes at the start of a line.
bool StructureWatch::takeDelimiter(std::string_view line) {
  if (boundaries_.empty()) return false;
  line = TrimmedRight(line);
  if (boundaries_.find(line) != boundaries_.end()) {
    startSection(In::Headers);
    if (++parts_ > limits_.parts) stop(limits_.parts, "parts");
    return true;
  }
  if (!line.ends_with("--")) return false;
  line.remove_suffix(2);
  if (boundaries_.find(line) == boundaries_.end()) return false;
  startSection(In::Outside);
  return true;
}

bool StructureWatch::stop(size_t limit, std::string_view what) {
  reason_ = "the mail has more than " + std::to_string(limit) + " " + std::string(what) +
            "; what follows is not read";
  return false;
}

}  // namespace tarn::archive::mail

#include "archive/mail/MboxScan.h"

#include <algorithm>
#include <charconv>

#include "archive/mail/HeaderNames.h"
#include "archive/mail/MailDate.h"
#include "archive/mail/ParseMail.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

constexpr std::string_view kFrom = "From ";

// Whether a line is one that the mbox has quoted.
bool IsQuoted(std::string_view line) {
  const size_t from = line.find_first_not_of('>');
  return from != 0 && from != std::string_view::npos && line.substr(from).starts_with(kFrom);
}

std::optional<uint64_t> ContentLengthOf(std::string_view line) {
  constexpr std::string_view kName = "content-length:";
  if (!StartsWithNoCase(line, kName)) return std::nullopt;
  const std::string_view digits = Trimmed(line.substr(kName.size()));
  uint64_t length = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return length;
}

std::string_view FirstLine(std::string_view text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

std::string_view WithoutLineEnd(std::string_view text) {
  if (text.starts_with("\r\n")) return text.substr(2);
  return text.starts_with('\n') ? text.substr(1) : text;
}

}  // namespace

// A "From " line that may begin a mail, as the lines after it tell.
struct MboxScan::Candidate {
  uint64_t start = 0;
  uint64_t end = 0;  // where the mail before it ends then
  bool hasDate = false;
  bool isAfterEmpty = false;
  bool hasBrokenLine = false;  // a line that is no header has come after it
};

// What is known of a body while its lines come.
struct MboxScan::Body {
  std::optional<uint64_t> end;    // as a Content-Length tells
  std::optional<uint64_t> empty;  // the line before is empty, and begins there
  std::optional<Candidate> candidate;
  bool hasBareFrom = false;
};

Outcome<uint64_t> MboxScan::first() {
  const Outcome<std::string> mark = ReadRange(bytes_, 0, 3);
  if (!mark) return mark.trouble();
  first_ = *mark == "\xEF\xBB\xBF" ? 3 : 0;
  lines_.goTo(first_);
  while (const auto line = lines_.next()) {
    if (Trimmed(line->text).empty()) continue;
    if (line->text.starts_with(kFrom)) {
      first_ = line->start;
      hasDates_ = HasMboxDate(line->text);
    }
    return first_;
  }
  if (lines_.trouble()) return *lines_.trouble();
  first_ = bytes_.size();
  return first_;
}

bool MboxScan::isSeparator(std::string_view line) const {
  return line.starts_with(kFrom) && (!hasDates_ || HasMboxDate(line));
}

// A mail has headers; one without any begins with an empty line, and one whose first is broken has
// another one after it.
MboxScan::Verdict MboxScan::judge(const Candidate& candidate, std::string_view line) const {
  const bool isUsual = !hasDates_ || candidate.hasDate;
  if (IsHeaderLine(line)) {
    const bool isMail =
        isUsual && !candidate.hasBrokenLine ? true : IsUsualHeader(NameOfHeader(line));
    return isMail ? Verdict::Mail : Verdict::Text;
  }
  if (!isUsual || !candidate.isAfterEmpty || candidate.hasBrokenLine) return Verdict::Text;
  if (IsQuoted(line)) return Verdict::Mail;
  if (!hasDates_ || line.starts_with(kFrom)) return Verdict::Text;
  return Trimmed(line).empty() ? Verdict::Mail : Verdict::Unknown;
}

Outcome<MboxMail> MboxScan::mailAt(uint64_t start) {
  MboxMail mail;
  mail.start = start;
  mail.text = start;
  lines_.goTo(start);
  const auto line = lines_.next();
  if (line && line->text.starts_with(kFrom)) {
    mail.line = line->text;
    mail.text = line->end;
  } else {
    lines_.goTo(start);
  }
  Body body;
  body.end = readHeaders(mail);
  readBody(mail, body);
  if (lines_.trouble()) return *lines_.trouble();
  if (body.hasBareFrom) mail.quotes.clear();
  return mail;
}

// Up to the empty line after them. Gives the end that they tell, when it is one.
std::optional<uint64_t> MboxScan::readHeaders(MboxMail& mail) {
  std::optional<uint64_t> length;
  uint64_t body = mail.text;
  while (const auto line = lines_.next()) {
    body = line->end;
    if (line->text.empty()) break;
    if (!length) length = ContentLengthOf(line->text);
  }
  mail.end = body;
  if (!length || body > bytes_.size() || *length > bytes_.size() - body) return std::nullopt;
  const uint64_t end = body + *length;
  if (!isEnd(end)) return std::nullopt;
  return end;
}

// Never in the middle of a line: a "From " there begins no mail.
bool MboxScan::isEnd(uint64_t end) {
  const Outcome<std::string> read = ReadRange(bytes_, end - 1, LineScan::kKept);
  if (!read || read->empty()) return false;
  const std::string_view rest = std::string_view(*read).substr(1);
  const std::string_view after = WithoutLineEnd(rest);
  const bool isAtLine = read->front() == '\n' || rest.empty() || after.size() != rest.size();
  return isAtLine && (after.empty() || isSeparator(FirstLine(after)) ||
                      isSeparator(FirstLine(WithoutLineEnd(after))));
}

// `mail.end` is where the body begins.
void MboxScan::readBody(MboxMail& mail, Body& body) {
  for (;;) {
    // What is neither empty, quoted nor a "From " line.
    const uint64_t limit = body.end.value_or(bytes_.size());
    if (!body.candidate && lines_.skipOthers("F>\r\n", limit)) body.empty.reset();
    const auto line = lines_.next();
    if (!line) break;
    if (!takeBodyLine(mail, body, *line)) return;
  }
  const auto& last = body.candidate;
  if (last && hasDates_ && last->hasDate && last->isAfterEmpty && !last->hasBrokenLine) {
    mail.next = last->start;
    mail.end = last->end;
  } else {
    mail.end = body.end ? *body.end : body.empty.value_or(bytes_.size());
    mail.next = bytes_.size();
  }
}

// False where the mail has ended before the line.
bool MboxScan::takeBodyLine(MboxMail& mail, Body& body, const LineScan::Line& line) {
  if (body.end && line.start >= *body.end) {
    if (line.text.empty()) return true;
    mail.end = *body.end;
    mail.next = line.start;
    return false;
  }
  if (body.candidate) {
    const Verdict verdict = judge(*body.candidate, line.text);
    if (verdict == Verdict::Mail) {
      mail.next = body.candidate->start;
      mail.end = body.candidate->end;
      return false;
    }
    body.candidate->hasBrokenLine = true;
    if (verdict == Verdict::Text) body.candidate.reset();
  }
  if (line.text.starts_with(kFrom)) {
    body.hasBareFrom |= body.end.has_value();
    const bool isAfterEmpty = body.empty || line.start == mail.end;
    const bool hasDate = HasMboxDate(line.text);
    if (!body.end && (isAfterEmpty || hasDate)) {
      body.candidate =
          Candidate{line.start, body.empty.value_or(line.start), hasDate, isAfterEmpty};
    }
  } else if (IsQuoted(line.text) && !mail.hasTooManyQuotes) {
    mail.quotes.push_back(line.start);
    mail.hasTooManyQuotes = mail.quotes.size() > kMostQuotes;
    if (mail.hasTooManyQuotes) mail.quotes.clear();
  }
  body.empty.reset();
  if (line.text.empty()) body.empty = line.start;
  return true;
}

Outcome<bool> MboxScan::mayStartAt(uint64_t offset) {
  if (offset == first_) return first_ < bytes_.size();
  if (offset < first_ || offset >= bytes_.size()) return false;
  const Outcome<std::string> read = ReadRange(bytes_, offset - 1, LineScan::kKept);
  if (!read) return read.trouble();
  return read->starts_with('\n') && read->compare(1, kFrom.size(), kFrom) == 0;
}

}  // namespace tarn::archive::mail

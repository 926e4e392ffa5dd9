// MboxScan.h - where the mails of an mbox begin and end.
#ifndef TARN_ARCHIVE_MBOXSCAN_H
#define TARN_ARCHIVE_MBOXSCAN_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/mail/LineScan.h"

namespace tarn::archive::mail {

// A mail of an mbox. Places count from the start of the file.
struct MboxMail {
  uint64_t start = 0;             // of its "From " line
  uint64_t text = 0;              // of its own first line
  uint64_t end = 0;               // without the empty line that the mbox adds
  uint64_t next = 0;              // where the next mail begins, or the end of the file
  std::string line;               // its "From " line, the start of it
  std::vector<uint64_t> quotes;   // the ">" that the mbox has added
  bool hasTooManyQuotes = false;  // so that they are not listed
};

// A mail begins with a "From " line that
//   has a date and a header after it, or
//   comes after an empty line and has a usual header after it, or
//   has a date, comes after an empty line, and before another one, a quoted line, the end, or one
//   broken line and a usual header.
// Where the first "From " line has no date, the others need none either.
//
// Reads each byte about once, and keeps the places of quotes, which are bounded.
class MboxScan {
 public:
  static constexpr size_t kMostQuotes = 65536;

  explicit MboxScan(MailBytes& bytes) : bytes_(bytes), lines_(bytes, 0) {}

  // The first mail's start; the size of the file where there is none. It is a "From " line, after
  // empty lines and a byte order mark, or another line, whose mail has no such line. To be called
  // first.
  Outcome<uint64_t> first();

  // The mail that begins at a start.
  Outcome<MboxMail> mailAt(uint64_t start);

  // Whether a mail may begin there, as far as the lines around it tell.
  Outcome<bool> mayStartAt(uint64_t offset);

 private:
  struct Candidate;
  struct Body;
  enum class Verdict : uint8_t { Mail, Text, Unknown };

  std::optional<uint64_t> readHeaders(MboxMail& mail);
  void readBody(MboxMail& mail, Body& body);
  bool takeBodyLine(MboxMail& mail, Body& body, const LineScan::Line& line);
  // Whether a mail of this end, which is not 0, is followed by another one, or by nothing.
  bool isEnd(uint64_t end);
  bool isSeparator(std::string_view line) const;
  // What a candidate is, as the line after it tells.
  Verdict judge(const Candidate& candidate, std::string_view line) const;

  MailBytes& bytes_;
  LineScan lines_;
  uint64_t first_ = 0;
  bool hasDates_ = true;  // the first "From " line has a date
};

}  // namespace tarn::archive::mail

#endif

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
  struct Body;

  std::optional<uint64_t> readHeaders(MboxMail& mail);
  void readBody(MboxMail& mail, Body& body);
  bool takeBodyLine(MboxMail& mail, Body& body, const LineScan::Line& line);
  // Whether a mail of this end is followed by another one, or by nothing.
  bool isEnd(uint64_t end);
  bool isSeparator(std::string_view line) const;
  bool maySucceed(std::string_view line) const;

  MailBytes& bytes_;
  LineScan lines_;
  uint64_t first_ = 0;
  bool hasDates_ = true;  // "From " lines have dates
};

}  // namespace tarn::archive::mail

#endif

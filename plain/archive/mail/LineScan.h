// LineScan.h - the lines of MailBytes, one after the other, of which long ones are cut.
#ifndef TARN_ARCHIVE_LINESCAN_H
#define TARN_ARCHIVE_LINESCAN_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "archive/mail/MailBytes.h"

namespace tarn::archive::mail {

class LineScan {
 public:
  // Bytes of a line that are given.
  static constexpr size_t kKept = 1024;

  LineScan(MailBytes& bytes, uint64_t offset) : bytes_(bytes), chunkStart_(offset) {}

  struct Line {
    uint64_t start = 0;
    uint64_t end = 0;       // after its line end
    std::string_view text;  // its first bytes, without its line end; valid until the next call
  };

  // The next line; none at the end, or where the bytes cannot be read: then there is a trouble.
  std::optional<Line> next();

  // Passes over whole lines that end at `limit` or before and do not begin with one of these bytes:
  // as many as can be had quickly. Tells whether there were any.
  bool skipOthers(std::string_view beginnings, uint64_t limit);

  // The next line is the one that begins at `offset`.
  void goTo(uint64_t offset);

  const std::optional<Trouble>& trouble() const { return trouble_; }

 private:
  bool fill();

  MailBytes& bytes_;
  std::array<char, 8192> chunk_;
  uint64_t chunkStart_;
  size_t size_ = 0;
  size_t at_ = 0;
  std::string pieces_;  // of a line that does not lie in one chunk
  std::optional<Trouble> trouble_;
};

}  // namespace tarn::archive::mail

#endif

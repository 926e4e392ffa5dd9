// MboxSink.h - a mail on its way into an mbox (RFC 4155; the dialect "mboxrd").
#ifndef TARN_ARCHIVE_MBOXSINK_H
#define TARN_ARCHIVE_MBOXSINK_H

#include <optional>
#include <string>
#include <string_view>

#include "archive/model/ByteSink.h"
#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {

// Lines end with LF; a line that begins with "From ", after any number of ">", gets one ">" more.
// A header "From : x" is none of these, and loses its blanks. What may be before the first header
// of a file with one mail is dropped: a byte order mark, empty lines, a line that begins with
// "From ".
class MboxSink final : public ByteSink {
 public:
  explicit MboxSink(SinkBuffer& out) : out_(out) {}

  std::optional<Trouble> write(std::string_view bytes) override;

  // Ends the last line, and the mail by an empty one.
  void finish();

 private:
  void takeLine(std::string_view line);
  void takePartOfLine(std::string_view part);
  bool mayBeField(std::string_view line) const;
  bool isField(std::string_view line) const;

  SinkBuffer& out_;
  std::string held_;         // a line end that may come, or what may become "From "
  bool atLineStart_ = true;  // or after nothing but quotes
  bool hasOpenQuotes_ = false;
  bool hasBegun_ = false;
  bool isInHeaders_ = true;
  bool hasSeenBytes_ = false;
};

}  // namespace tarn::archive

#endif

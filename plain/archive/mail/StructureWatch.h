// StructureWatch.h - keeps mails from costing more than they are worth.
//
// GMime makes objects of every header, address and part, compares each parameter of a header with
// each other one, and follows groups of addresses within groups by recursion. That suits mails, and
// not files that consist of nothing else. So this watches the bytes on their way to GMime, tells
// headers from bodies by the same rules (RFC 2045, 2046), and ends the mail where a count is beyond
// its limit. Memory is bounded; time is in proportion to the bytes.
#ifndef TARN_ARCHIVE_STRUCTUREWATCH_H
#define TARN_ARCHIVE_STRUCTUREWATCH_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace tarn::archive::mail {

// What a mail may have. Where a limit is for one field, continuation lines belong to it.
struct StructureLimits {
  size_t parts = 10000;
  size_t headerBytes = size_t{8} << 20;   // of all header sections together
  size_t headerLines = 50000;             // of all header sections together
  size_t listItems = 100000;              // commas and semicolons of all header sections
  size_t parameters = 256;                // semicolons of one field that describes a part
  size_t colons = 4000;                   // of one field
  size_t outsideBytes = size_t{4} << 20;  // before the first part and after the last
};

class StructureWatch {
 public:
  StructureWatch() : StructureWatch(StructureLimits()) {}
  explicit StructureWatch(const StructureLimits& limits);

  // How many of the next bytes GMime may have: all, or those up to a limit and none after it.
  size_t allow(std::string_view bytes);

  // Why the mail ends early, as "the mail has more than 10000 parts"; empty when it does not.
  const std::string& reason() const { return reason_; }

  // Whether a line began as those do that a uuencoded file begins with: "begin 644 name".
  bool sawUuencode() const { return sawUuencode_; }

 private:
  enum class In : uint8_t { Headers, Body, Outside };
  struct TextHash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  bool mayPass(std::string_view piece);
  bool mayPassHeaders(std::string_view piece);
  void keep(std::string_view piece);
  void endLine(std::string_view line);
  void endHeaderLine(std::string_view line);
  void endField();
  void addParsedBoundary();
  void addBoundary(std::string_view boundary);
  void endSection();
  bool takeDelimiter(std::string_view line);
  void startSection(In in);
  bool stop(size_t limit, std::string_view what);

  StructureLimits limits_;
  In in_ = In::Headers;
  bool inLine_ = false;  // bytes of a line have come, and not its end
  std::string line_;     // the start of that line
  std::string field_;    // the field at hand: its start, all of it where it describes the part
  bool isMultipart_ = false;
  bool isMessage_ = false;
  bool isEncoded_ = false;
  bool inDigest_ = false;  // there is a digest: parts are messages where nothing else is said
  std::unordered_set<std::string, TextHash, std::equal_to<>> boundaries_;
  size_t longestBoundary_ = 0;
  size_t parts_ = 0;
  size_t headerBytes_ = 0;
  size_t headerLines_ = 0;
  size_t listItems_ = 0;
  size_t parameters_ = 0;
  size_t colons_ = 0;
  size_t outsideBytes_ = 0;
  bool sawUuencode_ = false;
  std::string reason_;
};

}  // namespace tarn::archive::mail

#endif

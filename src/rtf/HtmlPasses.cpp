// Both passes cut stretches out of the text, and each search begins after the last cut, in text
// that only moved. So the text is searched where it was at first, and what is kept moves down as
// the searches go: every byte moves once.
#include "rtf/HtmlPasses.h"

#include <cstring>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

constexpr std::string_view kCondition = "<![if";
constexpr uint64_t kShortCondition = 8;  // of "<![if !V", before the bracket

constexpr std::string_view kDivision = "<div>";
constexpr std::string_view kDivisionEnd = "</div>";
constexpr std::string_view kValue = "&nbsp;value=\"";
constexpr uint64_t kTooLong = 10000;
constexpr uint64_t kKeptValue = 97;

uint64_t Distance(const char* from, const char* to) { return std::string_view(from, to).size(); }

// A text out of which stretches are cut, from front to back. What is before the last cut has moved;
// everything after it is where it was.
class Compaction {
 public:
  explicit Compaction(SizedBytes& text)
      : text_(text), kept_(text.data()), rest_(text.data()), end_(text.data() + text.length()) {}
  ~Compaction() {
    keepUpTo(end_);
    text_.truncate(Distance(text_.data(), kept_));
  }
  Compaction(const Compaction&) = delete;
  Compaction& operator=(const Compaction&) = delete;

  const char* start() const { return text_.data(); }
  const char* end() const { return end_; }

  // A byte after the last cut.
  void write(const char* at, char byte) { text_.data()[Distance(text_.data(), at)] = byte; }

  void cut(const char* from, const char* to) {
    keepUpTo(from);
    rest_ = to;
  }

 private:
  void keepUpTo(const char* to) {
    const uint64_t count = Distance(rest_, to);
    if (kept_ != rest_) std::memmove(kept_, rest_, count);
    kept_ += count;
  }

  SizedBytes& text_;
  char* kept_;        // after what is kept so far
  const char* rest_;  // after the last cut
  const char* end_;
};

// The place `count` bytes on, or the end when that is nearer.
const char* Ahead(const char* at, const char* end, uint64_t count) {
  return count < Distance(at, end) ? at + count : end;
}

}  // namespace

void ShortenConditionalComments(SizedBytes& text) {
  if (!text.hasBlock()) return;
  Compaction compaction(text);
  const char* const end = compaction.end();
  const char* condition = FindBytes(compaction.start(), end, kCondition);
  while (condition != nullptr) {
    const char* const bracket = FindByte(condition, end, ']');
    if (bracket == nullptr) return;
    if (Distance(condition, end) >= kShortCondition) {
      compaction.write(condition + 6, '!');
      compaction.write(condition + 7, 'V');
    }
    if (Distance(condition, bracket) < kShortCondition) return;

    // The next search begins where the bracket was, in the text that has moved: it passes over as
    // many bytes after the bracket as were cut before it.
    const char* const shortEnd = condition + kShortCondition;
    compaction.cut(shortEnd, bracket);
    const char* const next = Ahead(bracket, end, Distance(shortEnd, bracket));
    condition = FindBytes(next, end, kCondition);
  }
}

void CutLongValues(SizedBytes& text) {
  if (!text.hasBlock()) return;
  Compaction compaction(text);
  const char* const end = compaction.end();
  const char* cursor = compaction.start();
  while (true) {
    const char* const division = FindIgnoringCase(cursor, end, kDivision);
    if (division == nullptr) return;
    const char* const divisionEnd = FindIgnoringCase(division, end, kDivisionEnd);
    if (divisionEnd == nullptr) return;
    cursor = divisionEnd + kDivisionEnd.size();
    if (Distance(division, divisionEnd) <= kTooLong) continue;

    const char* const value = FindIgnoringCase(division, divisionEnd, kValue);
    if (value == nullptr) continue;
    // The quote may come a little after the division: as far as its end and 26 bytes on.
    const char* const inValue = value + kValue.size();
    const char* const limit = Ahead(divisionEnd, end, 2 * kValue.size());
    const char* const quote = FindByte(inValue, limit, '"');
    if (quote == nullptr || Distance(value, quote) <= kTooLong) continue;
    compaction.cut(inValue + kKeptValue, quote);
    cursor = Ahead(quote, end, kDivisionEnd.size());
  }
}

}  // namespace tarn

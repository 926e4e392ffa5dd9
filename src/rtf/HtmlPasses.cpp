// Both passes cut stretches out of the text, and each search begins after the last cut, in text
// that only moved. So the text is searched where it was at first, and what is kept moves down as
// the searches go: every byte moves once.
#include "rtf/HtmlPasses.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

constexpr std::string_view kCondition = "<![if";
constexpr size_t kShortCondition = 8;  // of "<![if !V", before the bracket

constexpr std::string_view kDivision = "<div>";
constexpr std::string_view kDivisionEnd = "</div>";
constexpr std::string_view kValue = "&nbsp;value=\"";
constexpr size_t kTooLong = 10000;
constexpr size_t kKeptValue = 97;

// Cuts stretches out of a text, from front to back. What is before the last cut has moved;
// everything after it is where it was.
class Compaction {
 public:
  explicit Compaction(SizedBytes& text) : text_(text) {}
  ~Compaction() {
    keepUpTo(text_.length());
    text_.truncate(kept_);
  }
  Compaction(const Compaction&) = delete;
  Compaction& operator=(const Compaction&) = delete;

  // A byte after the last cut.
  void write(size_t at, char byte) { text_.data()[at] = byte; }

  void cut(size_t from, size_t to) {
    keepUpTo(from);
    rest_ = to;
  }

 private:
  void keepUpTo(size_t to) {
    const size_t count = to - rest_;
    if (kept_ != rest_) std::memmove(text_.data() + kept_, text_.data() + rest_, count);
    kept_ += count;
  }

  SizedBytes& text_;
  size_t kept_ = 0;  // after what is kept so far
  size_t rest_ = 0;  // after the last cut
};

constexpr size_t kNowhere = std::string_view::npos;

}  // namespace

void ShortenConditionalComments(SizedBytes& body) {
  if (!body.hasBlock()) return;
  Compaction compaction(body);
  const std::string_view text = body.view();
  size_t condition = FindBytes(text, kCondition);
  while (condition != kNowhere) {
    const size_t bracket = FindByte(text, ']', condition);
    if (bracket == kNowhere) return;
    if (text.size() - condition >= kShortCondition) {
      compaction.write(condition + 6, '!');
      compaction.write(condition + 7, 'V');
    }
    if (bracket - condition < kShortCondition) return;

    // The next search begins where the bracket was, in the text that has moved: it passes over as
    // many bytes after the bracket as were cut before it.
    const size_t shortEnd = condition + kShortCondition;
    compaction.cut(shortEnd, bracket);
    const size_t next = std::min(bracket + (bracket - shortEnd), text.size());
    condition = FindBytes(text, kCondition, next);
  }
}

void CutLongValues(SizedBytes& body) {
  if (!body.hasBlock()) return;
  Compaction compaction(body);
  const std::string_view text = body.view();
  size_t cursor = 0;
  while (true) {
    const size_t division = FindIgnoringCase(text, kDivision, cursor);
    if (division == kNowhere) return;
    const size_t divisionEnd = FindIgnoringCase(text, kDivisionEnd, division);
    if (divisionEnd == kNowhere) return;
    cursor = divisionEnd + kDivisionEnd.size();
    if (divisionEnd - division <= kTooLong) continue;

    const size_t value = FindIgnoringCase(text.substr(0, divisionEnd), kValue, division);
    if (value == kNowhere) continue;
    // The quote may come a little after the division: as far as its end and 26 bytes on.
    const size_t inValue = value + kValue.size();
    const size_t quote = FindByte(text.substr(0, divisionEnd + 2 * kValue.size()), '"', inValue);
    if (quote == kNowhere || quote - value <= kTooLong) continue;
    compaction.cut(inValue + kKeptValue, quote);
    cursor = std::min(quote + kDivisionEnd.size(), text.size());
  }
}

}  // namespace tarn

#include "archive/catalogue/Snippet.h"

#include <algorithm>
#include <map>

namespace tarn::archive {
namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

constexpr bool IsInside(char byte) { return (byte & 0xC0) == 0x80; }
constexpr bool IsSpace(char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

// The spans from `first` up to `end` that make the best piece.
struct Choice {
  size_t first = 0;
  size_t end = 0;
};

Choice BestOf(const std::vector<FoundSpan>& found, size_t length) {
  Choice best;
  size_t mostPhrases = 0;
  std::map<size_t, size_t> phrases;  // those between, with how often
  size_t first = 0;
  for (size_t last = 0; last < found.size(); ++last) {
    ++phrases[found[last].phrase];
    while (first < last && found[last].span.end - found[first].span.begin > length) {
      const auto left = phrases.find(found[first++].phrase);
      if (--left->second == 0) phrases.erase(left);
    }
    if (phrases.size() > mostPhrases) {
      mostPhrases = phrases.size();
      best = {first, last + 1};
    }
  }
  // What else fits.
  while (best.end < found.size() &&
         found[best.end].span.end - found[best.first].span.begin <= length) {
    ++best.end;
  }
  return best;
}

// A place near `at` where a word begins, else where a character does.
size_t BeginOfPiece(std::string_view text, size_t at, size_t latest) {
  while (at > 0 && IsInside(text[at])) --at;
  if (at == 0) return 0;
  for (size_t each = at; each <= latest; ++each) {
    if (IsSpace(text[each - 1])) return each;
  }
  return at;
}

size_t EndOfPiece(std::string_view text, size_t at, size_t earliest) {
  if (at >= text.size()) return text.size();
  while (at > earliest && IsInside(text[at])) --at;
  for (size_t each = at; each > earliest; --each) {
    if (IsSpace(text[each])) return each;
  }
  return at;
}

class Line {
 public:
  // The bytes, of which `isMarked` tells whether they are found ones.
  void take(std::string_view bytes, bool isMarked) {
    size_t begin = line_.text.size();
    for (const char byte : bytes) {
      const bool isBlank = IsSpace(byte);
      if (!isBlank) {
        line_.text += byte;
      } else if (!line_.text.empty() && line_.text.back() != ' ') {
        line_.text += ' ';
      }
    }
    if (!isMarked || line_.text.size() == begin) return;
    // Neighbours, as the pairs of a run, are one.
    if (!line_.marks.empty() && line_.marks.back().end == begin) {
      begin = line_.marks.back().begin;
      line_.marks.pop_back();
    }
    line_.marks.push_back({begin, line_.text.size()});
  }

  Snippet finish() {
    while (line_.text.ends_with(' ')) line_.text.pop_back();
    return std::move(line_);
  }

 private:
  Snippet line_;
};

}  // namespace

Snippet SnippetOf(std::string_view text, const std::vector<FoundSpan>& found, size_t length) {
  const Choice choice = BestOf(found, length);
  const size_t firstFound = found.empty() ? 0 : found[choice.first].span.begin;
  const size_t lastFound = found.empty() ? 0 : found[choice.end - 1].span.end;
  const size_t inside = lastFound - firstFound;
  const size_t around = inside < length ? length - inside : 0;
  // A third of the room before it; what the beginning does not take is left for the end.
  const size_t before = std::min(firstFound, around / 3);
  const size_t begin = BeginOfPiece(text, firstFound - before, firstFound);
  const size_t end = EndOfPiece(text, lastFound + (around - before), lastFound);

  Line line;
  if (begin != 0) line.take(kEllipsis, false);
  size_t at = begin;
  for (size_t each = choice.first; each < choice.end; ++each) {
    const TextSpan& span = found[each].span;
    if (span.end <= at) continue;
    const size_t from = std::max(at, span.begin);
    line.take(text.substr(at, from - at), false);
    line.take(text.substr(from, span.end - from), true);
    at = span.end;
  }
  if (at < end) line.take(text.substr(at, end - at), false);
  if (std::max(at, end) < text.size()) line.take(kEllipsis, false);
  return line.finish();
}

}  // namespace tarn::archive

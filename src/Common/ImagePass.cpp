#include "Common/ImagePass.h"

#include <algorithm>
#include <new>

#include "Common/ByteSearch.h"
#include "Common/ImageReferences.h"
#include "Common/InlineImages.h"
#include "Common/TextRewriter.h"

namespace tarn {
namespace {

// What following a link of the map costs, in bytes read.
constexpr uint64_t kBytesPerEdit = 64;

size_t Meeting(char before, char after) {
  return static_cast<size_t>(static_cast<unsigned char>(before)) << 8 |
         static_cast<unsigned char>(after);
}

bool IsBase64(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/' || c == '=';
  });
}

// Is there an image whose data: URL holds the needle?
bool CanBeInDataUrl(std::string_view needle) {
  if (IsBase64(needle)) return true;
  for (size_t at = 0; at < kDataUrlPrefix.size(); ++at) {
    const std::string_view prefix = kDataUrlPrefix.substr(at);
    const std::string_view head = needle.substr(0, prefix.size());
    if (prefix.starts_with(head) && IsBase64(needle.substr(head.size()))) return true;
  }
  return false;
}

bool IsPlainName(std::string_view replacement) {
  return replacement.find_first_of("\"<") == std::string_view::npos;
}

}  // namespace

// Finds what one image replaces, and leaves the pass as it is.
class ImagePass::Collector {
 public:
  // The search ends at `end`.
  Collector(const ImagePass& pass, Occurrences& occurrences, uint64_t end,
            std::string_view replacement)
      : pass_(pass), occurrences_(occurrences), end_(end), replacement_(replacement) {}

  // False when there are too many references.
  bool run(uint64_t place);

  Edits& edits() { return edits_; }
  // By how much the text grows, in arithmetic that wraps.
  uint64_t growth() const { return growth_; }
  uint64_t takeCost() { return std::exchange(cost_, 0) + occurrences_.takeCost(); }

 private:
  uint64_t nextOccurrence(uint64_t at);
  uint64_t distance(uint64_t at, uint64_t place);
  uint64_t lastTag(uint64_t place);
  bool isEdited(const Edits& edits, uint64_t place, uint64_t& start) const;
  bool opensImageData(uint64_t tag) const;
  void add(uint64_t start, uint64_t quote);

  const ImagePass& pass_;
  Occurrences& occurrences_;
  uint64_t end_;
  std::string_view replacement_;
  Edits edits_;
  uint64_t growth_ = 0;
  uint64_t cost_ = 0;
  // The last "<" of the text at or before a place of the body, once that is known for one.
  bool hasTag_ = false;
  uint64_t tagPlace_ = 0;
  uint64_t tag_ = kNoPlace;
};

// The next occurrence that no edit has taken from the text.
uint64_t ImagePass::Collector::nextOccurrence(uint64_t at) {
  const uint64_t n = occurrences_.needle().size();
  uint64_t place = occurrences_.next(at);
  for (uint64_t after = 0; place != kNoPlace && pass_.skipEdits(place, n, after);) {
    cost_ += kBytesPerEdit;
    place = occurrences_.next(after);
  }
  return place;
}

// From one place of the body to a later one, in the text.
uint64_t ImagePass::Collector::distance(uint64_t at, uint64_t place) {
  uint64_t bytes = place - at;
  for (auto i = pass_.edits_.upper_bound(at); i != pass_.edits_.end() && i->first < place; ++i) {
    bytes += pass_.replacementOf(i->second).size() - (i->first - i->second.start);
    cost_ += kBytesPerEdit;
  }
  return bytes;
}

bool ImagePass::Collector::isEdited(const Edits& edits, uint64_t place, uint64_t& start) const {
  const auto edit = edits.lower_bound(place);
  if (edit == edits.end() || edit->second.start > place) return false;
  start = edit->second.start;
  return true;
}

uint64_t ImagePass::Collector::lastTag(uint64_t place) {
  uint64_t end = place + 1;
  const uint64_t from = hasTag_ ? tagPlace_ + 1 : 0;
  while (end > from) {
    const std::string_view text = pass_.base().substr(from, end - from);
    const size_t hit = text.rfind('<');
    cost_ += text.size() - (hit == std::string_view::npos ? 0 : hit);
    if (hit == std::string_view::npos) break;
    const uint64_t tag = from + hit;
    uint64_t start = 0;
    if (!isEdited(pass_.edits_, tag, start) && !isEdited(edits_, tag, start)) return tag;
    cost_ += kBytesPerEdit;
    end = start;
  }
  return tag_;
}

// The tag may go on in a replacement, which the quote after it ends.
bool ImagePass::Collector::opensImageData(uint64_t tag) const {
  if (tag == kNoPlace) return false;
  std::string_view body = pass_.base().substr(tag);
  std::string_view next;
  const auto older = pass_.edits_.lower_bound(tag);
  if (older != pass_.edits_.end()) {
    body = pass_.base().substr(tag, older->second.start - tag);
    next = pass_.replacementOf(older->second);
  }
  const auto own = edits_.lower_bound(tag);
  if (own != edits_.end() && own->second.start - tag <= body.size()) {
    body = pass_.base().substr(tag, own->second.start - tag);
    next = replacement_;
  }
  const std::string_view head = body.substr(0, kImageDataTag.size());
  return kImageDataTag.starts_with(head) && next.starts_with(kImageDataTag.substr(head.size()));
}

// An older edit up to the same quote gives way.
void ImagePass::Collector::add(uint64_t start, uint64_t quote) {
  uint64_t removed = quote - start;
  const auto older = pass_.edits_.find(quote);
  if (older != pass_.edits_.end()) {
    removed = older->second.start - start + pass_.replacementOf(older->second).size();
  }
  growth_ += replacement_.size() - removed;
  edits_.emplace_hint(edits_.end(), quote, Edit{start, pass_.replacements_.size()});
}

bool ImagePass::Collector::run(uint64_t at) {
  const std::string_view base = pass_.base().substr(0, end_);
  const uint64_t n = occurrences_.needle().size();
  for (;;) {
    const uint64_t place = nextOccurrence(at);
    if (place == kNoPlace || place > end_ || end_ - place < n) return true;
    const uint64_t tag = lastTag(place);
    if (opensImageData(tag)) {
      at = place + n - distance(at, place) % n;
      hasTag_ = true;
      tagPlace_ = place;
      tag_ = tag;
      continue;
    }

    const uint64_t quote = FindByte(base, '"', place + n);
    const uint64_t close = std::min(quote, end_);
    const uint64_t start = ReferenceStart(base, at, place);
    cost_ += close - start;
    if (quote == std::string_view::npos) return true;
    if (pass_.edits_.size() + edits_.size() >= pass_.limits_.edits) return false;
    add(start, close);
    if (tag == kNoPlace || tag < start) {
      hasTag_ = true;
      tagPlace_ = close;
      tag_ = tag;
    }
    at = close;
  }
}

ImagePass::Limits ImagePass::LimitsFor(uint64_t fileSize) {
  constexpr uint64_t kEdits = 65536;
  constexpr uint64_t kFileBytesPerEdit = 64;
  constexpr uint64_t kReadings = 64;
  const uint64_t bytes = BodyLimit(fileSize);
  return {bytes, kEdits + fileSize / kFileBytesPerEdit, {bytes, kReadings}};
}

ImagePass::ImagePass(SizedBytes& body, Limits limits, SearchBudget& budget)
    : body_(body), limits_(limits), budget_(budget), index_({}, limits.index) {}

void ImagePass::discard() {
  found_.reset();
  edits_.clear();
  replacements_.clear();
  names_.clear();
  nameRuns_.clear();
  hasUrl_ = false;
  meetings_.reset();
  index_ = TextIndex({}, limits_.index);
  isReady_ = false;
}

void ImagePass::prepare() {
  if (isReady_) return;
  index_ = TextIndex(body_.view(), limits_.index);
  length_ = body_.length();
  cleanFrom_ = body_.length();
  cleanEnd_ = body_.length();
  isReady_ = true;
}

Status ImagePass::find(std::string_view needle, uint64_t& place) {
  place = kNoPlace;
  if (needle.empty()) return StatusOk;
  if (!edits_.empty() && mayTouchReplacement(needle)) {
    const Status written = finish();
    if (!written.ok()) return written;
  }
  prepare();
  found_.emplace(index_, needle);
  place = found_->next(0);
  for (uint64_t after = 0; place != kNoPlace && skipEdits(place, needle.size(), after);) {
    budget_.spend(kBytesPerEdit);
    place = found_->next(after);
  }
  budget_.spend(found_->takeCost());
  return StatusOk;
}

// Does an edit take bytes of the stretch from the text? Then `next` is where the edit ends.
bool ImagePass::skipEdits(uint64_t place, uint64_t length, uint64_t& next) const {
  const auto edit = edits_.lower_bound(place);
  if (edit == edits_.end() || edit->second.start >= place + length) return false;
  next = edit->first;
  return true;
}

bool ImagePass::mayTouchReplacement(std::string_view needle) {
  if (needle.find('"') != std::string_view::npos) return true;
  for (size_t i = 1; i < needle.size(); ++i) {
    if (meetings_[Meeting(needle[i - 1], needle[i])]) return true;
  }
  if (hasUrl_ && CanBeInDataUrl(needle)) return true;
  if (!nameRuns_.mayHold(needle)) return false;
  budget_.spend(names_.size());
  return FindBytes({names_.data(), names_.size()}, needle) != std::string_view::npos;
}

// The end of the forward searches from the place on.
uint64_t ImagePass::firstNul(uint64_t place) {
  if (place >= cleanFrom_ && place <= cleanEnd_) return cleanEnd_;
  const uint64_t end = place < cleanFrom_ ? cleanFrom_ : base().size();
  const uint64_t nul = FindByte(base().substr(0, end), '\0', place);
  budget_.spend(end - place);
  if (nul != std::string_view::npos) {
    cleanEnd_ = nul;
  } else if (place > cleanEnd_) {
    cleanEnd_ = end;
  }
  cleanFrom_ = place;
  return cleanEnd_;
}

Status ImagePass::replace(uint64_t place, std::string_view needle, SizedBytes replacement,
                          Kind kind, uint64_t& count) try {
  count = 0;
  const std::string_view bytes = replacement.view();
  const bool isSimple =
      needle.find('"') == std::string_view::npos && (kind == Kind::DataUrl || IsPlainName(bytes));
  if (!isSimple) return replaceInText(place, needle, bytes, count);

  Collector collector(*this, *found_, firstNul(place), bytes);
  const bool isComplete = collector.run(place);
  budget_.spend(collector.takeCost());
  if (!isComplete) return replaceInText(place, needle, bytes, count);
  if (collector.edits().empty()) return StatusOk;
  const uint64_t newLength = length_ + collector.growth();
  if (newLength > limits_.text) return StatusOutOfMemory;

  if (kind == Kind::DataUrl) {
    hasUrl_ = true;
  } else {
    names_.insert(names_.end(), bytes.begin(), bytes.end());
    names_.push_back('"');
    nameRuns_.add(bytes);
  }
  const uint64_t found = collector.edits().size();
  const char first = bytes.empty() ? '"' : bytes.front();
  replacements_.push_back(std::move(replacement));
  for (const auto& [quote, edit] : collector.edits()) {
    const char before = edit.start == 0 ? '"' : base()[edit.start - 1];
    if (before != '"' && first != '"') meetings_.set(Meeting(before, first));
    edits_.erase(quote);
  }
  edits_.merge(collector.edits());
  length_ = newLength;
  count = found;
  return StatusOk;
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
}

Status ImagePass::replaceInText(uint64_t place, std::string_view needle,
                                std::string_view replacement, uint64_t& count) {
  uint64_t inText = place;
  for (auto edit = edits_.begin(); edit != edits_.end() && edit->first <= place; ++edit) {
    inText += replacementOf(edit->second).size() - (edit->first - edit->second.start);
  }
  const Status written = finish();
  if (!written.ok()) return written;
  const Status status =
      ReplaceImageReferences(body_, {inText, needle, replacement, limits_.text}, count);
  budget_.spend(body_.length());
  discard();
  return status;
}

Status ImagePass::finish() {
  if (!edits_.empty()) {
    found_.reset();
    index_ = TextIndex(body_.view(), limits_.index);  // frees what it had made
    TextGrowth growth;
    for (const auto& [quote, edit] : edits_) {
      growth.add(quote - edit.start, replacementOf(edit).size());
    }
    TextRewriter rewriter;
    if (!rewriter.open(body_, growth)) return StatusOutOfMemory;
    for (const auto& [quote, edit] : edits_) {
      rewriter.replace(edit.start, quote, replacementOf(edit));
    }
    rewriter.close();
    budget_.spend(body_.length());
  }
  discard();
  return StatusOk;
}

}  // namespace tarn

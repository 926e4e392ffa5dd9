#include "archive/catalogue/WordIndex.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "archive/catalogue/IndexNumber.h"

namespace tarn::archive {
namespace {

// Records of the table of data that are no pages of segments.
constexpr int64_t kAverages = 1;
constexpr int64_t kStructure = 10;
// In the id of a page, the number of its segment begins there.
constexpr int kSegmentBit = 37;
// The structure begins with a number that says which settings it goes with.
constexpr size_t kCookie = 4;

constexpr size_t kTextsAtOnce = size_t{256} << 10;
// Of each gatherer.
constexpr uint64_t kWaiting = 3;

std::unique_ptr<WordGatherer> NewGatherer(size_t segmentMemory) {
  try {
    return std::make_unique<WordGatherer>(segmentMemory);
  } catch (const std::system_error& error) {
    throw DatabaseError(error.what());
  }
}

}  // namespace

WordIndex::WordIndex(Database& database, std::filesystem::path path, const WordIndexLimits& limits)
    : database_(database),
      path_(std::move(path)),
      limits_(limits),
      page_(database, "INSERT INTO words_data(id, block) VALUES(?1, ?2)"),
      lead_(database, "INSERT INTO words_idx(segid, term, pgno) VALUES(?1, ?2, ?3)"),
      size_(database, "INSERT INTO words_docsize(id, sz) VALUES(?1, ?2)") {
  for (std::unique_ptr<WordGatherer>& gatherer : gatherers_) {
    gatherer = NewGatherer(limits.segmentMemory);
  }
}

WordIndex::~WordIndex() = default;

void WordIndex::beginItem(int64_t number) {
  if (texts_.bytes.size() >= kTextsAtOnce) giveTexts();
  item_ = number;
  itemBytes_ = 0;
  ++items_;
  // An item without words has sizes too.
  texts_.add(item_, 0, "");
}

void WordIndex::add(uint8_t column, std::string_view text) {
  if (itemBytes_ + text.size() > kMostIndexedText) return;
  itemBytes_ += text.size();
  texts_.add(item_, column, text);
}

void WordIndex::finish() {
  giveTexts();
  for (size_t each = 0; each < gatherers_.size(); ++each) {
    gatherers_[given_++ % gatherers_.size()]->giveEnd();
  }
  while (taken_ != given_) takeFrom(*gatherers_[taken_ % gatherers_.size()]);
  writeState();
}

void WordIndex::giveTexts() {
  while (given_ - taken_ >= kWaiting * gatherers_.size()) {
    takeFrom(*gatherers_[taken_ % gatherers_.size()]);
  }
  gatherers_[given_++ % gatherers_.size()]->give(std::exchange(texts_, {}));
}

void WordIndex::takeFrom(WordGatherer& gatherer) {
  const WordGatherer::Gathered gathered = gatherer.take();
  ++taken_;
  std::string bytes;
  for (const WordGatherer::ItemSize& size : gathered.sizes) {
    bytes.clear();
    for (size_t column = 0; column < kWordColumns; ++column) {
      AppendIndexNumber(bytes, size.words[column]);
      words_[column] += size.words[column];
    }
    size_.bind(1, size.item);
    size_.bindBytes(2, bytes);
    size_.execute();
  }
  for (const std::unique_ptr<SegmentPages>& segment : gathered.segments) write(*segment);
}

void WordIndex::write(const SegmentPages& pages) {
  if (segments_.size() >= limits_.mostSegments) mergeSegments();
  const int64_t number = segments_.empty() ? 1 : segments_.back().number + 1;
  for (const SegmentPages::Page& page : pages.pages()) {
    page_.bind(1, (number << kSegmentBit) + page.id);
    page_.bindBytes(2, pages.bytesOf(page));
    page_.execute();
  }
  for (const SegmentPages::Lead& lead : pages.leads()) {
    lead_.bind(1, number);
    lead_.bindBytes(2, lead.term);
    lead_.bind(3, lead.page);
    lead_.execute();
  }
  segments_.push_back({number, pages.lastPage()});
}

// All segments are of one level, the oldest first.
void WordIndex::writeState() {
  if (items_ == 0) return;
  std::string averages;
  AppendIndexNumber(averages, items_);
  for (const uint64_t words : words_) AppendIndexNumber(averages, words);
  setRecord(kAverages, averages);

  std::string structure = record(kStructure).substr(0, kCookie);
  const auto put = [&](uint64_t number) { AppendIndexNumber(structure, number); };
  uint64_t pages = 0;
  for (const Segment& segment : segments_) pages += static_cast<uint64_t>(segment.lastPage);
  put(segments_.empty() ? 0 : 1);  // levels
  put(segments_.size());
  put(pages);  // written
  if (!segments_.empty()) {
    put(0);  // of these, being merged
    put(segments_.size());
  }
  for (const Segment& segment : segments_) {
    put(static_cast<uint64_t>(segment.number));
    put(1);
    put(static_cast<uint64_t>(segment.lastPage));
  }
  setRecord(kStructure, structure);
}

// By FTS5 itself, which sees what others have written where it is opened after that.
void WordIndex::mergeSegments() {
  writeState();
  database_.run("COMMIT");
  {
    Database other(path_, DatabaseUse::Make);
    other.run(
        "PRAGMA journal_mode=OFF;"
        "PRAGMA synchronous=OFF;"
        "INSERT INTO words(words) VALUES('optimize');");
  }
  database_.run("BEGIN");
  readSegments();
}

void WordIndex::readSegments() {
  const std::string structure = record(kStructure);
  const char* at = structure.data() + kCookie;
  const auto read = [&at] { return static_cast<int64_t>(ReadIndexNumber(at)); };
  const int64_t levels = read();
  (void)read();
  (void)read();
  segments_.clear();
  for (int64_t level = 0; level < levels; ++level) {
    (void)read();
    for (int64_t left = read(); left != 0; --left) {
      const int64_t number = read();
      (void)read();
      segments_.push_back({number, read()});
    }
  }
}

std::string WordIndex::record(int64_t id) {
  Statement row(database_, "SELECT block FROM words_data WHERE id=?1");
  row.bind(1, id);
  if (!row.step()) throw DatabaseError("the index has no record of its state");
  return row.text(0);
}

void WordIndex::setRecord(int64_t id, std::string_view bytes) {
  Statement row(database_, "UPDATE words_data SET block=?2 WHERE id=?1");
  row.bind(1, id);
  row.bindBytes(2, bytes);
  row.execute();
}

}  // namespace tarn::archive

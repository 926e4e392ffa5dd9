// WordIndex.h - the index of words of a catalogue, written into the tables of FTS5 many times
// sooner than FTS5 does it itself.
#ifndef TARN_ARCHIVE_WORDINDEX_H
#define TARN_ARCHIVE_WORDINDEX_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "archive/catalogue/Database.h"
#include "archive/catalogue/WordGatherer.h"

namespace tarn::archive {

struct WordIndexLimits {
  size_t segmentMemory = size_t{4} << 20;  // of the words that make a segment
  // Every segment is looked into by a search, and FTS5 takes 2000 of them.
  size_t mostSegments = 1000;
};

// What an item may have of words is unlimited but for this.
inline constexpr size_t kMostIndexedText = size_t{256} << 20;

// Of a table `words` that FTS5 has made in the database at that path, without content and with
// columns as many as kWordColumns, that is empty, in a change that is not finished. The same texts
// give the same bytes.
class WordIndex {
 public:
  WordIndex(Database& database, std::filesystem::path path, const WordIndexLimits& limits = {});
  WordIndex(const WordIndex&) = delete;
  WordIndex& operator=(const WordIndex&) = delete;
  ~WordIndex();

  // Numbers rise.
  void beginItem(int64_t number);
  // Columns rise within an item. What comes of one column is as if it were one text, with ends of
  // lines between.
  void add(uint8_t column, std::string_view text);

  // Nothing is added after it.
  void finish();

 private:
  struct Segment {
    int64_t number;
    int64_t lastPage;
  };

  void giveTexts();
  void takeFrom(WordGatherer& gatherer);
  void write(const SegmentPages& pages);
  void writeState();
  void mergeSegments();
  void readSegments();
  std::string record(int64_t id);
  void setRecord(int64_t id, std::string_view bytes);

  Database& database_;
  const std::filesystem::path path_;
  const WordIndexLimits limits_;
  Statement page_;
  Statement lead_;
  Statement size_;

  ItemTextsToIndex texts_;  // that wait to be given
  int64_t item_ = 0;
  size_t itemBytes_ = 0;

  // Texts go to one and the other in turn, whatever either takes, so that segments are the same.
  std::array<std::unique_ptr<WordGatherer>, 2> gatherers_;
  uint64_t given_ = 0;
  uint64_t taken_ = 0;

  std::vector<Segment> segments_;
  uint64_t items_ = 0;
  std::array<uint64_t, kWordColumns> words_ = {};
};

}  // namespace tarn::archive

#endif

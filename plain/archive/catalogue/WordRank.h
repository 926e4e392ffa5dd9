// WordRank.h - how well items suit what was searched.
#ifndef TARN_ARCHIVE_WORDRANK_H
#define TARN_ARCHIVE_WORDRANK_H

#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "archive/catalogue/Database.h"

struct Fts5Context;
struct Fts5ExtensionApi;

namespace tarn::archive {

struct RankedItem {
  int64_t number = 0;
  double rank = 0;  // the less, the better
};

// Okapi BM25, the very numbers that FTS5's own bm25() gives for the same weights. That function
// asks for the size of each item by itself, which is most of its time where a word is in many of
// them; here sizes are read many at a time.
class WordRank {
 public:
  // What a column weighs, in the order of the index: a word of the subject says most.
  static constexpr std::array<double, 5> kWeights = {10.0, 4.0, 2.0, 1.0, 0.7};

  // Adds the function tarn_rank(words) to the database, which outlives this. For each row of a
  // query it notes number and rank, and answers 1. One query at a time.
  explicit WordRank(const Database& database);
  WordRank(const WordRank&) = delete;
  WordRank& operator=(const WordRank&) = delete;
  ~WordRank();

  // Another query comes.
  void begin();
  // What was noted since, in the order of the query's rows.
  std::vector<RankedItem> take() { return std::move(ranked_); }

 private:
  int prepare(const Fts5ExtensionApi* api, Fts5Context* row);
  int note(const Fts5ExtensionApi* api, Fts5Context* row);
  // In words; none for an item that has no size.
  std::optional<double> sizeOf(int64_t item);

  Statement sizes_;
  std::vector<double> rarities_;  // of the phrases of the query
  double averageSize_ = 0;
  std::vector<RankedItem> ranked_;

  // Of the items from the first one on.
  static constexpr int64_t kSizesAtOnce = 64;
  std::optional<int64_t> firstSize_;
  std::array<int64_t, kSizesAtOnce> sizesRead_;
};

}  // namespace tarn::archive

#endif

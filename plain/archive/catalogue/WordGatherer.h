// WordGatherer.h - a thread that makes segments of an index out of texts.
#ifndef TARN_ARCHIVE_WORDGATHERER_H
#define TARN_ARCHIVE_WORDGATHERER_H

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "archive/catalogue/GatheredWords.h"
#include "archive/catalogue/IndexWords.h"
#include "archive/catalogue/SegmentPages.h"

namespace tarn::archive {

inline constexpr size_t kWordColumns = 5;

// Of one item; the words after them are left out. All that an item may have of ordinary text is
// less, but some characters are many words where words are compared.
inline constexpr uint32_t kMostWordsOfAColumn = 16'000'000;

// Texts of items one after the other.
struct ItemTextsToIndex {
  struct Text {
    int64_t item;
    uint8_t column;
    size_t size;
  };
  std::vector<Text> texts;
  std::string bytes;

  void add(int64_t item, uint8_t column, std::string_view text) {
    texts.push_back({item, column, text.size()});
    bytes += text;
  }
};

class WordGatherer {
 public:
  struct ItemSize {
    int64_t item;
    std::array<uint32_t, kWordColumns> words;  // of each column
  };
  // What came of some texts.
  struct Gathered {
    std::vector<ItemSize> sizes;
    std::vector<std::unique_ptr<SegmentPages>> segments;
  };

  // A segment is made when so many bytes of words are gathered.
  explicit WordGatherer(size_t segmentMemory, uint32_t mostWords = kMostWordsOfAColumn);
  WordGatherer(const WordGatherer&) = delete;
  WordGatherer& operator=(const WordGatherer&) = delete;
  ~WordGatherer();

  // All texts of an item come together, items in the order of their numbers.
  void give(ItemTextsToIndex texts);
  // The rest makes a segment too.
  void giveEnd();

  // For each call of those two, in their order. Throws what went wrong.
  Gathered take();

 private:
  struct Task {
    ItemTextsToIndex texts;
    bool isEnd = false;
  };

  void give(Task task);
  void run();
  Gathered done(const Task& task);
  void gather(const ItemTextsToIndex& texts, Gathered& gathered);
  void gatherText(std::string_view text, uint8_t column, uint32_t& words);
  void endSegment(Gathered& gathered);

  const size_t segmentMemory_;
  const uint32_t mostWords_;
  const IndexWords splitter_;
  GatheredWords words_;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  std::deque<Gathered> gathered_;
  std::exception_ptr error_;
  bool isEnding_ = false;
  std::thread thread_;
};

}  // namespace tarn::archive

#endif

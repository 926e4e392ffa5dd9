#include "archive/catalogue/WordGatherer.h"

#include <utility>

#include "archive/catalogue/WordText.h"

namespace tarn::archive {
namespace {

// What FTS5 keeps of a word.
constexpr size_t kLongestWord = 32768;

}  // namespace

WordGatherer::WordGatherer(size_t segmentMemory, uint32_t mostWords)
    : segmentMemory_(segmentMemory), mostWords_(mostWords), thread_(&WordGatherer::run, this) {}

WordGatherer::~WordGatherer() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void WordGatherer::give(ItemTextsToIndex texts) { give(Task{std::move(texts), false}); }

void WordGatherer::giveEnd() { give(Task{{}, true}); }

void WordGatherer::give(Task task) {
  {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  changed_.notify_all();
}

WordGatherer::Gathered WordGatherer::take() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !gathered_.empty() || error_; });
  if (gathered_.empty()) std::rethrow_exception(error_);
  Gathered gathered = std::move(gathered_.front());
  gathered_.pop_front();
  return gathered;
}

void WordGatherer::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return !tasks_.empty() || isEnding_; });
    if (isEnding_) return;
    const Task task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    try {
      Gathered gathered = done(task);
      lock.lock();
      gathered_.push_back(std::move(gathered));
    } catch (...) {
      if (!lock.owns_lock()) lock.lock();
      error_ = std::current_exception();
    }
    changed_.notify_all();
    if (error_) return;
  }
}

WordGatherer::Gathered WordGatherer::done(const Task& task) {
  Gathered gathered;
  gather(task.texts, gathered);
  if (task.isEnd && !words_.isEmpty()) endSegment(gathered);
  return gathered;
}

void WordGatherer::gather(const ItemTextsToIndex& texts, Gathered& gathered) {
  std::string_view rest = texts.bytes;
  for (const ItemTextsToIndex::Text& text : texts.texts) {
    if (gathered.sizes.empty() || gathered.sizes.back().item != text.item) {
      if (words_.memory() >= segmentMemory_) endSegment(gathered);
      gathered.sizes.push_back({text.item, {}});
      words_.beginItem(text.item);
    }
    gatherText(rest.substr(0, text.size), text.column, gathered.sizes.back().words[text.column]);
    rest.remove_prefix(text.size);
  }
}

void WordGatherer::gatherText(std::string_view text, uint8_t column, uint32_t& words) {
  if (words >= mostWords_) return;
  splitter_.split(WordsOf(text).text, [&](std::string_view word) {
    if (words < mostWords_) words_.add(word.substr(0, kLongestWord), column, words++);
  });
}

void WordGatherer::endSegment(Gathered& gathered) {
  auto pages = std::make_unique<SegmentPages>();
  words_.moveTo(*pages);
  pages->finish();
  gathered.segments.push_back(std::move(pages));
}

}  // namespace tarn::archive

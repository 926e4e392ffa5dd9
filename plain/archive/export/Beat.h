// Beat.h - a number that one process counts up and another looks at: how far it is, and whether it
// goes on. One folder a system implements it.
#ifndef TARN_ARCHIVE_BEAT_H
#define TARN_ARCHIVE_BEAT_H

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "archive/model/Trouble.h"

namespace tarn::archive {

class Beat {
 public:
  // Of the file, which is made where there is none.
  static Outcome<Beat> open(const std::filesystem::path& path);
  Beat(Beat&& other) noexcept : count_(std::exchange(other.count_, nullptr)) {}
  Beat& operator=(Beat&&) = delete;
  ~Beat();

  void tick(uint64_t beats = 1) { count_->fetch_add(beats, std::memory_order_relaxed); }
  void set(uint64_t count) { count_->store(count, std::memory_order_relaxed); }
  uint64_t count() const { return count_->load(std::memory_order_relaxed); }

 private:
  explicit Beat(std::atomic<uint64_t>* count) : count_(count) {}
  std::atomic<uint64_t>* count_;
};

}  // namespace tarn::archive

#endif

// PartWriter.h - a part as it comes from the workers of a task, in a place of its own, and then in
// its place.
#ifndef TARN_ARCHIVE_PARTWRITER_H
#define TARN_ARCHIVE_PARTWRITER_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "archive/cluster/AttemptLog.h"
#include "archive/cluster/Part.h"
#include "console/Failure.h"
#include "console/RemovedAtEnd.h"

namespace tarn::archive {

class PartWriter {
 public:
  // Makes the folder of the export, and one for the part; removes those of other attempts of the
  // task that are known to have ended. Throws host::Failure (Temporary).
  PartWriter(const std::filesystem::path& tree, const std::string& plan, uint64_t task,
             std::function<void()> step);

  // The folder that is to be the part. Its staging is where the workers are.
  const std::filesystem::path& folder() const { return draft_.path(); }

  // Finished entries of a range, in order.
  void add(size_t range, const FinishedEntry& entry);

  // All entries are there: puts the part into its place. Where another one was first, it stays, if
  // it has the same bytes; if not, host::Failure (Usage) names both. One that is damaged is set
  // aside. Until then `beat` is called from time to time, and may throw.
  void commit(size_t ranges, const std::function<void()>& beat);

  // What the log tells of it where there will be no part.
  FailedAttempt asFailed(int status, const std::string& reason) const;

 private:
  void gather(size_t ranges);
  void describe(size_t ranges, const std::function<void()>& beat);
  void write(const std::filesystem::path& path, const std::string& bytes) const;
  double seconds() const;  // since it was begun
  void compare(const PartFacts& first);

  std::filesystem::path place_;
  std::function<void()> step_;
  host::RemovedAtEnd draft_;
  std::vector<std::vector<FinishedEntry>> entries_;  // of each range
  PartFacts facts_;
  std::chrono::steady_clock::time_point begin_;
};

}  // namespace tarn::archive

#endif

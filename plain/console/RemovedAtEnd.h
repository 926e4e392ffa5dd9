// RemovedAtEnd.h - a file or folder that goes when the program is done with it: in the ordinary
// way, and also when Ctrl-C or another signal of EndingSignals.h ends the program.
#ifndef TARN_CONSOLE_REMOVEDATEND_H
#define TARN_CONSOLE_REMOVEDATEND_H

#include <filesystem>
#include <functional>
#include <system_error>

namespace tarn::host {

// May be used by any thread. Nothing is made or removed any more once a signal has begun to remove
// what there is: whoever asks waits for the end of the program.
class RemovedAtEnd {
 public:
  // Makes the file or folder and gives its path; with an error nothing was made.
  using Maker = std::function<std::filesystem::path(std::error_code&)>;

  RemovedAtEnd() = default;
  RemovedAtEnd(const RemovedAtEnd&) = delete;
  RemovedAtEnd& operator=(const RemovedAtEnd&) = delete;
  // Removes what there is, a folder with all that is in it.
  ~RemovedAtEnd();

  // Ending signals remove what there is from now on, as they do from the first making on at the
  // latest: for who wants to be asked by them first, and takes them after this.
  static void watch();

  // For an object that has nothing yet. No signal comes between the making and the remembering.
  std::error_code make(const Maker& maker);

  // Nothing is removed any more.
  void keep();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;  // empty: nothing
};

}  // namespace tarn::host

#endif

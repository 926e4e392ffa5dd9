#include "StartArchive.h"

#include "console/Failure.h"

namespace tarn::host {

void StartArchive(const std::vector<std::string>& words) {
  throw Failure(ExitStatus::Broken, words.front(), "the archive commands are there on Linux only");
}

}  // namespace tarn::host

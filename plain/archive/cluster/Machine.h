// Machine.h - what a task needs of the machine that it runs on. One folder a system implements it.
#ifndef TARN_ARCHIVE_MACHINE_H
#define TARN_ARCHIVE_MACHINE_H

#include <filesystem>
#include <string>

namespace tarn::archive {

// From its making on, SIGTERM, SIGINT and SIGHUP do not end the program, and isAsked() tells of
// them; those that the program was started to ignore stay so. One at a time.
class StopSignals {
 public:
  StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  // As it was before.
  ~StopSignals();

  static bool isAsked();
};

std::string HostName();

// A name that no other process anywhere has made.
std::string UniqueName();

// The folder itself: the names in it. Nothing where the system cannot.
void SyncFolder(const std::filesystem::path& folder);

}  // namespace tarn::archive

#endif

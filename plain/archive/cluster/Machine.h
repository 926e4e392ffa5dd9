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

// Names this process among all of all machines, without dots; empty where the system does not tell
// enough.
std::string ProcessName();
// Whether the process of that name is known to have ended: it ran on this kernel, since that was
// started, and among the processes that this one can see. Of others nothing is known.
bool HasEnded(const std::string& process);

// The folder itself: the names in it. Nothing where the system cannot.
void SyncFolder(const std::filesystem::path& folder);

}  // namespace tarn::archive

#endif

// TroubleReport.h - what could not be read, on standard error, and what that makes of the exit
// status.
#ifndef TARN_ARCHIVE_TROUBLEREPORT_H
#define TARN_ARCHIVE_TROUBLEREPORT_H

#include <cstdint>
#include <string>

#include "archive/commands/OutputBuffer.h"
#include "archive/model/ItemReader.h"
#include "archive/sources/SourceSearch.h"
#include "console/Failure.h"

namespace tarn::archive {

// How messages call a source: its name, or "standard input".
std::string SpokenName(const std::string& source);

class TroubleReport {
 public:
  // What waits in `output` goes first where a terminal shows both.
  explicit TroubleReport(OutputBuffer& output) : output_(output) {}

  // "tarnmail: box.pst: Inbox: item 200024: the recipients cannot be read".
  void tell(const std::string& source, const PlaceTrouble& trouble);

  // A file that cannot be opened.
  void tell(const SourceTrouble& trouble);

  // A line that costs nothing.
  void note(const std::string& line);

  // After the last one: how many there were. `what` names what was done with all else.
  void summarise(const std::string& what);

  // Usage where a file that the command line names could not be opened, Failed where something else
  // could not be read, else Done.
  host::ExitStatus status() const;

 private:
  OutputBuffer& output_;
  uint64_t troubles_ = 0;
  bool hasUnopened_ = false;
};

}  // namespace tarn::archive

#endif

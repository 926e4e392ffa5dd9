#include "archive/commands/TroubleReport.h"

#include "archive/common/ItemFilter.h"
#include "console/StandardStreams.h"
#include "console/Text.h"

namespace tarn::archive {

std::string SpokenName(const std::string& source) {
  return source == kStandardInput ? "standard input" : source;
}

void TroubleReport::tell(const std::string& source, const PlaceTrouble& trouble) {
  ++troubles_;
  std::string line = SpokenName(source);
  if (trouble.place.folder && !trouble.place.folder->empty()) {
    line += ": " + FolderText(*trouble.place.folder);
  }
  if (!trouble.place.id.empty()) line += ": item " + trouble.place.id;
  note(line + ": " + trouble.trouble.reason);
}

void TroubleReport::tell(const SourceTrouble& trouble) {
  ++troubles_;
  hasUnopened_ = hasUnopened_ || trouble.isNamed;
  note(SpokenName(trouble.name) + ": " + trouble.trouble.reason);
}

void TroubleReport::note(const std::string& line) {
  output_.flushForError();
  host::WriteStandardError("tarnmail: " + host::Printable(line) + "\n");
}

void TroubleReport::summarise(const std::string& what) {
  if (troubles_ < 2) return;
  note(std::to_string(troubles_) + " things could not be read; " + what);
}

host::ExitStatus TroubleReport::status() const {
  if (hasUnopened_) return host::ExitStatus::Usage;
  return troubles_ != 0 ? host::ExitStatus::Failed : host::ExitStatus::Done;
}

}  // namespace tarn::archive

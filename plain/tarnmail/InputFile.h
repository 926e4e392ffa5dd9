// InputFile.h - the mail file as the filter can open it, whatever the command line names: a file, a
// pipe, standard input.
#ifndef TARN_TARNMAIL_INPUTFILE_H
#define TARN_TARNMAIL_INPUTFILE_H

#include <string>

#include "console/PrivateFolder.h"

namespace tarn::host {

// The filter goes to and fro in a file, and names it in UTF-16. What comes as a stream is therefore
// copied into the private folder, and a file whose name is not UTF-8 gets a link there.
class InputFile {
 public:
  // `file` is a name, or "-" for standard input. Throws Failure: Usage when there is nothing of
  // that name or it cannot be read, Failed when the copy of a stream cannot be written.
  InputFile(const std::string& file, PrivateFolder& folder);

  // How messages call it: the name, or "standard input".
  const std::string& name() const { return name_; }
  // For the filter; good as long as the folder is there.
  const std::u16string& path() const { return path_; }

 private:
  std::string name_;
  std::u16string path_;
};

}  // namespace tarn::host

#endif

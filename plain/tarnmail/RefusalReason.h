// RefusalReason.h - why the filter refuses a mail file, for people.
//
// The filter answers with a code, and one code may have many reasons. So the file is looked at
// again: by the filter's own searches and file layers, in the order in which the filter goes, and
// by asking the filter for the other kind of text. What cannot be told for sure is not told.
#ifndef TARN_TARNMAIL_REFUSALREASON_H
#define TARN_TARNMAIL_REFUSALREASON_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tarn::host {

// A call that the filter refused.
struct RefusedCall {
  int32_t status = 0;
  std::u16string path;
  int32_t messageNumber = 1;
  bool textOnly = false;
  // Of a document, and none for a list of attachments: whether one is shown with the other text
  // flag, and with temporary files.
  std::function<bool()> showsOtherText;
  std::function<bool()> showsByTempFiles;
};

// Nothing when the reason is not known. Never throws: what cannot be read again has no reason.
std::optional<std::string> RefusalReason(const RefusedCall& call) noexcept;

}  // namespace tarn::host

#endif

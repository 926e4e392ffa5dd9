#include <optional>

#include "Commands.h"
#include "console/Failure.h"
#include "console/StandardStreams.h"
#include "console/Text.h"

namespace tarn::host {

KernelBytes AttachmentBytes(const Workplace& at, const ExtractOptions& options) {
  const MailFile mail(at.filter, options.message, at.folder);
  std::optional<KernelBytes> bytes = mail.extract(options.attachmentNumber);
  const std::string number = std::to_string(options.attachmentNumber);
  if (!bytes) throw Failure(ExitStatus::Failed, mail.name(), "has no attachment " + number);
  if (!options.output && StandardOutputIsTerminal() && !IsPlainText(bytes->view())) {
    throw Failure(ExitStatus::Usage, mail.name(),
                  "attachment " + number +
                      " is no text for a terminal; -o FILE writes it to a file, and -o - here");
  }
  return std::move(*bytes);
}

}  // namespace tarn::host

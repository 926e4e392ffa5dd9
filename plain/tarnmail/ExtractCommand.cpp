#include <optional>

#include "Commands.h"
#include "Failure.h"

namespace tarn::host {

KernelBytes AttachmentBytes(const FilterLibrary& filter, const ExtractOptions& options) {
  const MailFile mail(filter, options.message);
  std::optional<KernelBytes> bytes = mail.extract(options.attachmentNumber);
  if (!bytes) {
    throw Failure(ExitStatus::Failed, options.message.file,
                  "has no attachment " + std::to_string(options.attachmentNumber));
  }
  return std::move(*bytes);
}

}  // namespace tarn::host

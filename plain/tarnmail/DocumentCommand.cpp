#include "Commands.h"

namespace tarn::host {

std::string DocumentBytes(const Workplace& at, const DocumentOptions& options) {
  const MailFile mail(at.filter, options.message, at.folder);
  return mail.read().document.bytes;
}

}  // namespace tarn::host

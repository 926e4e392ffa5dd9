#include "Commands.h"

namespace tarn::host {

std::string DocumentBytes(const FilterLibrary& filter, const DocumentOptions& options) {
  MailFile mail(filter, options.message);
  return mail.read().document.bytes;
}

}  // namespace tarn::host

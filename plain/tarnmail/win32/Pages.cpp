#include "Commands.h"
#include "console/Failure.h"

namespace tarn::host {
namespace {

[[noreturn]] void RefusePages() {
  throw Failure(ExitStatus::Broken, "pages are made on Linux only");
}

}  // namespace

Pages MakePages(const Workplace&, const PagesOptions&) { RefusePages(); }

MessageAnswer LaidOutAnswer(const Workplace&, const MailFile&, const InfoOptions&) {
  RefusePages();
}

}  // namespace tarn::host

// The leak report at the end of the process, for developers: with TARNBASE_REPORT_LEAKS in the
// environment, one line a block or object that is still alive, with the source location that it
// came from. The libraries whose code made them must still be loaded then, since the file names are
// theirs. Nothing is reported otherwise: PlainKernelUsage is how a program looks for leaks.
//
// The report never waits for a thread: one system has ended all others by then, wherever they were,
// and a lock that one of them held is held for ever. What is locked is named instead of listed.
#include <cstdlib>

#include "Memory.h"
#include "Report.h"
#include "TrackedObjects.h"

namespace tarn::kernel {
namespace {

void List(ObjectRegister& objects, const char* what) {
  if (!objects.List(what)) ReportUnlisted(what);
}

struct ReportAtExit {
  ~ReportAtExit() {
    if (std::getenv("TARNBASE_REPORT_LEAKS") == nullptr) return;
    if (!ListBlocks()) ReportUnlisted("block");
    List(TrackedObjects(), "object");
    List(GraphicsObjects(), "graphics object");
  }
};

const ReportAtExit reportAtExit;

}  // namespace
}  // namespace tarn::kernel

// The leak report at the end of the process, for developers: with TARNBASE_REPORT_LEAKS in the
// environment, one line a block or object that is still alive, with the source location that it
// came from. The libraries whose code made them must still be loaded then, since the file names are
// theirs. Nothing is reported otherwise: PlainKernelUsage is how a program looks for leaks.
#include <cstdlib>

#include "Memory.h"
#include "TrackedObjects.h"

namespace tarn::kernel {
namespace {

struct ReportAtExit {
  ~ReportAtExit() {
    if (std::getenv("TARNBASE_REPORT_LEAKS") == nullptr) return;
    ListBlocks();
    TrackedObjects().List("object");
    GraphicsObjects().List("graphics object");
  }
};

const ReportAtExit reportAtExit;

}  // namespace
}  // namespace tarn::kernel

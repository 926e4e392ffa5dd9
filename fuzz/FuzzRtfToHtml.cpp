// RTF that wraps HTML, turned into HTML, and compared with the plain description of that scan.
//
// The input is the RTF; its last byte also chooses an allocation that fails, or none. Besides what
// the sanitizers see, a run aborts when the markup is not what the description gives, is longer
// than RTF of that length can become, or lacks its NUL; when a failure touches the text; and when
// something is left behind in the kernel.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "../tests/rtf/NaiveRtfToHtml.h"
#include "Internal/Tarnclasses_.h"
#include "KernelText.h"
#include "Tarnbase/PlainKernel.h"
#include "rtf/RtfToHtml.h"

namespace {

void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

void Convert(std::string_view rtf, uint64_t failingAllocation) {
  tarn::SizedBytes text = tarn::fuzz::KernelText(rtf);
  const char* const block = text.data();

  PlainKernelFailAt(PlainKernelFaultMemory, failingAllocation);
  const tarn::Status status = tarn::RtfToHtml(text);
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  if (status != StatusOk) {
    Expect(status == StatusNotSupported || status == StatusOutOfMemory, "an unknown status");
    Expect(text.data() == block && text.view() == rtf, "a failure touched the text");
  } else {
    Expect(text.length() != 0 && text.view().back() == '\0', "a text without its NUL");
    Expect(text.length() <= 2 * rtf.size() + 1, "a text longer than it can be");
  }
  if (failingAllocation != 0) return;

  tarn::test::NaiveRtfToHtml naive(rtf);
  Expect(status == naive.run(), "another status than described");
  if (status == StatusOk) Expect(text.view() == naive.text, "another text than described");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view rtf(reinterpret_cast<const char*>(data), size);
  const uint64_t before = Usage().liveBlocks;
  Convert(rtf, 0);
  if (data[size - 1] % 16 != 0) Convert(rtf, data[size - 1] % 16);
  Expect(Usage().liveBlocks == before, "something was left behind");
  return 0;
}

// MSG files as items: everything in them is read, embedded messages and objects too. Besides what
// the sanitizers see, a run aborts when what is told beforehand is not what is read, and when
// something is left behind in the kernel.
#include <string_view>

#include "ArchiveItem.h"
#include "Tarnbase/PlainKernel.h"
#include "archive/msg/MsgReader.h"
#include "mutators/CallScript.h"
#include "mutators/CompoundMutator.h"
#include "mutators/LibFuzzer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tarn;
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  {
    const auto reader = archive::ReadMsg({reinterpret_cast<const char*>(data), size});
    if (reader) {
      const auto item = (*reader)->find("1");
      fuzz::Expect(item.ok(), "no item in a message");
      fuzz::ItemWalk(100).read(**item);
    }
  }
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  fuzz::Expect(after.liveBlocks == before.liveBlocks && after.openHandles == before.openHandles,
               "something was left behind");
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  return tarn::fuzz::MutateInput(data, size, most, seed, tarn::fuzz::MutateCompoundFile,
                                 tarn::fuzz::MutateAsLibFuzzer);
}

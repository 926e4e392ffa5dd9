// Whole stores through the exports, in the order of calls that is at the input's end. Checksums
// and signatures are made to fit first, so that damage gets past them.

#include "host/FuzzHost.h"
#include "mutators/LibFuzzer.h"
#include "mutators/PstMutator.h"
#include "support/pst/PstDamage.h"

using namespace tarn::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const CallInput input = SplitCallInput({reinterpret_cast<const char*>(data), size});
  std::string store(input.file);
  tarn::test::RepairPstImage(store);
  RunCalls(store, input.steps);
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  static const FileMutation mutation = WithCalls(MutatePstImage);
  return MutateInput(data, size, most, seed, mutation, MutateAsLibFuzzer);
}

// Whole MSG files through the exports, in the order of calls that is at the input's end. Where
// the file does not begin as a compound file, it is made to.

#include "host/FuzzHost.h"
#include "mutators/CompoundMutator.h"
#include "mutators/LibFuzzer.h"

using namespace tarn::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr std::string_view kMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
  const CallInput input = SplitCallInput({reinterpret_cast<const char*>(data), size});
  std::string file(input.file);
  file.replace(0, kMagic.size(), kMagic);
  RunCalls(file, input.steps);
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  static const FileMutation mutation = WithCalls(MutateCompoundFile);
  return MutateInput(data, size, most, seed, mutation, MutateAsLibFuzzer);
}

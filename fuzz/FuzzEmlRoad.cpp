// Whole mails through the exports, in the order of calls that is at the input's end. One that
// begins as a store or a compound file is taken as such.

#include "host/FuzzHost.h"
#include "mutators/LibFuzzer.h"
#include "mutators/MailMutator.h"

using namespace tarn::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const CallInput input = SplitCallInput({reinterpret_cast<const char*>(data), size});
  RunCalls(input.file, input.steps);
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
  static const FileMutation mutation = WithCalls(MutateMail);
  return MutateInput(data, size, most, seed, mutation, MutateAsLibFuzzer);
}

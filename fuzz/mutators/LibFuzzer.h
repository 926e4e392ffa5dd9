// LibFuzzer.h - the mutation of plain bytes that libFuzzer has, for targets with mutators of their
// own.
#ifndef TARN_FUZZ_MUTATORS_LIBFUZZER_H
#define TARN_FUZZ_MUTATORS_LIBFUZZER_H

#include <algorithm>
#include <cstdint>
#include <string>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

namespace tarn::fuzz {

// A ByteMutation. Small texts are not made much larger at once, which would cost more time than the
// run itself.
inline void MutateAsLibFuzzer(std::string& bytes, size_t most) {
  constexpr size_t kGrowth = 4096;
  if (most == 0) return bytes.clear();
  const size_t size = std::min(bytes.size(), most);
  bytes.resize(std::min(most, size + kGrowth));
  bytes.resize(LLVMFuzzerMutate(reinterpret_cast<uint8_t*>(bytes.data()), size, bytes.size()));
}

}  // namespace tarn::fuzz

#endif

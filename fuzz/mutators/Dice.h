// Dice.h - what mutations draw on: numbers from a seed, and whoever changes plain bytes.
#ifndef TARN_FUZZ_MUTATORS_DICE_H
#define TARN_FUZZ_MUTATORS_DICE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <random>
#include <string>

namespace tarn::fuzz {

class Dice {
 public:
  explicit Dice(uint32_t seed) : engine_(seed) {}

  // A number below count; 0 when count is 0.
  size_t below(size_t count) { return count == 0 ? 0 : engine_() % count; }
  bool oneIn(size_t count) { return below(count) == 0; }
  uint32_t any() { return static_cast<uint32_t>(engine_()); }

  template <typename List>
  auto& pick(List& list) {
    return list[below(std::size(list))];
  }

 private:
  std::mt19937 engine_;
};

// Changes bytes in any way, to at most `most` of them.
using ByteMutation = std::function<void(std::string& bytes, size_t most)>;

// Changes a file in its own terms, to at most `most` bytes; false when the file has not what the
// mutation needs. It takes any bytes, and draws on nothing but the dice and the byte mutation.
using FileMutation =
    std::function<bool(std::string& file, size_t most, Dice& dice, const ByteMutation& mutate)>;

}  // namespace tarn::fuzz

#endif

// PlainBytes.h - a double of libFuzzer's own mutation, and the checks that all mutators share.
#ifndef TARN_TESTS_FUZZ_PLAINBYTES_H
#define TARN_TESTS_FUZZ_PLAINBYTES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "mutators/Dice.h"

namespace tarn::test {

// One byte becomes another, comes in or goes.
inline fuzz::ByteMutation ChangeOneByte(fuzz::Dice& dice) {
  return [&dice](std::string& bytes, size_t most) {
    const size_t at = dice.below(bytes.size());
    const size_t kind = dice.below(3);
    if (bytes.empty() || kind == 0) {
      bytes.insert(at, 1, static_cast<char>(dice.any()));
    } else if (kind == 1) {
      bytes.erase(at, 1);
    } else {
      bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) + 1 + dice.below(255));
    }
    bytes.resize(std::min(bytes.size(), most));
  };
}

// `rounds` mutants of the file, each from the file itself. `take` gets each.
template <typename Take>
void MakeMutants(const fuzz::FileMutation& mutation, const std::string& file, size_t most,
                 uint32_t rounds, Take take) {
  for (uint32_t seed = 0; seed < rounds; ++seed) {
    fuzz::Dice dice(seed);
    std::string mutant = file;
    if (!mutation(mutant, most, dice, ChangeOneByte(dice))) continue;
    EXPECT_LE(mutant.size(), most) << "seed " << seed;
    take(mutant);
  }
}

// Cut, damaged and foreign bytes are taken, the limit holds, and a seed always gives the same.
inline void ExpectTakesAnyBytes(const fuzz::FileMutation& mutation, const std::string& file) {
  const auto ignore = [](const std::string&) {};
  for (const size_t size : {size_t{0}, size_t{1}, size_t{12}, file.size() / 3, file.size() - 1}) {
    MakeMutants(mutation, file.substr(0, size), file.size(), 40, ignore);
    MakeMutants(mutation, file.substr(size), file.size(), 40, ignore);
  }
  fuzz::Dice damage(7);
  std::string damaged = file;
  for (int i = 0; i < 200; ++i) {
    damage.pick(damaged) = static_cast<char>(damage.any());
    MakeMutants(mutation, damaged, file.size() + 100, 3, ignore);
  }
  MakeMutants(mutation, file, file.size() / 2, 40, ignore);
  std::string first;
  std::string second;
  MakeMutants(mutation, file, 2 * file.size(), 40, [&](const std::string& m) { first += m; });
  MakeMutants(mutation, file, 2 * file.size(), 40, [&](const std::string& m) { second += m; });
  EXPECT_TRUE(first == second);
}

}  // namespace tarn::test

#endif

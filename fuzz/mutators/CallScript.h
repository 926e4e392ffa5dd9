// CallScript.h - the calls that a fuzz target makes on one file, and how its input holds them.
//
//   input    file | step ... | number of steps, 1 byte | "CALLS\n"
//   step     operation, 1 byte | argument, 1 byte
//
// An input without that end is a file alone, which gets the usual calls. So any mail file is an
// input. Operations are taken modulo their number, so that every byte is one.
#ifndef TARN_FUZZ_MUTATORS_CALLSCRIPT_H
#define TARN_FUZZ_MUTATORS_CALLSCRIPT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "mutators/Dice.h"

namespace tarn::fuzz {

// What the argument of each says is written where FuzzHost.cpp carries it out.
enum class CallOperation : uint8_t {
  Info,
  Load,
  List,
  Extract,
  ExtractToFile,
  EndRecord,
  // What the calls after it find.
  Message,
  Text,
  Page,
  Raster,
  Language,
  IoMode,
  Sibling,
  SiblingKeeps,
  SlotContent,
  ChangeFile,
  Count
};

struct CallStep {
  CallOperation operation;
  uint8_t argument;
};

inline constexpr size_t kMostCallSteps = 24;

struct CallInput {
  std::string_view file;
  std::vector<CallStep> steps;
};

// The file and its steps, at most kMostCallSteps of them; those of UsualCalls without an end.
CallInput SplitCallInput(std::string_view input);
std::string JoinCallInput(std::string_view file, const std::vector<CallStep>& steps);

// Every call once or more, on the first message, the second and the third.
std::vector<CallStep> UsualCalls();

// Adds, removes, changes, repeats or swaps a step.
void MutateCalls(std::vector<CallStep>& steps, Dice& dice);

// A mutation of inputs out of one of files: of the calls now and then, else of the file alone.
FileMutation WithCalls(FileMutation mutateFile);

// The input that a custom mutator of libFuzzer gives: the mutation's, or that of plain bytes where
// the mutation has nothing to offer. `data` has room for `most` bytes; gives the new size.
size_t MutateInput(uint8_t* data, size_t size, size_t most, uint32_t seed,
                   const FileMutation& mutation, const ByteMutation& mutate);

}  // namespace tarn::fuzz

#endif

// FaultInputs.h - what the fault sweeps call the filter with: one row a file and a call.
//
// A row is swept with every group of the kernel's faults. To sweep more, add rows; a place where a
// row's failure is passed over by design needs a row in StatedPlaces.cpp, too.
#ifndef TARN_TESTS_ROAD_FAULTS_FAULTINPUTS_H
#define TARN_TESTS_ROAD_FAULTS_FAULTINPUTS_H

#include <cstdint>
#include <ostream>
#include <span>
#include <string>

namespace tarn::test {

enum class FaultFormat { Eml, Msg, Pst };

// Of several calls, those in brackets come before the faults.
enum class FaultCall {
  Info,
  InfoAgain,  // (fltInfo,) fltInfo at another resolution
  InfoThenLoad,
  Load,
  LoadAgain,  // (fltInfo,) fltLoad
  Free,       // (fltInfo,) fltFreeData
  List,
  ExtractToMemory,
  ExtractToFile
};

enum class FaultRoute { InMemory, ByFile };

// What the host's slot holds at first.
enum class FaultSlot {
  None,  // the host passes no slot
  Empty,
  OtherItem,  // an item of another filter
  List,       // a list with room for the record, and what a sibling had kept for message 1
  OtherList   // a list with another item in the record's place
};

struct FaultInput {
  const char* name;  // letters and digits
  FaultFormat format;
  std::string (*file)();
  FaultCall call;
  FaultRoute route = FaultRoute::InMemory;
  int32_t message = 1;
  bool textOnly = false;
  int32_t attachment = 1;        // of extractions
  uint32_t groups = UINT32_MAX;  // that are swept: bit 1 << group
  FaultSlot slot = FaultSlot::Empty;
  bool keeps = false;  // the sibling of fltInfo wants data kept
};

std::span<const FaultInput> FaultInputs();

void PrintTo(const FaultInput& input, std::ostream* stream);

}  // namespace tarn::test

#endif

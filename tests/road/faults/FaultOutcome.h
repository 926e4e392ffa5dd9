// FaultOutcome.h - all that a host gets from one call, for comparison with that of another.
#ifndef TARN_TESTS_ROAD_FAULTS_FAULTOUTCOME_H
#define TARN_TESTS_ROAD_FAULTS_FAULTOUTCOME_H

#include <functional>
#include <string>
#include <vector>

#include "faults/FaultInputs.h"
#include "support/FakeHost.h"

namespace tarn::test {

inline constexpr int32_t kThrown = INT32_MIN;

struct FaultOutcome {
  int32_t status = 0;  // kThrown when an exception left the call
  std::string thrown;  // its text
  bool isBadAlloc = false;
  // What the sibling got.
  int32_t siblings = 0;  // calls
  int32_t siblingFormat = 0;
  std::string document;
  std::string otherDocument;   // of a second call, where it is another one
  std::string images;          // files beside the document, names and bytes
  std::string siblingRecords;  // HostFileInfo and HostLoadOptions
  // What the host got.
  std::string hostInfo;  // fltInfo: the record's bytes but for the number of attachments
  int32_t attachmentCount = 0;
  int32_t message = 0;
  int32_t loadStatus = 0;
  std::string list;  // one line an attachment, fields ended by "|"
  bool hasList = false;
  std::string extracted;
  bool hasExtracted = false;  // to memory
  // The items in the slot when the faults began, and after the call.
  std::string slotBefore;
  std::string slot;
  // What is left in the kernel and in the temporary directory after the host has let go of all, and
  // whether the I/O mode has changed.
  std::string left;

  bool operator==(const FaultOutcome&) const = default;
};

// The names of the fields that differ, each in blanks: " document images ".
std::string Differences(const FaultOutcome& a, const FaultOutcome& b);

// Runs the row's calls on the host, and lets go of all it got. `setFault` runs between the calls
// that prepare and those that are swept.
FaultOutcome Perform(
    FakeHost& host, const FaultInput& input, const std::function<void()>& setFault = [] {});

}  // namespace tarn::test

#endif

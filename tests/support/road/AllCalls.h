// AllCalls.h - every call that a host can make on one file, in a fixed order, and all that it gets.
//
// For the dumps that are compared between builds, for many threads at once, and for whoever wants
// to know that two runs answered the same. The driver sets nothing in the kernel: I/O mode,
// language and temporary directory are the caller's, who may run many drivers on as many threads.
//
//   with a slot, and siblings that leave data in it
//     info                the file is read
//     load                a page of the record in the slot
//     info again          as before: the siblings are not asked
//     info at 72 dpi      they are
//     info refused        they refuse
//     load to a target    through the target routes
//     free with a value   leaves the record alone
//     free                ends it
//   with a slot, and siblings that leave nothing
//     info bare, load bare, free bare
//   without a slot
//     info anew           with no options
//     load anew
//   attachments
//     list
//     extract N           to memory, and "extract N to file", for each that is listed and one more
#ifndef TARN_TESTS_SUPPORT_ROAD_ALLCALLS_H
#define TARN_TESTS_SUPPORT_ROAD_ALLCALLS_H

#include <cstdint>
#include <filesystem>
#include <functional>

#include "support/road/Answer.h"

namespace tarn::test {

struct AllCallsOptions {
  int32_t message = 1;
  bool textOnly = false;
  bool asksForAttachments = true;  // the calls on attachments know nothing of textOnly
  uint64_t mostAttachments = 100;
  std::filesystem::path tempFolder;  // as the kernel has it
  std::filesystem::path outFolder;   // of this driver alone, for extracted files
  std::function<void()> inSibling;   // runs in each sibling before it answers
};

using TakeAnswer = std::function<void(const Answer&)>;

// Makes all calls and hands on each answer as it comes. Nothing is left of them in the kernel, but
// what the filter itself has left behind.
void MakeAllCalls(const std::filesystem::path& file, const AllCallsOptions& options,
                  const TakeAnswer& take);

// The exports with null contexts, and the loader's stub: no file plays a part.
void MakeCallsWithoutFile(const TakeAnswer& take);

// The number of messages as fltInfo tells it: 1 for mails and MSG files. 0 for a store that no
// number up to `most` gives a document of.
int32_t CountMessages(const std::filesystem::path& file, int32_t most);

}  // namespace tarn::test

#endif

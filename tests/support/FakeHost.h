// FakeHost.h - a host that drives the filter through its exports alone, with siblings that record
// what they are given.
//
// One FakeHost is one host with one open file: it has the packed records of both calls,
// patterned where the test sets nothing, and checks after each call that only documented bytes have
// changed. Siblings get no user value, so one FakeHost at a time is the active one.
#ifndef TARN_TESTS_SUPPORT_FAKEHOST_H
#define TARN_TESTS_SUPPORT_FAKEHOST_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"
#include "support/PatternedRecord.h"
#include "support/TempDirectory.h"
#include "support/road/AttachmentBlock.h"

namespace tarn::test {

enum class Route {
  InfoByName,
  InfoFromMemory,
  LoadByName,
  LoadFromMemory,
  TargetByName,
  TargetFromMemory
};

// What a sibling was given.
struct SiblingCall {
  Route route;
  std::u16string path;      // routes by name
  std::string document;     // the bytes in memory, or those of the file
  std::string besideFiles;  // routes by name: the file's directory is listed for images
  HostFileInfo info;
  HostLoadOptions options;
  int32_t mode = 0;    // info routes
  int32_t ioMode = 0;  // the kernel's, during the call
  void* bitmap = nullptr;
  int32_t bitmapSize = 0;
  int32_t depth = 0;
  int32_t order = 0;
  int32_t flag = 0;
  void* callback = nullptr;
  uint64_t userValue = 0;
  uint64_t opaque = 0;
};

// What the siblings answer.
struct SiblingAnswer {
  int32_t result = 1;
  int32_t format = 0;  // 0 keeps the one asked for
  int32_t pageNumber = 1;
  int32_t pageCount = 3;
  int32_t width = 850;
  int32_t height = 1100;
  int32_t xResolution = 100;
  int32_t yResolution = 110;
  uint64_t dataSize = 4711;
  void* data = nullptr;
  uint64_t size = 0;
  int32_t dataFormat = -1;
  std::function<void()> action;  // runs inside the sibling, before it answers
};

class FakeHost {
 public:
  // Opens a file that holds `mail`.
  explicit FakeHost(std::string_view mail);
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;
  // Closes the file, ends the record that the slot holds, frees the slot's list.
  ~FakeHost();

  // One call each; `useSlot` passes the host's slot. The records keep what was set between calls.
  int32_t info(bool useSlot = true);
  int32_t load(bool useSlot = true);
  int32_t attachmentInfo();
  int32_t extract(int32_t number, const char16_t* outputPath = nullptr);

  // Ends the slot's record and empties the slot.
  void clearSlot();
  // Replaces the file's content; the open handle sees it.
  void rewriteFile(std::string_view bytes);

  PatternedRecord<FilterInfoContext> infoContext;
  PatternedRecord<FilterLoadContext> loadContext;
  PatternedRecord<HostFileInfo> hostInfo;
  PatternedRecord<HostLoadOptions> options;
  FilterDataSlot slot = {};
  PatternedRecord<GetAttachmentInfoContext> listContext;
  PatternedRecord<ExtractAttachmentContext> extractContext;
  PatternedRecord<AttachmentOptions> attachmentOptions;

  // What fltInfo may change in hostInfo besides the fields that it answers for every format.
  std::vector<ByteRange> moreInfoOut;

  SiblingAnswer answer;
  std::vector<SiblingCall> calls;
  const TempDirectory& directory() const { return directory_; }
  const std::u16string& path() const { return path_; }

 private:
  TempDirectory directory_;
  std::u16string path_;
  uint64_t handle_ = KERNEL_BAD_HANDLE;
};

}  // namespace tarn::test

#endif

#include "host/Siblings.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <string>

#include "Tarnbase/Kernel.h"
#include "host/Expect.h"

namespace tarn::fuzz {
namespace {

constexpr int32_t kRefusal = -5555;

int32_t InfoByName(const char16_t* path, void* info, int32_t size, int32_t, void* options) {
  Expect(size == sizeof(HostFileInfo), "a sibling got another size");
  return TheSiblings().answerFile(path, info, options);
}

int32_t InfoFromMemory(const void* data, void* info, int32_t size, uint64_t length, int32_t,
                       void* options) {
  Expect(size == sizeof(HostFileInfo), "a sibling got another size");
  return TheSiblings().answerMemory(data, length, info, options);
}

int32_t LoadByName(const char16_t* path, void*, int32_t, int32_t, int32_t, int32_t, void*, uint64_t,
                   void* options, void* info) {
  return TheSiblings().answerFile(path, info, options);
}

int32_t LoadFromMemory(const void* data, void*, int32_t, int32_t, int32_t, int32_t, void*, uint64_t,
                       uint64_t size, void* options, void* info) {
  return TheSiblings().answerMemory(data, size, info, options);
}

int32_t TargetByName(const char16_t* path, uint64_t, void* options, void* info) {
  return TheSiblings().answerFile(path, info, options);
}

int32_t TargetFromMemory(const void* data, uint64_t, uint64_t size, void* options, void* info) {
  return TheSiblings().answerMemory(data, size, info, options);
}

// Through the kernel, as a sibling opens it.
bool ReadFile(const char16_t* path, std::string& bytes) {
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle == KERNEL_BAD_HANDLE) return false;
  constexpr uint32_t kPiece = 65536;
  uint32_t count = 0;
  do {
    const size_t length = bytes.size();
    bytes.resize(length + kPiece);
    count = KernelFileRead(handle, bytes.data() + length, kPiece);
    bytes.resize(length + count);
  } while (count == kPiece);
  KernelFileClose(handle);
  return true;
}

// EF BB BF and FF FE come before the text, and its size does not count them.
uint64_t SizeWithMark(const void* data, uint64_t size) {
  constexpr uint64_t kUncounted = 2;
  const auto* const bytes = static_cast<const unsigned char*>(data);
  const bool hasMark = size != 0 && (bytes[0] == 0xEF || (bytes[0] == 0xFF && size > 1));
  return hasMark ? size + kUncounted : size;
}

}  // namespace

uint64_t ReadAll(const void* data, uint64_t size) {
  const auto* const bytes = static_cast<const unsigned char*>(data);
  uint64_t hash = 14695981039346656037u;  // FNV-1a
  for (uint64_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 1099511628211u;
  return hash;
}

Siblings& TheSiblings() {
  static Siblings siblings;
  return siblings;
}

void Siblings::start(bool readsBeyondMark) {
  readsBeyondMark_ = readsBeyondMark;
  calls_ = 0;
  sawDocument_ = false;
}

void Siblings::offer(FilterInfoContext& context) const {
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
}

void Siblings::offer(FilterLoadContext& context) const {
  context.loadByName = LoadByName;
  context.loadFromMemory = LoadFromMemory;
  context.targetByName = TargetByName;
  context.targetFromMemory = TargetFromMemory;
}

int32_t Siblings::answerFile(const char16_t* path, void* info, const void* options) {
  std::string bytes;
  // A sibling that changed the format of a document without a file gets none.
  sawDocument_ = ReadFile(path, bytes);
  Expect(sawDocument_ || path[0] == u'\0', "the document's file does not open");
  document_ = ReadAll(bytes.data(), bytes.size());
  return answer(info, options);
}

int32_t Siblings::answerMemory(const void* data, uint64_t size, void* info, const void* options) {
  int32_t format = 0;
  std::memcpy(&format, static_cast<const char*>(info) + offsetof(HostFileInfo, format),
              sizeof format);
  sawDocument_ = true;
  document_ = ReadAll(data, size);
  if (readsBeyondMark_ && format == SiblingText) ReadAll(data, SizeWithMark(data, size));
  return answer(info, options);
}

int32_t Siblings::answer(void* info, const void* options) {
  static std::array<char, 64> kept = {};
  auto* const out = static_cast<HostFileInfo*>(info);
  const auto* const asked = static_cast<const HostLoadOptions*>(options);
  Expect(out->size == sizeof(HostFileInfo) && asked->size == sizeof(HostLoadOptions),
         "a sibling got a record of another size");
  ++calls_;
  const int wanted = manner & 7;
  if (wanted == 7) throw SiblingThrow();

  constexpr int32_t kFormats[] = {0, SiblingText, SiblingHtml, 7777};
  if (const int32_t format = kFormats[manner >> 6]; format != 0) out->format = format;
  out->pageNumber = 1;
  out->pageCount = pageCount();
  out->width = (manner & 16) != 0 ? INT_MAX : 850;
  out->height = (manner & 16) != 0 ? INT_MIN : 1100;
  out->xResolution = (manner & 32) != 0 ? 0 : 100;
  out->yResolution = (manner & 32) != 0 ? 0 : 110;
  out->dataSize = 4711;
  out->siblingData = keeps ? kept.data() : nullptr;
  out->siblingDataSize = kept.size();
  out->siblingDataFormat = keptFormat;
  result_ = wanted < 4 ? StatusOk : wanted == 4 ? 0 : wanted == 5 ? kRefusal : StatusDone;
  return result_;
}

}  // namespace tarn::fuzz

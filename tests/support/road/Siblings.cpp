#include "support/road/Siblings.h"

#include <algorithm>
#include <map>

#include "Tarnbase/Kernel.h"
#include "support/road/WholeFile.h"

namespace tarn::test {
namespace {

thread_local Siblings* active = nullptr;

// No address at all: the filter passes it on unread.
void* const kKeptData = reinterpret_cast<void*>(uintptr_t{0x5EED});
constexpr uint64_t kKeptSize = 4242;
constexpr int32_t kKeptFormat = 77;

std::string Number(uint64_t value) { return std::to_string(value); }
std::string Number(int32_t value) { return std::to_string(value); }
std::string Number(const void* unread) { return Number(reinterpret_cast<uintptr_t>(unread)); }

template <typename... Values>
std::string Joined(Values... values) {
  std::string text;
  ((text += Number(values) + " "), ...);
  return text;
}

template <typename Record>
std::string_view BytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

int32_t Take(const char* route, const std::string& details, void* info, const void* options) {
  active->take(route, details, static_cast<HostFileInfo*>(info),
               static_cast<const HostLoadOptions*>(options));
  return active->result;
}

int32_t InfoByName(const char16_t* path, void* info, int32_t infoSize, int32_t mode,
                   void* options) {
  active->takeFile(path);
  return Take("info by name", Joined(infoSize, mode), info, options);
}

int32_t InfoFromMemory(const void* data, void* info, int32_t infoSize, uint64_t size, int32_t mode,
                       void* options) {
  active->takeMemory(data, size, static_cast<HostFileInfo*>(info));
  return Take("info from memory", Joined(infoSize, mode), info, options);
}

int32_t LoadByName(const char16_t* path, void* bitmap, int32_t bitmapSize, int32_t depth,
                   int32_t order, int32_t flag, void* callback, uint64_t userValue, void* options,
                   void* info) {
  active->takeFile(path);
  return Take("load by name", Joined(bitmap, bitmapSize, depth, order, flag, callback, userValue),
              info, options);
}

int32_t LoadFromMemory(const void* data, void* bitmap, int32_t bitmapSize, int32_t depth,
                       int32_t order, int32_t flag, void* callback, uint64_t userValue,
                       uint64_t size, void* options, void* info) {
  active->takeMemory(data, size, static_cast<HostFileInfo*>(info));
  return Take("load from memory",
              Joined(bitmap, bitmapSize, depth, order, flag, callback, userValue), info, options);
}

int32_t TargetByName(const char16_t* path, uint64_t opaque, void* options, void* info) {
  active->takeFile(path);
  return Take("target by name", Joined(opaque), info, options);
}

int32_t TargetFromMemory(const void* data, uint64_t opaque, uint64_t size, void* options,
                         void* info) {
  active->takeMemory(data, size, static_cast<HostFileInfo*>(info));
  return Take("target from memory", Joined(opaque), info, options);
}

int32_t DirectKind(void*) { return TARGET_KIND_DIRECT; }

}  // namespace

Siblings::Siblings(std::filesystem::path tempFolder)
    : tempFolder_(std::move(tempFolder)), before_(active) {
  active = this;
}

Siblings::~Siblings() { active = before_; }

void Siblings::set(FilterInfoContext& context) {
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
}

void Siblings::set(FilterLoadContext& context) {
  context.loadByName = LoadByName;
  context.loadFromMemory = LoadFromMemory;
  context.targetByName = TargetByName;
  context.targetFromMemory = TargetFromMemory;
}

void* Siblings::directTarget() {
  static const TargetKindFunction table[] = {nullptr, nullptr, nullptr, DirectKind};
  static const TargetKindFunction* const object = table;
  return const_cast<TargetKindFunction**>(
      reinterpret_cast<const TargetKindFunction* const*>(&object));
}

void Siblings::take(const char* route, const std::string& details, HostFileInfo* info,
                    const HostLoadOptions* options) {
  if (answer != nullptr) {
    answer->add(route, details + "in mode " + Number(KernelIoModeGet()));
    answer->add("info", BytesOf(*info));
    answer->add("options", BytesOf(*options));
  }
  if (inside) inside();
  info->pageNumber = 2;
  info->pageCount = 3;
  info->width = 850;
  info->height = 1100;
  info->xResolution = 100;
  info->yResolution = 110;
  info->dataSize = 4711;
  if (!keepsData) return;
  info->siblingData = kKeptData;
  info->siblingDataSize = kKeptSize;
  info->siblingDataFormat = kKeptFormat;
}

void Siblings::takeFile(const char16_t* path) {
  if (answer == nullptr) return;
  const std::optional<std::string> bytes = WholeFile(path);
  answer->add(bytes ? "document" : "document that cannot be opened", bytes.value_or(""));
  std::u16string native = path;
  std::replace(native.begin(), native.end(), u'\\', u'/');
  takeNeighbours(native);
}

// The images of a document, in a folder that has been made for them.
void Siblings::takeNeighbours(const std::filesystem::path& document) {
  if (tempFolder_.empty() || document.parent_path() == tempFolder_) return;
  std::map<std::string, std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(document.parent_path())) {
    if (entry.path() == document) continue;
    files[TextOf(entry.path().filename().u16string().c_str())] = entry.path();
  }
  for (const auto& [name, path] : files) {
    answer->add("beside " + name, WholeFile(path.u16string().c_str()).value_or("(no file)"));
  }
}

void Siblings::takeMemory(const void* data, uint64_t size, const HostFileInfo* info) {
  if (answer == nullptr) return;
  const char* const bytes = static_cast<const char*>(data);
  const std::string_view document(bytes, static_cast<size_t>(size));
  answer->add(data == nullptr ? "null document" : "document", document);
  const bool isMarked = document.starts_with("\xEF\xBB\xBF") || document.starts_with("\xFF\xFE");
  if (marksItsText && isMarked && info->format == SiblingText) {
    answer->add("after the document", {bytes + size, 2});
  }
}

}  // namespace tarn::test

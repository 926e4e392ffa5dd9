#include "pages/HostSiblings.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

#include "Common/ByteSearch.h"
#include "KernelFile.h"
#include "console/Paths.h"
#include "console/Text.h"
#include "pages/HostBitmap.h"

namespace tarn::host {

namespace fs = std::filesystem;
using pages::PageFailure;
using pages::Trouble;

// As a sibling gets it.
struct HostSiblings::Document {
  pages::DocumentKind kind = pages::DocumentKind::Html;
  std::string_view bytes;
  fs::path folder;
};

struct HostSiblings::LoadCall {
  HostBitmapRecord* bitmap;
  int32_t bitmapSize;
  int32_t depth;
  int32_t order;
  HostProgressFunction progress;
  uint64_t userValue;
  const HostLoadOptions* options;
  const HostFileInfo* info;
};

namespace {

// In the fields that the filter's host sets to say for which sibling a call is.
pages::DocumentKind KindOf(const HostFileInfo& info) {
  switch (info.format) {
    case SiblingHtml:
      return pages::DocumentKind::Html;
    case SiblingRtf:
      return pages::DocumentKind::Rtf;
    case SiblingText:
      return pages::DocumentKind::Text;
    default:
      throw PageFailure(Trouble::BadDocument,
                        "no sibling has the number " + std::to_string(info.format));
  }
}

int32_t StatusOf(Trouble trouble) noexcept {
  switch (trouble) {
    case Trouble::BadDocument:
      return StatusNotSupported;
    case Trouble::NoSuchPage:
      return StatusBadArgument;
    case Trouble::TooLarge:
      return StatusOutOfMemory;
    case Trouble::Stopped:
      return StatusDone;
    default:
      return StatusFailed;
  }
}

// Of the bytes and of the folder that names in them lead to.
uint64_t HashOf(std::string_view bytes, const fs::path& folder) {
  constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
  return std::hash<std::string_view>()(bytes) * kOdd + fs::hash_value(folder);
}

// The filter joins names with "\" on every system.
fs::path FolderOf(const char16_t* path) {
  fs::path file = PathFromUtf8(Utf8FromWide(path));
  std::error_code ignored;
  if (!fs::exists(file, ignored)) {
    std::string text = file.string();
    std::replace(text.begin(), text.end(), '\\', '/');
    file = text;
  }
  return file.parent_path();
}

// The size may count a part of the mark only.
bool IsMarked(std::string_view bytes) {
  using namespace std::literals;
  for (const std::string_view mark : {"\xFF\xFE"sv, "\xEF\xBB\xBF"sv}) {
    const std::string_view start = bytes.substr(0, mark.size());
    if (!start.empty() && mark.starts_with(start)) return true;
  }
  return false;
}

int32_t PixelsOf(double points, int32_t dotsPerInch) {
  constexpr double kPointsPerInch = 72;
  return static_cast<int32_t>(std::lround(points * dotsPerInch / kPointsPerInch));
}

uint64_t BitmapBytes(int32_t width, int32_t height) {
  return uint64_t{kBytesPerPixel} * static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
}

// The resolution that the record asks for.
int32_t ResolutionOf(const HostFileInfo& info) {
  const int32_t across = info.xResolution > 0 ? info.xResolution : kUsualResolution;
  const int32_t down = info.yResolution > 0 ? info.yResolution : across;
  if (info.xResolution > 0 && across != down) {
    throw PageFailure(Trouble::NoSuchPage, "pages are drawn at one resolution across and down");
  }
  return info.xResolution > 0 ? across : down;
}

// From blue, green, red and a byte of no meaning to red, green, blue.
void CopyPixels(const pages::Bitmap& from, uint8_t* to) {
  const uint8_t* at = from.pixels.data();
  const uint8_t* const end = at + from.pixels.size();
  for (; at != end; at += 4, to += kBytesPerPixel) {
    to[0] = at[2];
    to[1] = at[1];
    to[2] = at[0];
  }
}

// Hands the pixels over in a block of the kernel.
int32_t FillBitmap(const pages::Bitmap& page, int32_t dotsPerInch, int32_t pageNumber,
                   HostBitmapRecord& bitmap) {
  const uint64_t size = BitmapBytes(page.width, page.height);
  if (page.pixels.size() / 4 * kBytesPerPixel != size) return StatusFailed;
  void* const block = KernelAlloc(size, 1, __LINE__, u"HostSiblings.cpp");
  if (block == nullptr) return StatusOutOfMemory;
  CopyPixels(page, static_cast<uint8_t*>(block));
  bitmap.width = page.width;
  bitmap.height = page.height;
  bitmap.depth = kBitsPerPixel;
  bitmap.order = kRedGreenBlue;
  bitmap.xResolution = dotsPerInch;
  bitmap.yResolution = dotsPerInch;
  bitmap.pageNumber = pageNumber;
  bitmap.rowBytes = BitmapBytes(page.width, 1);
  bitmap.pixels = block;
  bitmap.pixelBytes = size;
  return StatusOk;
}

// The block that the filter kept for this document, if any.
KeptLayout* KeptBlock(const HostLoadOptions& options) {
  const bool isOurs = (options.flags & HOST_LOAD_OPTIONS_HAS_DATA) != 0 &&
                      options.data != nullptr && options.dataSize == sizeof(KeptLayout) &&
                      options.dataFormat == KeptLayout::kFormat;
  return isOurs ? static_cast<KeptLayout*>(options.data) : nullptr;
}

static_assert(std::is_trivially_copyable_v<KeptLayout>);

}  // namespace

HostSiblings* HostSiblings::active_ = nullptr;

HostSiblings::HostSiblings(PageMaker& maker, pages::Paper paper, MailFormat format)
    : maker_(maker), paper_(paper), format_(format) {
  active_ = this;
}

HostSiblings::~HostSiblings() { active_ = nullptr; }

void HostSiblings::attachTo(FilterInfoContext& context) const {
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
}

void HostSiblings::attachTo(FilterLoadContext& context) const {
  context.loadByName = LoadByName;
  context.loadFromMemory = LoadFromMemory;
  context.targetByName = TargetByName;
  context.targetFromMemory = TargetFromMemory;
}

// Turns whatever is thrown into a status, and remembers it.
template <typename Call>
int32_t HostSiblings::run(const Call& call) noexcept try {
  failure_.reset();
  return call();
} catch (const PageFailure& failure) {
  return fail(failure.trouble(), failure.what());
} catch (const std::bad_alloc&) {
  return StatusOutOfMemory;
} catch (const std::exception& error) {
  return fail(Trouble::HelperDied, error.what());
} catch (...) {
  return StatusFailed;
}

// Without memory for the reason, the status has to do.
int32_t HostSiblings::fail(Trouble trouble, const char* why) noexcept {
  try {
    failure_ = PageFailure(trouble, why);
  } catch (const std::bad_alloc&) {
    failure_.reset();
  }
  return StatusOf(trouble);
}

HostSiblings::Document HostSiblings::documentByName(const char16_t* path, std::string_view bytes,
                                                    const HostFileInfo& info) const {
  return {KindOf(info), bytes, FolderOf(path)};
}

HostSiblings::Document HostSiblings::documentInMemory(const void* data, uint64_t size,
                                                      const HostFileInfo& info) const {
  constexpr uint64_t kNotCounted = 2;
  Document document = {KindOf(info), {}, {}};
  if (data == nullptr) return document;
  document.bytes = {static_cast<const char*>(data), size};
  if (document.kind != pages::DocumentKind::Text) return document;
  if (format_ == MailFormat::Mail) {
    // TarnPst.h, "Documents".
    if (StartsWithIgnoringCase(document.bytes, "<html")) document.kind = pages::DocumentKind::Html;
  } else if (IsMarked(document.bytes)) {
    // In a mail such a mark is a part of its text, and nothing comes after the end.
    document.bytes = {document.bytes.data(), size + kNotCounted};
  }
  return document;
}

KeptLayout HostSiblings::layOut(const Document& document, const HostLoadOptions& options) {
  KeptLayout wanted;
  wanted.kind = document.kind;
  wanted.documentBytes = document.bytes.size();
  wanted.documentHash = HashOf(document.bytes, document.folder);
  const auto isThere = [&](const KeptLayout& kept) {
    return kept.kind == wanted.kind && kept.documentBytes == wanted.documentBytes &&
           kept.documentHash == wanted.documentHash && maker_.holds(kept.laidOut);
  };
  const KeptLayout* const kept = KeptBlock(options);
  if (kept != nullptr && isThere(*kept)) return *kept;
  if (last_ && isThere(*last_)) return *last_;

  pages::DocumentOnPaper onPaper;
  onPaper.kind = document.kind;
  onPaper.bytes = document.bytes;
  onPaper.folder = document.folder;
  onPaper.paper = paper_;
  wanted.laidOut = maker_.layOut(onPaper);
  return wanted;
}

// In the block that is there, else in a new one. Without memory nothing is kept.
void HostSiblings::keep(const KeptLayout& layout, const HostLoadOptions& options,
                        HostFileInfo& info) {
  void* block = KeptBlock(options);
  if (block == nullptr) {
    blocks_.reserve(blocks_.size() + 1);
    block = KernelAlloc(sizeof layout, 1, __LINE__, u"HostSiblings.cpp");
    if (block == nullptr) return;
    blocks_.emplace_back(block, sizeof layout);
  }
  std::memcpy(block, &layout, sizeof layout);
  info.siblingData = block;
  info.siblingDataSize = sizeof layout;
  info.siblingDataFormat = KeptLayout::kFormat;
}

int32_t HostSiblings::info(const Document& document, HostFileInfo& info, int32_t mode,
                           const HostLoadOptions& options) {
  constexpr int32_t kHasSlot = 3;
  const int32_t dotsPerInch = ResolutionOf(info);
  const KeptLayout layout = layOut(document, options);
  lastSibling_ = info.format;
  info.pageNumber = 1;
  info.pageCount = layout.laidOut.pageCount;
  info.width = PixelsOf(layout.laidOut.firstPage.width, dotsPerInch);
  info.height = PixelsOf(layout.laidOut.firstPage.height, dotsPerInch);
  info.xResolution = dotsPerInch;
  info.yResolution = dotsPerInch;
  info.dataSize = BitmapBytes(info.width, info.height);
  if (mode == kHasSlot) keep(layout, options, info);
  last_ = layout;
  return StatusOk;
}

int32_t HostSiblings::load(const Document& document, const LoadCall& call) {
  if (call.bitmap == nullptr || call.bitmapSize != kBitmapRecordSize ||
      call.depth != kBitsPerPixel || call.order != kRedGreenBlue) {
    return StatusBadArgument;
  }
  const int32_t dotsPerInch = ResolutionOf(*call.info);
  const KeptLayout layout = layOut(document, *call.options);
  last_ = layout;
  const int32_t most = std::max(layout.laidOut.pageCount, 1);
  const int32_t page = std::clamp(call.options->pageNumber, 1, most);
  pages::ProgressCall progress;
  if (call.progress != nullptr) {
    progress = [&call](int percent) { return call.progress(call.userValue, percent) == StatusOk; };
  }
  const pages::Bitmap drawn = maker_.draw(layout.laidOut, page, dotsPerInch, progress);
  return FillBitmap(drawn, dotsPerInch, page, *call.bitmap);
}

int32_t HostSiblings::InfoByName(const char16_t* path, void* info, int32_t, int32_t mode,
                                 void* options) {
  return active_->run([&] {
    auto& record = *static_cast<HostFileInfo*>(info);
    std::string bytes;
    const int32_t status = ReadWholeFile(path, bytes);
    if (status != StatusOk) return status;
    return active_->info(active_->documentByName(path, bytes, record), record, mode,
                         *static_cast<const HostLoadOptions*>(options));
  });
}

int32_t HostSiblings::InfoFromMemory(const void* data, void* info, int32_t, uint64_t size,
                                     int32_t mode, void* options) {
  return active_->run([&] {
    auto& record = *static_cast<HostFileInfo*>(info);
    return active_->info(active_->documentInMemory(data, size, record), record, mode,
                         *static_cast<const HostLoadOptions*>(options));
  });
}

int32_t HostSiblings::LoadByName(const char16_t* path, void* bitmap, int32_t bitmapSize,
                                 int32_t depth, int32_t order, int32_t, void* callback,
                                 uint64_t userValue, void* options, void* info) {
  const LoadCall call = {static_cast<HostBitmapRecord*>(bitmap),
                         bitmapSize,
                         depth,
                         order,
                         reinterpret_cast<HostProgressFunction>(callback),
                         userValue,
                         static_cast<const HostLoadOptions*>(options),
                         static_cast<const HostFileInfo*>(info)};
  return active_->run([&] {
    std::string bytes;
    const int32_t status = ReadWholeFile(path, bytes);
    if (status != StatusOk) return status;
    return active_->load(active_->documentByName(path, bytes, *call.info), call);
  });
}

int32_t HostSiblings::LoadFromMemory(const void* data, void* bitmap, int32_t bitmapSize,
                                     int32_t depth, int32_t order, int32_t, void* callback,
                                     uint64_t userValue, uint64_t size, void* options, void* info) {
  const LoadCall call = {static_cast<HostBitmapRecord*>(bitmap),
                         bitmapSize,
                         depth,
                         order,
                         reinterpret_cast<HostProgressFunction>(callback),
                         userValue,
                         static_cast<const HostLoadOptions*>(options),
                         static_cast<const HostFileInfo*>(info)};
  return active_->run(
      [&] { return active_->load(active_->documentInMemory(data, size, *call.info), call); });
}

int32_t HostSiblings::TargetByName(const char16_t*, uint64_t, void*, void*) {
  active_->failure_.reset();
  return StatusNotSupported;
}

int32_t HostSiblings::TargetFromMemory(const void*, uint64_t, uint64_t, void*, void*) {
  active_->failure_.reset();
  return StatusNotSupported;
}

}  // namespace tarn::host

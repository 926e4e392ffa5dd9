#include "Common/InlineImages.h"

#include "Common/ApiUtils.h"
#include "Common/Base64Encode.h"
#include "Common/ImagePass.h"
#include "Common/ImageReferences.h"

namespace tarn {
namespace {

bool EndsFileName(char c) { return c == '/' || c == ':' || c == '\\'; }

// Takes line ends out of the file's name; the directory stays as it is.
void ReplaceLineEnds(char (&path)[kPathCapacity]) {
  for (uint64_t i = std::strlen(path); i > 0 && !EndsFileName(path[i - 1]); --i) {
    if (path[i - 1] == '\r' || path[i - 1] == '\n') path[i - 1] = '_';
  }
}

int32_t WriteImage(const char16_t* path, std::string_view image) {
  FileGuard file(FileGuard::Raw, KernelRawFileCreate(path, 0));
  if (!file.isOpen()) return KernelMapLastError(StatusCreateFailed);
  if (KernelRawFileWrite(file.handle(), image.data(), image.size(), 0) != image.size()) {
    return KernelMapLastError(StatusWriteFailed);
  }
  return StatusOk;
}

// Leaves a copy of the path in the record, or none when only the list cannot grow. 1, or -1
// without memory for the copy.
int32_t RecordPath(PstFilterData& record, std::string_view path) {
  KernelBlock<char> copy = AllocateBlock<char>(path.size() + 1, TARN_HERE);
  if (!copy) return StatusOutOfMemory;
  path.copy(copy.get(), path.size());
  copy[path.size()] = '\0';
  char* const pointer = copy.get();
  if (record.inlineFiles.append(&pointer, 1) == StatusOk) copy.take();
  return StatusOk;
}

// Writes the image into the record's directory and records its path.
int32_t MakeImageFile(InlineImageContext& context, std::string_view image,
                      char (&path)[kPathCapacity]) {
  PstFilterData& record = *context.filterData;
  int32_t status = MakeInlineImagePath(path, record.tempDirectory, context.contentId, context.name);
  if (status != StatusOk) return status;
  ReplaceLineEnds(path);
  const WideText wide(path);
  if (wide.status() != StatusOk) return wide.status();

  status = WriteImage(wide.get(), image);
  if (status == StatusOk) status = RecordPath(record, path);
  if (status != StatusOk) KernelDeleteFileUtf8(path);
  return status;
}

// The image as a data: URL, in a block with room for it and zeros behind it. The media type is the
// same for every image. 1; 0 when the room is too small; -1; -13 for an image without bytes.
int32_t MakeDataUrl(std::string_view image, SizedBytes& url) {
  if (image.size() > UINT64_MAX / 2) return StatusOutOfMemory;
  // Small images do not fit: their padding takes more than the factor gives.
  const auto room = static_cast<uint64_t>(static_cast<double>(image.size()) * 1.4);
  const uint64_t blockSize = room + kDataUrlPrefix.size();
  url.setData(static_cast<char*>(KernelRealloc(nullptr, blockSize, TARN_HERE)));
  if (url.data() == nullptr) return StatusOutOfMemory;
  std::memset(url.data(), 0, blockSize);
  kDataUrlPrefix.copy(url.data(), kDataUrlPrefix.size());
  if (image.data() == nullptr || room == 0) return StatusBadArgument;

  const uint64_t encoded =
      Base64Encode(url.data() + kDataUrlPrefix.size(), room, image.data(), image.size());
  if (encoded == 0) return StatusFailed;
  url.setLength(kDataUrlPrefix.size() + encoded);
  return StatusOk;
}

// The text in a block of its own. False without memory.
bool CopyOf(std::string_view text, SizedBytes& copy) {
  copy.setData(static_cast<char*>(KernelRealloc(nullptr, text.size(), TARN_HERE)));
  if (copy.data() == nullptr) return false;
  copy.setLength(text.copy(copy.data(), text.size()));
  return true;
}

// A URL that is kept takes no more than its length. The block may stay as it is.
bool GiveBackSlack(SizedBytes& url) {
  void* const smaller = KernelRealloc(url.data(), url.length(), TARN_HERE);
  if (smaller != nullptr) url.setData(static_cast<char*>(smaller));
  return true;
}

}  // namespace

int32_t RewriteInlineImage(InlineImageContext& context, const char* block, uint64_t size,
                           uint32_t* replacements) {
  if (replacements != nullptr) *replacements = 0;
  const std::string_view image(block, block == nullptr ? 0 : size);
  const bool isFile = context.filterData->useTempFile == 1;
  char path[kPathCapacity];
  SizedBytes url;
  std::string_view replacement;
  if (isFile) {
    const int32_t status = MakeImageFile(context, image, path);
    if (status != StatusOk) return status;
    replacement = path;
    // The image lies beside the HTML file, so its name is enough.
    replacement.remove_prefix(replacement.rfind('\\') + 1);
  } else {
    const int32_t status = MakeDataUrl(image, url);
    if (status != StatusOk) return status;
    replacement = url.view();
  }

  const std::string_view needle =
      context.needle == nullptr ? std::string_view() : std::string_view(context.needle);
  uint64_t count = 0;
  int32_t status = StatusOk;
  if (context.pass == nullptr) {
    status = ReplaceImageReferences(
        *context.body, {context.searchOffset, needle, replacement, context.bodyLimit}, count);
  } else {
    if (!(isFile ? CopyOf(replacement, url) : GiveBackSlack(url))) return StatusOutOfMemory;
    status =
        context.pass->replace(context.searchOffset, needle, std::move(url),
                              isFile ? ImagePass::Kind::Name : ImagePass::Kind::DataUrl, count);
  }
  if (replacements != nullptr) *replacements = static_cast<uint32_t>(count);
  return status;
}

}  // namespace tarn

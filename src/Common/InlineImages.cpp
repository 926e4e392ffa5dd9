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

Status WriteImage(const char16_t* path, std::string_view image) {
  FileGuard file(FileGuard::Raw, KernelRawFileCreate(path, 0));
  if (!file.isOpen()) return Status::FromCode(KernelMapLastError(StatusCreateFailed));
  if (KernelRawFileWrite(file.handle(), image.data(), image.size(), 0) != image.size()) {
    return Status::FromCode(KernelMapLastError(StatusWriteFailed));
  }
  return StatusOk;
}

// Leaves a copy of the path in the record, or none when only the list cannot grow. StatusOk, or
// StatusOutOfMemory for the copy.
Status RecordPath(PstFilterData& record, std::string_view path) {
  KernelBlock<char> copy = AllocateBlock<char>(path.size() + 1, TARN_HERE);
  if (!copy) return StatusOutOfMemory;
  path.copy(copy.get(), path.size());
  copy[path.size()] = '\0';
  char* const pointer = copy.get();
  if (record.inlineFiles.append(&pointer, 1).ok()) copy.take();
  return StatusOk;
}

// Writes the image into the record's directory and records its path.
Status MakeImageFile(InlineImageContext& context, std::string_view image,
                     char (&path)[kPathCapacity]) {
  PstFilterData& record = *context.filterData;
  const Status named =
      MakeInlineImagePath(path, record.tempDirectory, context.contentId, context.name);
  if (!named.ok()) return named;
  ReplaceLineEnds(path);
  const WideText wide(path);
  if (!wide.status().ok()) return wide.status();

  Status status = WriteImage(wide.get(), image);
  if (status.ok()) status = RecordPath(record, path);
  if (!status.ok()) KernelDeleteFileUtf8(path);
  return status;
}

// The image as a data: URL, in a block with room for it and zeros after it. The media type is the
// same for every image.
//   StatusOk
//   StatusFailed       the room is too small
//   StatusOutOfMemory
//   StatusBadArgument  an image without bytes
Status MakeDataUrl(std::string_view image, SizedBytes& url) {
  if (image.size() > UINT64_MAX / 2) return StatusOutOfMemory;
  // Small images do not fit: their padding takes more than the factor gives.
  const auto room = static_cast<uint64_t>(static_cast<double>(image.size()) * 1.4);
  const uint64_t prefix = kDataUrlPrefix.size();
  const auto write = [&](char* block) {
    std::memset(block, 0, prefix + room);
    kDataUrlPrefix.copy(block, prefix);
    return prefix + Base64Encode(block + prefix, room, image.data(), image.size());
  };
  if (!url.overwrite(prefix + room, write)) return StatusOutOfMemory;
  if (room == 0) return StatusBadArgument;
  return url.length() != prefix ? StatusOk : StatusFailed;
}

// The text in a block of its own. False without memory.
bool CopyOf(std::string_view text, SizedBytes& copy) {
  return copy.overwrite(text.size(), [text](char* block) { return text.copy(block, text.size()); });
}

}  // namespace

Status RewriteInlineImage(InlineImageContext& context, std::string_view image,
                          uint32_t* replacements) {
  if (replacements != nullptr) *replacements = 0;
  const bool isFile = context.filterData->useTempFile;
  char path[kPathCapacity];
  SizedBytes url;
  std::string_view replacement;
  if (isFile) {
    if (const Status made = MakeImageFile(context, image, path); !made.ok()) return made;
    replacement = path;
    // The image lies beside the HTML file, so its name is enough.
    replacement.remove_prefix(replacement.rfind('\\') + 1);
  } else {
    if (const Status made = MakeDataUrl(image, url); !made.ok()) return made;
    replacement = url.view();
  }

  const std::string_view needle =
      context.needle == nullptr ? std::string_view() : std::string_view(context.needle);
  uint64_t count = 0;
  Status status;
  if (context.pass == nullptr) {
    status = ReplaceImageReferences(
        *context.body, {context.searchOffset, needle, replacement, context.bodyLimit}, count);
  } else {
    if (isFile && !CopyOf(replacement, url)) return StatusOutOfMemory;
    // A URL that is kept takes no more than its length. The block may stay as it is.
    if (!isFile) url.fitBlock();
    status =
        context.pass->replace(context.searchOffset, needle, std::move(url),
                              isFile ? ImagePass::Kind::Name : ImagePass::Kind::DataUrl, count);
  }
  if (replacements != nullptr) *replacements = static_cast<uint32_t>(count);
  return status;
}

}  // namespace tarn

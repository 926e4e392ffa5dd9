// InlineImages.h - puts attached images in the place of the references an HTML body makes to them:
// as a data: URL when all stays in memory, or as a file beside the HTML temp file.
#ifndef TARN_COMMON_INLINEIMAGES_H
#define TARN_COMMON_INLINEIMAGES_H

#include "Internal/PstFilterData.h"

namespace tarn {

class ImagePass;

// What every image begins with that is put into a body itself. The media type is the same for each.
inline constexpr std::string_view kDataUrlPrefix = "data:image;base64,";

// The state of one pass over a body; a local of the reader, which owns everything it points to.
struct InlineImageContext {
  PstFilterData* filterData = nullptr;  // its useTempFile selects the route
  SizedBytes* body = nullptr;           // the HTML to rewrite
  uint64_t searchOffset = 0;            // where the replacing starts
  const char* contentId = nullptr;      // long name, UTF-8, for the file's name; or null
  const char* name = nullptr;           // short name, UTF-8, for the file's name
  TrackedBuffer<char> cidText;          // "cid:%s" of the attachment in hand
  int32_t cidTextFlag = 1;
  const char* needle = nullptr;  // what is replaced, UTF-8: cidText's or name
  // What the body may grow to: a small file can refer to one image very often.
  uint64_t bodyLimit = UINT64_MAX;
  // Takes all images of the body together (ImagePass.h), or null: then each is written at once.
  ImagePass* pass = nullptr;
};

// How long the body of a file may become by images: a fixed part and a part in proportion to the
// file. Every reader sets InlineImageContext::bodyLimit to it. An image of some size with
// references without number would else make gigabytes of a small file; images that a mail program
// refers to now and then stay far below.
constexpr uint64_t BodyLimit(uint64_t fileSize) {
  constexpr uint64_t kFixedBytes = uint64_t{64} << 20;
  constexpr uint64_t kBytesPerFileByte = 16;
  return fileSize > (UINT64_MAX - kFixedBytes) / kBytesPerFileByte
             ? UINT64_MAX
             : kFixedBytes + kBytesPerFileByte * fileSize;
}

// Replaces every quoted value of the body that holds the needle (see ImageReferences.h) by the
// image: its file's name, or a data: URL. `replacements`, if not null, receives their number. An
// image file is written, and its path left in the record's inlineFiles, even when the body does not
// refer to it. With a pass, needle and searchOffset are those of AimAtReference (ImageAim.h), and
// the body changes when the pass is finished.
//
//   StatusOk                  also for a body without references, which keeps its block
//   StatusFailed              the data: URL of a small image does not fit the room of 1.4 times its
//                             size: sizes 1 to 14 and some up to 52
//   StatusBadArgument         data: URL of an image without bytes
//   StatusOutOfMemory         or the body would outgrow its limit. Replacements are made all at
//                             once: the body is then as it was
//   StatusPathFromUtf8Failed  for the path of the image's file
//   others                    failures of MakeInlineImagePath; StatusCreateFailed and
//                             StatusWriteFailed as the kernel maps them
//
// A file that could not be written or recorded for lack of memory is deleted; one whose path only
// found no place in the grown list stays without a record.
Status RewriteInlineImage(InlineImageContext& context, std::string_view image,
                          uint32_t* replacements = nullptr);

// The path of an image's file in the record's image directory, UTF-8 and terminated:
//
//   text                path
//   null or empty       <directory>name
//   name@tail           <directory>tail_name     (what comes before name: before tail)
//   name                <directory>_name
//   without the name    <directory>text_name
//
// An empty `directory` is made first, under a new temporary name, and named with a separator at its
// end; when that fails it stays empty.
//   StatusOk
//   StatusCreateFailed      the directory could not be made
//   StatusPathToUtf8Failed  its name is no text
//   StatusPathOverflow      the path is 263 bytes or longer
//   others                  failures of KernelTempFileName
Status MakeInlineImagePath(char (&path)[kPathCapacity], char16_t (&directory)[kPathCapacity],
                           const char* text, const char* name);

}  // namespace tarn

#endif

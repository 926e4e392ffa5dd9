// PstFilterData.h - the document record: one finished document and what belongs to it.
//
// The record lives in the host's slot between calls, or for one call. It is made with the new
// expression, announced to the kernel as a single object, and ended by DestroyFilterData, which
// also deletes the temporary files named here. The attachment calls use one as mere scratch, and
// then its destructor is all that runs.
#ifndef TARN_INTERNAL_PSTFILTERDATA_H
#define TARN_INTERNAL_PSTFILTERDATA_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// The bytes "PST" and a NUL.
inline constexpr uint32_t kFilterDataSignature = 0x545350;

// Room for paths that the kernel makes, in UTF-16 units and in bytes, terminator included.
inline constexpr int32_t kPathCapacity = 264;

struct PstFilterData {
  uint32_t signature = kFilterDataSignature;
  TrackedBuffer<char> document;  // its length is the size the sibling is told
  int32_t siblingFormat = 0;     // TarnSibling, or what a sibling made of it
  int32_t pageNumber = 0;        // as the sibling reported them
  int32_t pageCount = 0;
  TrackedBuffer<char*> inlineFiles{0, 5, 1};  // UTF-8 paths of images on disk, owned blocks
  char16_t tempHtmlPath[kPathCapacity] = {};
  char16_t tempDirectory[kPathCapacity] = {};  // made for inline images; empty when there is none
  int32_t width = 0;                           // from the sibling, later rescaled
  int32_t height = 0;
  int32_t xResolution = 0;  // from the sibling, later the host's wish
  int32_t yResolution = 0;
  uint64_t dataSize = 0;
  TarnFormat sniffedFormat = {};         // to report; set when the record is first used
  TarnFormat readerFormat = FormatNone;  // of the reader that made the document
  int32_t messageCount = 0;              // messages in a PST
  bool useTempFile = false;              // HTML and inline images go to the sibling as files
  Status attachmentStatus;               // first failure of inline attachments
  HostRasterOptions rasterOptions = {};  // for which the sibling was last asked
  uint32_t inlineCount = 0;
  uint32_t attachmentCount = 0;

  // Frees the paths, not the files: those are DestroyFilterData's to delete.
  ~PstFilterData() {
    for (char* const path : inlineFiles.elements()) {
      if (path != nullptr) KernelFree(path, TARN_HERE);
    }
  }
};

}  // namespace tarn

#endif

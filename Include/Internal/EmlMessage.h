// EmlMessage.h - an internet mail file as its reader leaves it for the renderer, and the one part
// that the reader works on.
//
// Both are locals of one call. Pointers named "into data" look into the block EmlMessage::data and
// own nothing.
#ifndef TARN_INTERNAL_EMLMESSAGE_H
#define TARN_INTERNAL_EMLMESSAGE_H

#include "Internal/CharsetRef.h"
#include "Internal/Tarnclasses_.h"

namespace tarn {

struct EmlMessage {
  char* data = nullptr;       // the whole file, owned, not terminated
  uint64_t capacity = 0;      // bytes allocated: file size + 1
  const char* end = nullptr;  // behind the last byte of the file
  // The first Content-Location of a multipart file with the blank in front of it, owned and
  // terminated. Kept for the record; nothing reads it.
  char* location = nullptr;
  SizedBytes body;  // as chosen by the walker; after rendering, the whole document
  const char* endCopy = nullptr;
  uint32_t documentKind = 0;  // TarnDocumentKind of body: HTML or text
  SizedBytes from;            // header values as they stand in the file, encoded words decoded
  SizedBytes to;
  SizedBytes subject;
  SizedBytes date;
  SizedBytes cc;
  SizedBytes bcc;
  SizedBytes importance;
  uint32_t convertToUtf8 = 0;    // 1: the texts are to be UTF-8
  uint32_t inlineCount = 0;      // parts with the disposition inline
  uint32_t attachmentCount = 0;  // parts with the disposition attachment

  EmlMessage() = default;
  EmlMessage(const EmlMessage&) = delete;
  EmlMessage& operator=(const EmlMessage&) = delete;
  ~EmlMessage() {
    if (location != nullptr) KernelFree(location, TARN_HERE);
    importance.release();
    bcc.release();
    cc.release();
    date.release();
    subject.release();
    to.release();
    from.release();
    body.release();
    releaseFile();
  }

  // Nothing needs the file once its parts have been walked.
  void releaseFile() {
    if (data != nullptr) KernelFree(data, TARN_HERE);
    data = nullptr;
    capacity = 0;
    end = nullptr;
    endCopy = nullptr;
  }
};

// Content-Transfer-Encoding (RFC 2045, section 6).
enum TransferEncoding : uint32_t {
  TransferQuotedPrintable = 0,
  TransferBase64 = 1,
  Transfer7Bit = 2,
  TransferRaw = 3
};

// What a part is, by the start of its Content-Type.
enum ContentClass : uint32_t {
  ContentHtml = 0,
  ContentPlain = 1,
  ContentXml = 2,
  ContentOfficeTheme = 3,
  ContentJavascript = 4,
  ContentSvg = 5,
  ContentPng = 6,
  ContentGif = 7,
  ContentJpeg = 8,
  ContentWmf = 9,
  ContentCss = 10,
  ContentPdf = 11,
  ContentOther = 12
};

enum ContentDisposition : uint32_t {
  DispositionNone = 0,
  DispositionAttachment = 1,
  DispositionInline = 2,
  DispositionOther = 3
};

// The leaf under work; one record serves all leaves of a walk.
struct EmlPart {
  KernelBlock<char> name;              // terminated; empty owner when the part has no name
  const char* locationLine = nullptr;  // into data: the Content-Location line
  TransferEncoding encoding = TransferRaw;
  ContentClass contentClass = ContentOther;
  ContentDisposition disposition = DispositionNone;
  CharsetRef charset;
  std::string_view raw;       // into data: the content as it is in the file
  KernelBlock<char> decoded;  // the content decoded, terminated; empty until somebody looks at it
  uint64_t decodedLength = 0;
  const char* start = nullptr;  // into data: the byte behind the delimiter
  uint32_t parsed = 0;
  TrackedBuffer<char> contentId;  // without its angle brackets, terminated

  // An id of nothing but one NUL is none.
  bool hasContentId() const {
    return !WithoutTrailingNul({contentId.data(), contentId.length()}).empty();
  }
};

}  // namespace tarn

#endif

// EmlMessage.h - an internet mail file as its reader leaves it for the renderer, and the one part
// that the reader works on.
//
// Both are locals of one call. Places are positions in EmlMessage::data; a view "into data" owns
// nothing.
#ifndef TARN_INTERNAL_EMLMESSAGE_H
#define TARN_INTERNAL_EMLMESSAGE_H

#include "Internal/CharsetRef.h"
#include "Internal/Tarnclasses_.h"

namespace tarn {

struct EmlMessage {
  SizedBytes data;  // the whole file
  SizedBytes body;  // as chosen by the walker; after rendering, the whole document
  TarnDocumentKind documentKind = DocumentHtml;  // of body: HTML or text
  SizedBytes from;  // header values as they are in the file, encoded words decoded
  SizedBytes to;
  SizedBytes subject;
  SizedBytes date;
  SizedBytes cc;
  SizedBytes bcc;
  SizedBytes importance;
  // The first Content-Location of a multipart file with the blank before it. Kept for the record;
  // nothing reads it. Of all blocks it is the first to be freed.
  SizedBytes location;
  bool convertToUtf8 = false;    // the texts are to be UTF-8
  uint32_t inlineCount = 0;      // parts with the disposition inline
  uint32_t attachmentCount = 0;  // parts with the disposition attachment

  std::string_view file() const { return data.view(); }
  // Nothing needs the file once its parts have been walked.
  void releaseFile() { data.release(); }
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
  SizedBytes name;                // terminated; absent when the part has no name
  std::string_view locationLine;  // into data: the Content-Location line and the header after it
  TransferEncoding encoding = TransferRaw;
  ContentClass contentClass = ContentOther;
  ContentDisposition disposition = DispositionNone;
  CharsetRef charset;
  std::string_view raw;  // into data: the content as it is in the file
  // The content decoded, with a NUL after it that does not count; absent until somebody looks.
  SizedBytes decoded;
  size_t start = 0;  // the byte after the delimiter
  bool parsed = false;
  TrackedBuffer<char> contentId;  // without its angle brackets, terminated

  // An id of nothing but one NUL is none.
  bool hasContentId() const { return !WithoutTrailingNul(contentId.view()).empty(); }
};

}  // namespace tarn

#endif

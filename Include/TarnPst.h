/* TarnPst.h - the mail-file filter: six exports, the host's records, the codes.
 *
 * The filter is a shared library that an imaging host loads beside the kernel `Tarnbase`
 * (Tarnbase/Kernel.h). It takes a PST store, an MSG compound file or an internet mail file, turns
 * one message into one document in memory (HTML, RTF or plain text) and hands that document to a
 * sibling filter of the host through function pointers; the sibling lays it out and draws. The
 * filter also lists and extracts the attachments of a message.
 *
 * Conventions
 *   - All records are packed; each offset is part of the interface and proven by an assertion.
 *     `reservedN` bytes are the host's: the filter neither reads nor writes them. Where a record
 *     ends here the host's own may go on.
 *   - A record starts as zeros; its comment tells which fields must then be set. All others may
 *     stay zero.
 *   - Texts are NUL-terminated UTF-16 unless said otherwise; sizes are in bytes.
 *   - Results are the TarnStatus values, except where a sibling's own result is passed on.
 *   - 64-bit hosts only. The functions have the platform's default C calling convention.
 *   - A damaged PST store is reported by a C++ exception derived from std::exception that leaves
 *     the export, after everything the call held has been released. No other file raises one. A
 *     host in another language calls the filter through a small C++ function that catches.
 *
 * Loading
 *   A host links both libraries, or loads the filter at run time by its full path. The filter finds
 *   the kernel beside itself, unless a library of that name is loaded already: a host with a kernel
 *   of its own loads that one first.
 *
 * Threads
 *   The filter starts no thread. Calls may run on any threads at once, as long as
 *   - no two of them use one slot, or one file handle;
 *   - the kernel's operations may be called from any thread, and its I/O mode is that of the
 *     calling thread (Tarnbase/Kernel.h). The plain kernel is such a kernel;
 *   - the siblings may be called so: each is called on the thread of the call that it serves;
 *   - nobody changes meanwhile what belongs to the whole process: the kernel's settings, the
 *     environment, the time zone.
 *   From call to call the filter keeps only what stays true once it is known, and guards it: the
 *   tables of code pages, each part made when it is first used, and which characters the installed
 *   fonts have. All else belongs to one call, or to the host's slot.
 *
 * The header compiles as C11 and as C++20.
 */
#ifndef TARNPST_H
#define TARNPST_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <assert.h>
#include <uchar.h>
#endif

#if defined(_WIN32)
#if defined(TARNPST_BUILD)
#define TARNPST_API
#else
#define TARNPST_API __declspec(dllimport)
#endif
#else
#define TARNPST_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header. Libraries whose major and minor numbers are the same have the same
 * interface. */
#define TARNPST_VERSION_MAJOR 0
#define TARNPST_VERSION_MINOR 1
#define TARNPST_VERSION_PATCH 0
#define TARNPST_VERSION "0.1.0"

/* Codes --------------------------------------------------------------------------------------- */

/* What the filter reads. The first 12 bytes of the file decide; neither its name nor its size
 * plays a part. */
enum TarnFormat {
  FormatPst = 385, /* begins with the bytes "!BDN" */
  FormatMsg = 386, /* begins with D0 CF 11 E0 A1 B1 1A E1 */
  FormatEml = 387, /* any other file of at least 12 bytes */
  FormatNone = 388 /* no reader has run */
};

/* The siblings that the document may be for. */
enum TarnSibling { SiblingRtf = 226, SiblingText = 316, SiblingHtml = 369 };

/* What a document is. A sibling is told by the TarnSibling that it is called for; see below. */
enum TarnDocumentKind {
  DocumentHtml = 0,
  DocumentRtf = 1,
  DocumentText = 2,
  DocumentNone = 3 /* not yet known */
};

/* Results. Negative numbers are those of the host's failure table. */
enum TarnStatus {
  StatusOk = 1,
  StatusDone = 2,            /* ended early with nothing wrong; a failure where it leaves
                                fltInfo, fltLoad or fltGetAttachmentInfo */
  StatusFailed = 0,          /* failed without a code of its own */
  StatusOutOfMemory = -1,    /* out of memory; a document that could not be put together */
  StatusSeekFailed = -4,     /* the file could not be measured */
  StatusWriteFailed = -5,    /* a temporary or an extracted file could not be written */
  StatusReadFailed = -7,     /* fewer than 12 bytes, or a read came short */
  StatusNotSupported = -9,   /* not a message the filter takes; the slot holds another format;
                                a PST message with a plain body only, when textOnly is not 1;
                                RTF without a font table and "\from", or with a damaged one */
  StatusOpenFailed = -10,    /* the file could not be opened */
  StatusBadArgument = -13,   /* null context, malformed list, attachment number below 1, a PST
                                without messages, an image without bytes; header text that no
                                code page of RTF carries, or that cannot be converted */
  StatusMsgOpenFailed = -14, /* the compound file could not be opened */
  StatusTimeFailed = -74,    /* a time could not be formatted; a list changed under the filter;
                                an RTF body is empty */
  StatusPathOverflow = -290, /* the path of an inline image would reach 264 characters */
  StatusNullArgument = -814, /* null context of an attachment call; null path of a store or an MSG
                                file; a part of the message is missing */
  StatusPathFromUtf8Failed = -1488,
  StatusCreateFailed = -1490,     /* a file or directory could not be made */
  StatusPathTooLong = -1778,      /* a path, or a text for RTF, too long to convert */
  StatusPathToUtf8Failed = -1851, /* text could not be turned into UTF-8 */
  StatusListIndex = -1860,        /* a list index out of range */
  StatusSiblingRefused = -1863,   /* the sibling's own code is in the context */
  StatusSlotConflict = -1935      /* a list entry holds other data */
};

/* The meaning of a result in a few words of English, for a log or a message. */
static inline const char* TarnStatusText(int32_t status) {
  switch (status) {
    case StatusOk:
      return "success";
    case StatusDone:
      return "the message ended early";
    case StatusFailed:
      return "an attachment's name or property is not valid UTF-8, or an inline image is too small "
             "for a data: URL";
    case StatusOutOfMemory:
      return "out of memory, or the document could not be put together";
    case StatusSeekFailed:
      return "the file could not be measured";
    case StatusWriteFailed:
      return "a temporary file could not be written";
    case StatusReadFailed:
      return "shorter than 12 bytes, or a read came short";
    case StatusNotSupported:
      return "not a mail file the filter takes, or one without a body it can show";
    case StatusOpenFailed:
      return "the file could not be opened";
    case StatusBadArgument:
      return "an attachment number below 1, or a store without messages";
    case StatusMsgOpenFailed:
      return "the compound file could not be opened";
    case StatusTimeFailed:
      return "a time could not be formatted";
    case StatusPathOverflow:
      return "the path of an inline image is too long";
    case StatusNullArgument:
      return "a path, a context or a part of the message is missing";
    case StatusPathFromUtf8Failed:
      return "the path of an inline image is not UTF-8";
    case StatusCreateFailed:
      return "a temporary file or directory could not be made";
    case StatusPathTooLong:
      return "the path of the temporary directory is too long";
    case StatusPathToUtf8Failed:
      return "text could not be turned into UTF-8";
    case StatusListIndex:
      return "the list of kept data has no such entry";
    case StatusSiblingRefused:
      return "the document could not be taken over";
    case StatusSlotConflict:
      return "the list of kept data holds something else";
    default:
      return "failed with a code that means nothing here";
  }
}

/* Records ------------------------------------------------------------------------------------- */

#pragma pack(push, 1)

/* What is known of a file or page: asked of a sibling, answered to the host. */
typedef struct HostFileInfo {
  uint32_t size;  /* 2316, set before each sibling call */
  int32_t format; /* the sibling's code on the way to it; a TarnFormat in the answer */
  uint8_t reserved0[1024];
  int32_t width; /* of the page, in pixels of the resolutions below */
  int32_t height;
  int32_t depth; /* answered as 24 */
  uint8_t reserved1[8];
  uint64_t dataSize; /* as the sibling gave it */
  uint8_t reserved2[44];
  int32_t answered1104; /* answered as 1 */
  int32_t pageNumber;   /* 1-based, clamped to the pages there are */
  int32_t pageCount;    /* pages of the chosen message's document */
  int32_t xResolution;  /* dots per inch */
  int32_t yResolution;
  uint32_t flags; /* 4096 on the way to the sibling from fltInfo; fltLoad clears 0x4000 */
  uint8_t reserved3[1060];
  int32_t answered2188; /* answered as 1 */
  double widthInches;   /* whole quotient of the width that stood in this record before the */
  double heightInches;  /* call by the resolution; likewise the height */
  int32_t answered2208; /* answered as 1 */
  uint8_t reserved4[68];
  int32_t messageCount; /* answered for FormatPst only */
  uint8_t reserved5[8];
  void* siblingData;        /* what the sibling wants kept for this message, with its size */
  uint64_t siblingDataSize; /* and its format */
  int32_t siblingDataFormat;
  int32_t attachmentCount; /* inline parts and attachments of the message */
} HostFileInfo;

#define HOST_LOAD_OPTIONS_HAS_DATA 4u

typedef struct HostLoadOptions {
  uint32_t size; /* 84 in the filter's copy */
  uint8_t reserved0[16];
  int32_t pageNumber; /* requested page, 1-based */
  uint8_t reserved1[32];
  uint32_t flags; /* HOST_LOAD_OPTIONS_HAS_DATA: the next three fields are set */
  void* data;
  uint64_t dataSize;
  int32_t dataFormat;
  uint32_t lastWord; /* cleared in the copy that fltInfo passes on */
} HostLoadOptions;

#define FILTER_DATA_LIST_FORMAT (-2)

/* One for each open file, owned by the host, zeroed when the file is opened but for defaultFormat,
 * the host's own number for an item of this filter (neither -1 nor -2). The filter leaves its
 * document record here. A host that passes no slot gets every file read anew. */
typedef struct FilterDataSlot {
  uint8_t reserved0[12];
  void* data; /* the filter's record, or a FilterDataList when dataFormat is -2 */
  uint8_t reserved1[4];
  int32_t defaultFormat;
  uint8_t reserved2[28];
  uint64_t dataSize;
  int32_t dataFormat;
} FilterDataSlot;

typedef struct FilterDataEntry {
  void* data;
  uint64_t size;
  int32_t format;
  uint32_t flags;
} FilterDataEntry;

#define FILTER_DATA_LIST_SIGNATURE 0x544C4D4Cu /* "LMLT" */

/* The block a slot points to when several items share it; a kernel block of `size` bytes. Entry 0
 * is the filter's record, entry k + 1 what the sibling wants kept for message index k. */
typedef struct FilterDataList {
  uint32_t signature;
  int32_t count; /* entries in use */
  uint64_t size; /* (capacity - 1) x 24 + 40 */
  FilterDataEntry entries[1];
} FilterDataList;

/* Documents.
 *
 * A sibling is told what kind of document it gets by `format` of the HostFileInfo that it is called
 * with: SiblingHtml, SiblingRtf or SiblingText. Nothing else tells: the host's answer has the
 * format of the file there. With textOnly it is always SiblingText. A mail file has one document
 * only, which textOnly does not change, so that this sibling may get HTML.
 *
 *   HTML              The bytes of the message, with header rows in UTF-8. Where a row has more
 *                     than ASCII, a body whose charset is known is turned into UTF-8, and its
 *                     declaration too. What declares no charset is UTF-8, or what the message had.
 *   RTF               ASCII with RTF's own escapes.
 *   text of a mail    Header rows in UTF-8, then the text as the mail has it or in UTF-8.
 *   text of an MSG    EF BB BF, header rows in UTF-8, then the text in UTF-8, or as the file has
 *                     it where that is 8-bit text.
 *   text of a store   FF FE, header rows in UTF-8, then the text in UTF-16, little-endian. The mark
 *                     speaks of the text alone; the rows are lines of label, tab, value, CR LF.
 *
 *   EF BB BF, FF FE   The size does not count the mark, though the data begins with it. So the last
 *                     two bytes of the text come after the end of the data; they may be read there.
 *   +/v               Is before content that a mail sends with the transfer encoding "7bit": at
 *                     the start of a plain text, and after "<html>" of HTML. It is no text, and no
 *                     sign of UTF-7: a sibling leaves these three bytes out.
 */

/* Siblings. `info` points to a HostFileInfo, `options` to a HostLoadOptions; both are the filter's
 * for the time of the call. Result 1 is success.
 *
 *   by name      HTML, unless the kernel's I/O mode is 3: in a temporary file of the filter's, with
 *                inline images beside it under relative names. The path may hold "\" on any system:
 *                open it with KernelFileOpen.
 *   from memory  everything else. Inline images of HTML in mode 3 are data: URLs. The size may
 *                count one or two NULs after the text, and may be 0, with null data.
 *   mode         3 when the host passed a slot, else 1.
 *   numbers      infoSize is 2316, bitmapSize 284, depth 24, order 1, flag 32: always these.
 *
 * An info sibling sets pageCount (0 makes every page number 0), width, height, dataSize, and
 * resolutions other than 0. What it leaves in siblingData comes back in the options of later calls
 * for the same message. A function that is null counts, when its route is taken, as one that
 * answers 0. */
typedef int32_t (*InfoByNameFunction)(const char16_t* path, void* info, int32_t infoSize,
                                      int32_t mode, void* options);
typedef int32_t (*InfoFromMemoryFunction)(const void* data, void* info, int32_t infoSize,
                                          uint64_t size, int32_t mode, void* options);
typedef int32_t (*LoadByNameFunction)(const char16_t* path, void* bitmap, int32_t bitmapSize,
                                      int32_t depth, int32_t order, int32_t flag, void* callback,
                                      uint64_t userValue, void* options, void* info);
typedef int32_t (*LoadFromMemoryFunction)(const void* data, void* bitmap, int32_t bitmapSize,
                                          int32_t depth, int32_t order, int32_t flag,
                                          void* callback, uint64_t userValue, uint64_t size,
                                          void* options, void* info);
typedef int32_t (*TargetByNameFunction)(const char16_t* path, uint64_t opaque, void* options,
                                        void* info);
typedef int32_t (*TargetFromMemoryFunction)(const void* data, uint64_t opaque, uint64_t size,
                                            void* options, void* info);

/* What a host wants of the raster; a change of it makes fltInfo ask the sibling again. */
typedef struct HostRasterOptions {
  uint8_t reserved0[56];
  uint32_t xResolution; /* wanted, dots per inch; 0 keeps the sibling's */
  uint32_t yResolution;
  uint8_t reserved1[4];
} HostRasterOptions;

/* To be set: path, handle, info, messageNumber and the two siblings.
 *
 * Both path and handle name the file. The handle tells its format, and a mail file is read through
 * it; stores and MSG files are opened by their path, for which null gives StatusNullArgument. */
typedef struct FilterInfoContext {
  const char16_t* path;
  uint8_t reserved0[4];
  uint64_t handle;    /* of KernelFileOpen, for reading; the filter moves its position. Stays open,
                         the host's to close */
  HostFileInfo* info; /* out: the answer; zeros before the call. Null:
                         StatusBadArgument */
  FilterDataSlot* slot; /* or null: then nothing is kept, and each call reads the file anew */
  uint8_t reserved1[20];
  const HostLoadOptions* options; /* the wanted page; a copy goes to the sibling. Null for zeros */
  uint8_t reserved2[792];
  InfoByNameFunction infoByName;
  uint8_t reserved3[24];
  InfoFromMemoryFunction infoFromMemory;
  uint8_t reserved4[52];
  HostRasterOptions raster;
  uint8_t reserved5[108];
  int32_t messageNumber; /* in: 1-based, 1 for a file of one message; out: 0-based index of the
                            message used. A PST clamps it; for one message a file it is the number
                            asked for less 1 */
  int32_t textOnly;      /* 1 asks for the plain text and the text sibling */
  uint8_t reserved6[236];
  int32_t siblingResult; /* out: the sibling's own code with StatusSiblingRefused */
} FilterInfoContext;

#define TARGET_KIND_DIRECT 10

/* The first word of a target object points to a table of functions; the fourth tells its kind. */
typedef int32_t (*TargetKindFunction)(void* self);

/* To be set: path (null: StatusOpenFailed), messageNumber, bitmap, info, status, and the two load
 * siblings; the target functions only with a target of kind 10. With a record in the slot the file
 * is not read again: then path, messageNumber and textOnly play no part. */
typedef struct FilterLoadContext {
  const char16_t* path;
  void* bitmap; /* the host's bitmap record, passed on unread */
  uint8_t reserved0[4];
  void* callback; /* progress callback and its value, passed on unread */
  uint64_t userValue;
  uint8_t reserved1[36];
  const HostFileInfo* info; /* copied as the model for the sibling's: fltInfo's answer, or null */
  FilterDataSlot* slot;     /* or null */
  uint8_t reserved2[1912];
  const HostLoadOptions* options; /* a copy goes to the sibling. Null for zeros */
  uint8_t reserved3[20];
  int32_t status; /* in 1: takes the first failure of inline attachments, if any */
  uint8_t reserved4[312];
  int32_t messageNumber; /* 1-based */
  int32_t textOnly;
  uint64_t opaque; /* for the target routes */
  void* target;    /* or null; kind 10 selects the target routes */
  uint8_t reserved5[8];
  LoadByNameFunction loadByName;
  LoadFromMemoryFunction loadFromMemory;
  uint8_t reserved6[228];
  TargetByNameFunction targetByName;
  TargetFromMemoryFunction targetFromMemory;
} FilterLoadContext;

/* The options record of the attachment calls, as far as the filter reads it. */
typedef struct AttachmentOptions {
  uint8_t reserved0[4];
  int32_t messageNumber; /* 1-based */
} AttachmentOptions;

/* One property of an attachment: NUL-terminated, the value cut to 127 units. Mail files give
 * "Content-Disposition", "Content-ID" and "MineType" (spelt so), PST stores and MSG files
 * "Content-ID" and "MimeType", as far as the attachment has them. In a PST store the content id is
 * the long file name, which is what its HTML bodies refer to. */
typedef struct AttachmentProperty {
  char16_t name[128];
  char16_t value[128];
} AttachmentProperty;

typedef struct AttachmentInfoItem {
  uint64_t number;       /* 1-based */
  char16_t* name;        /* file name, or null */
  void* reserved0;       /* null */
  char16_t* description; /* or null */
  uint64_t size;         /* of the data; 0 unless the reader had it at hand, as mail files do */
  int64_t creationTime;  /* seconds since 1970, 0 when unknown. A mail file's date is taken as
                            local time, whatever zone it names */
  int64_t modificationTime;
  uint64_t propertyCount;
  AttachmentProperty* properties;
  uint64_t reserved1;
  uint64_t reserved2;
} AttachmentInfoItem;

typedef struct AttachmentInfoBlock {
  uint32_t reserved0; /* 0 */
  int32_t format;     /* TarnFormat of the file */
  uint32_t reserved1; /* 0 */
  uint32_t itemSize;  /* 88 */
  uint64_t itemCount;
  AttachmentInfoItem* items; /* null when there are none */
} AttachmentInfoBlock;

/* To be set: path (null: StatusOpenFailed). */
typedef struct GetAttachmentInfoContext {
  uint8_t reserved0[8];
  const char16_t* path;
  uint8_t reserved1[24];
  AttachmentInfoBlock* block; /* out */
  uint8_t reserved2[12];
  const AttachmentOptions* options; /* null for the first message */
} GetAttachmentInfoContext;

/* To be set: path (null: StatusOpenFailed), attachmentNumber. */
typedef struct ExtractAttachmentContext {
  uint8_t reserved0[8];
  const char16_t* path;
  uint8_t reserved1[24];
  int32_t attachmentNumber; /* 1-based */
  uint8_t reserved2[4];
  const char16_t* outputPath; /* or null for memory */
  void* data;                 /* out: the data, for memory output */
  uint64_t size;              /* out: its size */
  uint8_t reserved3[12];
  const AttachmentOptions* options; /* null for the first message */
} ExtractAttachmentContext;

#pragma pack(pop)

#include "TarnPstLayout.h"

/* Exports -------------------------------------------------------------------------------------- */

/* Learns about a file: reads the chosen message, has the sibling lay it out, fills context->info.
 *
 * Ownership: all pointers in the context stay the host's. With a slot, the document record is left
 * in it on success, and the host ends it with fltFreeData; later calls on that slot reuse the
 * document, whichever message number they name. Whatever data a sibling left in the slot's list is
 * the sibling's to free, and the list itself is freed by the host with KernelFree. Without a slot
 * nothing is left behind. */
TARNPST_API int32_t fltInfo(FilterInfoContext* context);

/* Has the sibling draw a page into context->bitmap, and returns the sibling's result.
 *
 * Ownership: as fltInfo, but a record that is made here dies here; a slot is only read. When the
 * HTML temp file cannot be written, the record and the open file stay behind. */
TARNPST_API int32_t fltLoad(FilterLoadContext* context);

/* Ends the record that fltInfo left in a slot, with its temporary files.
 *
 * Ownership: takes `data`, which must be the slot's record (slot.data or, where the slot holds a
 * list, entries[0].data), and frees it; the host then clears the slot and frees the list. With a
 * non-zero `value`, or data that is no such record, nothing is done. StatusOk; StatusBadArgument
 * for null. */
TARNPST_API int32_t fltFreeData(void* data, int32_t value);

/* Lists the attachments of a message in context->block.
 *
 * Ownership: the block, its array, and each item's name, description and properties belong to the
 * host, which frees each non-null one, then the array, then the block, with KernelFree. On failure
 * there is no block; what items listed before the failure own stays allocated. */
TARNPST_API int32_t fltGetAttachmentInfo(GetAttachmentInfoContext* context);

/* Delivers one attachment to context->outputPath or, where that is null, to memory.
 *
 * Ownership: memory output is a block that the host frees with KernelFree. A message without an
 * attachment of that number gives 1 and leaves the output as it was: a host that sets `size` to all
 * ones before the call can tell that from an empty attachment. */
TARNPST_API int32_t fltExtractAttachment(ExtractAttachmentContext* context);

/* The loader's stub: hands its own address and the last three arguments to the kernel.
 *
 * Ownership: none changes hands. */
TARNPST_API int64_t TARN_Load(uint64_t a, uint64_t b, uint64_t c, uint64_t d);

#ifdef __cplusplus
}
#endif

#endif

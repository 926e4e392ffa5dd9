/* pages.c - a host in C, from opening a mail file to closing it: lays the document out in lines,
 * ten a page, and draws one page of it into a file.
 *
 *     pages MAIL PAGE OUT
 *
 * Built with nothing but what is installed: cc pages.c $(pkg-config --cflags --libs tarnpst)
 * MinGW-w64 takes -municode besides.
 *
 * A damaged PST store ends in a C++ exception, which C cannot catch: a host that opens stores of
 * unknown origin calls through the library that ../shim/status.c uses, or wraps its calls in C++,
 * as
 * ../cpp/summary.cpp does.
 */
#include <TarnPst.h>
#include <Tarnbase/Kernel.h>
#include <Tarnbase/PlainKernel.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#define LINES_A_PAGE 10

/* Kernel blocks carry a source location. */
#define HERE __LINE__, u"pages.c"

/* Layout: the document's bytes as lines ------------------------------------------------------- */

/* The bytes of the line that begins at `text`, its end included. */
static uint64_t LineBytes(const char* text, uint64_t size) {
  const char* end = memchr(text, '\n', size);
  return end == NULL ? size : (uint64_t)(end - text) + 1;
}

/* The size may count NULs behind the text. */
static uint64_t TextBytes(const char* text, uint64_t size) {
  while (size > 0 && text[size - 1] == '\0') --size;
  return size;
}

/* Where the line behind so many lines begins; at most `size`. */
static uint64_t SkipLines(const char* text, uint64_t size, int32_t lines) {
  uint64_t position = 0;
  while (lines-- > 0 && position < size) position += LineBytes(text + position, size - position);
  return position;
}

/* Siblings: what the filter calls with the finished document ----------------------------------- */

static int32_t InfoFromMemory(const void* data, void* info, int32_t infoSize, uint64_t size,
                              int32_t mode, void* options) {
  const char* text = data;
  HostFileInfo* answer = info;
  uint64_t position = 0;
  int32_t pages = 0;
  (void)infoSize, (void)mode, (void)options;

  size = TextBytes(text, size);
  while (position < size) {
    position += SkipLines(text + position, size - position, LINES_A_PAGE);
    ++pages;
  }
  answer->pageCount = pages;
  answer->width = 80; /* of a page, in dots of the resolution below: one dot a character */
  answer->height = LINES_A_PAGE;
  answer->xResolution = 10; /* never 0 */
  answer->yResolution = 6;
  answer->dataSize = size;
  return StatusOk;
}

/* The bitmap is whatever the host gave to fltLoad: here the file that takes the page. */
static int32_t LoadFromMemory(const void* data, void* bitmap, int32_t bitmapSize, int32_t depth,
                              int32_t order, int32_t flag, void* callback, uint64_t userValue,
                              uint64_t size, void* options, void* info) {
  const char* text = data;
  const HostLoadOptions* wanted = options;
  uint64_t begin, bytes;
  (void)bitmapSize, (void)depth, (void)order, (void)flag;
  (void)callback, (void)userValue, (void)info;

  size = TextBytes(text, size);
  begin = SkipLines(text, size, (wanted->pageNumber - 1) * LINES_A_PAGE);
  bytes = SkipLines(text + begin, size - begin, LINES_A_PAGE);
  return fwrite(text + begin, 1, bytes, bitmap) == bytes ? StatusOk : StatusWriteFailed;
}

/* The host ------------------------------------------------------------------------------------- */

static int32_t AskPages(const char16_t* path, uint64_t handle, FilterDataSlot* slot,
                        HostFileInfo* info) {
  FilterInfoContext context;
  HostLoadOptions options;
  memset(&context, 0, sizeof context);
  memset(&options, 0, sizeof options);
  context.path = path;
  context.handle = handle;
  context.info = info;
  context.slot = slot;
  context.options = &options;
  context.infoFromMemory = InfoFromMemory;
  context.messageNumber = 1;
  return fltInfo(&context);
}

static int32_t DrawPage(const char16_t* path, FilterDataSlot* slot, const HostFileInfo* info,
                        int32_t page, FILE* out) {
  FilterLoadContext context;
  HostLoadOptions options;
  memset(&context, 0, sizeof context);
  memset(&options, 0, sizeof options);
  options.pageNumber = page;
  context.path = path;
  context.bitmap = out;
  context.info = info;
  context.slot = slot; /* holds the document: the file is not read again */
  context.options = &options;
  context.status = StatusOk;
  context.messageNumber = 1;
  context.loadFromMemory = LoadFromMemory;
  return fltLoad(&context);
}

static void EndSlot(FilterDataSlot* slot) {
  if (slot->data == NULL) return;
  if (slot->dataFormat == FILTER_DATA_LIST_FORMAT) {
    FilterDataList* list = slot->data;
    fltFreeData(list->entries[0].data, 0);
    KernelFree(list, HERE);
  } else {
    fltFreeData(slot->data, 0);
  }
  memset(slot, 0, sizeof *slot);
}

static int32_t Run(const char16_t* path, int32_t page, FILE* out) {
  FilterDataSlot slot;
  HostFileInfo info;
  int32_t status;
  uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle == KERNEL_BAD_HANDLE) return StatusOpenFailed;

  memset(&slot, 0, sizeof slot);
  memset(&info, 0, sizeof info);
  slot.defaultFormat = 1; /* our own number for "an item of this filter" */
  status = AskPages(path, handle, &slot, &info);
  if (status == StatusOk) {
    printf("page %d of %d\n", (int)page, (int)info.pageCount);
    status = page > info.pageCount ? StatusBadArgument : DrawPage(path, &slot, &info, page, out);
  }
  EndSlot(&slot);
  KernelFileClose(handle);
  return status;
}

/* `mail` is the path as it is shown. */
static int Pages(const char16_t* path, const char* mail, int32_t page, FILE* out) {
  int32_t status;
  PlainKernelSetIoMode(KERNEL_IO_IN_MEMORY); /* so that siblings from memory are all it takes */
  status = Run(path, page, out);
  if (fclose(out) != 0 && status == StatusOk) status = StatusWriteFailed;
  if (status != StatusOk) fprintf(stderr, "%s: the filter answered %d\n", mail, (int)status);
  return status == StatusOk ? 0 : 1;
}

static int Usage(void) {
  fprintf(stderr, "usage: pages MAIL PAGE OUT\n");
  return 2;
}

static int Unwritable(void) {
  fprintf(stderr, "pages: OUT cannot be written\n");
  return 2;
}

#if defined(_WIN32)

/* Windows gives arguments as UTF-16 here, which is what paths of the filter are. */
int wmain(int argc, wchar_t** argv) {
  const char16_t* path;
  char mail[4096];
  FILE* out;

  if (argc != 4 || _wtoi(argv[2]) < 1) return Usage();
  path = (const char16_t*)argv[1];
  /* With its NUL. */
  if (KernelWideToUtf8(path, (int64_t)wcslen(argv[1]) + 1, mail, sizeof mail) == 0) return 2;
  out = _wfopen(argv[3], L"wb");
  return out == NULL ? Unwritable() : Pages(path, mail, _wtoi(argv[2]), out);
}

#else

/* Arguments are UTF-8 here. */
int main(int argc, char** argv) {
  char16_t path[4096];
  FILE* out;

  if (argc != 4 || atoi(argv[2]) < 1) return Usage();
  /* With its NUL. */
  if (KernelUtf8ToWide(argv[1], (int64_t)strlen(argv[1]) + 1, path, 4096) == 0) return 2;
  out = fopen(argv[3], "wb");
  return out == NULL ? Unwritable() : Pages(path, argv[1], atoi(argv[2]), out);
}

#endif

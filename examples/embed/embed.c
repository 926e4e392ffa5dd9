/* embed.c - the smallest host: prints the document that the filter makes of a mail file, and the
 * names of its attachments. Links Tarnbase and TarnPst.
 *
 *     embed mail.eml
 *
 * With nothing but what is installed: cc embed.c $(pkg-config --cflags --libs tarnpst)
 *
 * A damaged PST store ends this program, because nobody catches its exception. A host in C that
 * is to live on calls the filter through catching-shim.h (docs/embedding.md).
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

#include "TarnPst.h"
#include "Tarnbase/Kernel.h"

/* Kernel blocks carry a source location. */
#define HERE __LINE__, u"embed.c"

/* The sibling for HTML on disk: a real one lays the file out; this one prints it. */
static int32_t InfoByName(const char16_t* path, void* info, int32_t infoSize, int32_t mode,
                          void* options) {
  HostFileInfo* answer = info;
  char buffer[4096];
  uint32_t got;
  uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  (void)infoSize, (void)mode, (void)options;
  if (handle == KERNEL_BAD_HANDLE) return StatusOpenFailed;
  while ((got = KernelFileRead(handle, buffer, sizeof buffer)) != 0) fwrite(buffer, 1, got, stdout);
  KernelFileClose(handle);
  answer->pageCount = 1;
  answer->xResolution = answer->yResolution = 96; /* never 0 */
  return StatusOk;
}

/* The siblings for everything that stays in memory. */
static int32_t InfoFromMemory(const void* data, void* info, int32_t infoSize, uint64_t size,
                              int32_t mode, void* options) {
  HostFileInfo* answer = info;
  (void)infoSize, (void)mode, (void)options;
  fwrite(data, 1, size, stdout);
  answer->pageCount = 1;
  answer->xResolution = answer->yResolution = 96;
  return StatusOk;
}

static int PrintDocument(const char16_t* path) {
  FilterInfoContext context;
  HostFileInfo info;
  HostLoadOptions options;
  int32_t status;

  memset(&context, 0, sizeof context);
  memset(&info, 0, sizeof info);
  memset(&options, 0, sizeof options);
  context.path = path;
  context.handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (context.handle == KERNEL_BAD_HANDLE) return StatusOpenFailed;
  context.info = &info;
  context.options = &options;
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
  context.messageNumber = 1;
  status = fltInfo(&context); /* no slot: nothing is left behind */
  KernelFileClose(context.handle);
  return status;
}

/* The text in a block of its own, or null without memory. A mail may name an attachment at any
 * length: a unit takes three bytes at most, and the block is zeroed, so that the text always ends.
 */
static char* Utf8(const char16_t* text) {
  uint64_t units = 0, bytes;
  char* utf8;
  while (text[units] != 0) ++units;
  bytes = 3 * units + 1;
  utf8 = KernelAllocZero(bytes, 1, HERE);
  if (utf8 != NULL) KernelWideToUtf8(text, (int64_t)units, utf8, (int64_t)bytes);
  return utf8;
}

static int PrintAttachments(const char16_t* path) {
  GetAttachmentInfoContext context;
  AttachmentOptions options;
  uint64_t i;
  int32_t status;

  memset(&context, 0, sizeof context);
  memset(&options, 0, sizeof options);
  options.messageNumber = 1;
  context.path = path;
  context.options = &options;
  status = fltGetAttachmentInfo(&context);
  if (status != StatusOk) return status;

  for (i = 0; i < context.block->itemCount; ++i) {
    AttachmentInfoItem* item = &context.block->items[i];
    char* name = item->name != NULL ? Utf8(item->name) : NULL;
    printf("\nattachment %d: %s, %d bytes", (int)item->number, name != NULL ? name : "(no name)",
           (int)item->size);
    if (name != NULL) KernelFree(name, HERE);
    if (item->name != NULL) KernelFree(item->name, HERE);
    if (item->description != NULL) KernelFree(item->description, HERE);
    if (item->properties != NULL) KernelFree(item->properties, HERE);
  }
  printf("\n");
  if (context.block->items != NULL) KernelFree(context.block->items, HERE);
  KernelFree(context.block, HERE);
  return StatusOk;
}

static int Embed(const char16_t* path) {
  int status = PrintDocument(path);
  if (status == StatusOk) status = PrintAttachments(path);
  if (status != StatusOk) fprintf(stderr, "%s (%d)\n", TarnStatusText(status), status);
  return status == StatusOk ? 0 : 1;
}

static int Usage(void) {
  fprintf(stderr, "usage: embed FILE\n");
  return 2;
}

#if defined(_WIN32)

/* Windows gives arguments as UTF-16 here (MinGW-w64: link with -municode), which is what paths of
 * the filter are, and would translate line ends in the document. */
int wmain(int argc, wchar_t** argv) {
  if (argc != 2) return Usage();
  _setmode(_fileno(stdout), _O_BINARY);
  return Embed((const char16_t*)argv[1]);
}

#else

int main(int argc, char** argv) {
  char16_t path[4096];
  if (argc != 2) return Usage();
  if (KernelUtf8ToWide(argv[1], (int64_t)strlen(argv[1]) + 1, path, 4096) == 0) return 2;
  return Embed(path);
}

#endif

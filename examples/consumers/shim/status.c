/* status.c - a host in C that opens stores of unknown origin: asks for the document of a mail file
 * through the catching shim, and prints the status and, when the filter threw, the text.
 *
 *     status MAIL
 *
 * Any compiler for the system builds it: the shim, of which the sources lie beside this, is the
 * only library that has to come from the filter's own compiler. Links the shim and Tarnbase, not
 * TarnPst.
 */
#include "catching-shim.h"

#include <Tarnbase/Kernel.h>
#include <Tarnbase/PlainKernel.h>
#include <stdio.h>
#include <string.h>

/* The sibling for all documents: a real one lays them out. */
static int32_t InfoFromMemory(const void* data, void* info, int32_t infoSize, uint64_t size,
                              int32_t mode, void* options) {
  HostFileInfo* answer = info;
  (void)data, (void)infoSize, (void)size, (void)mode, (void)options;
  answer->pageCount = 1;
  answer->xResolution = answer->yResolution = 96; /* never 0 */
  return StatusOk;
}

static int Status(const char16_t* path) {
  FilterInfoContext context;
  HostFileInfo info;
  HostLoadOptions options;
  char what[256];
  int32_t status;

  memset(&context, 0, sizeof context);
  memset(&info, 0, sizeof info);
  memset(&options, 0, sizeof options);
  context.path = path;
  context.handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (context.handle == KERNEL_BAD_HANDLE) {
    fprintf(stderr, "status: MAIL cannot be opened\n");
    return 2;
  }
  context.info = &info;
  context.options = &options;
  context.infoFromMemory = InfoFromMemory;
  context.messageNumber = 1;
  PlainKernelSetIoMode(KERNEL_IO_IN_MEMORY); /* so that a sibling from memory is all it takes */
  status = ShimInfo(&context);               /* no slot: nothing is left behind */
  KernelFileClose(context.handle);

  printf("status %d\n", (int)status);
  if (ShimWhat(what, sizeof what) != 0) printf("%s\n", what);
  return status == StatusOk ? 0 : 1;
}

static int Usage(void) {
  fprintf(stderr, "usage: status MAIL\n");
  return 2;
}

#if defined(_WIN32)

/* Windows gives arguments as UTF-16 here (MinGW-w64: link with -municode). */
int wmain(int argc, wchar_t** argv) {
  return argc == 2 ? Status((const char16_t*)argv[1]) : Usage();
}

#else

/* Arguments are UTF-8 here. */
int main(int argc, char** argv) {
  char16_t path[4096];
  if (argc != 2) return Usage();
  /* With its NUL. */
  if (KernelUtf8ToWide(argv[1], (int64_t)strlen(argv[1]) + 1, path, 4096) == 0) return 2;
  return Status(path);
}

#endif

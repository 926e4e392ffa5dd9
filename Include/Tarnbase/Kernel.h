/* Kernel.h - the host kernel, as the filter sees it.
 *
 * The filter asks the operating system for nothing. Memory, files, temporary names, text
 * conversion, the language and the I/O mode all come from `Tarnbase`, the kernel library that the
 * host loads beside it, under the names below. A host redirects the filter's files and budgets its
 * memory here.
 *
 * Conventions
 *   status   signed 32-bit: 1 is success, anything else a failure code (see TarnPst.h).
 *   handle   unsigned 64-bit; KERNEL_BAD_HANDLE (all ones) is the failed handle.
 *   wide     a NUL-terminated run of UTF-16 code units, on every platform.
 *   line, file  the source location of the call, kept for leak reports only; `file` must live as
 *            long as the block (a literal does).
 *
 * The header compiles as C11 and as C++20.
 */
#ifndef TARNBASE_KERNEL_H
#define TARNBASE_KERNEL_H

#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

#if defined(_WIN32)
#if defined(TARNBASE_BUILD)
#define TARNBASE_API
#else
#define TARNBASE_API __declspec(dllimport)
#endif
#else
#define TARNBASE_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define KERNEL_BAD_HANDLE UINT64_MAX

/* Memory -------------------------------------------------------------------------------------- */

/* A new block of count x size bytes, contents undefined; null when exhausted or when the product
 * does not fit 64 bits. 0 bytes give a block that can be freed. */
TARNBASE_API void* KernelAlloc(uint64_t count, uint64_t size, int32_t line, const char16_t* file);

/* As KernelAlloc, zero filled. */
TARNBASE_API void* KernelAllocZero(uint64_t count, uint64_t size, int32_t line,
                                   const char16_t* file);

/* Resizes or moves; a null block allocates. Contents are kept up to the smaller size. Null when
 * exhausted, and then the old block stays valid. */
TARNBASE_API void* KernelRealloc(void* block, uint64_t bytes, int32_t line, const char16_t* file);

/* Frees a block of the three above. What is not a live block, null included, aborts the process,
 * here and in KernelRealloc (but for null there). */
TARNBASE_API void KernelFree(void* block, int32_t line, const char16_t* file);

/* Kinds of tracked objects: those made with the new expression. */
#define KERNEL_TRACK_OBJECT 4
#define KERNEL_TRACK_ARRAY 5

/* Announces an object right after its construction, and takes the announcement back right before
 * its destruction. Untracking what is not tracked with that kind aborts the process. An object
 * tracked twice is to be untracked twice. */
TARNBASE_API void KernelTrackObject(int32_t kind, const void* object, int32_t line,
                                    const char16_t* file);
TARNBASE_API void KernelUntrackObject(int32_t kind, const void* object, int32_t line,
                                      const char16_t* file);

#define KERNEL_MEMORY_WANT 2   /* may the filter hold `bytes` more? */
#define KERNEL_MEMORY_RETURN 3 /* the filter gives `bytes` back */
#define KERNEL_MEMORY_FAILED \
  5 /* an allocation of `bytes` failed; the result is the code to report */

/* The memory budget. `reserved` is 0. Giving back more than is held gives back what is held.
 *   StatusOk             granted, or given back;
 *   StatusOutOfMemory    refused; the answer to KERNEL_MEMORY_FAILED;
 *   StatusBadArgument    another action. */
TARNBASE_API int32_t KernelMemoryReport(int32_t action, uint64_t bytes, int32_t reserved);

/* Files through the host's I/O ---------------------------------------------------------------- */

#define KERNEL_OPEN_READ 0     /* read an existing file */
#define KERNEL_OPEN_CREATE 769 /* write only, create, truncate */
#define KERNEL_OPEN_MODE 256   /* the only mode the filter passes */

/* Any other flags fail, and so do a null path and a directory. The path is taken as it is;
 * where "\" is an ordinary character of file names, it is read as "/" when nothing of that name
 * exists or, for a file to create, when its directory does not. */
TARNBASE_API uint64_t KernelFileOpen(const char16_t* path, int32_t flags, int32_t mode);

/* A handle that is not open, or that the raw group gave, is ignored; the operations below move
 * nothing on it. */
TARNBASE_API void KernelFileClose(uint64_t handle);

/* These return the bytes moved; fewer than asked for is a failure to every caller. */
TARNBASE_API uint32_t KernelFileRead(uint64_t handle, void* buffer, uint32_t count);
TARNBASE_API uint64_t KernelFileReadLarge(uint64_t handle, void* buffer, uint64_t count);
TARNBASE_API uint32_t KernelFileWrite(uint64_t handle, const void* buffer, uint32_t count);
TARNBASE_API uint64_t KernelFileWriteLarge(uint64_t handle, const void* buffer, uint64_t count);

#define KERNEL_SEEK_START 0
#define KERNEL_SEEK_CURRENT 1
#define KERNEL_SEEK_END 2

/* The new position, which may lie after the end; all ones when it fails, and then the position
 * stays. */
TARNBASE_API uint64_t KernelFileSeek(uint64_t handle, int64_t offset, int32_t origin);

/* Files outside the host's I/O: temporary files that a sibling opens by name ------------------ */

/* "\" and "/" both separate the components of these paths. No operation follows a path with a ".."
 * component or with no name after its last separator, nor on Windows one that names a stream or a
 * device: names of images come out of mail, which may be hostile.
 *
 * In a directory that is shared, others may put links in the way. On systems with permission bits
 * no operation here goes through a link below the temporary directory, in any component: nothing is
 * made, emptied or deleted where one leads. The temporary directory itself may be reached through
 * links. */

/* Creates the file or empties it; it is a regular file, and no link, neither symbolic nor hard. On
 * systems with permission bits a file created here or by KernelTempFileName is for its owner alone;
 * on Windows it inherits what its directory grants. */
TARNBASE_API uint64_t KernelRawFileCreate(const char16_t* path, int32_t reserved);
TARNBASE_API uint64_t KernelRawFileWrite(uint64_t handle, const void* buffer, uint64_t count,
                                         int32_t reserved);
TARNBASE_API void KernelRawFileClose(uint64_t handle, int32_t reserved);

/* Nothing happens when there is no such file, nor to a path that may not be followed. */
TARNBASE_API void KernelDeleteFile(const char16_t* path);
TARNBASE_API void KernelDeleteFileUtf8(const char* path);

/* Makes a unique name and the empty file of that name, and writes it to `out` (`capacity` units,
 * terminator included). It begins with the directory as it is given; but a prefix "\\?\" of Windows
 * is left out, unless the name is too long without it. A null or empty directory means the system's
 * temporary directory, a null or empty prefix or extension none; neither may hold a separator.
 * `one` is 1.
 *   StatusOk              the file was made, and its name is in `out`;
 *   StatusCreateFailed    no file was made, as when the name does not fit; `out` is untouched. */
TARNBASE_API int32_t KernelTempFileName(const char16_t* directory, char16_t* out, int32_t capacity,
                                        int32_t one, const char16_t* prefix,
                                        const char16_t* extension);

/* Memory files -------------------------------------------------------------------------------- */

#define KERNEL_MEMFILE_EMPTY 25
#define KERNEL_MEMFILE_FILLED 29

/* A growing memory block as a file: the handle works with the KernelFile operations, from position
 * 0. `block` comes from the memory operations above and holds at least `capacity` bytes, `length`
 * of them filled; or it is null and both are 0. Until the file is ended the block belongs to it and
 * may move.
 *   StatusOk              the memory file was opened;
 *   StatusCreateFailed    it was not: without memory, or for arguments that do not go together. */
TARNBASE_API int32_t KernelMemFileOpen(uint64_t* handle, void** state, int32_t mode, void* block,
                                       uint64_t length, uint64_t capacity);

/* Ends the memory file after its handle was closed (a handle that is still open is closed), and
 * hands the block back. With three nulls the state is discarded: a block that still lies where it
 * was given stays with whoever gave it, and one that the file allocated or moved, whose address
 * nobody else knows, is freed.
 *   StatusOk             it was ended;
 *   StatusBadArgument    the state is of no memory file. */
TARNBASE_API int32_t KernelMemFileClose(void* state, void** block, uint64_t* length,
                                        uint64_t* capacity);

/* Errors -------------------------------------------------------------------------------------- */

/* A code for the operating system's last error, or `fallback` when the kernel has none to offer. */
TARNBASE_API int32_t KernelMapLastError(int32_t fallback);

/* Text ---------------------------------------------------------------------------------------- */

/* Convert exactly the units or bytes given, a NUL among them included, and return what they wrote.
 * Where room is left a terminator follows that the result does not count. 0 when the destination is
 * too small, when the source is empty and, from UTF-8, when it is malformed; what the destination
 * then holds is undefined. A lone surrogate becomes EF BF BD. */
TARNBASE_API int64_t KernelWideToUtf8(const char16_t* source, int64_t units, char* destination,
                                      int64_t bytes);
TARNBASE_API int64_t KernelUtf8ToWide(const char* source, int64_t bytes, char16_t* destination,
                                      int64_t units);

/* The position after the one user-visible character that begins at `position`: a code point and
 * the combining marks (general categories Mn, Mc, Me) after it. Looks at `unitsLeft` units at
 * most; with none left the position itself. A lone surrogate is a character. */
TARNBASE_API const char16_t* KernelNextChar(const char16_t* position, int64_t unitsLeft);

/* The host's language as a Windows LANGID (0x0409, 0x0407, ...). */
TARNBASE_API uint32_t KernelGetLanguage(void);

/* File I/O mode ------------------------------------------------------------------------------- */

#define KERNEL_IO_IN_MEMORY 3 /* a document must not go through a temporary file */
#define KERNEL_IO_SCOPE_BYTES 120

/* The mode of the calling thread. The filter reads it once for each document and, while a sibling
 * has a temporary file, holds a scope of mode 3 open on its own thread. A kernel whose mode is the
 * whole process's sends the documents of other threads the wrong way meanwhile: with such a kernel
 * a host runs one call of the filter at a time. */
TARNBASE_API int32_t KernelIoModeGet(void);

/* Prepares the `size` (KERNEL_IO_SCOPE_BYTES) bytes of a scope for `mode`.
 *   StatusOk             the scope can be entered;
 *   StatusBadArgument    another size, or no scope. */
TARNBASE_API int32_t KernelIoModeFill(void* scope, int32_t size, int32_t mode, int32_t reserved);

/* Exchanges the calling thread's mode with the scope's: called once to enter, once more, on the
 * same thread, to leave. Other threads see nothing of it. */
TARNBASE_API void KernelIoModeSwap(void* scope, int32_t reserved0, int32_t reserved1);

/* Fonts and device contexts ------------------------------------------------------------------- */

/* All four are tracked: deleting what is not live aborts the process. The plain kernel draws
 * nothing; outside Windows its font is a copy of the LOGFONTW record (92 bytes). */
TARNBASE_API void* KernelCreateDC(int32_t reserved, int32_t line, const char16_t* file);
TARNBASE_API void KernelDeleteDC(void* context, int32_t line, const char16_t* file);
/* `logFont` points to a LOGFONTW record. Null on failure. */
TARNBASE_API void* KernelCreateFont(const void* logFont, int32_t line, const char16_t* file);
TARNBASE_API void KernelDeleteFont(void* font, int32_t line, const char16_t* file);

/* Loader
 * ------------------------------------------------------------------------------------------- */

/* The kernel's half of a filter's load stub: the address of the caller's own TARN_Load, then the
 * three remaining arguments of that call. */
TARNBASE_API int64_t KernelLoaderEntry(void* caller, uint64_t a, uint64_t b, uint64_t c);

#ifdef __cplusplus
}
#endif

#endif

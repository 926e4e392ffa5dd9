// MissingMemory.h - want of memory that no exception tells. GLib, which GMime is made with, throws
// nothing: it ends the process by a signal, with words for programmers. And what a destructor asks
// for, as those of JSON values do, nobody can catch.
#ifndef TARN_ARCHIVE_MISSINGMEMORY_H
#define TARN_ARCHIVE_MISSINGMEMORY_H

namespace tarn::archive {

// From now on the process ends with that exit status instead, and with that line on standard error,
// which lives as long as the process; "" is none. What it keeps until its end alone is removed.
void EndWhereMemoryIsMissing(int exitStatus, const char* line);

}  // namespace tarn::archive

#endif

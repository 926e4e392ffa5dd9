// GlibMemory.h - GLib, which GMime is made with, throws nothing where it gets no memory: it ends
// the process by a signal, with words for programmers.
#ifndef TARN_ARCHIVE_GLIBMEMORY_H
#define TARN_ARCHIVE_GLIBMEMORY_H

namespace tarn::archive {

// From now on the process ends with that exit status instead, and with that line on standard error,
// which lives as long as the process; "" is none. What it keeps until its end alone is removed.
void EndWhereGlibHasNoMemory(int exitStatus, const char* line);

}  // namespace tarn::archive

#endif

// Sandbox.h - what a helper gives up before the first document: it cannot take any of it back, nor
// can the threads that it has and will have.
//
// The filter of system calls names what is allowed; everything else fails as on a system that does
// not know it. There are no sockets but the one that it has, no other programs, no signals to other
// processes, no looking into them, and files are opened to be read alone. Threads, memory, time and
// the reading of files stay.
//
// The wall around files is Landlock's, where the system has it: only HelperCall.h's readable places
// can be read, and only the helper's own folder can be written to. Within namespaces there are no
// other files, and it is not needed.
#ifndef TARN_SIBLINGS_HELPER_SANDBOX_H
#define TARN_SIBLINGS_HELPER_SANDBOX_H

#include <cstdint>
#include <filesystem>

namespace tarn::pages {

enum class Files : uint8_t {
  ReadOnly,
  WrittenToo  // for an engine with files of its own
};

// False where the system has no such wall. For this thread and those that it starts from now on: so
// it comes first of all. The folder may be written to.
bool WallOffFiles(const std::filesystem::path& folder);

// False where the system has no such filter. For all threads, those that run included.
bool WallOffSystemCalls(Files files);

// No file, and no memory of its own, beyond that many bytes; no core files. A quarter more is left
// for what is not the document's, so that whoever watches this process from outside, and can say
// what happened, comes first.
void LimitMemory(uint64_t bytes);

}  // namespace tarn::pages

#endif

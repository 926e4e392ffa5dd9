// ProcessHandle.h - a hold on a process that never means another one, as its number may once it is
// gone.
#ifndef TARN_SIBLINGS_CLIENT_PROCESSHANDLE_H
#define TARN_SIBLINGS_CLIENT_PROCESSHANDLE_H

#include <chrono>

#include "Descriptor.h"

namespace tarn::pages {

using ProcessId = int;

// None when there is no such process, or the system has no such thing.
Descriptor OpenProcess(ProcessId process);

// Does nothing without a process.
void KillProcess(const Descriptor& process);

// False when it still runs after that time.
bool WaitForProcess(const Descriptor& process, std::chrono::milliseconds limit);

}  // namespace tarn::pages

#endif

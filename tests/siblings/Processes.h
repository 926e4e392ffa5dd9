// Processes.h - the processes that a process has started, and those that these have.
#ifndef TARN_TESTS_SIBLINGS_PROCESSES_H
#define TARN_TESTS_SIBLINGS_PROCESSES_H

#include <sys/types.h>

#include <string_view>
#include <vector>

namespace tarn::test {

// All that are still there; with a folder, those alone whose program was called by a path into it.
std::vector<pid_t> DescendantsOf(pid_t process, std::string_view folder = {});

// Each thread of it waits for others; or is stopped by a signal. Both are true of one that has
// ended.
bool IsAsleep(pid_t process);
bool IsStopped(pid_t process);

}  // namespace tarn::test

#endif

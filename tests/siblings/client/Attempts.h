// Attempts.h - what a helper must not manage to do.
#ifndef TARN_TESTS_SIBLINGS_CLIENT_ATTEMPTS_H
#define TARN_TESTS_SIBLINGS_CLIENT_ATTEMPTS_H

#include <optional>
#include <string>

namespace tarn::test {

// "done" or "refused"; nothing for an attempt of no known name.
//
//   open PATH     to read            write PATH    to write, creating it
//   remove PATH                      connect PORT  to that port of this machine, by TCP
//   socket        to make one        signal PID    as little as asking whether it is there
//   parent        the same for the parent          exec PATH
//   fork                             trace PID     to attach to it
//   peek PID,ADDRESS  to read a byte of its memory
//   thread        to start one, which is allowed
//   early         to make a socket, in a thread from before there were walls
std::optional<std::string> Attempt(const std::string& what, const std::string& with);

// Before there are walls.
void StartEarlyThread();

}  // namespace tarn::test

#endif

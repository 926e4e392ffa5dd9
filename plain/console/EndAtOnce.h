// EndAtOnce.h - the end of a program where nothing can be returned or thrown.
#ifndef TARN_CONSOLE_ENDATONCE_H
#define TARN_CONSOLE_ENDATONCE_H

namespace tarn::host {

// Ends the program with that exit status, as a signal of EndingSignals.h does: what there is of
// RemovedAtEnd is removed, and processes that it has started end.
[[noreturn]] void EndAtOnce(int exitStatus);

}  // namespace tarn::host

#endif

// EndingSignals.h - what the user or the system sends to end the program early. One folder a system
// implements it.
#ifndef TARN_CONSOLE_ENDINGSIGNALS_H
#define TARN_CONSOLE_ENDINGSIGNALS_H

namespace tarn::host {

// From now on `cleanUp` is called once when the program is asked to end, on a thread that may do
// what any thread may, while the others go on; then the program ends as it would have done without
// this. Asked by SIGINT (Ctrl-C), SIGTERM and SIGHUP, but for those that the program was started to
// ignore; on Windows by Ctrl-C, Ctrl-Break and the end of the console or the session. To be called
// once. Where no thread can be had, nothing changes.
void WatchEndingSignals(void (*cleanUp)());

// Kills the processes that this one has started, which could make files again that are removed, and
// waits until they are gone. Does nothing on Windows, where none are started.
void EndChildren();

}  // namespace tarn::host

#endif

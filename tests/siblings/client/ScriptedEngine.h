// ScriptedEngine.h - an engine that does what its document says, for what no real engine does.
//
// A document is lines of "WHEN WHAT [WITH]". WHEN is layOut, draw or pdf. What each attempt came to
// is a line of the log, and the log is the document's PDF. Without a line that says otherwise a
// document has one page of 36 x 18 points, which is drawn in one colour.
//
//   pages N, width W, height H   what the layout claims; W and H may be nan or inf
//   pixels N                     the bitmap's bytes, whatever its size is
//   throw bad_alloc | words      words are those of a PageFailure with BadDocument
//   crash, loop, allocate        dies; never ends; takes memory without end
//   sleep N                      does nothing for so many milliseconds
//   map N                        maps that many bytes
//   say HEX                      sends these bytes as a message, before the engine's own
//   pass                         sends a message with an open file
//   hang-up                      closes the helper's socket, and goes on for ever
//   ask NAME                     reads the file of the document's folder; % is NUL in it
//   receive NAME                 asks for that file, and logs whether one is open with the answer
//   report N                     reports that many per cent
//   properties, range            logs what came with pdf
//   kind                         logs the document's kind and its paper, as numbers
//   document                     logs the bytes after the first line
//   variable NAME                logs one of the environment
//   files, memory                logs how many files are open, how much memory is used
//   open, write, connect, ...    see Attempts.h
#ifndef TARN_TESTS_SIBLINGS_CLIENT_SCRIPTEDENGINE_H
#define TARN_TESTS_SIBLINGS_CLIENT_SCRIPTEDENGINE_H

#include <memory>

#include "siblings/layout/Engine.h"

namespace tarn::test {

std::unique_ptr<pages::Engine> MakeScriptedEngine();

}  // namespace tarn::test

#endif

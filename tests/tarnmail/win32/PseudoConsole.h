// PseudoConsole.h - a console without a window, for a program that writes to one.
#ifndef TARN_TESTS_TARNMAIL_WIN32_PSEUDOCONSOLE_H
#define TARN_TESTS_TARNMAIL_WIN32_PSEUDOCONSOLE_H

#include <string>

#include "tarnmail/RunProgram.h"

namespace tarn::test {

// Runs the program in a console of its own, which must end with exit status 0. Returns all that the
// console shows meanwhile, in UTF-8 between a terminal's sequences; lines are 200 columns wide.
std::string ShownByConsole(const ProgramCall& call);

}  // namespace tarn::test

#endif

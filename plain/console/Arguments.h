// Arguments.h - the words of the command line. One folder a system implements it.
#ifndef TARN_CONSOLE_ARGUMENTS_H
#define TARN_CONSOLE_ARGUMENTS_H

#include <string>
#include <vector>

namespace tarn::host {

// The words after the program's name. Windows: UTF-8 of the line that the process was started
// with, whatever the code page of `argv`; a word that is no UTF-16 text (a lone surrogate) throws
// Failure (Usage). Elsewhere: the bytes of `argv`.
std::vector<std::string> CommandLineWords(int argc, char** argv);

}  // namespace tarn::host

#endif

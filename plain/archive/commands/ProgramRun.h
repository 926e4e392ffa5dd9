// ProgramRun.h - what the programs of the archive commands do alike: words are read, and what goes
// wrong becomes a line on standard error and an exit status.
#ifndef TARN_ARCHIVE_PROGRAMRUN_H
#define TARN_ARCHIVE_PROGRAMRUN_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "console/Failure.h"

namespace tarn::archive {

// Gives each word to its option. False where they ask for help, which is written then. Throws
// host::Failure (Usage) for words that do not fit.
bool ReadWords(CLI::App& app, std::vector<std::string> words);

// Runs with the words of the command line, and gives the exit status of the process.
int RunProgram(int argc, char** argv,
               const std::function<host::ExitStatus(std::vector<std::string>)>& run);

}  // namespace tarn::archive

#endif

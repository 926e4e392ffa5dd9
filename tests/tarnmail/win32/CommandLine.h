// CommandLine.h - how a program of Windows is told its arguments and its environment.
#ifndef TARN_TESTS_TARNMAIL_WIN32_COMMANDLINE_H
#define TARN_TESTS_TARNMAIL_WIN32_COMMANDLINE_H

#include <string>
#include <utility>
#include <vector>

#include "tarnmail/RunProgram.h"

namespace tarn::test {

// UTF-16 of UTF-8. A lone surrogate in its three bytes (ED A0 80) becomes one, which UTF-8 proper
// does not have, so that a test can hand over what is no text.
std::wstring WideFromTestText(const std::string& text);

// One line from which the program takes its arguments apart as they were: the rules of
// CommandLineToArgvW.
std::wstring CommandLine(const ProgramCall& call);

// The environment of this process with the variables added: names are without case, sorted.
std::wstring EnvironmentBlock(const std::vector<std::pair<std::string, std::string>>& added);

}  // namespace tarn::test

#endif

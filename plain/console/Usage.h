// Usage.h - what is wrong with a command line, in one line.
#ifndef TARN_CONSOLE_USAGE_H
#define TARN_CONSOLE_USAGE_H

#include <CLI/CLI.hpp>
#include <string>

namespace tarn::host {

// The text as a message names it.
std::string Named(const std::string& text);

// The reason, and the help that tells more. A word that nobody takes is the reason for whatever the
// parser misses after it.
std::string UsageLine(const CLI::App& app, const CLI::ParseError& error);

}  // namespace tarn::host

#endif

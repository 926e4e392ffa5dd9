// TerminalSize.h - the room on standard output. One folder a system implements it.
#ifndef TARN_ARCHIVE_TERMINALSIZE_H
#define TARN_ARCHIVE_TERMINALSIZE_H

#include <cstddef>

namespace tarn::archive {

struct TerminalSize {
  size_t columns = 80;
  size_t rows = 24;
};

// Of the terminal that standard output is; else what COLUMNS and LINES say; else the usual.
TerminalSize SizeOfTerminal();

}  // namespace tarn::archive

#endif

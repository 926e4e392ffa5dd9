// Commands.h - the commands of tarnmail. Each gives the bytes that it is asked for, or throws
// Failure. Nothing is written here, and nothing is left in the kernel or the filter behind a call.
#ifndef TARN_TARNMAIL_COMMANDS_H
#define TARN_TARNMAIL_COMMANDS_H

#include <cstdint>
#include <optional>
#include <string>

#include "FilterLibrary.h"
#include "MailFile.h"

namespace tarn::host {

struct InfoOptions {
  MessageChoice message;
  bool json = false;
};

struct DocumentOptions {
  MessageChoice message;
  std::optional<std::string> output;  // else standard output
};

struct AttachmentsOptions {
  MessageChoice message;
  bool json = false;
};

struct ExtractOptions {
  MessageChoice message;
  int32_t attachmentNumber = 0;
  std::optional<std::string> output;  // else standard output
};

// What the file is, and what its message becomes: lines for people, or JSON.
std::string InfoText(const FilterLibrary& filter, const InfoOptions& options);

// The finished document, exactly the bytes that the sibling gets.
std::string DocumentBytes(const FilterLibrary& filter, const DocumentOptions& options);

// The attachments with all their properties: a table, or JSON.
std::string AttachmentsText(const FilterLibrary& filter, const AttachmentsOptions& options);

// The bytes of one attachment. A number that the message does not have is a failure.
KernelBytes AttachmentBytes(const FilterLibrary& filter, const ExtractOptions& options);

}  // namespace tarn::host

#endif

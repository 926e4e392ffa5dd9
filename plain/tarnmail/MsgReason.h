// MsgReason.h - why the filter refuses an MSG file.
#ifndef TARN_TARNMAIL_MSGREASON_H
#define TARN_TARNMAIL_MSGREASON_H

#include <optional>
#include <string>

namespace tarn::host {

// The reason for StatusNotSupported of a document that neither text flag brings
// about; nothing when it is not known. May throw std::bad_alloc.
std::optional<std::string> MsgReason(const char16_t* path);

}  // namespace tarn::host

#endif

// EmlReason.h - why the filter refuses an internet mail file.
#ifndef TARN_TARNMAIL_EMLREASON_H
#define TARN_TARNMAIL_EMLREASON_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::host {

// The reason for the status, which the filter gave for a mail of these bytes; nothing when it is
// not known. May throw std::bad_alloc.
std::optional<std::string> EmlReason(std::string_view mail, int32_t status);

}  // namespace tarn::host

#endif

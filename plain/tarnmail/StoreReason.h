// StoreReason.h - what a store holds, for refusals: the filter gives the number of messages only
// together with a document.
#ifndef TARN_TARNMAIL_STOREREASON_H
#define TARN_TARNMAIL_STOREREASON_H

#include <cstdint>
#include <optional>
#include <string>

namespace tarn::host {

// The messages that the folders of the store claim, counted as the filter counts them; nothing for
// a store that cannot be read. Never throws.
std::optional<int32_t> CountMessages(const char16_t* path) noexcept;

// The reason for StatusNotSupported of a document that neither text flag brings about, for a
// message number from 1 to the count; nothing when it is not known. Reads the messages up to that
// one. What the store throws passes.
std::optional<std::string> StoreReason(const char16_t* path, int32_t messageNumber);

}  // namespace tarn::host

#endif

// Json.h - JSON read and written. The parser and the writer of the library are much to compile:
// they are compiled once, for both of its types.
#ifndef TARN_CONSOLE_JSON_H
#define TARN_CONSOLE_JSON_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace tarn::host {

// `Json` is nlohmann::json, or nlohmann::ordered_json, which keeps the order of members.

// Throws nlohmann::json::parse_error for what is no JSON.
template <typename Json>
Json ParsedJson(std::string_view text);

// Discarded (`is_discarded()`) for what is no JSON.
template <typename Json>
Json JsonOrDiscarded(std::string_view text);

// One line, without its end. Throws nlohmann::json::type_error for a string that is not valid
// UTF-8.
template <typename Json>
std::string JsonLine(const Json& json);

// The same, where what is not valid UTF-8 becomes U+FFFD.
template <typename Json>
std::string JsonLineOfAny(const Json& json);

// Indented lines of valid UTF-8, which a terminal shows as they are: what is none in a file's name
// becomes U+FFFD.
std::string JsonText(const nlohmann::ordered_json& json);

}  // namespace tarn::host

#endif

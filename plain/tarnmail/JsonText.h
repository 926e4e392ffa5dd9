// JsonText.h - JSON for machines, which people look at too.
#ifndef TARN_TARNMAIL_JSONTEXT_H
#define TARN_TARNMAIL_JSONTEXT_H

#include <nlohmann/json.hpp>
#include <string>

#include "console/Text.h"

namespace tarn::host {

// Indented lines of valid UTF-8, which a terminal shows as they are: what is none in a file's name
// becomes U+FFFD.
inline std::string JsonText(const nlohmann::ordered_json& json) {
  constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
  return ShowableJson(json.dump(2, ' ', false, kReplace)) + "\n";
}

}  // namespace tarn::host

#endif

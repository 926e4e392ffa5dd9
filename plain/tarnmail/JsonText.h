// JsonText.h - JSON for machines.
#ifndef TARN_TARNMAIL_JSONTEXT_H
#define TARN_TARNMAIL_JSONTEXT_H

#include <nlohmann/json.hpp>
#include <string>

namespace tarn::host {

// Indented lines of valid UTF-8: what is none in a file's name becomes U+FFFD.
inline std::string JsonText(const nlohmann::ordered_json& json) {
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace tarn::host

#endif

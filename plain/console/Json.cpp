#include "console/Json.h"

#include "console/Text.h"

namespace tarn::host {

template <typename Json>
Json ParsedJson(std::string_view text) {
  return Json::parse(text);
}

template <typename Json>
Json JsonOrDiscarded(std::string_view text) {
  return Json::parse(text, nullptr, false);
}

template <typename Json>
std::string JsonLine(const Json& json) {
  return json.dump();
}

template <typename Json>
std::string JsonLineOfAny(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string JsonText(const nlohmann::ordered_json& json) {
  constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
  return ShowableJson(json.dump(2, ' ', false, kReplace)) + "\n";
}

template nlohmann::json ParsedJson(std::string_view text);
template nlohmann::ordered_json ParsedJson(std::string_view text);
template nlohmann::json JsonOrDiscarded(std::string_view text);
template nlohmann::ordered_json JsonOrDiscarded(std::string_view text);
template std::string JsonLine(const nlohmann::json& json);
template std::string JsonLine(const nlohmann::ordered_json& json);
template std::string JsonLineOfAny(const nlohmann::json& json);
template std::string JsonLineOfAny(const nlohmann::ordered_json& json);

}  // namespace tarn::host

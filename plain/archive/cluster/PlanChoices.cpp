#include "archive/cluster/PlanChoices.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "console/Json.h"

namespace tarn::archive {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kHexKey = "hex";

Json JsonOfSpan(const Span& span) { return Json::array({span.first, span.last}); }
Span SpanOfJson(const Json& json) { return {json.at(0).get<int64_t>(), json.at(1).get<int64_t>()}; }

using Text = std::optional<std::string>;
constexpr std::pair<const char*, Text FilterOptions::*> kTexts[] = {
    {"folder", &FilterOptions::folder},
    {"from", &FilterOptions::from},
    {"to", &FilterOptions::to},
    {"subject", &FilterOptions::subject},
    {"class", &FilterOptions::messageClass},
};

[[noreturn]] void ThrowNoBytes(const Json& json) {
  throw Json::other_error::create(501, "no bytes", &json);
}

Json JsonOfFilter(const FilterOptions& filter) {
  Json json = Json::object();
  for (const auto& [name, text] : kTexts) {
    if (filter.*text) json[name] = JsonOfText(*(filter.*text));
  }
  if (filter.since) json["since"] = JsonOfSpan(*filter.since);
  if (filter.until) json["until"] = JsonOfSpan(*filter.until);
  if (filter.hasAttachment) json["hasAttachment"] = true;
  return json;
}

FilterOptions FilterOfJson(const Json& json) {
  FilterOptions filter;
  for (const auto& [name, text] : kTexts) {
    if (json.contains(name)) filter.*text = TextOfJson(json[name]);
  }
  if (json.contains("since")) filter.since = SpanOfJson(json["since"]);
  if (json.contains("until")) filter.until = SpanOfJson(json["until"]);
  filter.hasAttachment = json.value("hasAttachment", false);
  return filter;
}

}  // namespace

Json JsonOfText(const std::string& text) {
  Json json(text);
  try {
    (void)host::JsonLine(json);
    return json;
  } catch (const Json::exception&) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string hex;
    for (const char byte : text) {
      const auto value = static_cast<unsigned char>(byte);
      hex += kDigits[value >> 4];
      hex += kDigits[value & 15];
    }
    return Json{{kHexKey, hex}};
  }
}

std::string TextOfJson(const Json& json) {
  if (!json.is_object()) return json.get<std::string>();
  const std::string hex = json.at(kHexKey);
  std::string text;
  if (hex.size() % 2 != 0) ThrowNoBytes(json);
  for (size_t at = 0; at < hex.size(); at += 2) {
    unsigned char byte = 0;
    const auto read = std::from_chars(&hex[at], &hex[at] + 2, byte, 16);
    if (read.ec != std::errc() || read.ptr != &hex[at] + 2) ThrowNoBytes(json);
    text += static_cast<char>(byte);
  }
  return text;
}

Json JsonOfChoices(const ExportOptions& options) {
  Json json;
  for (const ExportForm form : options.choices.forms) json["to"].push_back(NameOf(form));
  json["attachments"] = options.choices.attachments;
  json["catalogue"] = options.choices.catalogue;
  json["dedupe"] = options.dedupe;
  json["recover"] = options.recover;
  if (options.choices.forms.contains(ExportForm::Pdf)) {
    json["onePdf"] = options.choices.onePdf;
    json["paper"] = options.choices.pages.paper == pages::Paper::A4 ? "a4" : "letter";
    json["sandbox"] = options.choices.pages.sandbox;
  }
  json["filter"] = JsonOfFilter(options.filter);
  json["seconds"] = options.seconds;
  json["memory"] = options.memory;
  return json;
}

ExportOptions ChoicesOfJson(const Json& json) {
  ExportOptions options;
  const std::vector<ExportForm> forms = AllForms();
  for (const Json& name : json.at("to")) {
    const auto form = std::find_if(forms.begin(), forms.end(),
                                   [&](ExportForm one) { return NameOf(one) == name; });
    if (form == forms.end()) throw Json::other_error::create(501, "unknown form", &json);
    options.choices.forms.insert(*form);
  }
  options.choices.attachments = json.at("attachments");
  options.choices.catalogue = json.at("catalogue");
  options.dedupe = json.at("dedupe");
  options.recover = json.at("recover");
  options.choices.onePdf = json.value("onePdf", false);
  if (json.value("paper", "a4") == "letter") options.choices.pages.paper = pages::Paper::Letter;
  options.choices.pages.sandbox = json.value("sandbox", true);
  options.filter = FilterOfJson(json.at("filter"));
  options.seconds = json.at("seconds");
  options.memory = json.at("memory");
  return options;
}

}  // namespace tarn::archive

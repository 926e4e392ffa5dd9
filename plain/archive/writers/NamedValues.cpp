#include "archive/writers/NamedValues.h"

namespace tarn::archive {

NamedValues::NamedValues(mapi::MapiMessage* message, std::vector<Trouble>& troubles)
    : message_(message) {
  if (message == nullptr) return;
  mapi::PropertySet& set = message->properties();
  values_.emplace(set, mapi::TextCodePage(set), &troubles);
}

std::optional<uint16_t> NamedValues::idOf(const PropertyKey& key) {
  if (message_ == nullptr) return std::nullopt;
  if (key.set == nullptr) return static_cast<uint16_t>(key.id);
  return message_->idOf({*key.set, key.id, {}});
}

std::string NamedValues::text(const PropertyKey& key) {
  const std::optional<uint16_t> id = idOf(key);
  return id ? values_->text(*id).value_or("") : std::string();
}

std::optional<int64_t> NamedValues::integer(const PropertyKey& key) {
  const std::optional<uint16_t> id = idOf(key);
  return id ? values_->integer(*id) : std::nullopt;
}

std::optional<double> NamedValues::real(const PropertyKey& key) {
  const std::optional<uint16_t> id = idOf(key);
  return id ? values_->real(*id) : std::nullopt;
}

std::optional<Moment> NamedValues::time(const PropertyKey& key) {
  const std::optional<uint16_t> id = idOf(key);
  return id ? values_->time(*id) : std::nullopt;
}

std::string NamedValues::binary(const PropertyKey& key) {
  const std::optional<uint16_t> id = idOf(key);
  return id ? values_->binary(*id).value_or("") : std::string();
}

bool NamedValues::isSet(const PropertyKey& key) {
  const std::optional<uint16_t> id = idOf(key);
  return id && values_->boolean(*id).value_or(false);
}

std::vector<std::string> NamedValues::categories() {
  if (message_ == nullptr) return {};
  const std::optional<uint16_t> id = message_->idOf({kPublicStrings, 0, u"Keywords"});
  if (!id) return {};
  const std::optional<uint16_t> type = message_->properties().typeOf(*id);
  if (!type) return {};
  const Outcome<std::vector<std::string>> values =
      message_->properties().values(*id, mapi::kLargestText);
  if (!values) return {};
  std::vector<std::string> names;
  for (const std::string& value : *values) {
    const bool isWide = (*type & ~mapi::kMultipleValues) == mapi::kTypeString;
    names.push_back(isWide ? mapi::Utf8OfText16(value)
                           : mapi::Utf8OfText8(value, values_->codePage()));
  }
  return names;
}

}  // namespace tarn::archive

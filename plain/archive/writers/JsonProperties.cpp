#include "archive/writers/JsonProperties.h"

#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "archive/mapi/Hexadecimal.h"
#include "archive/mapi/PropertyValues.h"
#include "archive/mapi/Tags.h"
#include "archive/model/TextSink.h"

namespace tarn::archive {
namespace {

using mapi::Hexadecimal;

// Larger values, as bodies and pictures, are elsewhere in the export.
constexpr size_t kLargestValue = size_t{32} << 10;

// "{00062002-0000-0000-C000-000000000046}"
std::string GuidText(std::string_view bytes) {
  std::string text = "{";
  for (const size_t at :
       std::initializer_list<size_t>{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15}) {
    if (text.size() == 9 || text.size() == 14 || text.size() == 19 || text.size() == 24)
      text += '-';
    text += Hexadecimal(static_cast<uint8_t>(bytes[at]), 2);
  }
  return text + '}';
}

uint64_t NumberOf(std::string_view bytes) {
  uint64_t number = 0;
  for (size_t at = bytes.size(); at-- != 0;) number = number << 8 | static_cast<uint8_t>(bytes[at]);
  return number;
}

std::string Base64Of(std::string_view bytes) {
  TextSink sink;
  SinkBuffer out(sink);
  PutBase64(bytes, Base64Lines::None, out);
  out.finish();
  return std::move(sink.text);
}

void PutTime(uint64_t fileTime, JsonWriter& json) {
  const std::optional<Moment> moment = MomentOfFileTime(fileTime);
  if (moment) {
    json.text(Iso8601(*moment));
  } else {
    json.null();
  }
}

void PutValue(uint16_t type, std::string_view bytes, std::optional<uint32_t> codePage,
              JsonWriter& json) {
  const size_t width = mapi::WidthOfValue(type);
  if (bytes.size() < width) return json.null();
  if (width != 0) bytes = bytes.substr(0, width);
  switch (type) {
    case mapi::kTypeString:
      return json.text(mapi::Utf8OfText16(bytes));
    case mapi::kTypeString8:
      return json.text(mapi::Utf8OfText8(bytes, codePage));
    case mapi::kTypeBoolean:
      return json.boolean(bytes[0] != 0);
    case mapi::kTypeInteger16:
      return json.integer(static_cast<int16_t>(NumberOf(bytes)));
    case mapi::kTypeInteger32:
      return json.integer(static_cast<int32_t>(NumberOf(bytes)));
    case mapi::kTypeError:  // 32 bits without a sign
    case mapi::kTypeInteger64:
    case mapi::kTypeCurrency:
      return json.integer(static_cast<int64_t>(NumberOf(bytes)));
    case mapi::kTypeFloat32:
      return json.real(std::bit_cast<float>(static_cast<uint32_t>(NumberOf(bytes))));
    case mapi::kTypeFloat64:
    case mapi::kTypeFloatingTime:
      return json.real(std::bit_cast<double>(NumberOf(bytes)));
    case mapi::kTypeTime:
      return PutTime(NumberOf(bytes), json);
    case mapi::kTypeGuid:
      return json.text(GuidText(bytes));
    default:
      return json.text(Base64Of(bytes));
  }
}

void PutName(mapi::MapiMessage& message, uint16_t id, JsonWriter& json) {
  const std::string_view known = mapi::NameOfTag(id);
  if (!known.empty()) {
    json.name("name");
    json.text(known);
  }
  if (id < 0x8000) return;
  const std::optional<mapi::PropertyName> name = message.nameOf(id);
  if (!name) return;
  json.name("set");
  json.text(GuidText({reinterpret_cast<const char*>(name->set.data()), name->set.size()}));
  if (name->name.empty()) {
    json.name("number");
    json.number(uint64_t{name->number});
    return;
  }
  std::string units;
  for (const char16_t unit : name->name) {
    units += static_cast<char>(unit & 0xFF);
    units += static_cast<char>(unit >> 8);
  }
  json.name("name");
  json.text(mapi::Utf8OfText16(units));
}

void PutProperty(mapi::MapiMessage& message, mapi::PropertyTag tag,
                 std::optional<uint32_t> codePage, JsonWriter& json, std::vector<Trouble>& lost) {
  mapi::PropertySet& set = message.properties();
  json.openObject();
  json.name("tag");
  json.text("0x" + Hexadecimal(tag.id, 4) + Hexadecimal(tag.type, 4));
  PutName(message, tag.id, json);
  const uint64_t size = set.sizeOf(tag.id).value_or(0);
  if (size > kLargestValue || tag.type == mapi::kTypeObject) {
    json.name("size");
    json.number(size);
    return json.closeObject();
  }
  const auto type = static_cast<uint16_t>(tag.type & ~mapi::kMultipleValues);
  json.name("value");
  std::optional<Trouble> trouble;
  if (type == tag.type) {
    const Outcome<std::string> bytes = set.bytes(tag.id, kLargestValue);
    if (bytes) {
      PutValue(type, *bytes, codePage, json);
    } else {
      trouble = bytes.trouble();
    }
  } else {
    const Outcome<std::vector<std::string>> values = set.values(tag.id, kLargestValue);
    if (values) {
      json.openArray();
      for (const std::string& value : *values) PutValue(type, value, codePage, json);
      json.closeArray();
    } else {
      trouble = values.trouble();
    }
  }
  if (trouble) {
    json.null();
    lost.push_back({trouble->kind, "the property " + mapi::DescribeTag(tag.id) +
                                       " cannot be read: " + trouble->reason});
  }
  json.closeObject();
}

}  // namespace

void PutJsonProperties(mapi::MapiMessage& message, JsonWriter& json, SinkBuffer& out,
                       std::vector<Trouble>& lost) {
  const std::optional<uint32_t> codePage = mapi::TextCodePage(message.properties());
  json.openArray();
  for (const mapi::PropertyTag& tag : message.properties().tags()) {
    if (out.isFull()) break;
    PutProperty(message, tag, codePage, json, lost);
    out.put(json.take());
  }
  json.closeArray();
}

}  // namespace tarn::archive

// FakeMessage.h - a message whose properties, recipients and attachments a test writes down.
#ifndef TARN_TESTS_ARCHIVE_FAKEMESSAGE_H
#define TARN_TESTS_ARCHIVE_FAKEMESSAGE_H

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "archive/mapi/MapiMessage.h"
#include "archive/mapi/Tags.h"

namespace tarn::archive::mapi {

inline std::string LittleEndian(uint64_t number, size_t width) {
  std::string bytes;
  for (size_t at = 0; at < width; ++at) bytes.push_back(static_cast<char>(number >> (8 * at)));
  return bytes;
}

inline std::string Wide(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += LittleEndian(unit, 2);
  return bytes;
}

// 100 nanoseconds since 1601 of seconds since 1970.
inline uint64_t FileTimeOf(int64_t seconds) {
  return static_cast<uint64_t>(seconds + 11644473600) * 10000000;
}

// What a test describes. Sets that are given out share it.
class FakeProperties {
 public:
  struct Value {
    uint16_t type = 0;
    std::string bytes;
    std::optional<Trouble> trouble;
  };

  FakeProperties& put(uint16_t id, uint16_t type, std::string bytes) {
    values[id] = {type, std::move(bytes), std::nullopt};
    return *this;
  }
  FakeProperties& text(uint16_t id, std::u16string_view value) {
    return put(id, kTypeString, Wide(value));
  }
  FakeProperties& text8(uint16_t id, std::string value) {
    return put(id, kTypeString8, std::move(value));
  }
  FakeProperties& integer(uint16_t id, uint32_t value) {
    return put(id, kTypeInteger32, LittleEndian(value, 4));
  }
  FakeProperties& boolean(uint16_t id, bool value) {
    return put(id, kTypeBoolean, LittleEndian(value ? 1 : 0, 1));
  }
  FakeProperties& time(uint16_t id, int64_t seconds) {
    return put(id, kTypeTime, LittleEndian(FileTimeOf(seconds), 8));
  }
  FakeProperties& binary(uint16_t id, std::string value) {
    return put(id, kTypeBinary, std::move(value));
  }
  FakeProperties& damaged(uint16_t id, uint16_t type) {
    values[id] = {type, {}, Trouble{TroubleKind::Damaged, "a block is missing"}};
    return *this;
  }

  std::map<uint16_t, Value> values;
};

class FakeSet final : public PropertySet {
 public:
  explicit FakeSet(const FakeProperties& properties) : properties_(properties) {}

  std::vector<PropertyTag> tags() override {
    std::vector<PropertyTag> all;
    for (const auto& [id, value] : properties_.values) all.push_back({id, value.type});
    return all;
  }
  std::optional<uint16_t> typeOf(uint16_t id) override {
    const auto at = properties_.values.find(id);
    if (at == properties_.values.end()) return std::nullopt;
    return at->second.type;
  }
  std::optional<uint64_t> sizeOf(uint16_t id) override {
    const auto at = properties_.values.find(id);
    if (at == properties_.values.end()) return std::nullopt;
    return at->second.bytes.size();
  }
  Outcome<std::string> bytes(uint16_t id, size_t limit) override {
    const auto at = properties_.values.find(id);
    if (at == properties_.values.end()) return Trouble{TroubleKind::Missing, "not there"};
    if (at->second.trouble) return *at->second.trouble;
    if (at->second.bytes.size() > limit) return Trouble{TroubleKind::TooLarge, "too large"};
    return at->second.bytes;
  }
  Outcome<std::unique_ptr<ByteSource>> stream(uint16_t id) override {
    Outcome<std::string> all = bytes(id, SIZE_MAX);
    if (!all) return all.trouble();
    return BytesOf(std::move(*all));
  }
  Outcome<std::vector<std::string>> values(uint16_t, size_t) override {
    return Trouble{TroubleKind::Missing, "not there"};
  }

 private:
  const FakeProperties& properties_;
};

// A message, and all that is in it. The description outlives the messages.
struct FakeDescription {
  FakeProperties properties;
  std::vector<std::pair<PropertyName, uint16_t>> names;
  std::vector<std::optional<FakeProperties>> recipients;  // none: cannot be read
  std::optional<Trouble> recipientsTrouble;
  std::vector<std::optional<FakeProperties>> attachments;
  std::optional<Trouble> attachmentsTrouble;
  std::map<size_t, std::shared_ptr<FakeDescription>> embedded;
  std::map<size_t, std::string> objects;
};

class FakeMessage final : public MapiMessage {
 public:
  explicit FakeMessage(const FakeDescription& description)
      : description_(description), properties_(description.properties) {}

  PropertySet& properties() override { return properties_; }
  std::optional<uint16_t> idOf(const PropertyName& name) override {
    for (const auto& [known, id] : description_.names) {
      if (known == name) return id;
    }
    return std::nullopt;
  }
  std::optional<PropertyName> nameOf(uint16_t wanted) override {
    for (const auto& [known, id] : description_.names) {
      if (id == wanted) return known;
    }
    return std::nullopt;
  }
  Outcome<size_t> recipientCount() override {
    if (description_.recipientsTrouble) return *description_.recipientsTrouble;
    return description_.recipients.size();
  }
  Outcome<std::unique_ptr<PropertySet>> recipient(size_t index) override {
    return setOf(description_.recipients, index);
  }
  Outcome<size_t> attachmentCount() override {
    if (description_.attachmentsTrouble) return *description_.attachmentsTrouble;
    return description_.attachments.size();
  }
  Outcome<std::unique_ptr<PropertySet>> attachment(size_t index) override {
    return setOf(description_.attachments, index);
  }
  Outcome<std::unique_ptr<MapiMessage>> embedded(size_t index) override {
    const auto at = description_.embedded.find(index);
    if (at == description_.embedded.end()) return Trouble{TroubleKind::Missing, "no message"};
    return std::unique_ptr<MapiMessage>(std::make_unique<FakeMessage>(*at->second));
  }
  Outcome<std::unique_ptr<ByteSource>> object(size_t index) override {
    const auto at = description_.objects.find(index);
    if (at == description_.objects.end()) return Trouble{TroubleKind::Missing, "no object"};
    return BytesOf(at->second);
  }

 private:
  static Outcome<std::unique_ptr<PropertySet>> setOf(
      const std::vector<std::optional<FakeProperties>>& sets, size_t index) {
    if (index >= sets.size()) return Trouble{TroubleKind::Missing, "no such row"};
    if (!sets[index]) return Trouble{TroubleKind::Damaged, "the row is damaged"};
    return std::unique_ptr<PropertySet>(std::make_unique<FakeSet>(*sets[index]));
  }

  const FakeDescription& description_;
  FakeSet properties_;
};

}  // namespace tarn::archive::mapi

#endif

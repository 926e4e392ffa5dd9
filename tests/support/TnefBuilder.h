// TnefBuilder.h - writes TNEF (MS-OXTNEF) from a short description.
//
//   TnefBuilder mail;
//   mail.codePage(1252).text8(TnefMessageLevel, 0x8004, "Subject");
//   mail.properties(TnefList().text(0x0037, u"Subject").integer(0x0017, 2));
//   mail.recipients({TnefList().integer(0x0C15, 1).text(0x3001, u"Bob")});
//   mail.attachment(1).text8(TnefAttachmentLevel, 0x8010, "a.txt");
//   mail.attribute(TnefAttachmentLevel, 0x800F, 6, "bytes");
//   std::string file = mail.write();
#ifndef TARN_TESTS_SUPPORT_TNEFBUILDER_H
#define TARN_TESTS_SUPPORT_TNEFBUILDER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::test {

inline std::string TnefNumber(uint64_t number, size_t width) {
  std::string bytes;
  for (size_t at = 0; at < width; ++at) bytes.push_back(static_cast<char>(number >> (8 * at)));
  return bytes;
}

inline std::string TnefFilled(std::string bytes) {
  bytes.resize((bytes.size() + 3) / 4 * 4);
  return bytes;
}

inline std::string TnefWide(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += TnefNumber(unit, 2);
  return bytes;
}

// The ids of interfaces that objects begin with.
inline std::string TnefInterface(uint32_t number) {
  return TnefNumber(number, 4) + std::string("\0\0\0\0\xC0\0\0\0\0\0\0\x46", 12);
}
inline constexpr uint32_t kTnefMessageInterface = 0x00020307;
inline constexpr uint32_t kTnefStorageInterface = 0x0000000B;
inline constexpr uint32_t kTnefStreamInterface = 0x0000000C;

// A list of properties.
class TnefList {
 public:
  // A property without a width of its own, or of several values: each value with its length.
  TnefList& values(uint16_t id, uint16_t type, const std::vector<std::string>& all) {
    begin(id, type);
    bytes_ += TnefNumber(all.size(), 4);
    for (const std::string& one : all) bytes_ += TnefNumber(one.size(), 4) + TnefFilled(one);
    return *this;
  }
  // A value of fixed width; several of them with their count written by hand.
  TnefList& fixed(uint16_t id, uint16_t type, const std::string& value) {
    begin(id, type);
    bytes_ += TnefFilled(value);
    return *this;
  }
  TnefList& text(uint16_t id, std::u16string_view text) {
    return values(id, 0x001F, {TnefWide(text) + std::string(2, '\0')});
  }
  TnefList& text8(uint16_t id, const std::string& text) {
    return values(id, 0x001E, {text + '\0'});
  }
  TnefList& binary(uint16_t id, const std::string& bytes) { return values(id, 0x0102, {bytes}); }
  TnefList& object(uint16_t id, uint32_t interface, const std::string& bytes) {
    return values(id, 0x000D, {TnefInterface(interface) + bytes});
  }
  TnefList& integer(uint16_t id, uint32_t value) { return fixed(id, 0x0003, TnefNumber(value, 4)); }
  TnefList& time(uint16_t id, uint64_t ticks) { return fixed(id, 0x0040, TnefNumber(ticks, 8)); }

  // The name of the property that is added next, which has an id from 0x8000 on.
  TnefList& named(std::string_view set, uint32_t number) {
    name_ = std::string(set) + TnefNumber(0, 4) + TnefNumber(number, 4);
    return *this;
  }
  TnefList& named(std::string_view set, std::u16string_view name) {
    const std::string text = TnefWide(name) + std::string(2, '\0');
    name_ = std::string(set) + TnefNumber(1, 4) + TnefNumber(text.size(), 4) + TnefFilled(text);
    return *this;
  }

  std::string write() const { return TnefNumber(count_, 4) + bytes_; }

 private:
  void begin(uint16_t id, uint16_t type) {
    ++count_;
    bytes_ += TnefNumber(type, 2) + TnefNumber(id, 2) + name_;
    name_.clear();
  }

  uint32_t count_ = 0;
  std::string bytes_;
  std::string name_;
};

enum TnefLevel : uint8_t { TnefMessageLevel = 1, TnefAttachmentLevel = 2 };

class TnefBuilder {
 public:
  TnefBuilder& attribute(TnefLevel level, uint16_t id, uint16_t type, std::string_view bytes) {
    uint32_t sum = 0;
    for (const char byte : bytes) sum += static_cast<unsigned char>(byte);
    bytes_ += TnefNumber(level, 1) + TnefNumber(id, 2) + TnefNumber(type, 2) +
              TnefNumber(bytes.size(), 4) + std::string(bytes) + TnefNumber(sum, 2);
    return *this;
  }
  TnefBuilder& text8(TnefLevel level, uint16_t id, const std::string& text) {
    return attribute(level, id, 1, text + '\0');
  }
  TnefBuilder& codePage(uint32_t number) {
    return attribute(TnefMessageLevel, 0x9007, 6, TnefNumber(number, 4) + TnefNumber(0, 4));
  }
  TnefBuilder& properties(const TnefList& list) {
    return attribute(TnefMessageLevel, 0x9003, 6, list.write());
  }
  TnefBuilder& recipients(const std::vector<TnefList>& rows) {
    std::string bytes = TnefNumber(rows.size(), 4);
    for (const TnefList& row : rows) bytes += row.write();
    return attribute(TnefMessageLevel, 0x9004, 6, bytes);
  }
  // Begins an attachment: type 1 is a file, 2 an object.
  TnefBuilder& attachment(uint16_t type = 1) {
    const std::string bytes =
        TnefNumber(type, 2) + TnefNumber(UINT32_MAX, 4) + std::string(8, '\0');
    return attribute(TnefAttachmentLevel, 0x9002, 6, bytes);
  }
  TnefBuilder& attachmentProperties(const TnefList& list) {
    return attribute(TnefAttachmentLevel, 0x9005, 6, list.write());
  }
  TnefBuilder& attachmentData(std::string_view bytes) {
    return attribute(TnefAttachmentLevel, 0x800F, 6, bytes);
  }
  TnefBuilder& bytes(std::string_view anything) {
    bytes_ += anything;
    return *this;
  }

  std::string write() const { return TnefNumber(0x223E9F78, 4) + TnefNumber(1, 2) + bytes_; }

 private:
  std::string bytes_;
};

}  // namespace tarn::test

#endif

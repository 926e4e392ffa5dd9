#include "support/EmlBuilder.h"

#include <array>

namespace tarn::test {
namespace {

using HeaderList = std::vector<std::pair<std::string, std::string>>;

std::string WriteHeaders(const HeaderList& headers, std::string_view lineEnd) {
  std::string out;
  for (const auto& [name, value] : headers) {
    out += name;
    out += ": ";
    out += value;
    out += lineEnd;
  }
  return out;
}

bool IsAlphanumeric(char byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z');
}

std::string Encode(std::string_view content, EmlEncoding encoding, std::string_view lineEnd) {
  switch (encoding) {
    case EmlEncoding::QuotedPrintable:
      return WriteQuotedPrintable(content);
    case EmlEncoding::Base64:
      return WriteBase64(content, lineEnd);
    default:
      return std::string(content);
  }
}

}  // namespace

std::string WriteBase64(std::string_view bytes, std::string_view lineEnd) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  size_t onLine = 0;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
    unsigned bits = 0;
    for (size_t k = 0; k < 3; ++k) {
      bits = bits << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
    }
    for (size_t k = 0; k < 4; ++k) {
      out += k <= count ? kAlphabet[bits >> (18 - 6 * k) & 63] : '=';
    }
    onLine += 4;
    if (onLine == 76) {
      out += lineEnd;
      onLine = 0;
    }
  }
  if (onLine != 0) out += lineEnd;
  return out;
}

std::string WriteQuotedPrintable(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string out;
  size_t onLine = 0;
  for (const char byte : bytes) {
    std::string piece(1, byte);
    if (!IsAlphanumeric(byte)) {
      const auto value = static_cast<unsigned char>(byte);
      piece = {'=', kDigits[value >> 4], kDigits[value & 15]};
    }
    if (onLine + piece.size() > 75) {
      out += "=\r\n";
      onLine = 0;
    }
    out += piece;
    onLine += piece.size();
  }
  return out;
}

EmlEntity EmlEntity::Leaf(std::string_view contentType, std::string_view content) {
  EmlEntity leaf;
  if (!contentType.empty()) leaf.header("Content-Type", contentType);
  leaf.content_ = content;
  return leaf;
}

EmlEntity EmlEntity::Multipart(std::string_view subtype, std::string_view boundary) {
  EmlEntity multipart;
  std::string type = "multipart/";
  type += subtype;
  type += "; boundary=\"";
  type += boundary;
  type += '"';
  multipart.header("Content-Type", type);
  multipart.isMultipart_ = true;
  multipart.boundary_ = boundary;
  return multipart;
}

EmlEntity& EmlEntity::header(std::string_view name, std::string_view value) {
  headers_.emplace_back(name, value);
  return *this;
}

EmlEntity& EmlEntity::contentId(std::string_view id) {
  std::string value = "<";
  value += id;
  value += '>';
  return header("Content-ID", value);
}

EmlEntity& EmlEntity::encoded(EmlEncoding encoding) {
  constexpr std::array<std::string_view, 5> kNames = {"", "7bit", "8bit", "quoted-printable",
                                                      "base64"};
  encoding_ = encoding;
  return header("Content-Transfer-Encoding", kNames[static_cast<size_t>(encoding)]);
}

EmlEntity& EmlEntity::part(const EmlEntity& part) {
  parts_.push_back(part);
  return *this;
}

EmlEntity& EmlEntity::unclosed() {
  isClosed_ = false;
  return *this;
}

std::string EmlEntity::write(std::string_view lineEnd) const {
  std::string out = WriteHeaders(headers_, lineEnd);
  out += lineEnd;
  if (!isMultipart_) return out + Encode(content_, encoding_, lineEnd);

  for (const EmlEntity& part : parts_) {
    out += lineEnd;
    out += "--";
    out += boundary_;
    out += lineEnd;
    out += part.write(lineEnd);
  }
  if (isClosed_) {
    out += lineEnd;
    out += "--";
    out += boundary_;
    out += "--";
    out += lineEnd;
  }
  return out;
}

EmlBuilder EmlBuilder::Usual() {
  EmlBuilder mail;
  mail.field("From", "Ann <ann@example.com>")
      .field("To", "Bob <bob@example.com>")
      .field("Date", "Sat, 21 Nov 2026 10:00:00 +0000");
  return mail;
}

EmlBuilder& EmlBuilder::field(std::string_view name, std::string_view value) {
  fields_.emplace_back(name, value);
  return *this;
}

EmlBuilder& EmlBuilder::lineEnd(std::string_view lineEnd) {
  lineEnd_ = lineEnd;
  return *this;
}

EmlBuilder& EmlBuilder::body(const EmlEntity& body) {
  body_ = body;
  return *this;
}

std::string EmlBuilder::build() const {
  return WriteHeaders(fields_, lineEnd_) + body_.write(lineEnd_);
}

}  // namespace tarn::test

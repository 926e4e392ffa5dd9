// EmlBuilder.h - writes internet mail files (RFC 822, RFC 2045, RFC 2046) from a description.
//
//   EmlBuilder mail = EmlBuilder::Usual();
//   mail.field("Subject", "Hello");
//   mail.body(EmlEntity::Multipart("mixed", "sep")
//                 .part(EmlEntity::Leaf("text/html", "<p>Hi</p>"))
//                 .part(EmlEntity::Leaf("application/pdf", "%PDF")
//                           .encoded(EmlEncoding::Base64)
//                           .disposition("attachment; filename=a.pdf")));
//   mail.build();
//
// Nothing is checked or escaped, so that broken mails can be described, too. A content is written
// as it is given: its own line ends are not those of the mail.
#ifndef TARN_TESTS_SUPPORT_EMLBUILDER_H
#define TARN_TESTS_SUPPORT_EMLBUILDER_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarn::test {

enum class EmlEncoding { None, SevenBit, EightBit, QuotedPrintable, Base64 };

inline constexpr std::string_view kCrLf = "\r\n";
inline constexpr std::string_view kLf = "\n";

// Standard base64 with padding, a line end after every 76 characters and at the end.
std::string WriteBase64(std::string_view bytes, std::string_view lineEnd);
// Every byte but letters and digits escaped, lines broken softly at 75 characters with CR LF.
std::string WriteQuotedPrintable(std::string_view bytes);

// A leaf or a multipart: header lines, an empty line, and content or parts.
class EmlEntity {
 public:
  // An empty type writes no Content-Type.
  static EmlEntity Leaf(std::string_view contentType, std::string_view content);
  // An empty boundary parameter is quoted, like every other.
  static EmlEntity Multipart(std::string_view subtype, std::string_view boundary);

  // In the order of the calls, after Content-Type.
  EmlEntity& header(std::string_view name, std::string_view value);
  EmlEntity& disposition(std::string_view value) { return header("Content-Disposition", value); }
  EmlEntity& contentId(std::string_view id);
  // Writes the Content-Transfer-Encoding and the content in it.
  EmlEntity& encoded(EmlEncoding encoding);

  EmlEntity& part(const EmlEntity& part);
  // Leaves the closing delimiter out.
  EmlEntity& unclosed();

  // Header lines and content; of a multipart with the delimiters of its parts.
  std::string write(std::string_view lineEnd) const;

 private:
  std::vector<std::pair<std::string, std::string>> headers_;
  std::string content_;
  EmlEncoding encoding_ = EmlEncoding::None;
  bool isMultipart_ = false;
  bool isClosed_ = true;
  std::string boundary_;
  std::vector<EmlEntity> parts_;
};

class EmlBuilder {
 public:
  // With the fields that make a file a mail: From, To, Date.
  static EmlBuilder Usual();

  EmlBuilder& field(std::string_view name, std::string_view value);
  EmlBuilder& lineEnd(std::string_view lineEnd);
  EmlBuilder& body(const EmlEntity& body);

  std::string build() const;

 private:
  std::vector<std::pair<std::string, std::string>> fields_;
  std::string lineEnd_{kCrLf};
  EmlEntity body_ = EmlEntity::Leaf("", "");
};

}  // namespace tarn::test

#endif

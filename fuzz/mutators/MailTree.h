// MailTree.h - a mail (RFC 822, RFC 2045, RFC 2046) as header lines, contents and parts.
//
// Any bytes are a mail. What was read and not changed is written as it was, byte for byte.
#ifndef TARN_FUZZ_MUTATORS_MAILTREE_H
#define TARN_FUZZ_MUTATORS_MAILTREE_H

#include <string>
#include <string_view>
#include <vector>

namespace tarn::fuzz {

struct MailEntity {
  std::vector<std::string> lines;       // header fields with their folded lines and line ends
  std::string separator;                // the empty line, or nothing
  std::string content;                  // of a multipart what comes before its first delimiter
  std::string boundary;                 // of a multipart with at least one delimiter, else empty
  std::vector<std::string> delimiters;  // before each part: "--", boundary, rest of the line
  std::vector<MailEntity> parts;
  std::string ending;  // of a multipart, from its closing delimiter on

  bool isMultipart() const { return !parts.empty(); }
};

// Multiparts deeper than 24 are taken as contents.
MailEntity ReadMail(std::string_view mail);
std::string WriteMail(const MailEntity& entity);

// The value of the first field of that name, given in lower case, without its end; empty when there
// is none.
std::string_view FieldValue(const MailEntity& entity, std::string_view name);
// Replaces the first field of that name, or adds it.
void SetField(MailEntity& entity, std::string_view name, std::string_view value);
// The parameter's value in the field's, without quotes; a view into `value`.
std::string_view ParameterValue(std::string_view value, std::string_view name);

// Content as its Content-Transfer-Encoding says, and back. Bytes that do not belong to base64 or
// quoted-printable are passed over or taken as they are.
std::string DecodeContent(const MailEntity& entity);
void EncodeContent(MailEntity& entity, std::string_view bytes);

}  // namespace tarn::fuzz

#endif

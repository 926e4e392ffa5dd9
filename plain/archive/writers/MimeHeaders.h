// MimeHeaders.h - the headers of a mail and of its parts, encoded and folded by GMime (RFC 5322,
// 2047, 2231).
//
// All texts are UTF-8. Lines end with CRLF. Nothing of a field can end its line: control characters
// are spaces.
#ifndef TARN_ARCHIVE_MIMEHEADERS_H
#define TARN_ARCHIVE_MIMEHEADERS_H

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive {

// Fields that only properties of messages tell.
struct ThreadFields {
  std::string inReplyTo;
  std::string references;
};

// The fields that tell whom a mail is from and to, when, and what of. Fields of which `isThere` is
// true are left out, as those without a value are. A person without an address of internet mail is
// a group without members, "Ann: ;", so that the name is kept.
std::string MailHeaders(const ItemFields& fields, const ThreadFields& thread,
                        const std::function<bool(std::string_view name)>& isThere);

struct PartHeaders {
  std::string mediaType;  // "text/plain"; what is no type is application/octet-stream
  std::vector<std::pair<std::string, std::string>> parameters;
  std::string disposition;  // "attachment", "inline", or empty
  std::string fileName;
  std::string encoding;  // "base64", or empty
  std::string contentId;
  std::string contentLocation;
};

// With the empty line after them.
std::string TextOf(const PartHeaders& headers);

// The header section that a mail came with, without the fields that describe its content: those are
// written anew. Lines that are no fields are dropped.
struct OriginalHeaders {
  std::string text;
  std::vector<std::string> names;  // in lower case
};
OriginalHeaders KeptHeaders(std::string_view headers);

}  // namespace tarn::archive

#endif

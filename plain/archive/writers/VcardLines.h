// VcardLines.h - the lines of a vCard (RFC 6350 3).
#ifndef TARN_ARCHIVE_VCARDLINES_H
#define TARN_ARCHIVE_VCARDLINES_H

#include <initializer_list>
#include <string>
#include <string_view>

#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {

class VcardLines {
 public:
  explicit VcardLines(SinkBuffer& out) : out_(out) {}

  // "NAME:value", cut into lines of at most 75 bytes, between characters. `name` has the
  // parameters; the value is escaped already.
  void put(std::string_view name, std::string_view value);

  // The same of one text; nothing where it is empty.
  void putText(std::string_view name, std::string_view text);

  // A value of several components; nothing where all are empty.
  void putComponents(std::string_view name, std::initializer_list<std::string_view> components);

 private:
  SinkBuffer& out_;
};

// With "\\", ",", ";" and line ends escaped, and without other control characters.
std::string EscapedVcardText(std::string_view text);

}  // namespace tarn::archive

#endif

// SourceKind.h - what a mail file is, told by its content.
#ifndef TARN_ARCHIVE_SOURCEKIND_H
#define TARN_ARCHIVE_SOURCEKIND_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

#include "archive/model/Trouble.h"

namespace tarn::archive {

enum class SourceKind : uint8_t {
  Store,     // "!BDN" (MS-PST 2.2.2.6)
  Compound,  // a compound file (MS-CFB 2.2), which is an MSG file or none of ours
  Tnef,      // winmail.dat (MS-OXTNEF 2.1.3.1)
  Mbox,      // a "From " line before a mail
  Mail,      // internet mail
  Maildir    // a folder with folders "cur" and "new"
};

// How much of a file tells, and how much is looked at where a header goes on beyond that.
inline constexpr size_t kTellingBytes = 65536;
inline constexpr size_t kLongestHeader = size_t{1} << 20;

// The kind of a file that begins so; none for one that is no mail file. Internet mail begins, after
// a byte order mark, blank lines and a ">From " line, with a header that has at least one of the
// usual names, or only names "X-..."; UTF-16 with its mark counts too. The first mail of an mbox
// may have no header, or a broken line before it, where its "From " line has a date.
std::optional<SourceKind> KindOfBeginning(std::string_view bytes);

// The same of a file. Unreadable where the system does not give its bytes.
Outcome<std::optional<SourceKind>> KindOfFile(const std::filesystem::path& path);

// Whether a file is called what mail files are, in either case: "a.pst", "winmail.dat". What some
// systems leave beside files, "._a.pst", is not.
bool IsNamedAsMail(const std::filesystem::path& path);

}  // namespace tarn::archive

#endif

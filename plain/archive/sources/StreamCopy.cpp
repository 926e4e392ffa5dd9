#include "archive/sources/StreamCopy.h"

#include <string>
#include <system_error>
#include <vector>

#include "console/InputStream.h"
#include "console/Paths.h"
#include "console/SystemErrors.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr size_t kCopiedAtOnce = 1 << 18;

Trouble Unreadable(const std::error_code& error) {
  return {TroubleKind::Unreadable, host::ErrorText(error)};
}

Trouble Unwritable(const fs::path& copy, const std::error_code& error) {
  return {TroubleKind::Unreadable, "cannot be copied to " + host::Utf8FromPath(copy.parent_path()) +
                                       ": " + host::ErrorText(error) +
                                       "; --temp names another place"};
}

Outcome<fs::path> Copy(host::InputStream& stream, host::PrivateFolder& folder) {
  host::WritableFile file;
  std::error_code error;
  fs::path copy;
  int number = 0;
  do {
    copy = folder.path() / ("mail" + std::to_string(++number));
    error = file.create(copy);
  } while (error == std::errc::file_exists);
  if (error) return Unwritable(copy, error);
  std::vector<char> buffer(kCopiedAtOnce);
  for (size_t got = buffer.size(); got != 0;) {
    error = stream.read(buffer, got);
    if (error) return Unreadable(error);
    error = file.write({buffer.data(), got});
    if (error) return Unwritable(copy, error);
  }
  error = file.writeAndClose({});
  if (error) return Unwritable(copy, error);
  return copy;
}

}  // namespace

Outcome<fs::path> CopyStandardInput(host::PrivateFolder& folder) {
  host::InputStream stream;
  const std::error_code error = stream.useStandardInput();
  if (error) return Unreadable(error);
  return Copy(stream, folder);
}

Outcome<fs::path> CopyPipe(const fs::path& pipe, host::PrivateFolder& folder) {
  host::InputStream stream;
  const std::error_code error = stream.openPipe(pipe);
  if (error) return Unreadable(error);
  return Copy(stream, folder);
}

}  // namespace tarn::archive

#include "InputFile.h"

#include <filesystem>
#include <optional>
#include <vector>

#include "console/Failure.h"
#include "console/InputStream.h"
#include "console/Paths.h"
#include "console/SystemErrors.h"
#include "console/SystemFiles.h"
#include "console/Text.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

constexpr size_t kCopiedAtOnce = 1 << 18;
constexpr const char* kNameInFolder = "mail";

std::u16string InFolder(const fs::path& path) {
  const std::optional<std::u16string> wide = WideFromUtf8(Utf8FromPath(path));
  if (!wide) throw Failure(ExitStatus::Usage, Utf8FromPath(path), "the name is not UTF-8");
  return *wide;
}

Failure Unwritable(const std::string& name, const fs::path& copy, const std::error_code& error) {
  return {ExitStatus::Failed, name,
          "cannot be copied to " + Utf8FromPath(copy.parent_path()) + ": " + ErrorText(error) +
              "; --temp names another place"};
}

std::u16string Copy(InputStream& stream, const std::string& name, PrivateFolder& folder) {
  const fs::path copy = folder.path() / kNameInFolder;
  WritableFile file;
  std::error_code error = file.create(copy);
  if (error) throw Unwritable(name, copy, error);
  std::vector<char> buffer(kCopiedAtOnce);
  for (size_t got = buffer.size(); got != 0;) {
    error = stream.read(buffer, got);
    if (error) throw Failure(ExitStatus::Usage, name, ErrorText(error));
    error = file.write({buffer.data(), got});
    if (error) throw Unwritable(name, copy, error);
  }
  error = file.writeAndClose({});
  if (error) throw Unwritable(name, copy, error);
  return InFolder(copy);
}

std::u16string CopyPipe(const fs::path& pipe, const std::string& name, PrivateFolder& folder) {
  InputStream stream;
  const std::error_code error = stream.openPipe(pipe);
  if (error) throw Failure(ExitStatus::Usage, name, ErrorText(error));
  return Copy(stream, name, folder);
}

std::u16string CopyStandardInput(const std::string& name, PrivateFolder& folder) {
  InputStream stream;
  const std::error_code error = stream.useStandardInput();
  if (error) throw Failure(ExitStatus::Usage, name, ErrorText(error));
  return Copy(stream, name, folder);
}

// A file whose own name the filter cannot be given.
std::u16string Linked(const fs::path& path, const std::string& name, PrivateFolder& folder) {
  const fs::path link = folder.path() / kNameInFolder;
  std::error_code error;
  const fs::path full = fs::absolute(path, error);
  if (!error) error = MakeLink(full, link);
  if (error) throw Failure(ExitStatus::Usage, name, ErrorText(error));
  return InFolder(link);
}

// Once it is known that the file can be read: the kernel's own open says no more than that it
// failed.
std::u16string CheckedPath(const std::string& file, PrivateFolder& folder) {
  const auto unusable = [&file](const std::string& why) {
    return Failure(ExitStatus::Usage, file, why);
  };
  if (file.empty()) throw Failure(ExitStatus::Usage, "empty file name");
  const fs::path path = PathFromUtf8(file);
  std::error_code error;
  const FileKind kind = KindOfFile(path, error);
  if (kind == FileKind::Missing) throw unusable("no such file");
  if (kind == FileKind::Unknown) throw unusable(ErrorText(error));
  if (kind == FileKind::Directory) throw unusable("is a directory");
  if (kind == FileKind::Other) throw unusable("is neither a file nor a pipe");
  if (kind == FileKind::Pipe) return CopyPipe(path, file, folder);
  error = CheckReadable(path);
  if (error) throw unusable(ErrorText(error));
  const std::optional<std::u16string> wide = WideFromUtf8(file);
  return wide ? *wide : Linked(path, file, folder);
}

}  // namespace

InputFile::InputFile(const std::string& file, PrivateFolder& folder)
    : name_(file == kStandardStream ? "standard input" : file),
      path_(file == kStandardStream ? CopyStandardInput(name_, folder)
                                    : CheckedPath(file, folder)) {}

}  // namespace tarn::host

#include "Output.h"

#include <filesystem>
#include <random>
#include <system_error>

#include "Failure.h"
#include "Paths.h"
#include "StandardStreams.h"
#include "SystemErrors.h"
#include "SystemFiles.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

void WriteToDevice(const std::string& path, std::string_view bytes) {
  WritableFile device;
  const std::error_code opened = device.openDevice(PathFromUtf8(path));
  if (opened) throw Failure(ExitStatus::Usage, path, ErrorText(opened));
  const std::error_code written = device.writeAndClose(bytes);
  if (written) throw Failure(ExitStatus::Failed, path, ErrorText(written));
}

// A file beside the one it shall become. It goes with this object unless it was put in place.
class PartFile {
 public:
  PartFile(const std::string& path, const fs::path& place) : path_(path), place_(place) {
    std::random_device random;
    std::error_code error;
    do {
      part_ = place_.parent_path() / (".tarnmail-" + std::to_string(random()) + ".part");
      error = file_.create(part_);
    } while (error == std::errc::file_exists);
    if (error) throw Failure(ExitStatus::Usage, path_, ErrorText(error));
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;
  ~PartFile() {
    if (part_.empty()) return;
    RemoveFile(part_);
  }

  void write(std::string_view bytes) {
    const std::error_code error = file_.writeAndClose(bytes);
    if (error) throw Failure(ExitStatus::Failed, path_, ErrorText(error));
  }

  void putInPlace() {
    const std::error_code error = MoveIntoPlace(part_, place_);
    if (error) throw Failure(ExitStatus::Usage, path_, ErrorText(error));
    part_.clear();
  }

 private:
  const std::string path_;
  const fs::path place_;
  fs::path part_;
  WritableFile file_;
};

void WriteToFile(const std::string& path, const std::string& source, std::string_view bytes) {
  if (path.empty()) throw Failure(ExitStatus::Usage, "empty name of the output file");
  const fs::path asked = PathFromUtf8(path);
  std::error_code error;
  const FileKind kind = KindOfFile(asked, error);
  if (kind == FileKind::Directory) throw Failure(ExitStatus::Usage, path, "is a directory");
  if (kind == FileKind::Other) {
    WriteToDevice(path, bytes);
    return;
  }
  if (IsSameFile(asked, PathFromUtf8(source))) {
    throw Failure(ExitStatus::Usage, path, "is the mail file itself");
  }
  error.clear();
  // A link stays a link: the file that it names is replaced.
  const fs::path place = kind == FileKind::Regular ? TargetOfLinks(asked, error) : asked;
  if (error) throw Failure(ExitStatus::Usage, path, ErrorText(error));
  PartFile part(path, place);
  part.write(bytes);
  part.putInPlace();
}

}  // namespace

void WriteToStandardOutput(std::string_view bytes) {
  const std::error_code error = WriteStandardOutput(bytes);
  if (error) throw Failure(ExitStatus::Failed, "standard output", ErrorText(error));
}

void WriteOutput(const std::optional<std::string>& path, const std::string& source,
                 std::string_view bytes) {
  if (path) {
    WriteToFile(*path, source, bytes);
  } else {
    WriteToStandardOutput(bytes);
  }
}

}  // namespace tarn::host

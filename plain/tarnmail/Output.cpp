#include "Output.h"

#include <filesystem>
#include <random>
#include <system_error>

#include "Failure.h"
#include "Paths.h"
#include "RemovedAtEnd.h"
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

// A file beside the one it shall become.
class PartFile {
 public:
  PartFile(const std::string& path, const fs::path& place) : path_(path), place_(place) {
    std::random_device random;
    const auto create = [&](std::error_code& error) {
      fs::path part;
      do {
        part = place_.parent_path() / (".tarnmail-" + std::to_string(random()) + ".part");
        error = file_.create(part);
      } while (error == std::errc::file_exists);
      return part;
    };
    const std::error_code error = part_.make(create);
    if (error) throw Failure(ExitStatus::Usage, path_, ErrorText(error));
    file_.takePermissionsOf(place_);
  }

  void write(std::string_view bytes) {
    const std::error_code error = file_.writeAndClose(bytes);
    if (error) throw Failure(ExitStatus::Failed, path_, ErrorText(error));
  }

  void putInPlace() {
    const std::error_code error = MoveIntoPlace(part_.path(), place_);
    if (error) throw Failure(ExitStatus::Usage, path_, ErrorText(error));
    part_.keep();
  }

 private:
  const std::string path_;
  const fs::path place_;
  // Before the file, so that it is closed when its name goes.
  RemovedAtEnd part_;
  WritableFile file_;
};

void WriteToFile(const std::string& path, const std::string& source, std::string_view bytes) {
  if (path.empty()) throw Failure(ExitStatus::Usage, "empty name of the output file");
  const fs::path asked = PathFromUtf8(path);
  std::error_code error;
  const FileKind kind = KindOfFile(asked, error);
  if (kind == FileKind::Unknown) throw Failure(ExitStatus::Usage, path, ErrorText(error));
  if (kind == FileKind::Directory) throw Failure(ExitStatus::Usage, path, "is a directory");
  if (kind == FileKind::Other || kind == FileKind::Pipe) {
    WriteToDevice(path, bytes);
    return;
  }
  if (IsSameFile(asked, PathFromUtf8(source))) {
    throw Failure(ExitStatus::Usage, path, "is the mail file itself");
  }
  // A link stays a link: it is the file that it names that is replaced.
  const fs::path place = TargetOfLinks(asked, error);
  if (!error && kind == FileKind::Regular) error = CheckWritable(place);
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
  if (path && *path != kStandardStream) {
    WriteToFile(*path, source, bytes);
  } else {
    WriteToStandardOutput(bytes);
  }
}

}  // namespace tarn::host

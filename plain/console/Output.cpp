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

namespace fs = std::filesystem;

class OutputFile::Place {
 public:
  Place() = default;
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  virtual ~Place() = default;
  virtual void write(std::string_view bytes) = 0;
  virtual void finish() = 0;
};

namespace {

class StandardOutputPlace final : public OutputFile::Place {
 public:
  void write(std::string_view bytes) override { WriteToStandardOutput(bytes); }
  void finish() override {}
};

class DevicePlace final : public OutputFile::Place {
 public:
  explicit DevicePlace(const std::string& path) : path_(path) {
    const std::error_code opened = device_.openDevice(PathFromUtf8(path));
    if (opened) throw Failure(ExitStatus::Usage, path, ErrorText(opened));
  }

  void write(std::string_view bytes) override {
    const std::error_code written = device_.write(bytes);
    if (written) throw Failure(ExitStatus::Failed, path_, ErrorText(written));
  }

  void finish() override {
    const std::error_code closed = device_.writeAndClose({});
    if (closed) throw Failure(ExitStatus::Failed, path_, ErrorText(closed));
  }

 private:
  const std::string path_;
  WritableFile device_;
};

// A file beside the one it shall become.
class PartFile final : public OutputFile::Place {
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

  void write(std::string_view bytes) override {
    const std::error_code error = file_.write(bytes);
    if (error) throw Failure(ExitStatus::Failed, path_, ErrorText(error));
  }

  void finish() override {
    const std::error_code closed = file_.writeAndClose({});
    if (closed) throw Failure(ExitStatus::Failed, path_, ErrorText(closed));
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

std::unique_ptr<OutputFile::Place> NamedPlace(const std::string& path, const std::string& source) {
  if (path.empty()) throw Failure(ExitStatus::Usage, "empty name of the output file");
  const fs::path asked = PathFromUtf8(path);
  std::error_code error;
  const FileKind kind = KindOfFile(asked, error);
  if (kind == FileKind::Unknown) throw Failure(ExitStatus::Usage, path, ErrorText(error));
  if (kind == FileKind::Directory) throw Failure(ExitStatus::Usage, path, "is a directory");
  if (kind == FileKind::Other || kind == FileKind::Pipe) return std::make_unique<DevicePlace>(path);
  if (IsSameFile(asked, PathFromUtf8(source))) {
    throw Failure(ExitStatus::Usage, path, "is the mail file itself");
  }
  // A link stays a link: it is the file that it names that is replaced.
  const fs::path place = TargetOfLinks(asked, error);
  if (!error && kind == FileKind::Regular) error = CheckWritable(place);
  if (error) throw Failure(ExitStatus::Usage, path, ErrorText(error));
  return std::make_unique<PartFile>(path, place);
}

}  // namespace

OutputFile::OutputFile(const std::optional<std::string>& path, const std::string& source) {
  if (path && *path != kStandardStream) {
    place_ = NamedPlace(*path, source);
  } else {
    place_ = std::make_unique<StandardOutputPlace>();
  }
}

OutputFile::~OutputFile() = default;

void OutputFile::write(std::string_view bytes) { place_->write(bytes); }

void OutputFile::finish() { place_->finish(); }

void WriteToStandardOutput(std::string_view bytes) {
  const std::error_code error = WriteStandardOutput(bytes);
  if (error) throw Failure(ExitStatus::Failed, "standard output", ErrorText(error));
}

void WriteOutput(const std::optional<std::string>& path, const std::string& source,
                 std::string_view bytes) {
  OutputFile output(path, source);
  output.write(bytes);
  output.finish();
}

}  // namespace tarn::host

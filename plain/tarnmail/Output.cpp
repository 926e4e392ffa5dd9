#include "Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

#include "Failure.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

std::string ErrorText(int error) { return std::generic_category().message(error); }

// Writes and closes the stream. The result is 0 or the error.
int WriteAndClose(std::FILE* stream, std::string_view bytes) {
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size() &&
                       std::fflush(stream) == 0;
  const int error = written ? 0 : errno;
  if (std::fclose(stream) != 0 && error == 0) return errno;
  return error;
}

void WriteToDevice(const std::string& path, std::string_view bytes) {
  std::FILE* const stream = std::fopen(path.c_str(), "wb");
  if (stream == nullptr) throw Failure(ExitStatus::Usage, path, ErrorText(errno));
  const int error = WriteAndClose(stream, bytes);
  if (error != 0) throw Failure(ExitStatus::Failed, path, ErrorText(error));
}

// A file beside the one it shall become. It goes with this object unless it was put in place.
class PartFile {
 public:
  PartFile(const std::string& path, const fs::path& place) : path_(path), place_(place) {
    std::random_device random;
    do {
      part_ = place_.parent_path() / (".tarnmail-" + std::to_string(random()) + ".part");
      stream_ = std::fopen(part_.c_str(), "wbx");
    } while (stream_ == nullptr && errno == EEXIST);
    if (stream_ == nullptr) throw Failure(ExitStatus::Usage, path_, ErrorText(errno));
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;
  ~PartFile() {
    if (part_.empty()) return;
    std::error_code ignored;
    fs::remove(part_, ignored);
  }

  void write(std::string_view bytes) {
    const int error = WriteAndClose(stream_, bytes);
    if (error != 0) throw Failure(ExitStatus::Failed, path_, ErrorText(error));
  }

  void putInPlace() {
    std::error_code error;
    fs::rename(part_, place_, error);
    if (error) throw Failure(ExitStatus::Usage, path_, error.message());
    part_.clear();
  }

 private:
  const std::string path_;
  const fs::path place_;
  fs::path part_;
  std::FILE* stream_ = nullptr;
};

void WriteToFile(const std::string& path, const std::string& source, std::string_view bytes) {
  if (path.empty()) throw Failure(ExitStatus::Usage, "empty name of the output file");
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) throw Failure(ExitStatus::Usage, path, "is a directory");
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    WriteToDevice(path, bytes);
    return;
  }
  if (fs::equivalent(path, source, error)) {
    throw Failure(ExitStatus::Usage, path, "is the mail file itself");
  }
  // A link stays a link: the file that it names is replaced.
  const fs::path place = fs::exists(status) ? fs::canonical(path) : fs::path(path);
  PartFile part(path, place);
  part.write(bytes);
  part.putInPlace();
}

}  // namespace

void PrepareStandardStreams() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // Takes the lowest free number, which is this one. Writes to it fail as if it were closed.
    if (open("/dev/null", O_RDONLY | O_NOCTTY) < 0) return;
  }
  std::signal(SIGPIPE, SIG_IGN);
}

void WriteToStandardOutput(std::string_view bytes) {
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() &&
                       std::fflush(stdout) == 0;
  if (!written) throw Failure(ExitStatus::Failed, "standard output", ErrorText(errno));
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

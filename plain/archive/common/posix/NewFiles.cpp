#include "archive/common/NewFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <system_error>

#include "console/Failure.h"
#include "console/Paths.h"
#include "console/RemovedAtEnd.h"
#include "console/SystemErrors.h"
#include "console/posix/WriteAll.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

// A descriptor that closes itself.
class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { (void)close(); }
  int get() const { return descriptor_; }
  bool close() {
    const int closed = descriptor_ < 0 ? 0 : ::close(descriptor_);
    descriptor_ = -1;
    return closed == 0;
  }

 private:
  int descriptor_;
};

// Renames where nothing has the name yet; EEXIST where something has.
std::error_code RenameToNew(int folder, const std::string& from, const std::string& to) {
  if (renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0) return {};
  // Some file systems rename only over what there is.
  if (errno != EINVAL && errno != ENOSYS) return host::LastError();
  if (linkat(folder, from.c_str(), folder, to.c_str(), 0) != 0) return host::LastError();
  return unlinkat(folder, from.c_str(), 0) == 0 ? std::error_code() : host::LastError();
}

}  // namespace

NewFiles::NewFiles(const std::string& folder) : path_(host::PathFromUtf8(folder)) {
  if (folder.empty()) throw Failure(ExitStatus::Usage, "empty name of the folder");
  std::error_code error;
  fs::create_directories(path_, error);
  if (!error) {
    folder_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder_ < 0) error = host::LastError();
  }
  if (error) throw Failure(ExitStatus::Usage, folder, host::ErrorText(error));
  for (fs::directory_iterator entry(path_, error), end; !error && entry != end;
       entry.increment(error)) {
    names_.take(entry->path().filename().string());
  }
}

NewFiles::~NewFiles() {
  if (folder_ >= 0) close(folder_);
}

std::string NewFiles::add(const std::string& safeName,
                          const std::function<bool(const Write&)>& fill) {
  const auto failed = [this](const std::error_code& error) {
    return Failure(ExitStatus::Failed, path_.string(), host::ErrorText(error));
  };
  std::random_device random;
  std::string partName;
  int descriptor = -1;
  host::RemovedAtEnd part;
  const std::error_code unmade = part.make([&](std::error_code& error) {
    do {
      partName = ".tarnmail-" + std::to_string(random()) + ".part";
      descriptor = openat(folder_, partName.c_str(),
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST);
    if (descriptor < 0) error = host::LastError();
    return path_ / partName;
  });
  if (unmade) throw failed(unmade);
  OpenFile file(descriptor);
  const bool isWhole = fill([&](std::string_view bytes) {
    const std::error_code error = host::WriteAll(file.get(), bytes);
    if (error) throw failed(error);
  });
  if (!isWhole) return "";
  if (!file.close()) throw failed(host::LastError());
  for (;;) {
    std::string name = names_.make(safeName);
    const std::error_code error = RenameToNew(folder_, partName, name);
    if (!error) {
      part.keep();
      return name;
    }
    // Somebody else has just made a file of that name.
    if (error != std::errc::file_exists) throw failed(error);
  }
}

}  // namespace tarn::archive

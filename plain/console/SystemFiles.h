// SystemFiles.h - what a command needs to know of a file, and how it makes one. One folder a system
// implements it.
#ifndef TARN_CONSOLE_SYSTEMFILES_H
#define TARN_CONSOLE_SYSTEMFILES_H

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace tarn::host {

enum class FileKind {
  Missing,  // also below a directory that does not exist
  Regular,
  Directory,
  Pipe,
  Other,   // a device, a socket; on Windows also names of devices, such as NUL
  Unknown  // `error` tells
};

// What the path leads to, through links. A link that leads nowhere is Missing. Opens nothing to
// read or to write.
FileKind KindOfFile(const std::filesystem::path& path, std::error_code& error);

// Whether the file can be opened for reading.
std::error_code CheckReadable(const std::filesystem::path& path);

// Whether the regular file, which exists, may be written to.
std::error_code CheckWritable(const std::filesystem::path& path);

// The file that the path leads to: itself unless it is a link. Where links can lead to a file that
// does not exist yet, that is the one; elsewhere such a link is an error.
std::filesystem::path TargetOfLinks(const std::filesystem::path& path, std::error_code& error);

// Whether both exist and are one file, by whatever names.
bool IsSameFile(const std::filesystem::path& one, const std::filesystem::path& other);

// The full path of a directory, without "..". Where that follows links, a directory that does not
// exist is an error; elsewhere it has a full path too.
std::filesystem::path FullDirectory(const std::filesystem::path& path, std::error_code& error);

// Renames in one step, in place of a file that is there. Windows keeps one that is open elsewhere
// or for reading alone.
std::error_code MoveIntoPlace(const std::filesystem::path& from, const std::filesystem::path& to);

void RemoveFile(const std::filesystem::path& path);

// A folder of a new name in the directory, for its owner alone where directories have such rights
// of their own (POSIX). With an error nothing was made.
std::filesystem::path MakePrivateFolder(const std::filesystem::path& directory,
                                        std::error_code& error);

// Removes a file, or a folder with all that is in it, also while somebody puts more into it;
// follows no links. Does not say whether it could.
void RemoveTree(const std::filesystem::path& path);

// Where the system wants temporary files.
std::filesystem::path SystemTempDirectory();

// Makes a symbolic link. Windows, where every name is text, needs none and makes none.
std::error_code MakeLink(const std::filesystem::path& target, const std::filesystem::path& link);

// A file that is open for writing, or is not.
class WritableFile {
 public:
  WritableFile() = default;
  WritableFile(const WritableFile&) = delete;
  WritableFile& operator=(const WritableFile&) = delete;
  // Closes the file.
  ~WritableFile();

  // Makes a file of that name; std::errc::file_exists when there is one.
  std::error_code create(const std::filesystem::path& path);
  // Opens what there is: a device or a pipe. A console of Windows shows the text that the bytes are
  // in UTF-8, as it does for standard output; every other device gets the bytes.
  std::error_code openDevice(const std::filesystem::path& path);
  // Gives the file the permissions of another, as far as files have them of their own.
  void takePermissionsOf(const std::filesystem::path& path);
  // All bytes, whole or with the error.
  std::error_code write(std::string_view bytes);
  // Writes all bytes and closes the file, also when that fails.
  std::error_code writeAndClose(std::string_view bytes);

 private:
  static constexpr intptr_t kClosed = -1;
  intptr_t file_ = kClosed;  // the system's number of the file: a descriptor, a HANDLE
};

}  // namespace tarn::host

#endif

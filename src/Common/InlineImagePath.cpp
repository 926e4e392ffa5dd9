#include <array>

#include "Common/ApiUtils.h"
#include "Common/ByteSearch.h"
#include "Common/InlineImages.h"
#include "Platform/Directories.h"

namespace tarn {
namespace {

template <typename Char>
constexpr bool IsSeparator(Char c) {
  return c == '\\' || c == '/' || c == ':';
}

uint64_t LengthWithin(const char16_t (&directory)[kPathCapacity]) {
  uint64_t length = 0;
  while (length < kPathCapacity && directory[length] != u'\0') ++length;
  return length;
}

// Makes a directory of a new name; the name stays empty when that fails.
Status MakeImageDirectory(char16_t (&directory)[kPathCapacity]) {
  Status status =
      Status::FromCode(KernelTempFileName(nullptr, directory, kPathCapacity, 1, u"pst", nullptr));
  if (status.ok()) {
    // The name is what is wanted, not the file that came with it.
    KernelDeleteFile(directory);
    if (platform::MakeDirectory(directory) != platform::DirectoryStatus::Failed) return StatusOk;
    status = StatusCreateFailed;
  }
  directory[0] = u'\0';
  return status;
}

// Writes a path into its buffer piece by piece. The length and one more always stay below the
// buffer's size; a piece that does not fit fails, and the path is then of no use.
class PathWriter {
 public:
  explicit PathWriter(char (&path)[kPathCapacity]) : path_(path) { path_[0] = '\0'; }

  PathWriter& add(std::string_view piece) {
    overflow_ = overflow_ || piece.size() >= kPathCapacity - 1 - length_;
    if (overflow_) return *this;
    piece.copy(path_ + length_, piece.size());
    length_ += piece.size();
    path_[length_] = '\0';
    return *this;
  }

  Status status() const { return overflow_ ? StatusPathOverflow : StatusOk; }

 private:
  char* path_;
  uint64_t length_ = 0;
  bool overflow_ = false;
};

// "text_name", the name and an "@" after it taken out of the text.
void AddFileName(PathWriter& path, std::string_view text, std::string_view name) {
  if (!text.empty()) {
    const size_t found = FindBytes(text, name);
    if (found == std::string_view::npos) {
      path.add(text);
    } else {
      std::string_view tail = text.substr(found + name.size());
      if (tail.starts_with('@')) tail.remove_prefix(1);
      path.add(text.substr(0, found)).add(tail);
    }
    path.add("_");
  }
  path.add(name);
}

std::string_view TextOrEmpty(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

}  // namespace

Status MakeInlineImagePath(char (&path)[kPathCapacity], char16_t (&directory)[kPathCapacity],
                           const char* text, const char* name) {
  path[0] = '\0';
  uint64_t length = LengthWithin(directory);
  if (length == 0) {
    if (const Status made = MakeImageDirectory(directory); !made.ok()) return made;
    length = LengthWithin(directory);
    if (length + 1 < kPathCapacity && !IsSeparator(directory[length - 1])) {
      directory[length++] = u'\\';
      directory[length] = u'\0';
    }
  }

  // Room for three bytes a unit and a NUL; so much never fails for being too long.
  std::array<char, 3 * kPathCapacity + 1> utf8;
  const uint64_t bytes = ConvertToUtf8({directory, length}, utf8);
  if (bytes == 0) return StatusPathToUtf8Failed;

  PathWriter writer(path);
  writer.add({utf8.data(), bytes});
  AddFileName(writer, TextOrEmpty(text), TextOrEmpty(name));
  return writer.status();
}

}  // namespace tarn

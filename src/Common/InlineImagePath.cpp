#include <array>

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
int32_t MakeImageDirectory(char16_t (&directory)[kPathCapacity]) {
  int32_t status = KernelTempFileName(nullptr, directory, kPathCapacity, 1, u"pst", nullptr);
  if (status == StatusOk) {
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

  int32_t status() const { return overflow_ ? StatusPathOverflow : StatusOk; }

 private:
  char* path_;
  uint64_t length_ = 0;
  bool overflow_ = false;
};

// "text_name", the name and an "@" behind it taken out of the text.
void AddFileName(PathWriter& path, std::string_view text, std::string_view name) {
  if (!text.empty()) {
    const char* const end = text.data() + text.size();
    const char* const found = FindBytes(text.data(), end, name);
    if (found == nullptr) {
      path.add(text);
    } else {
      const auto before = static_cast<size_t>(found - text.data());
      std::string_view tail = text.substr(before + name.size());
      if (tail.starts_with('@')) tail.remove_prefix(1);
      path.add(text.substr(0, before)).add(tail);
    }
    path.add("_");
  }
  path.add(name);
}

std::string_view TextOrEmpty(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

}  // namespace

int32_t MakeInlineImagePath(char (&path)[kPathCapacity], char16_t (&directory)[kPathCapacity],
                            const char* text, const char* name) {
  path[0] = '\0';
  uint64_t length = LengthWithin(directory);
  if (length == 0) {
    const int32_t made = MakeImageDirectory(directory);
    if (made != StatusOk) return made;
    length = LengthWithin(directory);
    if (length + 1 < kPathCapacity && !IsSeparator(directory[length - 1])) {
      directory[length++] = u'\\';
      directory[length] = u'\0';
    }
  }

  // Room for three bytes a unit and a NUL; so much never fails for being too long.
  std::array<char, 3 * kPathCapacity + 1> utf8;
  const int64_t bytes =
      KernelWideToUtf8(directory, static_cast<int64_t>(length), utf8.data(), utf8.size());
  if (bytes <= 0) return StatusPathToUtf8Failed;

  PathWriter writer(path);
  writer.add(std::string_view(utf8.data(), static_cast<size_t>(bytes)));
  AddFileName(writer, TextOrEmpty(text), TextOrEmpty(name));
  return writer.status();
}

}  // namespace tarn

// Unique names for temporary files:
//   <directory><separator><prefix><unique>[.<extension>]
// The unique part is drawn from the system's random numbers, and the file is made together with its
// name and only if nothing of that name exists, so nobody can guess it or get there first.
#include <algorithm>
#include <array>
#include <span>

#include "Faults.h"
#include "Fence.h"
#include "PathRules.h"
#include "Paths.h"
#include "SystemFiles.h"
#include "TarnPst.h"
#include "Tarnbase/Kernel.h"
#include "TemporaryFiles.h"
#include "Utf8.h"

namespace tarn::kernel {
namespace {

constexpr size_t kUniqueLength = 16;  // characters of 5 bits each
constexpr int kAttempts = 64;         // before a run of collisions counts as a failure

// Letters of one case, for file systems that do not tell the cases apart.
bool MakeUnique(std::array<char, kUniqueLength>& unique) {
  static constexpr char kAlphabet[] = "abcdefghijklmnopqrstuvwxyz234567";
  std::array<unsigned char, kUniqueLength> random;
  if (!RandomBytes(random)) return false;
  std::transform(random.begin(), random.end(), unique.begin(),
                 [](unsigned char byte) { return kAlphabet[byte & 31]; });
  return true;
}

// Appends a part of a file name; a null or empty one is nothing. False when it is no text or leads
// to another directory.
bool AppendPiece(std::string& target, const char* before, const char16_t* piece) {
  if (piece == nullptr || *piece == u'\0') return true;
  const std::string text = PathFromWide(piece);
  if (text.empty() || std::any_of(text.begin(), text.end(), IsSeparator)) return false;
  target += before + text;
  return true;
}

// What comes before and after the unique part.
bool MakeFrame(const char16_t* directory, const char16_t* prefix, const char16_t* extension,
               std::string& front, std::string& back) {
  const bool named = directory != nullptr && *directory != u'\0';
  front = named ? PathFromWide(directory) : DefaultTempDirectory();
  if (!MayHoldTemporaries(front)) return false;
  if (!IsSeparator(front.back())) front += kPathSeparator;
  return AppendPiece(front, "", prefix) && AppendPiece(back, ".", extension);
}

TarnStatus MakeTempFile(const char16_t* directory, std::span<char16_t> out, const char16_t* prefix,
                        const char16_t* extension) {
  std::string front;
  std::string back;
  if (!MakeFrame(directory, prefix, extension, front, back)) return StatusCreateFailed;
  const std::string trusted = DefaultTempDirectory();
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::array<char, kUniqueLength> unique;
    if (!MakeUnique(unique)) return StatusCreateFailed;
    std::string path = front;
    path.append(unique.begin(), unique.end()).append(back);
    if (!MayNameTemporary(path)) return StatusCreateFailed;
    path = SpellingForOthers(path);
    const std::u16string wide = ToWide(path);
    if (wide.empty() || wide.size() >= out.size()) return StatusCreateFailed;
    Creation creation = Creation::Failed;
    const TemporaryPlace place = {path, trusted};
    MakeNotedFile(path, [&] { return (creation = MakeNewFile(place)) == Creation::Made; });
    if (creation == Creation::Exists) continue;
    if (creation == Creation::Failed) return StatusCreateFailed;
    std::copy_n(wide.c_str(), wide.size() + 1, out.data());
    return StatusOk;
  }
  return StatusCreateFailed;
}

}  // namespace
}  // namespace tarn::kernel

int32_t KernelTempFileName(const char16_t* directory, char16_t* out, int32_t capacity,
                           int32_t /*one*/, const char16_t* prefix, const char16_t* extension) {
  using namespace tarn::kernel;
  if (FaultDue(PlainKernelFaultOpen) || out == nullptr || capacity < 0) return StatusCreateFailed;
  const std::span<char16_t> room(out, static_cast<size_t>(capacity));
  return Fenced(StatusCreateFailed,
                [&] { return MakeTempFile(directory, room, prefix, extension); });
}

#include "archive/cluster/InputPrint.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "archive/export/SourceSum.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kEnd = uint64_t{64} << 10;
constexpr uint64_t kSample = uint64_t{16} << 10;
constexpr uint64_t kSamples = 62;

std::string Bytes(uint64_t number) {
  std::string bytes;
  for (unsigned shift = 0; shift < 64; shift += 8) {
    bytes += static_cast<char>(static_cast<unsigned char>(number >> shift));
  }
  return bytes;
}

}  // namespace

Outcome<std::string> PrintOfStore(const fs::path& path) {
  std::error_code error;
  const uint64_t size = fs::file_size(path, error);
  if (error) return SystemTrouble(path, error.value());
  std::ifstream file(path, std::ios::binary);
  Sha256 sum;
  sum.add(Bytes(size));
  std::string piece;
  const auto add = [&](uint64_t at, uint64_t count) {
    piece.resize(std::min(count, size - at));
    file.seekg(static_cast<std::streamoff>(at));
    file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    sum.add(piece);
  };
  add(0, kEnd);
  for (uint64_t sample = 1; sample <= kSamples; ++sample) {
    add(size / (kSamples + 1) * sample, kSample);
  }
  add(size - std::min(size, kEnd), kEnd);
  if (!file) return Trouble{TroubleKind::Unreadable, path.string() + ": cannot be read"};
  return "samples-1:" + sum.digest();
}

Outcome<bool> IsSameInput(const fs::path& path, const PlannedInput& input,
                          const std::function<void()>& beat) {
  const SourceKind kind = input.source.found.kind;
  if (!input.print.empty()) {
    const Outcome<std::string> print = PrintOfStore(path);
    if (!print) return print.trouble();
    return *print == input.print;
  }
  if (!input.stamp.empty() && StampOfSource(path, kind) == input.stamp) return true;
  const Outcome<FileSum> sum = SumOfSource(path, kind, beat);
  if (!sum) return sum.trouble();
  return *sum == input.sum;
}

}  // namespace tarn::archive

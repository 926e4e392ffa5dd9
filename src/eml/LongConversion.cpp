#include "eml/LongConversion.h"

#include <algorithm>

#include "Common/ApiUtils.h"
#include "Common/TextRewriter.h"
#include "Platform/CodePages.h"

namespace tarn {
namespace {

constexpr uint64_t kAsciiBeforeCut = 4;

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool MayCutAt(std::string_view text, uint64_t place) {
  const std::string_view before = text.substr(place - kAsciiBeforeCut, kAsciiBeforeCut);
  return std::all_of(before.begin(), before.end(), IsAscii);
}

// Where the piece that starts at `start` ends: near kLongText, or where a cut is possible after
// that.
uint64_t PieceEnd(std::string_view text, uint64_t start) {
  constexpr uint64_t kNear = 4096;
  if (text.size() - start <= kLongText) return text.size();
  const uint64_t wanted = start + kLongText;
  for (uint64_t end = wanted; end > wanted - kNear; --end) {
    if (MayCutAt(text, end)) return end;
  }
  for (uint64_t end = wanted + 1; end < text.size(); ++end) {
    if (MayCutAt(text, end)) return end;
  }
  return text.size();
}

// The UTF-8 form of one piece after the other, in blocks that grow to the largest one's.
class PieceConverter {
 public:
  explicit PieceConverter(uint32_t codePage) : codePage_(codePage) {}

  bool reserve(uint64_t bytes) {
    if (bytes <= bytes_) return true;
    bytes_ = 0;
    wide_ = AllocateBlock<char16_t>(capacityFor(bytes), TARN_HERE);
    utf8_ = AllocateBlock<char>(kMostUtf8PerUnit * capacityFor(bytes), TARN_HERE);
    if (!wide_ || !utf8_) return false;
    bytes_ = bytes;
    return true;
  }

  enum class Result { Done, NotTaken, NoUtf8 };

  // For a piece that there is room for.
  Result convert(std::string_view piece) {
    const size_t units =
        platform::BytesToUtf16(codePage_, piece, {wide_.get(), capacityFor(piece.size())});
    if (units == 0) return Result::NotTaken;
    const uint64_t written =
        ConvertToUtf8({wide_.get(), units}, {utf8_.get(), kMostUtf8PerUnit * units});
    if (written == 0) return Result::NoUtf8;
    form_ = {utf8_.get(), written};
    return Result::Done;
  }

  std::string_view form() const { return form_; }

 private:
  static constexpr uint64_t kMostUtf8PerUnit = 4;

  static uint64_t capacityFor(uint64_t bytes) { return 2 * bytes + 1; }

  uint32_t codePage_;
  uint64_t bytes_ = 0;
  KernelBlock<char16_t> wide_;
  KernelBlock<char> utf8_;
  std::string_view form_;
};

Conversion CutAt(SizedBytes& text, uint64_t offset) {
  text.truncate(offset);
  text.data()[offset] = '\0';
  return {StatusPathToUtf8Failed, true};
}

}  // namespace

bool MayConvertInPieces(uint32_t codePage) {
  constexpr uint32_t kUtf7 = 65000;
  constexpr uint32_t kHz = 52936;
  const bool isIso2022 = codePage >= 50220 && codePage <= 50229;
  // A script holds from where it is named to the end of the line.
  const bool isIscii = codePage >= 57002 && codePage <= 57011;
  return codePage != kUtf7 && codePage != kHz && !isIso2022 && !isIscii;
}

Conversion ConvertInPieces(SizedBytes& text, uint64_t offset, uint32_t codePage) {
  using Result = PieceConverter::Result;
  const uint64_t end = offset + WithoutTrailingNul(text.view().substr(offset)).size();
  PieceConverter converter(codePage);
  TextGrowth growth;
  growth.add(0, 1);  // the NUL
  for (uint64_t at = offset; at < end;) {
    const uint64_t next = PieceEnd(text.view().substr(0, end), at);
    if (!converter.reserve(next - at)) return {StatusOutOfMemory, false};
    const Result result = converter.convert(text.view().substr(at, next - at));
    if (result == Result::NotTaken) return {StatusOk, false};
    if (result == Result::NoUtf8) return CutAt(text, offset);
    growth.add(next - at, converter.form().size());
    at = next;
  }

  TextRewriter rewriter;
  if (!rewriter.open(text, growth)) return {StatusOutOfMemory, false};
  Result result = Result::Done;
  for (uint64_t at = offset; at < end && result == Result::Done;) {
    const uint64_t next = PieceEnd(rewriter.old().substr(0, end), at);
    result = converter.convert(rewriter.old().substr(at, next - at));
    if (result == Result::Done) rewriter.replace(at, next, converter.form());
    at = next;
  }
  rewriter.replace(end, rewriter.old().size(), {"\0", 1});
  rewriter.close();
  if (result != Result::Done) return CutAt(text, offset);
  text.truncate(text.length() - 1);
  return {StatusOk, true};
}

}  // namespace tarn

// Images of arbitrary names in an arbitrary body: all of them together (ImagePass.h) must leave the
// text that one after the other leaves (ImageReferences.h).
//
// Input: images, each as "needle\nreplacement\n", up to an empty needle; then the body. One after
// the other costs a pass over the text each, so inputs with too many of them for their text end
// early.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Common/ByteSearch.h"
#include "Common/ImagePass.h"
#include "Common/ImageReferences.h"
#include "KernelText.h"

namespace {

using tarn::ImagePass;
using tarn::SizedBytes;
using tarn::fuzz::KernelText;

// A line without its end; NULs end needles and replacements, as they end names.
std::string TakeLine(std::string_view& input) {
  const std::string_view line = input.substr(0, input.find('\n'));
  input.remove_prefix(std::min(line.size() + 1, input.size()));
  return std::string(line.substr(0, line.find('\0')));
}

void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr uint64_t kLimit = 100000;
  constexpr uint64_t kMostWork = 40000000;
  constexpr ImagePass::Limits kLimits = {kLimit, 5, {kLimit, 1}};
  std::string_view input(reinterpret_cast<const char*>(data), size);
  std::string_view rest = input;
  uint64_t images = 0;
  for (; !TakeLine(rest).empty(); ++images) TakeLine(rest);
  if (images * (rest.size() + kLimit) > kMostWork) return 0;
  SizedBytes together = KernelText(rest);
  SizedBytes apart = KernelText(rest);

  tarn::SearchBudget budget(UINT64_MAX);
  ImagePass pass(together, kLimits, budget);
  for (std::string needle = TakeLine(input); !needle.empty(); needle = TakeLine(input)) {
    std::string replacement = TakeLine(input);
    const bool isUrl = replacement.empty();
    if (isUrl) replacement = "data:image;base64,QUJDimagedatacid=";
    uint64_t place = 0;
    Require(pass.find(needle, place).ok());
    const uint64_t found = tarn::FindBytes(apart.view(), needle);
    Require((found != std::string_view::npos) == (place != tarn::kNoPlace));
    if (found == std::string_view::npos) continue;
    uint64_t count = 0;
    uint64_t expected = 0;
    const tarn::Status status =
        pass.replace(place, needle, KernelText(replacement),
                     isUrl ? ImagePass::Kind::DataUrl : ImagePass::Kind::Name, count);
    Require(status ==
            tarn::ReplaceImageReferences(apart, {found, needle, replacement, kLimit}, expected));
    Require(count == expected);
  }
  Require(pass.finish().ok());
  Require(together.view() == apart.view());
  return 0;
}

#include "render/HeaderLabels.h"

#include <algorithm>

#include "render/HeaderLabelTable.h"

namespace tarn {
namespace {

const HeaderLabelSet& CurrentLabelSet() {
  uint32_t language = KernelGetLanguage();
  const auto fold = std::find_if(kLanguageFolds.begin(), kLanguageFolds.end(),
                                 [&](const LanguageFold& pair) { return pair.from == language; });
  if (fold != kLanguageFolds.end()) language = fold->to;

  const auto set =
      std::find_if(kHeaderLabelSets.begin(), kHeaderLabelSets.end(),
                   [&](const HeaderLabelSet& labels) { return labels.language == language; });
  return set != kHeaderLabelSets.end() ? *set : kHeaderLabelSets.front();
}

}  // namespace

const char* GetHeaderLabel(int32_t row) {
  if (row < HeaderRowFrom || row > HeaderRowLowWord) return "Unknown";
  // cppcheck-suppress CastIntegerToAddressAtReturn ; a text, which it takes for a number
  return CurrentLabelSet().texts[static_cast<size_t>(row)];
}

Status ImportanceText(int32_t importance, SizedBytes& text) {
  switch (importance) {
    case 2:
      return text.append(GetHeaderLabel(HeaderRowHighWord));
    case 0:
      return text.append(GetHeaderLabel(HeaderRowLowWord));
    default:
      return StatusOk;
  }
}

}  // namespace tarn

#include "PageChoice.h"

#include "console/Text.h"

namespace tarn::host {

std::optional<PageChoice> ParsePages(std::string_view text) {
  const size_t dash = text.find('-');
  const std::optional<int32_t> first = ParseNumber(text.substr(0, dash));
  if (!first || *first < 1) return std::nullopt;
  if (dash == std::string_view::npos) return PageChoice{*first, *first};
  const std::string_view rest = text.substr(dash + 1);
  if (rest.empty()) return PageChoice{*first, 0};
  const std::optional<int32_t> last = ParseNumber(rest);
  if (!last || *last < *first) return std::nullopt;
  return PageChoice{*first, *last};
}

}  // namespace tarn::host

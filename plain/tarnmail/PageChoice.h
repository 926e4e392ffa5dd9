// PageChoice.h - which pages of a document, as the command line says it.
#ifndef TARN_TARNMAIL_PAGECHOICE_H
#define TARN_TARNMAIL_PAGECHOICE_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarn::host {

// Pages are numbered from 1.
struct PageChoice {
  int32_t first = 1;
  int32_t last = 0;  // 0: the last one that there is
};

// "2", "1-3" or "3-"; nothing for any other text, for page 0 and for a last page before the first.
std::optional<PageChoice> ParsePages(std::string_view text);

}  // namespace tarn::host

#endif

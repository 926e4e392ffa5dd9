// StoreTrouble.h - the edge between the store layer, which throws, and the archive, which does not.
#ifndef TARN_ARCHIVE_STORE_STORETROUBLE_H
#define TARN_ARCHIVE_STORE_STORETROUBLE_H

#include <exception>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

#include "archive/model/Trouble.h"

namespace tarn::archive::store {

// What an exception of the store layer means for a person: `what` ("the recipients cannot be
// read"), and why in brackets.
Trouble TroubleOf(std::string_view what, const std::exception& caught);

// What the work gives, or why it gives nothing. Only std::bad_alloc passes. `what` is a text, or a
// function that makes it when it is needed.
template <typename What, typename Work>
auto Guarded(const What& what, const Work& work) -> Outcome<decltype(work())> {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& caught) {
    if constexpr (std::is_invocable_v<What>) {
      return TroubleOf(what(), caught);
    } else {
      return TroubleOf(what, caught);
    }
  }
}

}  // namespace tarn::archive::store

#endif

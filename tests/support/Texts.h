// Texts.h - makers of texts.
#ifndef TARN_TESTS_SUPPORT_TEXTS_H
#define TARN_TESTS_SUPPORT_TEXTS_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn::test {

// The bytes in a block of exactly their size, so that a read past them is found out.
inline SizedBytes Sized(std::string_view bytes) {
  KernelBlock<char> block = AllocateBlock<char>(bytes.size(), TARN_HERE);
  bytes.copy(block.get(), bytes.size());
  return {std::move(block), bytes.size()};
}

// The text with a NUL that its length counts.
inline SizedBytes MakeText(std::string_view text) {
  SizedBytes made;
  EXPECT_EQ(made.append(text), StatusOk);
  return made;
}

inline std::string Repeat(std::string_view piece, size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (size_t i = 0; i < count; ++i) text += piece;
  return text;
}

}  // namespace tarn::test

#endif

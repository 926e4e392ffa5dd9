#include "eml/HeaderMemo.h"

#include <gtest/gtest.h>

#include <string_view>

#include "eml/HeaderSearch.h"

namespace tarn {
namespace {

constexpr size_t kNone = std::string_view::npos;

// The memo must answer as the plain searches do, for every stretch, asked for in the order of
// their starts, as a walk does, and then once more from the first.
void ExpectPlainAnswers(std::string_view text) {
  const auto plain = [](size_t start, size_t found) {
    return found != kNone ? start + found : kNone;
  };
  HeaderMemo memo(text);
  for (int round = 0; round < 2; ++round) {
    for (size_t start = 0; start <= text.size(); ++start) {
      for (size_t end = start; end <= text.size(); ++end) {
        const std::string_view stretch = text.substr(start, end - start);
        ASSERT_EQ(memo.headerEnd(start, end), start + FindHeaderEnd(stretch))
            << start << " to " << end << " of " << text;
        ASSERT_EQ(memo.contentTypeLine(start, end),
                  plain(start, FindHeaderLine(stretch, "Content-Type:")))
            << start << " to " << end << " of " << text;
      }
    }
  }
}

TEST(HeaderMemo, AnswersAsThePlainSearches) {
  ExpectPlainAnswers("");
  ExpectPlainAnswers("a: b\r\nc: d\r\n\r\nbody\r\n\r\nmore\n\n");
  ExpectPlainAnswers("a: b\nc: d\n\nbody\r\n\n\nmore\r\n\r\n\r\n");
  ExpectPlainAnswers("no line end at all");
  ExpectPlainAnswers("Content-Type: a\r\nX-Content-Type: b\r\n\r\ncontent-type:c\nContent-Type:");
  ExpectPlainAnswers("Content-Type:Content-Type:\rContent-Type:\nContent-Type");
}

}  // namespace
}  // namespace tarn

#include "eml/HeaderMemo.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "eml/HeaderSearch.h"
#include "eml/HeaderValue.h"

namespace tarn {
namespace {

// The memo must answer as the plain searches do, for every stretch, asked for in the order of
// their starts, as a walk does, and then once more from the front.
void ExpectPlainAnswers(const std::string& text) {
  const char* const data = text.data();
  const char* const fileEnd = data + text.size();
  HeaderMemo memo(fileEnd);
  for (int round = 0; round < 2; ++round) {
    for (const char* start = data; start <= fileEnd; ++start) {
      for (const char* end = start; end <= fileEnd; ++end) {
        ASSERT_EQ(memo.headerEnd(start, end), FindHeaderEnd(start, end))
            << start - data << " to " << end - data << " of " << text;
        ASSERT_EQ(memo.contentTypeLine(start, end), FindHeaderLine(start, end, "Content-Type:"))
            << start - data << " to " << end - data << " of " << text;
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

TEST(HeaderValue, EndsWhereNoFoldedLineFollows) {
  const std::string_view text = "a\r\n b\r\nc";
  EXPECT_EQ(FindValueEnd(text.data(), text.data() + 8, text.data() + 8), text.data() + 5);
  EXPECT_EQ(FindValueEnd(text.data(), text.data() + 1, text.data() + 8), nullptr);
}

TEST(HeaderValue, BytesBehindTheHeaderTellAFoldedLineToo) {
  const std::string_view text = "a\n\n b";
  const char* const headerEnd = text.data() + 3;
  // The byte two places behind the first LF is the blank that the content begins with.
  EXPECT_EQ(FindValueEnd(text.data(), headerEnd, text.data() + 5), nullptr);
  EXPECT_EQ(FindValueEnd(text.data(), headerEnd, headerEnd), text.data() + 1);
  const std::string_view tab = "a\nb\t";
  EXPECT_EQ(FindValueEnd(tab.data(), tab.data() + 2, tab.data() + 4), nullptr);
  EXPECT_EQ(FindValueEnd(tab.data(), tab.data() + 2, tab.data() + 3), tab.data() + 1);
}

}  // namespace
}  // namespace tarn

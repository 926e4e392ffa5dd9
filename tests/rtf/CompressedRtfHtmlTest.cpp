// What the first decoder makes of RTF that wraps HTML.
#include <gtest/gtest.h>

#include <string>

#include "CompressedRtfSupport.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"

namespace tarn::test {
namespace {

const std::string kHead = "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 ";

std::string Tag(const std::string& markup) { return "{\\*\\htmltag64 " + markup + "}"; }

// Both forms of the same text have to come to the same.
void ExpectBody(const std::string& rtf, const std::string& body) {
  EXPECT_EQ(Unpack(PackRtf(rtf)), (Decoded{StatusOk, body + '\0'}));
  EXPECT_EQ(Unpack(StoreRtf(rtf)), (Decoded{StatusOk, body + '\0'}));
}

TEST(CompressedRtfHtml, RtfThatWrapsHtmlBecomesHtml) {
  ExpectBody(kHead + Tag("<p>") + "text\\'e9" + Tag("</p>") + "}", "<p>text&#xE9;</p>");
}

TEST(CompressedRtfHtml, WithoutATagNothingRemains) { ExpectBody(kHead + " text}", ""); }

TEST(CompressedRtfHtml, ConditionalCommentsAreShortened) {
  ExpectBody(kHead + Tag("<![if !supportLists]>") + "x}", "<![if !V]>x");
}

TEST(CompressedRtfHtml, AShortCommentAtTheEndCostsTheTerminator) {
  const std::string rtf = kHead + Tag("<![if]x") + "}";
  EXPECT_EQ(Unpack(PackRtf(rtf)), (Decoded{StatusOk, "<![if]!V"}));
  EXPECT_EQ(Unpack(StoreRtf(rtf)), (Decoded{StatusOk, "<![if]!V"}));
}

TEST(CompressedRtfHtml, LongValuesAreCut) {
  const std::string start = "<div>&nbsp;value=\"";
  ExpectBody(kHead + Tag(start + std::string(9988, 'v') + "\"x</div>") + "}",
             start + std::string(97, 'v') + "\"x</div>");
  ExpectBody(kHead + Tag(start + std::string(9987, 'v') + "\"x</div>") + "}",
             start + std::string(9987, 'v') + "\"x</div>");
}

// With the comment at its full length the value would be too long.
TEST(CompressedRtfHtml, CommentsAreShortenedBeforeValuesAreCut) {
  const std::string start = "<div>&nbsp;value=\"";
  const std::string comment = "<![if " + std::string(9000, 'c') + "]>";
  const std::string rest = std::string(9000, '.') + "\"</div>";
  ExpectBody(kHead + Tag(start + comment + rest) + "}", start + "<![if !V]>" + rest);
}

// A body that wraps HTML already is nothing that damaged data would have to do with.
TEST(CompressedRtfHtml, DamageLeavesAnOldBodyThatWrapsHtml) {
  const std::string old = kHead + Tag("<p><![if !supportLists]>") + "}";
  const std::string damaged[] = {
      "",
      Packed(4, LzfuTokens().literals("abc")),
      Packed(0xFFFFFFFF, LzfuTokens().literals("abc")),
      Packed(4, LzfuTokens().literals("ab").reference(300, 2)),
      WriteCompressedRtf({.rawSize = 2, .crc = 0}, Literal("\0ab")),
      WriteCompressedRtf({.compressedSize = 9, .rawSize = 2}, Literal("\0ab")),
      WriteCompressedRtf({.rawSize = 2, .magic = 0}, Literal("\0ab")),
  };
  for (const std::string& bytes : damaged) {
    EXPECT_EQ(Unpack(bytes, old), (Decoded{StatusNotSupported, old}));
    MailMessage message;
    EXPECT_EQ(Unpack(message, bytes), StatusNotSupported);
    EXPECT_FALSE(message.body.hasBlock());
  }
}

// The source is gone when the HTML is made: of three texts of a size there are two at a time.
TEST(CompressedRtfHtml, TheSourceIsFreedAfterTheUnpacking) {
  const std::string rtf = kHead + Tag("<p>") + std::string(1000000, 'x') + "}";
  const std::string stored = StoreRtf(rtf);
  MailMessage message;
  const uint64_t peak = PeakOf([&] { EXPECT_EQ(Unpack(message, stored), StatusOk); });
  EXPECT_EQ(message.body.length(), 1000004u);
  EXPECT_LT(peak, 2100000u);
}

const std::string kMarkup = "{\\*\\htmltag64 <![if !supportLists]>}";

TEST(CompressedRtfHtml, RtfThatWrapsTextStaysAsItIs) {
  for (const std::string& head :
       {std::string("{\\rtf1\\ansi\\fromtext "), std::string("{\\rtf1\\ansi "),
        std::string("{\\rtf1\\fromHTML1 "), std::string("{\\rtf1\\fromhtm1 "),
        std::string("{\\rtf1\\from html1 "), std::string("{\\rtf1 fromhtml1 ")}) {
    ExpectBody(head + kMarkup + "}", head + kMarkup + "}");
  }
}

TEST(CompressedRtfHtml, OnlyTheFirstFromCounts) {
  const std::string text = "{\\rtf1\\fromtext \\fromhtml1 " + kMarkup + "}";
  ExpectBody(text, text);
  ExpectBody("{\\rtf1\\fromhtml1\\fromtext " + kMarkup + "}", "<![if !V]>");
}

TEST(CompressedRtfHtml, TheWordMayBeAnywhere) {
  ExpectBody("{\\rtf1 " + kMarkup + "\\fromhtml1}", "<![if !V]>\\fromhtml1");
  ExpectBody(Literal("{\\rtf1\0 \\fromhtml1 ") + kMarkup + "}", "<![if !V]>");
}

TEST(CompressedRtfHtml, AWordThatTheEndCutsOffIsNone) {
  for (const char* const end : {"\\from", "\\fromh", "\\fromhtm", "\\fro"}) {
    ExpectBody("{\\rtf1 " + kMarkup + end, "{\\rtf1 " + kMarkup + end);
  }
  ExpectBody("{\\rtf1 " + kMarkup + "\\fromhtml", "<![if !V]>\\fromhtml");
}

// A text that cannot be turned into HTML for want of memory stays RTF, and the passes run over it.
TEST(CompressedRtfHtml, WithoutMemoryTheTextStaysRtf) {
  const std::string value = "<div>&nbsp;value=\"" + std::string(10000, 'v') + "\"x</div>";
  const std::string shortValue = "<div>&nbsp;value=\"" + std::string(97, 'v') + "\"x</div>";
  const std::string rtf = kHead + kMarkup + Tag(value) + "\\'e9}";
  const Decoded asRtf = {StatusOk,
                         kHead + "{\\*\\htmltag64 <![if !V]>}" + Tag(shortValue) + "\\'e9}" + '\0'};
  const Decoded asHtml = {StatusOk, "<![if !V]>" + shortValue + "&#xE9;" + '\0'};
  const std::string packed = PackRtf(rtf);

  int keptRtf = 0;
  const uint64_t calls = SweepFaults(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    MailMessage message;
    GiveBody(message, "old");
    char* const source = KernelCopy(packed);
    const Status status =
        faulted([&] { return DecodeCompressedRtf(source, message, packed.size()); });
    const Decoded decoded = {status, std::string(message.body.view())};
    if (!faulted.isReached()) {
      EXPECT_EQ(decoded, asHtml);
    } else if (faulted.ordinal() == 1) {
      EXPECT_EQ(decoded, (Decoded{StatusOutOfMemory, "old"}));
    } else if (decoded == asRtf) {
      ++keptRtf;
    }
  });
  EXPECT_LT(calls, 100u);
  EXPECT_GE(keptRtf, 2);  // the output's first block, and its growth
}

}  // namespace
}  // namespace tarn::test

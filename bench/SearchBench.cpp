// How the byte searches compare with one memchr pass over the same 64 MB: the counter "ratio" is
// the time of the search divided by that of memchr for a byte that does not occur, both taken in
// the same run. The aim is a ratio of at most 2.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <string_view>

#include "Common/ByteSearch.h"
#include "eml/HeaderSearch.h"

namespace {

constexpr size_t kBytes = 64 << 20;

std::string Repeat(std::string_view block) {
  std::string text;
  text.reserve(kBytes + block.size());
  while (text.size() < kBytes) text += block;
  return text;
}

// 76 columns of pseudo-random base64, with CR LF.
const std::string& Base64Text() {
  static const std::string text = [] {
    static constexpr char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    result.reserve(kBytes + 80);
    uint32_t state = 1;
    while (result.size() < kBytes) {
      for (int i = 0; i < 76; ++i) {
        state = state * 1664525 + 1013904223;
        result += kAlphabet[state >> 26];
      }
      result += "\r\n";
    }
    return result;
  }();
  return text;
}

const std::string& HeaderText() {
  static const std::string text = Repeat(
      "Received: from relay-7.example.org (relay-7.example.org [192.0.2.17])\r\n"
      "\tby mx.example.net (Postfix) with ESMTPS id 4F2A17C0DE\r\n"
      "\tfor <somebody@example.net>; Tue, 14 May 2019 09:12:44 +0200 (CEST)\r\n"
      "DKIM-Signature: v=1; a=rsa-sha256; c=relaxed/relaxed; d=example.org; s=mail;\r\n"
      "\th=from:to:subject:date:message-id:mime-version:content-transfer;\r\n"
      "From: Ann Other <ann.other@example.org>\r\n"
      "Message-ID: <CAF=x7m2+0aZ@mail.example.org>\r\n"
      "MIME-Version: 1.0\r\n"
      "Content-Language: en-GB\r\n"
      "X-Mailer: Example Mailer 5.1 (Content of no Type)\r\n");
  return text;
}

const std::string& HtmlText() {
  static const std::string text = Repeat(
      "<tr><td style=\"padding:0 12px 4px 0;font-family:Arial,sans-serif\" valign=\"top\">\r\n"
      "<p class=\"MsoNormal\"><span lang=\"EN-US\">The meeting has been moved to Thursday, and "
      "the\r\n"
      "content of the report will be discussed there.<o:p></o:p></span></p></td></tr>\r\n");
  return text;
}

double Seconds(std::chrono::steady_clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

template <typename Call>
double Timed(const Call& call) {
  const auto before = std::chrono::steady_clock::now();
  benchmark::DoNotOptimize(call());
  return Seconds(std::chrono::steady_clock::now() - before);
}

// Runs the search and memchr in turn and compares the best of each.
template <typename Search>
void Compare(benchmark::State& state, const std::string& text, const Search& search) {
  double searchBest = 1e9;
  double memchrBest = 1e9;
  for (auto _ : state) {
    const double seconds = Timed([&] { return search(text); });
    searchBest = std::min(searchBest, seconds);
    memchrBest =
        std::min(memchrBest, Timed([&] { return std::memchr(text.data(), 1, text.size()); }));
    state.SetIterationTime(seconds);
  }
  state.counters["ratio"] = searchBest / memchrBest;
  state.counters["GB/s"] = static_cast<double>(text.size()) / searchBest / 1e9;
}

using Text = const std::string& (*)();

void BM_FindIgnoringCase(benchmark::State& state, Text text, std::string_view needle) {
  Compare(state, text(),
          [needle](std::string_view searched) { return tarn::FindIgnoringCase(searched, needle); });
}

void BM_FindBytes(benchmark::State& state, Text text, std::string_view needle) {
  Compare(state, text(),
          [needle](std::string_view searched) { return tarn::FindBytes(searched, needle); });
}

void BM_FindHeaderLine(benchmark::State& state, Text text, std::string_view name) {
  Compare(state, text(),
          [name](std::string_view searched) { return tarn::FindHeaderLine(searched, name); });
}

constexpr std::string_view kDelimiter = "\r\n--boundary";
constexpr std::string_view kLongDelimiter = "\r\n------=_NextPart_000_0012_01D50A3B.7C1E4F60";
constexpr std::string_view kContentType = "Content-Type:";

BENCHMARK_CAPTURE(BM_FindIgnoringCase, Base64Text_Delimiter, &Base64Text, kDelimiter)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, Base64Text_LongDelimiter, &Base64Text, kLongDelimiter)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, Base64Text_ContentType, &Base64Text, kContentType)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, HeaderText_Delimiter, &HeaderText, kDelimiter)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, HeaderText_LongDelimiter, &HeaderText, kLongDelimiter)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, HeaderText_ContentType, &HeaderText, kContentType)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, HtmlText_Delimiter, &HtmlText, kDelimiter)->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, HtmlText_ContentType, &HtmlText, kContentType)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindBytes, Base64Text_Delimiter, &Base64Text, kDelimiter)->UseManualTime();
BENCHMARK_CAPTURE(BM_FindBytes, HeaderText_Delimiter, &HeaderText, kDelimiter)->UseManualTime();
BENCHMARK_CAPTURE(BM_FindBytes, HtmlText_ContentType, &HtmlText, kContentType)->UseManualTime();
BENCHMARK_CAPTURE(BM_FindBytes, Base64Text_EmptyLine, &Base64Text, "\r\n\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_FindBytes, HeaderText_EmptyLine, &HeaderText, "\r\n\r\n")->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, HtmlText_Charset, &HtmlText, "charset=")->UseManualTime();
BENCHMARK_CAPTURE(BM_FindIgnoringCase, HtmlText_Word, &HtmlText, "iso")->UseManualTime();
BENCHMARK_CAPTURE(BM_FindHeaderLine, Base64Text_ContentType, &Base64Text, kContentType)
    ->UseManualTime();
BENCHMARK_CAPTURE(BM_FindHeaderLine, HeaderText_ContentType, &HeaderText, kContentType)
    ->UseManualTime();

}  // namespace

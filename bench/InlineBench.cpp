// Inline images: many references to one image in a large body, against one copy of what comes out;
// and bodies of n, 2n and 4n references to images of their own, where "growth" is how much longer
// than the body of half the size each takes.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "Common/ImagePass.h"
#include "Common/InlineImages.h"

namespace {

using tarn::InlineImageContext;
using tarn::PstFilterData;
using tarn::SizedBytes;

// `references` images in a body of about `bytes` bytes of ordinary markup.
std::string MakeBody(int references, size_t bytes) {
  const std::string image = "<img alt=\"a\" src=\"cid:logo@example.com\">";
  const size_t filler = bytes / static_cast<size_t>(references) - image.size();
  std::string body = "<html><body>";
  for (int i = 0; i < references; ++i) {
    body += image;
    for (size_t k = 0; k < filler; k += 36) body += "<p>Some text of a paragraph here.</p>";
  }
  return body + "</body></html>";
}

void BM_Replace(benchmark::State& state) {
  const std::string text = MakeBody(static_cast<int>(state.range(0)), 5u << 20);
  const std::string image(static_cast<size_t>(state.range(1)), 'x');
  uint64_t produced = 0;
  for (auto _ : state) {
    state.PauseTiming();
    PstFilterData data;
    SizedBytes body;
    if (!body.append(text).ok()) state.SkipWithError("no memory");
    InlineImageContext context;
    context.filterData = &data;
    context.body = &body;
    context.contentId = "logo@example.com";
    context.name = "logo.png";
    context.needle = "cid:logo@example.com";
    state.ResumeTiming();
    uint32_t replaced = 0;
    tarn::RewriteInlineImage(context, image, &replaced).ignore();
    produced = body.length();
    if (replaced != state.range(0)) state.SkipWithError("references were missed");
  }
  state.counters["MB out"] = static_cast<double>(produced) / 1e6;
}
BENCHMARK(BM_Replace)
    ->Args({10000, 60})
    ->Args({10000, 4000})
    ->Args({100, 4000})
    ->Unit(benchmark::kMillisecond);

constexpr int kFewestImages = 5000;

// Each image has one reference; every other one is in a v:imagedata tag too.
void BM_Pass(benchmark::State& state) {
  static double halfTheSize = 0;
  const int count = static_cast<int>(state.range(0));
  std::string text;
  std::vector<std::string> needles;
  for (int i = 0; i < count; ++i) {
    needles.push_back("cid:image" + std::to_string(i) + ".png@01DC5B7A.5D6F8E20");
    if (i % 2 == 0) text += "<v:imagedata src=\"" + needles.back() + "\"/>";
    text += "<img src=\"" + needles.back() + "\"><p>Some text of a paragraph here.</p>";
  }
  const std::string image(300, 'x');
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    PstFilterData data;
    SizedBytes body;
    if (!body.append(text).ok()) state.SkipWithError("no memory");
    tarn::SearchBudget budget(UINT64_MAX);
    tarn::ImagePass pass(body, tarn::ImagePass::LimitsFor(text.size()), budget);
    InlineImageContext context;
    context.filterData = &data;
    context.body = &body;
    context.pass = &pass;
    context.name = "image";
    for (const std::string& needle : needles) {
      pass.find(needle, context.searchOffset).ignore();
      context.needle = needle.c_str();
      tarn::RewriteInlineImage(context, image).ignore();
    }
    pass.finish().ignore();
    if (body.length() < needles.size() * image.size())
      state.SkipWithError("references were missed");
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const double each = taken.count() / static_cast<double>(state.iterations());
  if (count != kFewestImages) state.counters["growth"] = each / halfTheSize;
  halfTheSize = each;
}
BENCHMARK(BM_Pass)
    ->Arg(kFewestImages)
    ->Arg(2 * kFewestImages)
    ->Arg(4 * kFewestImages)
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

// What merely writing the result costs.
void BM_CopyOfTheResult(benchmark::State& state) {
  const std::vector<char> result(static_cast<size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    std::vector<char> copy(result);
    benchmark::DoNotOptimize(copy.data());
  }
}
BENCHMARK(BM_CopyOfTheResult)->Arg(59'000'000)->Unit(benchmark::kMillisecond);

}  // namespace

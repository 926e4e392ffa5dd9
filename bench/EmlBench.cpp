// Whole reads of mails that are made to be dear. Each should cost about as much for a byte of its
// file as the plain mail does, and none more than a second. Mails of thousands of images come in
// sizes n, 2n and 4n: "growth" is how much longer than the mail of half the size each takes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Tarnbase/Kernel.h"
#include "eml/EmlReader.h"

namespace tarn {
namespace {

constexpr std::string_view kFields = "From: a\r\nTo: b\r\nDate: c\r\n";

Status CountAttachment(void* user, TrackedBuffer<char>*, const char16_t*, PropertyList*) {
  ++*static_cast<uint64_t*>(user);
  return StatusOk;
}

void Read(benchmark::State& state, const std::string& mail, bool listAttachments = false) {
  void* const block = KernelAlloc(mail.size(), 1, TARN_HERE);
  std::memcpy(block, mail.data(), mail.size());
  uint64_t handle = 0;
  void* memoryFile = nullptr;
  KernelMemFileOpen(&handle, &memoryFile, KERNEL_MEMFILE_FILLED, block, mail.size(), mail.size());

  uint64_t attachments = 0;
  const AttachmentRequest request = {kAllAttachments, true, &CountAttachment, &attachments};
  Status status;
  for (auto _ : state) {
    EmlMessage message;
    PstFilterData filterData;
    status = ReadEmlMessage(message, handle, filterData, listAttachments ? &request : nullptr);
  }
  state.counters["status"] = status.code();
  state.counters["MB"] = static_cast<double>(mail.size()) / 1e6;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(mail.size()));

  KernelFileClose(handle);
  KernelMemFileClose(memoryFile, nullptr, nullptr, nullptr);
  KernelFree(block, TARN_HERE);
}

std::string Repeat(std::string_view piece, size_t bytes) {
  std::string out;
  out.reserve(bytes + piece.size());
  while (out.size() < bytes) out += piece;
  return out;
}

std::string Multipart(std::string_view rest) {
  std::string mail(kFields);
  mail += "Content-Type: multipart/mixed; boundary=\"b\"\r\n\r\n";
  mail += rest;
  return mail;
}

constexpr size_t kTenMegabytes = 10000000;
constexpr int kFewestImages = 4000;

void BM_PlainMail(benchmark::State& state) {
  std::string mail(kFields);
  mail +=
      "\r\n" + Repeat("A line of text such as mails are made of, more or less.\r\n", kTenMegabytes);
  Read(state, mail);
}

void BM_Base64Attachment(benchmark::State& state) {
  const std::string line(76, 'Q');
  Read(state, Multipart("\r\n--b\r\nContent-Type: application/pdf\r\n"
                        "Content-Disposition: attachment\r\nContent-Transfer-Encoding: base64"
                        "\r\n\r\n" +
                        Repeat(line + "\r\n", kTenMegabytes)));
}

void BM_MillionDelimiters(benchmark::State& state) {
  Read(state, Multipart(Repeat("\r\n--b\r\n", 7000000)));
}

void BM_MillionLfDelimitersBehindACrLfHeader(benchmark::State& state) {
  Read(state, Multipart(Repeat("\n--b\n", 5000000)));
}

void BM_ManyTextParts(benchmark::State& state) {
  Read(state, Multipart(Repeat("\r\n--b\r\nContent-Type: text/html\r\n\r\nx", kTenMegabytes)));
}

void BM_ManyNestedMultiparts(benchmark::State& state) {
  Read(state, Multipart(Repeat("\r\n--b\r\nX: boundary=c\r\n\r\n\r\n--c\r\n\r\n.", kTenMegabytes)));
}

void BM_ManyAttachmentsListed(benchmark::State& state) {
  Read(state, Multipart(Repeat("\r\n--b\r\nContent-Disposition: inline\r\n\r\nx", kTenMegabytes)),
       true);
}

// A header line of a megabyte.
void BM_LongLine(benchmark::State& state, std::string_view name, std::string_view piece) {
  std::string mail(kFields);
  mail += name;
  mail += Repeat(piece, 1000000) + "\r\n\r\nbody";
  Read(state, mail);
}

std::string Nested(size_t levels, std::string_view lineEnd) {
  std::string mail = "From: a\nTo: b\nDate: c\n";
  for (size_t i = 0; i < levels; ++i) {
    const std::string boundary = "x" + std::to_string(i) + "y";
    mail += "X: boundary=\"" + boundary + "\"";
    mail += lineEnd;
    mail += lineEnd;
    mail += lineEnd;
    mail += "--" + boundary;
    mail += lineEnd;
  }
  return mail;
}

void BM_HundredThousandLevels(benchmark::State& state) { Read(state, Nested(200000, "\n")); }
void BM_HundredThousandCrLfLevels(benchmark::State& state) { Read(state, Nested(200000, "\r\n")); }

// 499 levels, and ten megabytes in the innermost.
void BM_DeepFilling(benchmark::State& state, std::string_view filling, std::string_view lineEnd) {
  Read(state, Nested(499, lineEnd) + Repeat(filling, kTenMegabytes));
}

// Names that are nowhere in a body of five megabytes.
void BM_ImagesWithoutAPlace(benchmark::State& state, std::string_view name,
                            std::string_view filling) {
  std::string parts = "\r\n--b\r\nContent-Type: text/html\r\n\r\n";
  parts += Repeat(filling, kTenMegabytes / 2);
  while (parts.size() < kTenMegabytes) {
    parts += "\r\n--b\r\nContent-Type: image/png; name=";
    parts += name;
    parts += "\r\nContent-ID: <aaaaaaab>\r\n\r\nx";
  }
  Read(state, Multipart(parts));
}

// References without number to an image of some size.
void BM_ImageEverywhere(benchmark::State& state) {
  Read(state,
       Multipart("\r\n--b\r\nContent-Type: text/html\r\n\r\n" + Repeat("\"q\"", kTenMegabytes / 2) +
                 "\r\n--b\r\nContent-Type: image/png; name=q\r\n\r\n" +
                 Repeat("x", kTenMegabytes / 2)));
}

enum class Order { AsReferred, Shuffled };

// `count` images of 300 bytes with a reference each, by content id or by a name in a path.
std::string MailOfImages(int count, Order order, bool byName) {
  std::string page = "\r\n--b\r\nContent-Type: text/html\r\n\r\n";
  std::vector<std::string> parts;
  for (int i = 0; i < count; ++i) {
    const std::string id = "image" + std::to_string(i) + ".png@01DC5B7A.5D6F8E20";
    const std::string name = "picture-" + std::to_string(i) + "x.png";
    page += "<img width=100 src=\"" + (byName ? "files/" + name : "cid:" + id) + "\">\r\n";
    parts.push_back("\r\n--b\r\nContent-Type: image/png; name=" + name + "\r\nContent-ID: <" + id +
                    ">\r\nContent-Transfer-Encoding: base64\r\n\r\n" + std::string(400, 'Q'));
  }
  std::mt19937 random(20261122);
  if (order == Order::Shuffled) std::shuffle(parts.begin(), parts.end(), random);
  for (const std::string& part : parts) page += part;
  return Multipart(page);
}

void BM_ThousandsOfImages(benchmark::State& state, Order order, bool byName) {
  static double halfTheSize = 0;
  const std::string mail = MailOfImages(static_cast<int>(state.range(0)), order, byName);
  const auto start = std::chrono::steady_clock::now();
  Read(state, mail);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const double each = taken.count() / static_cast<double>(state.iterations());
  if (state.range(0) != kFewestImages) state.counters["growth"] = each / halfTheSize;
  halfTheSize = each;
}

BENCHMARK(BM_PlainMail)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64Attachment)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MillionDelimiters)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MillionLfDelimitersBehindACrLfHeader)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ManyTextParts)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ManyNestedMultiparts)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ManyAttachmentsListed)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongLine, words, "Subject: ", "=?iso-8859-1?Q?=E4?= ")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongLine, wordStarts, "Subject: ", "=?")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongLine, charsets, "Content-Type: text/html; x", "xcharset=")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongLine, quotes, "Content-Type: text/html; charset=", "\"")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongLine, semicolons, "Content-Type: text/html", ";")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongLine, folds, "Subject: ", "a\r\n ")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LongLine, typeNames, "X: ", "Content-Type:")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HundredThousandLevels)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HundredThousandCrLfLevels)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DeepFilling, letters, "abcdefgh", "\n")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DeepFilling, lineEnds, "\n", "\n")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DeepFilling, crLf, "a\r\n", "\r\n")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DeepFilling, delimiterStarts, "\n--x", "\n")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DeepFilling, typeNames, "xContent-Type:", "\n")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ImagesWithoutAPlace, text, "a.png", "<p>Some text</p>")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ImagesWithoutAPlace, nearly, "-.aaaaaaaaab", "-.aaaaaaaaac")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ImageEverywhere)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ThousandsOfImages, byContentId, Order::AsReferred, false)
    ->Arg(kFewestImages)
    ->Arg(2 * kFewestImages)
    ->Arg(4 * kFewestImages)
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ThousandsOfImages, shuffled, Order::Shuffled, false)
    ->Arg(kFewestImages)
    ->Arg(2 * kFewestImages)
    ->Arg(4 * kFewestImages)
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ThousandsOfImages, byName, Order::AsReferred, true)
    ->Arg(kFewestImages)
    ->Arg(2 * kFewestImages)
    ->Arg(4 * kFewestImages)
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarn

// Everything in a large store: every property, table and attachment of every message is read and
// let go again, against a plain read of the same file from its start to its end.
//
//   StoreWalkBench [MB]             writes a store of about that size (64), walks it, removes it
//   StoreWalkBench write FILE [MB]  only writes it
//   StoreWalkBench walk FILE        only walks it; for comparing whole processes, with sha256sum
//   say
//
// One mail in eight has a body of 12 kB, one in 64 an attachment of 300 kB.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "Internal/Tarnclasses_.h"
#include "Tarnbase/PlainKernel.h"
#include "support/StoreReading.h"
#include "support/TempDirectory.h"
#include "support/pst/StoreBuilder.h"

namespace {

using namespace tarn::test;
namespace fs = std::filesystem;

constexpr uint64_t kMegabyte = 1000000;

// Bytes that no encoding or compression makes shorter.
std::string Noise(size_t size) {
  std::string bytes(size, '\0');
  uint32_t state = 12345;
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

void WriteMail(FolderBuilder& folder, uint64_t number, const std::string& noise) {
  MessageBuilder& mail = folder.message();
  mail.subject(u"A subject of a usual length").from(u"Ann Example").to(u"Bob; Carol");
  mail.submitTime(131000000000000000 + number).importance(1).html(noise.substr(0, 700));
  if (number % 8 == 0) mail.body(noise.substr(0, 12000));
  if (number % 64 == 0) mail.attachment(u"data.bin", noise);
}

void WriteStore(const fs::path& path, uint64_t size) {
  StoreOptions options;
  options.file.encoding = PstEncoding::Permute;
  StoreBuilder store(options, path);
  const std::string noise = Noise(300000);
  uint64_t number = 0;
  FolderBuilder* folder = nullptr;
  // A mail takes about 8500 bytes on the average, in pages and blocks of their own.
  for (uint64_t written = 0; written < size; written += 8500) {
    if (number % 2000 == 0) folder = &store.folder(u"Folder");
    WriteMail(*folder, number++, noise);
  }
  store.finish();
}

double Seconds(const std::chrono::steady_clock::time_point& since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

double PlainRead(const fs::path& path) {
  const auto start = std::chrono::steady_clock::now();
  const uint64_t handle =
      KernelFileOpen(path.u16string().c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  std::string buffer(1 << 20, '\0');
  while (KernelFileReadLarge(handle, buffer.data(), buffer.size()) == buffer.size()) {
  }
  KernelFileClose(handle);
  return Seconds(start);
}

void Walk(const fs::path& path) {
  const auto bytes = static_cast<double>(fs::file_size(path));
  const double plain = PlainRead(path);
  const auto start = std::chrono::steady_clock::now();
  const StoreTotals totals = ReadStore(pststore::open_database(path.u16string().c_str()));
  const double walk = Seconds(start);
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  std::printf("store of %.0f bytes: %llu messages, %llu properties, %llu cells, %llu failures\n",
              bytes, static_cast<unsigned long long>(totals.messages),
              static_cast<unsigned long long>(totals.properties),
              static_cast<unsigned long long>(totals.cells),
              static_cast<unsigned long long>(totals.failures));
  std::printf("walk %.3f s (%.0f MB/s), plain read %.3f s, ratio %.2f, peak kernel bytes %llu\n",
              walk, bytes / walk / 1e6, plain, walk / plain,
              static_cast<unsigned long long>(usage.peakBytes));
}

uint64_t SizeOf(const char* megabytes) { return std::strtoull(megabytes, nullptr, 10) * kMegabyte; }

}  // namespace

int main(int count, char** arguments) {
  const std::string mode = count > 1 ? arguments[1] : "64";
  if (mode == "write" && count > 2) {
    WriteStore(arguments[2], SizeOf(count > 3 ? arguments[3] : "64"));
  } else if (mode == "walk" && count > 2) {
    Walk(arguments[2]);
  } else if (count < 3 && SizeOf(mode.c_str()) != 0) {
    const TempDirectory directory;
    const fs::path path = directory.path() / "store.pst";
    WriteStore(path, SizeOf(mode.c_str()));
    Walk(path);
  } else {
    std::fputs("usage: StoreWalkBench [MB] | write FILE [MB] | walk FILE\n", stderr);
    return 2;
  }
  return 0;
}

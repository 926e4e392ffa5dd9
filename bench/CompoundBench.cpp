// Compound files: following chains against reading the table itself, a big stream against reading
// the same file whole, and small streams.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "compound/CompoundOperations.h"
#include "compound/CompoundStream.h"
#include "support/compound/CompoundBuilder.h"

namespace {

using tarn::BlockList;
using tarn::BlockTable;
using tarn::test::BlockOrder;
using tarn::test::CompoundBuilder;
using tarn::test::CompoundOptions;

// The table of one stream, in which each block leads `step` blocks on: 2 million blocks of 512
// bytes are a stream of 1 GB.
std::string TableBytes(uint64_t count, uint64_t step) {
  std::string bytes(4 * count, '\xFF');
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t next = i + 1 == count ? 0xFFFFFFFE : (i + 1) * step % count;
    const uint64_t at = i * step % count;
    for (uint64_t b = 0; b < 4; ++b) bytes[4 * at + b] = static_cast<char>(next >> (8 * b));
  }
  return bytes;
}

BlockTable Table(const std::string& bytes) {
  BlockTable table;
  tarn::LoadBlockTable(table, {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
  return table;
}

void BM_LoadTable(benchmark::State& state) {
  const std::string bytes = TableBytes(static_cast<uint64_t>(state.range(0)), 1);
  for (auto _ : state) {
    BlockTable table = Table(bytes);
    benchmark::DoNotOptimize(table.entries.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_LoadTable)->Arg(2'000)->Arg(2'000'000);

void FollowAll(benchmark::State& state, uint64_t step) {
  const BlockTable table = Table(TableBytes(static_cast<uint64_t>(state.range(0)), step));
  for (auto _ : state) {
    const BlockList chain = tarn::FollowChain(table, 0);
    if (chain.size() != table.entries.size()) state.SkipWithError("a chain cut short");
    benchmark::DoNotOptimize(chain.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
void BM_FollowChain(benchmark::State& state) { FollowAll(state, 1); }
BENCHMARK(BM_FollowChain)->Arg(2'000)->Arg(2'000'000);
// Each block far from the one before.
void BM_FollowScatteredChain(benchmark::State& state) { FollowAll(state, 777'777'777); }
BENCHMARK(BM_FollowScatteredChain)->Arg(2'000)->Arg(2'000'000);

class FileOnDisk {
 public:
  explicit FileOnDisk(const std::string& bytes)
      : path_(std::filesystem::temp_directory_path() / "tarn-compound-bench"), size_(bytes.size()) {
    std::ofstream(path_, std::ios::binary) << bytes;
    handle_ = KernelFileOpen(path_.u16string().c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  }
  FileOnDisk(const FileOnDisk&) = delete;
  FileOnDisk& operator=(const FileOnDisk&) = delete;
  ~FileOnDisk() {
    KernelFileClose(handle_);
    std::filesystem::remove(path_);
  }
  uint64_t handle() const { return handle_; }
  uint64_t size() const { return size_; }

 private:
  std::filesystem::path path_;
  uint64_t size_;
  uint64_t handle_ = 0;
};

constexpr uint64_t kStreamBytes = 50'000'000;

std::string StreamFile(BlockOrder order) {
  CompoundOptions options;
  options.order = order;
  return CompoundBuilder(options).stream("stream", std::string(kStreamBytes, 's')).write();
}

void BM_ReadFileWhole(benchmark::State& state) {
  const FileOnDisk disk(StreamFile(BlockOrder::Ascending));
  for (auto _ : state) {
    const auto block = tarn::AllocateBlock<char>(disk.size(), TARN_HERE);
    KernelFileSeek(disk.handle(), 0, KERNEL_SEEK_START);
    if (KernelFileRead(disk.handle(), block.get(), static_cast<uint32_t>(disk.size())) !=
        disk.size()) {
      state.SkipWithError("not read");
    }
    benchmark::DoNotOptimize(block.get());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kStreamBytes));
}
BENCHMARK(BM_ReadFileWhole)->Unit(benchmark::kMillisecond);

void ReadStreamOf(benchmark::State& state, BlockOrder order) {
  const FileOnDisk disk(StreamFile(order));
  for (auto _ : state) {
    tarn::CompoundFile file = tarn::CompoundFile::open(disk.handle());
    auto stream = file.open("stream");
    const auto block = tarn::AllocateBlock<unsigned char>(kStreamBytes, TARN_HERE);
    if (tarn::StreamRead(*stream, 0, {block.get(), kStreamBytes}) != kStreamBytes) {
      state.SkipWithError("not read");
    }
    benchmark::DoNotOptimize(block.get());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kStreamBytes));
}
// Opening the file and reading the stream.
void BM_ReadStream(benchmark::State& state) { ReadStreamOf(state, BlockOrder::Ascending); }
BENCHMARK(BM_ReadStream)->Unit(benchmark::kMillisecond);
// No two blocks side by side.
void BM_ReadScatteredStream(benchmark::State& state) {
  ReadStreamOf(state, BlockOrder::Descending);
}
BENCHMARK(BM_ReadScatteredStream)->Unit(benchmark::kMillisecond);

// Streams of 4,000 bytes, in the order in which they lie in the file (0) or in any (1). "taken"
// is how many bytes of the file each costs.
void BM_SmallStreams(benchmark::State& state) {
  constexpr size_t kCount = 2000;
  CompoundBuilder builder;
  std::vector<std::string> names;
  for (size_t i = 0; i < kCount; ++i) {
    names.push_back("stream" + std::to_string(10000 + i));
    builder.stream(names.back(), std::string(4000, 's'));
  }
  if (state.range(0) == 1) std::shuffle(names.begin(), names.end(), std::mt19937(1));
  const FileOnDisk disk(builder.write());
  uint64_t taken = 0;
  for (auto _ : state) {
    tarn::CompoundFile file = tarn::CompoundFile::open(disk.handle());
    const uint64_t before = PartsOf(file).big.bytesLeft();
    unsigned char buffer[4000];
    for (const std::string& name : names) {
      auto stream = file.open(name);
      if (tarn::StreamRead(*stream, 0, buffer) != sizeof buffer) {
        state.SkipWithError("not read");
      }
      benchmark::DoNotOptimize(buffer);
    }
    taken = before - PartsOf(file).big.bytesLeft();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kCount * 4000));
  state.counters["taken"] = static_cast<double>(taken / kCount);
}
BENCHMARK(BM_SmallStreams)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

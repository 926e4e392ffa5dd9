#include "host/BlockLedger.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <unordered_map>

#include "Tarnbase/Kernel.h"

namespace tarn::fuzz {
namespace {

struct Entry {
  uint64_t number;
  LedgerBlock block;
};

struct Ledger {
  std::unordered_map<const void*, Entry> live;
  uint64_t next = 0;
  uint64_t bytes = 0;
  uint64_t peak = 0;
  FreeWatcher onFree;

  void* add(void* block, uint64_t bytesOfIt, int32_t line, const char16_t* file) {
    if (block == nullptr) return nullptr;
    live[block] = {next++, {block, bytesOfIt, line, file}};
    bytes += bytesOfIt;
    peak = std::max(peak, bytes);
    return block;
  }

  void remove(const void* block) {
    const auto found = live.find(block);
    if (found == live.end()) return;
    bytes -= found->second.block.bytes;
    live.erase(found);
  }
};

Ledger& TheLedger() {
  static Ledger& ledger = *new Ledger;
  return ledger;
}

// The kernel library's function of that name.
template <typename Function>
Function* Next(const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) std::abort();
  return reinterpret_cast<Function*>(found);
}

}  // namespace

BlockWatch::BlockWatch(FreeWatcher onFree)
    : first_(TheLedger().next), bytesBefore_(TheLedger().bytes) {
  TheLedger().peak = bytesBefore_;
  TheLedger().onFree = std::move(onFree);
}

BlockWatch::~BlockWatch() { TheLedger().onFree = nullptr; }

std::vector<LedgerBlock> BlockWatch::left() const {
  std::vector<LedgerBlock> blocks;
  for (const auto& [address, entry] : TheLedger().live) {
    if (entry.number >= first_) blocks.push_back(entry.block);
  }
  return blocks;
}

uint64_t BlockWatch::peakBytes() const { return TheLedger().peak - bytesBefore_; }

}  // namespace tarn::fuzz

using tarn::fuzz::Next;
using tarn::fuzz::TheLedger;

void* KernelAlloc(uint64_t count, uint64_t size, int32_t line, const char16_t* file) {
  static auto* const next = Next<decltype(KernelAlloc)>("KernelAlloc");
  return TheLedger().add(next(count, size, line, file), count * size, line, file);
}

void* KernelAllocZero(uint64_t count, uint64_t size, int32_t line, const char16_t* file) {
  static auto* const next = Next<decltype(KernelAllocZero)>("KernelAllocZero");
  return TheLedger().add(next(count, size, line, file), count * size, line, file);
}

void* KernelRealloc(void* block, uint64_t bytes, int32_t line, const char16_t* file) {
  static auto* const next = Next<decltype(KernelRealloc)>("KernelRealloc");
  void* const moved = next(block, bytes, line, file);
  if (moved == nullptr) return nullptr;
  TheLedger().remove(block);
  return TheLedger().add(moved, bytes, line, file);
}

void KernelFree(void* block, int32_t line, const char16_t* file) {
  static auto* const next = Next<decltype(KernelFree)>("KernelFree");
  auto& ledger = TheLedger();
  const auto found = ledger.live.find(block);
  if (found != ledger.live.end() && ledger.onFree) {
    ledger.onFree(block, found->second.block.bytes);
  }
  ledger.remove(block);
  next(block, line, file);
}

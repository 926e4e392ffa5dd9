// StoreRoad FILE NUMBER: fltInfo of one message of a store in this process, five times. Prints the
// milliseconds of each, the kernel's peak memory during the first, and what the bodies of the
// message take by themselves.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"
#include "pststore/StoreObjects.h"

namespace {

int32_t AnswerInfo(const void*, void* info, int32_t, uint64_t, int32_t, void*) {
  static_cast<HostFileInfo*>(info)->pageCount = 1;
  return StatusOk;
}

int32_t Inform(const std::u16string& path, int32_t number) {
  FilterInfoContext context = {};
  HostFileInfo info = {};
  HostLoadOptions options = {};
  context.path = path.c_str();
  context.handle = KernelFileOpen(path.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  context.info = &info;
  context.options = &options;
  context.infoFromMemory = AnswerInfo;
  context.messageNumber = number;
  const int32_t status = fltInfo(&context);
  KernelFileClose(context.handle);
  return status;
}

uint64_t PeakBytes() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage.peakBytes;
}

// The raw size that the header of compressed RTF names, and the text that unpacking begins with.
uint64_t UnpackedSize(const pststore::property_bag& bag) {
  const pststore::byte_vector packed = bag.get_value_variable(0x1009);
  if (packed.size() < 8) return 0;
  const auto byte = [&packed](size_t i) { return static_cast<uint64_t>(packed[i]); };
  return 207 + (byte(4) | byte(5) << 8 | byte(6) << 16 | byte(7) << 24);
}

// What the bodies of the message take by themselves.
uint64_t BytesOfBodies(const std::u16string& path, int32_t number) {
  using namespace pststore;
  const auto store = open_database(path.c_str());
  int32_t left = number;
  const folder_iterator end = folder_end(store);
  for (folder_iterator at = folder_begin(store); at != end; ++at) {
    const folder entry = make_folder(at);
    const table& contents = *get_contents_table(entry);
    for (uint32_t row = 0; row < contents.size(); ++row) {
      if (--left != 0) continue;
      const property_bag bag(store->lookup_node(contents.get_impl().get_row_id(row)));
      uint64_t bytes = 0;
      if (bag.prop_exists(0x1000)) bytes += bag.size(0x1000);
      if (bag.prop_exists(0x1013)) bytes += bag.size(0x1013);
      if (bag.prop_exists(0x1009)) bytes += UnpackedSize(bag);
      return bytes;
    }
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::cerr << "usage: StoreRoad FILE NUMBER\n";
    return 2;
  }
  const std::string name = arguments[1];
  const std::u16string path(name.begin(), name.end());
  const int32_t number = std::atoi(arguments[2]);
  PlainKernelSetIoMode(3);
  uint64_t peak = 0;
  for (int i = 0; i < 5; ++i) {
    const auto start = std::chrono::steady_clock::now();
    const int32_t status = Inform(path, number);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    if (i == 0) peak = PeakBytes();
    std::printf("fltInfo of message %d: %d, %.2f ms\n", number, status, took.count());
  }
  std::printf("peak %llu bytes; the message's bodies %llu bytes\n",
              static_cast<unsigned long long>(peak),
              static_cast<unsigned long long>(BytesOfBodies(path, number)));
}

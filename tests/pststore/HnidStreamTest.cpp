#include "pststore/HnidStream.h"

#include <gtest/gtest.h>

#include <iterator>
#include <optional>

#include "pststore/HeapBytes.h"
#include "pststore/PropertyBag.h"
#include "pststore/StoreHarness.h"

namespace tarn::test {
namespace {

using pststore::hnid_stream_device;
using pststore::prop_stream;

constexpr uint32_t kSubnode = 0x81F;

// "abcdefghij" under 0x20, and a subnode of these bytes.
class Values {
 public:
  explicit Values(std::string_view subnode, PstLayout layout = PstLayout::Unicode)
      : store_(Parts(subnode), layout), heap_(pststore::open_heap(store_.node())) {}

  hnid_stream_device allocation(uint32_t hid = 0x20) const { return heap_->open_stream(hid); }
  hnid_stream_device subnode() const {
    return hnid_stream_device(heap_->get_node().lookup(kSubnode));
  }

  // Lets go of all but the devices that were given out.
  void release() {
    heap_.reset();
    store_.store().release();
  }

 private:
  static PstNodeParts Parts(std::string_view subnode) {
    PstNodeParts parts;
    parts.pages = {HeapPage(kPropertyContext, 0, {"abcdefghij"})};
    parts.subnode(kSubnode, PstNodeParts::Stream(subnode, 8176));
    return parts;
  }

  NodeStore store_;
  pststore::heap_ptr heap_;
};

// What one read of so many bytes delivers; "end" for the end of the data.
std::string Read(hnid_stream_device& device, std::streamsize count) {
  std::string bytes(static_cast<size_t>(count), '?');
  const std::streamsize done = device.read(bytes.data(), count);
  if (done == -1) return "end";
  return bytes.substr(0, static_cast<size_t>(done));
}

int64_t Seek(hnid_stream_device& device, int64_t offset, std::ios_base::seekdir direction) {
  return static_cast<std::streamoff>(device.seek(offset, direction));
}

std::string ReadAll(prop_stream& stream) {
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

TEST(HnidStreamDevice, ReadsAnAllocation) {
  const Values values("");
  hnid_stream_device device = values.allocation();
  EXPECT_EQ(Read(device, 4), "abcd");
  EXPECT_EQ(Read(device, 0), "end");
  EXPECT_EQ(Read(device, 5), "efghi");
  EXPECT_EQ(Read(device, 5), "j");
  EXPECT_EQ(Read(device, 5), "end");
}

TEST(HnidStreamDevice, ReadsANode) {
  const Values values("0123456789");
  hnid_stream_device device = values.subnode();
  EXPECT_EQ(Read(device, 4), "0123");
  EXPECT_EQ(Read(device, 0), "end");
  EXPECT_EQ(Read(device, 7), "456789");
  EXPECT_EQ(Read(device, 1), "end");
}

TEST(HnidStreamDevice, WithoutData) {
  const Values values("");
  hnid_stream_device none = values.allocation(0);
  EXPECT_EQ(Read(none, 1), "end");
  EXPECT_EQ(Seek(none, 7, std::ios_base::beg), 0);
  EXPECT_EQ(Seek(none, 7, std::ios_base::end), 0);
  hnid_stream_device empty = values.subnode();
  EXPECT_EQ(Read(empty, 1), "end");
  EXPECT_EQ(Seek(empty, 1, std::ios_base::cur), 0);
}

TEST(HnidStreamDevice, SeeksWithinItsData) {
  const Values values("0123456789");
  for (hnid_stream_device device : {values.allocation(), values.subnode()}) {
    EXPECT_EQ(Seek(device, 3, std::ios_base::beg), 3);
    EXPECT_EQ(Seek(device, 2, std::ios_base::cur), 5);
    EXPECT_EQ(Seek(device, -4, std::ios_base::cur), 1);
    EXPECT_EQ(Seek(device, -3, std::ios_base::end), 7);
    EXPECT_EQ(Read(device, 9).size(), 3U);
    EXPECT_EQ(Seek(device, -1, std::ios_base::beg), 0);
    EXPECT_EQ(Seek(device, -11, std::ios_base::end), 0);
    EXPECT_EQ(Seek(device, 11, std::ios_base::beg), 10);
    EXPECT_EQ(Read(device, 1), "end");
    EXPECT_EQ(Seek(device, -1, std::ios_base::cur), 9);
    EXPECT_EQ(Seek(device, 1, std::ios_base::end), 10);
    EXPECT_EQ(Seek(device, INT64_MIN, std::ios_base::cur), 0);
    EXPECT_EQ(Seek(device, 1, std::ios_base::cur), 1);
    EXPECT_EQ(Seek(device, INT64_MAX, std::ios_base::cur), 10);
    EXPECT_EQ(Seek(device, INT64_MAX, std::ios_base::end), 10);
    // Every other direction counts from where the device is.
    EXPECT_EQ(Seek(device, -4, static_cast<std::ios_base::seekdir>(7)), 6);
    EXPECT_EQ(Seek(device, 3, static_cast<std::ios_base::seekdir>(3)), 9);
  }
}

TEST(HnidStreamDevice, CopiesMoveOnTheirOwn) {
  const Values values("");
  hnid_stream_device device = values.allocation();
  EXPECT_EQ(Read(device, 2), "ab");
  hnid_stream_device copy = device;
  EXPECT_EQ(Read(copy, 3), "cde");
  EXPECT_EQ(Read(device, 1), "c");
}

TEST(HnidStreamDevice, OutlivesItsMaker) {
  Values values("0123456789");
  hnid_stream_device allocation = values.allocation();
  hnid_stream_device subnode = values.subnode();
  values.release();
  EXPECT_EQ(Read(allocation, 10), "abcdefghij");
  EXPECT_EQ(Read(subnode, 10), "0123456789");
}

TEST(HnidStreamDevice, AnAllocationThatLeavesItsPage) {
  std::string page = HeapPage(kPropertyContext, 0, {"abc"});
  PutLe(page, page.size() - 2, page.size() + 5, 2);
  const NodeStore store({page});
  const pststore::heap_ptr heap = pststore::open_heap(store.node());
  const std::string bytes = page.substr(12) + std::string(5, '\0');
  hnid_stream_device device = heap->open_stream(0x20);
  EXPECT_EQ(Read(device, 100), bytes);
  EXPECT_EQ(Read(device, 1), "end");
  prop_stream stream(heap->open_stream(0x20));
  EXPECT_EQ(ReadAll(stream), bytes);

  // A read that begins after the page is one that the heap refuses.
  EXPECT_EQ(Seek(device, 1, std::ios_base::beg), 1);
  EXPECT_EQ(Read(device, static_cast<std::streamsize>(page.size() - 12)),
            page.substr(13) + std::string(1, '\0'));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { Read(device, 1); }), "offset >= size()");
  EXPECT_EQ(Seek(device, 0, std::ios_base::cur), static_cast<int64_t>(page.size() - 11));
}

TEST(HnidValue, IsReadWhole) {
  const std::string bytes = Pattern(200000);
  PstNodeParts parts;
  parts.pages = {HeapPage(kPropertyContext, 0, {"abcdefghij"})};
  parts.subnode(kSubnode, PstNodeParts::Stream(bytes, 8176));
  const NodeStore store(parts);
  const pststore::heap_ptr heap = pststore::open_heap(store.node());
  EXPECT_TRUE(Text(pststore::read_hnid(*heap, kSubnode)) == bytes);
  EXPECT_EQ(pststore::hnid_size(*heap, kSubnode), 200000U);
  EXPECT_EQ(Text(pststore::read_hnid(*heap, 0x20)), "abcdefghij");
  EXPECT_EQ(pststore::hnid_size(*heap, 0x20), 10U);
  EXPECT_TRUE(pststore::read_hnid(*heap, 0).empty());
  EXPECT_EQ(pststore::hnid_size(*heap, 0), 0U);
}

TEST(PropStream, ReadsAcrossItsBufferAndItsBlocks) {
  for (const PstLayout layout : {PstLayout::Ansi, PstLayout::Unicode}) {
    const std::string bytes = Pattern(2 * 8180 + 5);
    PstNodeParts parts;
    const size_t pageSize = layout == PstLayout::Ansi ? 8180 : 8176;
    parts.subnode(kSubnode, PstNodeParts::Stream(bytes, pageSize));
    const NodeStore store(parts, layout);
    prop_stream stream{hnid_stream_device(store.node().lookup(kSubnode))};
    EXPECT_EQ(ReadAll(stream), bytes);
  }
}

TEST(PropStream, TellsItsSizeBySeeking) {
  const Values values(Pattern(10000));
  prop_stream stream(values.subnode());
  stream.seekg(0, std::ios_base::end);
  EXPECT_EQ(std::streamoff(stream.tellg()), 10000);
  stream.seekg(0, std::ios_base::beg);
  std::string bytes(10000, '?');
  stream.read(bytes.data(), 10000);
  EXPECT_EQ(stream.gcount(), 10000);
  EXPECT_EQ(bytes, Pattern(10000));
  EXPECT_TRUE(stream.good());
  EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
}

TEST(PropStream, WorksOnACopyOfTheDevice) {
  const Values values("");
  hnid_stream_device device = values.allocation();
  prop_stream stream(device);
  EXPECT_EQ(ReadAll(stream), "abcdefghij");
  EXPECT_EQ(Read(device, 2), "ab");
}

// The buffer holds 4096 bytes, and 4 of those before can be put back.
TEST(PropStream, PutsBackFourBytes) {
  const std::string bytes = Pattern(10000);
  const Values values(bytes);
  prop_stream stream(values.subnode());
  std::string front(4096, '?');
  stream.read(front.data(), 4096);
  EXPECT_EQ(stream.rdbuf()->in_avail(), 0);
  EXPECT_EQ(stream.get(), std::char_traits<char>::to_int_type(bytes[4096]));
  EXPECT_EQ(stream.rdbuf()->in_avail(), 4095);
  for (const size_t i : {4096U, 4095U, 4094U, 4093U, 4092U}) {
    stream.unget();
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.peek(), std::char_traits<char>::to_int_type(bytes[i]));
  }
  EXPECT_THROW(stream.unget(), std::ios_base::failure);
}

TEST(PropStream, RefusesToWrite) {
  const Values values("0123456789");
  prop_stream stream(values.subnode());
  try {
    stream.rdbuf()->sputc('x');
    FAIL();
  } catch (const std::ios_base::failure& caught) {
    EXPECT_NE(std::string(caught.what()).find("no write access"), std::string::npos);
  }
}

TEST(PropStream, PassesOnWhatTheStoreThrows) {
  PstFileBuilder file;
  const std::array<uint64_t, 2> ids = {file.block(Pattern(8176)), 0x4444};
  file.node(NodeStore::kNid, file.extendedBlock(1, ids, 9000), 0);
  const WrittenStore store(file.bytes());
  prop_stream stream{hnid_stream_device(store.context()->lookup_node(NodeStore::kNid))};
  std::string bytes(9000, '?');
  EXPECT_EQ(MissingKey<uint64_t>([&] { stream.read(bytes.data(), 9000); }), 0x4444U);
  EXPECT_TRUE(stream.bad());

  PstFileBuilder missing;
  missing.node(NodeStore::kNid, 0x4444, 0);
  const WrittenStore lost(missing.bytes());
  prop_stream seeking{hnid_stream_device(lost.context()->lookup_node(NodeStore::kNid))};
  EXPECT_EQ(MissingKey<uint64_t>([&] { seeking.seekg(0, std::ios_base::end); }), 0x4444U);
}

TEST(PropStream, KeepsItsBufferInTheKernel) {
  const Values values("0123456789");
  const hnid_stream_device device = values.subnode();
  PlainKernelUsageRecord before;
  PlainKernelUsage(&before);
  const prop_stream stream(device);
  PlainKernelUsageRecord after;
  PlainKernelUsage(&after);
  EXPECT_GE(after.liveBytes - before.liveBytes, 4100U);
  EXPECT_LT(after.liveBytes - before.liveBytes, 4700U);
}

TEST(PropStream, WithoutMemory) {
  const Values values(Pattern(10000));
  FailEachAllocation([&] {
    prop_stream stream(values.subnode());
    std::string bytes(10000, '?');
    stream.read(bytes.data(), 10000);
    EXPECT_EQ(bytes, Pattern(10000));
  });
}

}  // namespace
}  // namespace tarn::test

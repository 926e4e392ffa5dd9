// Values that are passed from their start to their end: what is read, what it costs, and that
// damage is told as to those who read.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "pststore/Blocks.h"
#include "pststore/HeapBytes.h"
#include "pststore/HnidStream.h"
#include "pststore/PropertyBag.h"
#include "pststore/StoreHarness.h"
#include "support/PeakMemory.h"

namespace tarn::test {
namespace {

using pststore::hnid_stream_device;

constexpr uint32_t kSubnode = 0x81F;

// A node with a subnode of these parts.
class OneValue {
 public:
  explicit OneValue(const PstNodeParts& value, PstLayout layout = PstLayout::Unicode,
                    PstEncoding encoding = PstEncoding::Permute)
      : store_(Image(value, layout, encoding)) {}

  hnid_stream_device device() const {
    return hnid_stream_device(store_.context()->lookup_node(NodeStore::kNid).lookup(kSubnode));
  }

 private:
  static std::string Image(const PstNodeParts& value, PstLayout layout, PstEncoding encoding) {
    PstNodeParts parts;
    parts.subnode(kSubnode, value);
    PstFileBuilder file({.layout = layout, .encoding = encoding});
    file.node(NodeStore::kNid, parts);
    return file.bytes();
  }

  WrittenStore store_;
};

std::string PassAll(hnid_stream_device device, size_t step) {
  std::string all;
  std::string piece(step, '?');
  for (;;) {
    const size_t done = device.pass(RoomOf(piece));
    if (done == 0) return all;
    all.append(piece, 0, done);
  }
}

uint64_t PassUnseen(hnid_stream_device device) {
  uint64_t sum = 0;
  for (;;) {
    const size_t done = device.skip();
    if (done == 0) return sum;
    sum += done;
  }
}

TEST(Pass, GivesTheBytesInAllShapes) {
  for (const PstLayout layout : {PstLayout::Ansi, PstLayout::Unicode}) {
    const size_t page = layout == PstLayout::Ansi ? 8180 : 8176;
    for (const PstEncoding encoding :
         {PstEncoding::None, PstEncoding::Permute, PstEncoding::Cyclic}) {
      for (const size_t size : {size_t{0}, size_t{5}, page, page + 1, 3 * page + 77}) {
        const std::string bytes = Pattern(size);
        const OneValue value(PstNodeParts::Stream(bytes, page), layout, encoding);
        for (const size_t step : {1000u, 4096u, 20000u}) {
          EXPECT_EQ(PassAll(value.device(), step), bytes);
        }
        EXPECT_EQ(PassUnseen(value.device()), size);
      }
    }
  }
}

TEST(Pass, GivesTheBytesOfTwoLevelsAndOfHoles) {
  const std::string bytes = Pattern(20 * 8176);
  PstNodeParts parts = PstNodeParts::Stream(bytes, 8176);
  parts.dataShape = {.fanOut = 7, .pageHoles = {2, 19}};
  const OneValue value(parts);
  std::string expected = bytes;
  for (const size_t hole : {2u, 19u}) expected.replace(hole * 8176, 8176, 8176, '\0');
  // Levels count as full, so that only the first 7 pages are where a reader looks for them.
  hnid_stream_device device = value.device();
  std::string first(7 * 8176, '?');
  size_t done = 0;
  while (done < first.size()) {
    done += device.pass(RoomOf(first).subspan(done));
  }
  EXPECT_EQ(first, expected.substr(0, first.size()));
}

TEST(Pass, GivesTheBytesOfAnAllocation) {
  const NodeStore store({HeapPage(kPropertyContext, 0, {"abcdefghij"})});
  const pststore::heap_ptr heap = pststore::open_heap(store.node());
  EXPECT_EQ(PassAll(heap->open_stream(0x20), 4), "abcdefghij");
  EXPECT_EQ(PassUnseen(heap->open_stream(0x20)), 10u);
  EXPECT_EQ(PassUnseen(heap->open_stream(0)), 0u);
}

// Whether a block that was passed comes again is its reader's matter: going back reads it anew.
TEST(Pass, CanGoBack) {
  const std::string bytes = Pattern(5 * 8176);
  const OneValue value(PstNodeParts::Stream(bytes, 8176));
  hnid_stream_device device = value.device();
  std::string all(bytes.size(), '?');
  EXPECT_EQ(device.pass(RoomOf(all)), all.size());
  device.seek(0, std::ios_base::beg);
  std::string again(bytes.size(), '?');
  EXPECT_EQ(device.read(again.data(), static_cast<std::streamsize>(again.size())),
            static_cast<std::streamsize>(again.size()));
  EXPECT_EQ(all, bytes);
  EXPECT_EQ(again, bytes);
}

TEST(Pass, KeepsNothing) {
  constexpr size_t kSize = 6000000;
  const OneValue value(PstNodeParts::Stream(Pattern(kSize), 8176));
  // A block, the ids of all blocks, and what the tree of blocks takes.
  EXPECT_LT(PeakOf([&] { EXPECT_EQ(PassUnseen(value.device()), kSize); }), 100000u);
  EXPECT_LT(PeakOf([&] { EXPECT_EQ(PassAll(value.device(), 4096).size(), kSize); }), 100000u);
  EXPECT_GT(PeakOf([&] {
              pststore::prop_stream stream(value.device());
              std::string bytes(kSize, '?');
              stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            }),
            kSize);
}

TEST(Pass, StreamsThatAreReadOnceKeepNothing) {
  constexpr size_t kSize = 6000000;
  const std::string bytes = Pattern(kSize);
  const OneValue value(PstNodeParts::Stream(bytes, 8176));
  std::string read(kSize, '?');
  EXPECT_LT(PeakOf([&] {
              hnid_stream_device device = value.device();
              device.read_once();
              pststore::prop_stream stream(device);
              stream.seekg(0, std::ios_base::end);
              EXPECT_EQ(std::streamoff(stream.tellg()), std::streamoff{kSize});
              stream.seekg(0, std::ios_base::beg);
              stream.read(read.data(), static_cast<std::streamsize>(kSize));
            }),
            100000u);
  EXPECT_TRUE(read == bytes);
}

TEST(Pass, ReadsEveryBlockOnce) {
  const OneValue value(PstNodeParts::Stream(Pattern(6 * 8176), 8176));
  PassUnseen(value.device());
  // The block of the subnodes; the block of ids with its beginning; six of data.
  const uint64_t reads = 1 + 2 + 6;
  EXPECT_EQ(CallsOf(PlainKernelFaultRead, [&] { PassUnseen(value.device()); }), reads);
  EXPECT_EQ(CallsOf(PlainKernelFaultRead, [&] { PassAll(value.device(), 4096); }), reads);
  EXPECT_EQ(CallsOf(PlainKernelFaultSeek, [&] { PassUnseen(value.device()); }), reads);
}

// The last of three blocks is missing, has another id in its trailer, or ends before its place
// does.
TEST(Pass, TellsDamageThatNobodyLooksAt) {
  const std::string page = Pattern(8176);
  {
    PstFileBuilder file;
    const std::array<uint64_t, 3> ids = {file.block(page), file.block(page), 0x4444};
    file.node(NodeStore::kNid, file.extendedBlock(1, ids, 2 * 8176 + 9), 0);
    const WrittenStore store(file.bytes());
    const hnid_stream_device device(store.context()->lookup_node(NodeStore::kNid));
    EXPECT_EQ(MissingKey<uint64_t>([&] { PassUnseen(device); }), 0x4444U);
  }
  {
    PstFileBuilder file;
    const std::array<uint64_t, 3> ids = {file.block(page), file.block("short"), file.block(page)};
    file.node(NodeStore::kNid, file.extendedBlock(1, ids, 3 * 8176), 0);
    const WrittenStore store(file.bytes());
    const hnid_stream_device device(store.context()->lookup_node(NodeStore::kNid));
    EXPECT_EQ(Thrown<pststore::database_corrupt>([&] { PassUnseen(device); }),
              "child shorter than its place");
  }
  RawImage image(true);
  image.block(0x104, page);
  const uint64_t at = image.block(0x108, page);
  image.extended(0x10E, 1, 2 * 8176, {0x104, 0x108});
  image.node(NodeStore::kNid, 0x10E).trees();
  image.put(at + 8192 - 8, 0x10C, 8);
  const auto context = OpenedImage(image).open();
  const hnid_stream_device device(context->lookup_node(NodeStore::kNid));
  EXPECT_EQ(Thrown<pststore::unexpected_block>([&] { PassUnseen(device); }), "wrong block id");
}

// An allocation of 5 bytes more than its page, and one that begins where the page ends.
TEST(Pass, TellsDamageOfAllocations) {
  std::string page = HeapPage(kPropertyContext, 0, {"abc"});
  PutLe(page, page.size() - 2, page.size() + 5, 2);
  const NodeStore store({page});
  const pststore::heap_ptr heap = pststore::open_heap(store.node());
  EXPECT_EQ(PassUnseen(heap->open_stream(0x20)), page.size() - 12 + 5);
  hnid_stream_device device = heap->open_stream(0x20);
  device.seek(static_cast<int64_t>(page.size()) - 12, std::ios_base::beg);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { PassUnseen(device); }), "offset >= size()");
}

// A block is decoded when somebody looks at it: whichever way that is, once.
TEST(Decoding, HappensOnceWhoeverLooks) {
  for (const PstEncoding encoding :
       {PstEncoding::None, PstEncoding::Permute, PstEncoding::Cyclic}) {
    PstFileBuilder file({.encoding = encoding});
    file.node(NodeStore::kNid, file.block("abcdef"), 0);
    const WrittenStore store(file.bytes());
    const auto block = [&] {
      return store.context()->lookup_node(NodeStore::kNid).get_data_block();
    };
    const auto text = [](pststore::data_block& from) {
      return Text(from.get_page(0)->get_bytes());
    };
    const auto read = block();
    std::string bytes(6, '?');
    EXPECT_EQ(read->skip_raw(6, 0), 6u);
    EXPECT_EQ(read->read_raw(RoomOf(bytes), 0), 6u);
    EXPECT_EQ(bytes, "abcdef");
    EXPECT_EQ(text(*read), "abcdef");
    EXPECT_EQ(text(*read), "abcdef");

    auto written = block();
    EXPECT_EQ(written->write_raw(BytesOf("XY"), 1, written), 2u);
    EXPECT_EQ(text(*written), "aXYdef");

    auto cut = block();
    EXPECT_EQ(cut->resize(4, cut), 4u);
    EXPECT_EQ(text(*cut), "abcd");

    // A copy of one that nobody has looked at.
    const auto page = block()->get_page(0);
    const pststore::external_block copy(*page);
    EXPECT_EQ(Text(copy.get_bytes()), "abcdef");
    EXPECT_EQ(text(*page), "abcdef");
  }
}

}  // namespace
}  // namespace tarn::test

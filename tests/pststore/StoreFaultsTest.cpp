// A host without memory, and files that do not read: whatever call fails, the exception says so,
// nothing is left in the kernel, and the store goes on working.
#include <gtest/gtest.h>

#include <fstream>

#include "pststore/StoreHarness.h"
#include "support/FaultSweep.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstStoreFaultsTest : public BothLayouts {
 protected:
  // Two levels of pages in the node tree, streams of each kind, subnodes of two levels.
  RawImage Store() {
    RawImage image(unicode());
    image.block(0x104, std::string(maxData(), 'x'));
    image.block(0x108, "tail");
    image.extended(0x10E, 1, maxData() + 4, {0x104, 0x108});
    image.extended(0x112, 2, maxData() + 4, {0x10E});
    image.subnodeLeaf(0x116, {{0x25, 0x108, 0}});
    image.subnodeNonleaf(0x11A, {{0x25, 0x116}});
    image.trees();
    const uint64_t leaf = (image.file.size() + 511) / 512 * 512;
    image.page({0x77, leaf}, RawImage::kNbtPage, 0, 1, image.nbtEntry({0x21, 0, 0x112, 0x11A}));
    image.page({RawImage::kNbtId, RawImage::kNbtAddress}, RawImage::kNbtPage, 1, 1,
               image.nonleafEntry(0x21, {0x77, leaf}));
    return image.setFileEof(leaf + 512);
  }

  // Everything that reads, and what it gives.
  static std::string Use(const std::shared_ptr<db_context>& context) {
    const node node = context->lookup_node(0x21);
    const pststore::node copy = node;
    std::string text(copy.size(), '?');
    text.resize(copy.read(RoomOf(text), 0));
    const pststore::node inner = copy.lookup(0x25);
    byte_vector page(4);
    inner.read(page, 0, 0);
    btree_iter_impl<ulong, node_info> iter;
    context->read_nbt_root()->first(iter);
    iter.leaf->next(iter);
    std::shared_ptr<data_block> block = inner.get_data_block();
    block->write_raw(BytesOf("T"), 0, block);
    block->resize(9000, block);
    return text.substr(text.size() - 5) + std::string(page.begin(), page.end());
  }

  template <typename Exception>
  static void Sweep(int32_t group, const OpenedImage& file, uint64_t atLeast) {
    const auto round = [&](FaultedWork& faulted) {
      std::shared_ptr<db_context> context;
      bool failed = false;
      try {
        faulted([&] {
          context = file.open();
          Use(context);
        });
      } catch (const Exception&) {
        failed = true;
      }
      EXPECT_EQ(failed, faulted.isReached());
      if (context != nullptr) {
        EXPECT_EQ("xtailtail", Use(context));
      }
    };
    EXPECT_GE(SweepFaults(group, round, FaultKinds::OneAndFrom), atLeast);
  }
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstStoreFaultsTest, ::testing::Bool(), LayoutName);

TEST_P(PstStoreFaultsTest, WithoutMemory) {
  Sweep<std::bad_alloc>(PlainKernelFaultMemory, OpenedImage(Store()), 30);
}

TEST_P(PstStoreFaultsTest, ReadsThatFail) {
  Sweep<std::out_of_range>(PlainKernelFaultRead, OpenedImage(Store()), 10);
}

TEST_P(PstStoreFaultsTest, SeeksThatFail) {
  Sweep<std::out_of_range>(PlainKernelFaultSeek, OpenedImage(Store()), 10);
}

TEST_P(PstStoreFaultsTest, OpeningThatFails) {
  Sweep<std::runtime_error>(PlainKernelFaultOpen, OpenedImage(Store()), unicode() ? 2 : 1);
}

TEST_P(PstStoreFaultsTest, EveryByteOfASmallStoreMayBeWrong) {
  // Whatever comes of it, it is an exception of the store or an answer.
  const std::string good = Store().bytes();
  TempDirectory directory;
  const auto path = directory.write("bad.pst", good);
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  const auto put = [&](size_t at, char byte) {
    file.seekp(static_cast<std::streamoff>(at));
    file.put(byte).flush();
  };
  int failures = 0;
  // The header is held by its checksums; trees, trailers and the beginnings of blocks follow.
  for (size_t at = 0x1000; at < good.size(); at += at % 512 < 48 || at % 512 > 488 ? 1 : 7) {
    put(at, static_cast<char>(~good[at]));
    try {
      Use(open_database(path.u16string().c_str()));
    } catch (const std::exception&) {
      ++failures;
    }
    put(at, good[at]);
  }
  EXPECT_GT(failures, 50);
}

}  // namespace

}  // namespace tarn::test

// Nodes: their streams by page and flat, copies, subnodes, and what keeps what alive.
#include "pststore/Node.h"

#include <gtest/gtest.h>

#include <optional>

#include "pststore/StoreHarness.h"

namespace tarn::test {

namespace {

using namespace pststore;
using Node = pststore::node;

class PstNodeTest : public BothLayouts {
 protected:
  std::shared_ptr<db_context> Open(RawImage& image) { return OpenedImage(image.trees()).open(); }
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstNodeTest, ::testing::Bool(), LayoutName);

byte_vector Room(size_t size) { return byte_vector(size, '?'); }
TEST_P(PstNodeTest, ANodeOfOneBlock) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  image.node(0x21, 0x104);
  const Node node = Open(image)->lookup_node(0x21);
  EXPECT_EQ(0x21u, node.get_id());
  EXPECT_EQ(6u, node.size());
  EXPECT_EQ(1u, node.get_page_count());
  EXPECT_EQ(6u, node.get_page_size(0));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.get_page_size(1); }), "index > 0");
}

TEST_P(PstNodeTest, ANodeWithoutData) {
  RawImage image(unicode());
  image.node(0x21, 0);
  const Node node = Open(image)->lookup_node(0x21);
  EXPECT_EQ(0u, node.size());
  EXPECT_EQ(1u, node.get_page_count());
  EXPECT_EQ(0u, node.get_page_size(0));
  byte_vector room = Room(1);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read(room, 0, 0); }), "offset >= size()");
  byte_vector none;
  EXPECT_EQ(0u, node.read(none, 0, 0));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read<ushort>(0, 0); }), "offset >= size()");
  EXPECT_EQ(0u, node.read(room, 0));
}

TEST_P(PstNodeTest, PageReads) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  image.node(0x21, 0x104);
  const Node node = Open(image)->lookup_node(0x21);
  byte_vector room = Room(3);
  EXPECT_EQ(3u, node.read(room, 0, 1));
  EXPECT_EQ("bcd", Text(room));
  EXPECT_EQ(1u, node.read(room, 0, 5));
  EXPECT_EQ("fcd", Text(room));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read(room, 0, 6); }), "offset >= size()");
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read(room, 0, UINT32_MAX); }), "offset >= size()");
  // An empty buffer reads nothing, not even the page.
  byte_vector none;
  EXPECT_EQ(0u, node.read(none, 77, 99));
}

TEST_P(PstNodeTest, APageReadNeverCrossesItsPage) {
  RawImage image(unicode());
  image.block(0x104, std::string(maxData() - 1, 'x') + "y");
  image.block(0x108, "tail");
  image.extended(0x10E, 1, maxData() + 4, {0x104, 0x108});
  image.node(0x21, 0x10E);
  const Node node = Open(image)->lookup_node(0x21);
  EXPECT_EQ(2u, node.get_page_count());
  EXPECT_EQ(4u, node.get_page_size(1));
  byte_vector room = Room(4);
  EXPECT_EQ(1u, node.read(room, 0, maxData() - 1));
  EXPECT_EQ("y???", Text(room));
  EXPECT_EQ(4u, node.read(room, 1, 0));
  EXPECT_EQ("tail", Text(room));
  std::string flat(6, '?');
  EXPECT_EQ(5u, node.read(RoomOf(flat), maxData() - 1));
  EXPECT_EQ("ytail?", flat);
}

TEST_P(PstNodeTest, ValuesOutOfAPage) {
  RawImage image(unicode());
  image.block(0x104, std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x89", 9));
  image.node(0x21, 0x104);
  const Node node = Open(image)->lookup_node(0x21);
  EXPECT_EQ(0x89, node.read<unsigned char>(0, 8));
  EXPECT_EQ(0x8908, node.read<ushort>(0, 7));
  EXPECT_EQ(0x05040302u, node.read<ulong>(0, 1));
  EXPECT_EQ(0x8908070605040302u, node.read<ulonglong>(0, 1));
  const char* const offset = "offset >= size()";
  const char* const size = "sizeof(T) + offset >= size()";
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read<ushort>(0, 8); }), size);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read<ulong>(0, 6); }), size);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read<ulonglong>(0, 2); }), size);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read<unsigned char>(0, 9); }), offset);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read<ushort>(0, 9); }), offset);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { node.read<ulonglong>(0, UINT32_MAX); }), offset);
}

TEST_P(PstNodeTest, FlatReadsAreClipped) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  image.node(0x21, 0x104);
  const Node node = Open(image)->lookup_node(0x21);
  std::string room(8, '?');
  EXPECT_EQ(2u, node.read(RoomOf(room), 4));
  EXPECT_EQ("ef??????", room);
  EXPECT_EQ(0u, node.read(RoomOf(room), 6));
  EXPECT_EQ(0u, node.read(RoomOf(room), 7));
  EXPECT_EQ(0u, node.read(RoomOf(room), UINT64_MAX - 3));
}

TEST_P(PstNodeTest, NothingIsReadBeforeItIsNeeded) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  image.node(0x21, 0x104, 0x7772);
  const OpenedImage file(image.trees());
  // The node tree; then the block tree and the block; then nothing more.
  const auto reads = [&](const auto& use) {
    return CallsOf(PlainKernelFaultRead, file,
                   [&](const auto& context) { use(context->lookup_node(0x21)); });
  };
  EXPECT_EQ(1u, reads([](const Node&) {}));
  EXPECT_EQ(3u, reads([](const Node& node) { node.size(); }));
  EXPECT_EQ(3u, reads([](const Node& node) {
              node.size();
              node.get_page_size(0);
              node.read<ushort>(0, 0);
            }));
}

TEST_P(PstNodeTest, DamageIsFoundAtTheFirstTouch) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  image.node(0x21, 0x104).node(0x41, 0x7770).node(0x61, 0x7772);
  image.put(RawImage::kFirstBlock + 64 - 8, 0x99, 4);
  const auto context = Open(image);
  const Node damaged = context->lookup_node(0x21);
  EXPECT_EQ(Thrown<unexpected_block>([&] { damaged.size(); }), "wrong block id");
  EXPECT_EQ(Thrown<unexpected_block>([&] { damaged.get_page_count(); }), "wrong block id");
  const Node missing = context->lookup_node(0x41);
  EXPECT_EQ(0x7770u, MissingKey<ulonglong>([&] { missing.size(); }));
}

// Copies --------------------------------------------------------------------------------------

TEST_P(PstNodeTest, CopiesShareWhatWasLoaded) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  image.node(0x21, 0x104);
  const Node node = Open(image)->lookup_node(0x21);
  const Node before = node;
  const auto block = node.get_data_block();
  const Node after = node;
  EXPECT_EQ(0u, CallsOf(PlainKernelFaultRead, [&] { EXPECT_EQ(block, after.get_data_block()); }));
  EXPECT_EQ(1u, CallsOf(PlainKernelFaultRead, [&] { before.get_data_block(); }));
  EXPECT_NE(block, before.get_data_block());
  EXPECT_EQ(0x21u, before.get_id());
  Node assigned = before;
  assigned = node;
  EXPECT_EQ(block, assigned.get_data_block());
  const Node& same = assigned;
  assigned = same;
  EXPECT_EQ(block, assigned.get_data_block());
}

TEST_P(PstNodeTest, NodesKeepTheirContextAlive) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  image.node(0x21, 0x104);
  auto context = Open(image);
  const Node node = context->lookup_node(0x21);
  const std::weak_ptr<db_context> weak = context;
  context.reset();
  EXPECT_EQ(6u, node.size());
  EXPECT_EQ(weak.lock(), node.get_context());
}

// Subnodes ------------------------------------------------------------------------------------

TEST_P(PstNodeTest, WithoutSubnodes) {
  RawImage image(unicode());
  image.node(0x21, 0, 0);
  const Node node = Open(image)->lookup_node(0x21);
  EXPECT_THROW(node.lookup(0x671), key_not_found<ulong>);
  EXPECT_THROW(node.lookup(0), key_not_found<ulong>);
  EXPECT_FALSE(node.has(0x671));
  EXPECT_FALSE(node.has(0));
}

TEST_P(PstNodeTest, Subnodes) {
  RawImage image(unicode());
  image.block(0x104, "inner");
  image.block(0x108, "innermost");
  image.subnodeLeaf(0x10E, {{0x8025, 0x108, 0}});
  image.subnodeLeaf(0x112, {{0x671, 0x104, 0x10E}, {0x692, 0, 0}});
  image.node(0x21, 0, 0x112, 0x122);
  const Node node = Open(image)->lookup_node(0x21);
  EXPECT_TRUE(node.has(0x671));
  EXPECT_TRUE(node.has(0x692));
  EXPECT_FALSE(node.has(0x672));
  const Node inner = node.lookup(0x671);
  EXPECT_EQ(0x671u, inner.get_id());
  EXPECT_EQ(5u, inner.size());
  EXPECT_EQ(9u, inner.lookup(0x8025).size());
  EXPECT_EQ(0u, node.lookup(0x692).size());
  EXPECT_EQ(0x672u, MissingKey<ulong>([&] { node.lookup(0x672); }));
  EXPECT_THROW(inner.lookup(0x671), key_not_found<ulong>);
  EXPECT_EQ(node.get_context(), inner.get_context());
}

TEST_P(PstNodeTest, SubnodesAreLoadedOnceForTheirNode) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10E, {{0x25, 0, 0}});
  image.node(0x21, 0, 0x10E);
  const OpenedImage file(image.trees());
  EXPECT_EQ(3u, CallsOf(PlainKernelFaultRead, file, [](const auto& context) {
              const Node node = context->lookup_node(0x21);
              node.lookup(0x25);
              node.lookup(0x25);
            }));
}

TEST_P(PstNodeTest, ASubnodeKeepsWhatItBelongsToAlive) {
  RawImage image(unicode());
  image.block(0x104, "inner");
  image.subnodeLeaf(0x10E, {{0x25, 0x104, 0}});
  image.node(0x21, 0, 0x10E);
  auto context = Open(image);
  std::optional<Node> node = context->lookup_node(0x21);
  context.reset();
  const std::weak_ptr<data_block> outerData = node->get_data_block();
  std::optional<Node> inner = node->lookup(0x25);
  node.reset();
  EXPECT_EQ(5u, inner->size());
  EXPECT_FALSE(outerData.expired());
  inner.reset();
  EXPECT_TRUE(outerData.expired());
}

}  // namespace

}  // namespace tarn::test

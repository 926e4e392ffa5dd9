#include "pststore/PropertyBag.h"

#include <gtest/gtest.h>

#include <optional>

#include "pststore/Blocks.h"
#include "pststore/HeapBytes.h"
#include "pststore/StoreHarness.h"
#include "support/pst/PropertyContextBuilder.h"

namespace tarn::test {
namespace {

using pststore::database_corrupt;
using pststore::property_bag;
using pststore::wstring;

constexpr std::array<PstLayout, 2> kLayouts = {PstLayout::Ansi, PstLayout::Unicode};

// A property context: BTH header under 0x20, records under 0x40, values from 0x60 on.
NodeStore HandBag(const std::string& records, const std::vector<std::string>& values) {
  std::vector<std::string> allocations = {BthHeader(2, 6, 0, 0x40), records};
  allocations.insert(allocations.end(), values.begin(), values.end());
  return NodeStore({HeapPage(kPropertyContext, 0x20, allocations)});
}

std::vector<uint16_t> List(const pststore::const_property_object& object) {
  const pststore::vector<uint16_t> ids = object.get_prop_list();
  return std::vector<uint16_t>(ids.begin(), ids.end());
}

std::string Stream(const pststore::const_property_object& object, uint16_t id) {
  pststore::prop_stream stream(object.open_prop_stream(id));
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::u16string Wide(const pststore::const_property_object& object, uint16_t id) {
  const wstring text = object.read_prop<wstring>(id);
  return std::u16string(text.begin(), text.end());
}

TEST(PropertyBagOpen, RefusesNodesWithoutAHeader) {
  const NodeStore empty(PstNodeParts{});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { property_bag bag(empty.node()); }), "offset >= size()");
  const NodeStore eleven({std::string(11, '\xEC')});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { property_bag bag(eleven.node()); }),
            "sizeof(T) + offset >= size()");
}

TEST(PropertyBagOpen, RefusesOtherHeaps) {
  const NodeStore none({std::string(12, '\0')});
  EXPECT_EQ(Thrown<pststore::sig_mismatch>([&] { property_bag bag(none.node()); }),
            "invalid heap_sig");
  const NodeStore table({HeapPage(kTableContext, 0x20, {BthHeader(2, 6, 0, 0)})});
  EXPECT_EQ(Thrown<pststore::sig_mismatch>([&] { property_bag bag(table.node()); }),
            "invalid client_sig");
  const NodeStore index({HeapPage(kPropertyContext, 0x20, {BthHeader(4, 4, 0, 0)})});
  EXPECT_EQ(Thrown<std::logic_error>([&] { property_bag bag(index.node()); }), "invalid key size");
  const NodeStore rootless({HeapPage(kPropertyContext, 0, {})});
  EXPECT_EQ(Thrown<std::length_error>([&] { property_bag bag(rootless.node()); }),
            "buffer.size() > size()");
}

TEST(PropertyBag, ReadsWhatIsInTheEntry) {
  const NodeStore store = HandBag(std::string("\x17\x00\x03\x00\x78\x56\x34\x92"
                                              "\x01\x30\x1F\x00\x60\x00\x00\x00",
                                              16),
                                  {"ab"});
  const property_bag bag(store.node());
  EXPECT_EQ(List(bag), (std::vector<uint16_t>{kPropImportance, kPropDisplayName}));
  EXPECT_EQ(bag.get_prop_type(kPropImportance), 0x03);
  EXPECT_EQ(bag.get_prop_type(kPropDisplayName), 0x1F);
  EXPECT_EQ(bag.get_value_1(kPropImportance), 0x78);
  EXPECT_EQ(bag.get_value_2(kPropImportance), 0x5678);
  EXPECT_EQ(bag.get_value_4(kPropImportance), 0x92345678U);
  // The type does not count: an id comes as it is.
  EXPECT_EQ(bag.get_value_4(kPropDisplayName), 0x60U);
  EXPECT_EQ(bag.get_value_1(kPropDisplayName), 0x60);
  EXPECT_TRUE(bag.prop_exists(kPropImportance));
  EXPECT_FALSE(bag.prop_exists(0x0018));
  EXPECT_EQ(bag.get_node().get_id(), NodeStore::kNid);
}

TEST(PropertyBag, MissingProperties) {
  const NodeStore store = HandBag(Record2(0x0017, 3, 1), {});
  const property_bag bag(store.node());
  EXPECT_FALSE(bag.prop_exists(kPropSubject));
  const auto missing = [&](auto&& action) { return MissingKey<uint16_t>(action); };
  EXPECT_EQ(missing([&] { bag.get_prop_type(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.size(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.open_prop_stream(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.get_value_1(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.get_value_2(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.get_value_4(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.get_value_8(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.get_value_variable(kPropSubject); }), kPropSubject);
  EXPECT_EQ(missing([&] { bag.read_prop<wstring>(kPropSubject); }), kPropSubject);
}

TEST(PropertyBag, ReadsAllocationsAndSubnodes) {
  for (const PstLayout layout : kLayouts) {
    const std::string large(20000, 'L');
    PropertyContextBuilder builder(layout);
    builder.binary(kPropHtml, "small")
        .binary(kPropAttachData, large)
        .binary(kPropAttachEncoding, "");
    builder.streamed(kPropAttachExtension, kTypeBinary, PstNodeParts::Stream("own", 8176));
    builder.streamed(kPropAttachFilename, kTypeBinary, {});
    const NodeStore store(builder.build(), layout);
    const property_bag bag(store.node());
    EXPECT_EQ(bag.size(kPropHtml), 5U);
    EXPECT_EQ(Text(bag.get_value_variable(kPropHtml)), "small");
    EXPECT_EQ(Stream(bag, kPropHtml), "small");
    EXPECT_EQ(bag.size(kPropAttachData), 20000U);
    EXPECT_EQ(Text(bag.get_value_variable(kPropAttachData)), large);
    EXPECT_EQ(Stream(bag, kPropAttachData), large);
    EXPECT_EQ(bag.get_value_4(kPropAttachEncoding), 0U);
    EXPECT_EQ(bag.size(kPropAttachEncoding), 0U);
    EXPECT_EQ(Text(bag.get_value_variable(kPropAttachEncoding)), "");
    EXPECT_EQ(Stream(bag, kPropAttachEncoding), "");
    EXPECT_EQ(bag.size(kPropAttachExtension), 3U);
    EXPECT_EQ(Text(bag.get_value_variable(kPropAttachExtension)), "own");
    EXPECT_EQ(Stream(bag, kPropAttachExtension), "own");
    EXPECT_EQ(bag.size(kPropAttachFilename), 0U);
    EXPECT_EQ(Text(bag.get_value_variable(kPropAttachFilename)), "");
    EXPECT_EQ(Stream(bag, kPropAttachFilename), "");
  }
}

TEST(PropertyBag, IdsThatNameNothing) {
  const NodeStore store =
      HandBag(Record2(1, 0x102, 0x81F) + Record2(2, 0x102, 0x100) + Record2(3, 0x102, 0x81), {});
  const property_bag bag(store.node());
  for (const auto& [prop, hnid] : {std::pair<uint16_t, uint32_t>(1, 0x81F), {3, 0x81}}) {
    const uint16_t id = prop;
    EXPECT_TRUE(bag.prop_exists(id));
    EXPECT_EQ(MissingKey<uint32_t>([&] { bag.size(id); }), hnid);
    EXPECT_EQ(MissingKey<uint32_t>([&] { bag.get_value_variable(id); }), hnid);
    EXPECT_EQ(MissingKey<uint32_t>([&] { bag.open_prop_stream(id); }), hnid);
  }
  EXPECT_EQ(Thrown<std::length_error>([&] { bag.size(2); }), "index > num_allocs");
  EXPECT_EQ(Thrown<std::length_error>([&] { bag.get_value_variable(2); }), "index > num_allocs");
  // A stream touches its data when it is read.
  pststore::hnid_stream_device device = bag.open_prop_stream(2);
  char byte;
  EXPECT_EQ(Thrown<std::length_error>([&] { device.read(&byte, 1); }), "index > num_allocs");
}

TEST(PropertyBag, EightByteValues) {
  const NodeStore store = HandBag(Record2(1, 0x40, 0x60) + Record2(2, 0x40, 0x80) +
                                      Record2(3, 0x40, 0xA0) + Record2(4, 0x40, 0),
                                  {std::string("\x01\x02\x03\x04\x05\x06\x07\x88", 8),
                                   std::string("\x01\x02\x03\x04\x05\x06\x07\x88\x99", 9),
                                   std::string("\x01\x02\x03\x04\x05\x06\x07", 7)});
  const property_bag bag(store.node());
  EXPECT_EQ(bag.get_value_8(1), 0x8807060504030201U);
  EXPECT_EQ(bag.get_value_8(2), 0x8807060504030201U);
  EXPECT_EQ(Thrown<database_corrupt>([&] { bag.get_value_8(3); }), "value of less than 8 bytes");
  EXPECT_EQ(Thrown<database_corrupt>([&] { bag.get_value_8(4); }), "value of less than 8 bytes");
}

TEST(PropertyBag, ReadsTexts) {
  const NodeStore store =
      HandBag(Record2(1, 0x1E, 0x60) + Record2(2, 0x1F, 0x80) + Record2(3, 0x1E, 0) +
                  Record2(4, 0x1F, 0) + Record2(5, 0x102, 0x80) + Record2(6, 0x1F, 0xA0),
              {std::string("A\xE9\x80\x7F\0z\0", 7), std::string("A\0\xE9\0\x3D", 5), "x"});
  const property_bag bag(store.node());
  // 8-bit text is widened with its sign, and its zeros count.
  EXPECT_EQ(Wide(bag, 1), std::u16string(u"A\xFFE9\xFF80\x7F\0z\0", 7));
  EXPECT_EQ(Wide(bag, 2), u"A\u00E9");
  EXPECT_EQ(Wide(bag, 3), u"");
  EXPECT_EQ(Wide(bag, 4), u"");
  // All other types are taken for UTF-16, and an odd byte at the end is dropped.
  EXPECT_EQ(Wide(bag, 5), u"A\u00E9");
  EXPECT_EQ(Wide(bag, 6), u"");
}

// Four levels of three records each: 0x100, 0x200, ... with the values 1, 2, ...
TEST(PropertyBag, ListsTheWholeTree) {
  std::vector<std::string> allocations = {""};
  std::vector<std::pair<uint16_t, std::string>> level;
  std::vector<uint16_t> ids;
  for (uint16_t value = 1; value <= 81; ++value) {
    ids.push_back(static_cast<uint16_t>(0x100 * value));
    level.emplace_back(ids.back(), Record2(ids.back(), 3, value));
  }
  while (level.size() > 1) {
    std::vector<std::pair<uint16_t, std::string>> above;
    for (size_t i = 0; i < level.size(); i += 3) {
      allocations.push_back(level[i].second + level[i + 1].second + level[i + 2].second);
      const auto hid = static_cast<uint32_t>(0x20 * allocations.size());
      above.emplace_back(level[i].first, Record2(level[i].first, 0xEEEE, hid));
    }
    level = above;
  }
  const auto root = static_cast<uint32_t>(0x20 * allocations.size());
  allocations[0] = BthHeader(2, 6, 4, root);
  const NodeStore store({HeapPage(kPropertyContext, 0x20, allocations)});
  const property_bag bag(store.node());
  EXPECT_EQ(List(bag), ids);
  for (const uint16_t id : ids) {
    EXPECT_EQ(bag.get_value_4(id), id / 0x100U);
    EXPECT_FALSE(bag.prop_exists(static_cast<uint16_t>(id + 1)));
  }
  EXPECT_FALSE(bag.prop_exists(0));
}

TEST(PropertyBag, OtherFailuresPassThroughPropExists) {
  const NodeStore store(
      {HeapPage(kPropertyContext, 0x20, {BthHeader(2, 6, 2, 0x40), Record2(5, 0, 0x100)})});
  const property_bag bag(store.node());
  EXPECT_FALSE(bag.prop_exists(4));
  EXPECT_EQ(Thrown<std::length_error>([&] { bag.prop_exists(5); }), "index > num_allocs");
}

TEST(PropertyBag, CopiesAreTheirOwn) {
  PropertyContextBuilder builder(PstLayout::Unicode);
  builder.binary(kPropAttachData, std::string(5000, 'x')).text(kPropDisplayName, u"name");
  std::optional<NodeStore> store(std::in_place, builder.build());
  std::optional<property_bag> bag(std::in_place, store->node());
  const property_bag copy(*bag);
  property_bag assigned(*bag);
  assigned = copy;
  bag.reset();
  store->store().release();
  for (const property_bag* each : {&copy, static_cast<const property_bag*>(&assigned)}) {
    EXPECT_EQ(Wide(*each, kPropDisplayName), u"name");
    EXPECT_EQ(each->get_value_variable(kPropAttachData).size(), 5000U);
  }
  property_bag moved(std::move(assigned));
  EXPECT_EQ(Wide(moved, kPropDisplayName), u"name");
}

// A copy takes the heap for one whatever its client is.
TEST(PropertyBag, CopiesAreNotAskedForTheirClient) {
  const NodeStore store = HandBag(Record2(0x0017, 3, 1), {});
  const property_bag bag(store.node());
  // The bag's own block is changed, in memory: nobody else holds it.
  pststore::data_block* const block = bag.get_node().get_data_block().get();
  std::shared_ptr<pststore::data_block> changed;
  block->write_raw(BytesOf("\x7C"), 3, changed);
  ASSERT_EQ(changed.get(), block);

  const property_bag copy(bag);
  EXPECT_NE(&bag.get_node(), &copy.get_node());
  EXPECT_EQ(copy.get_value_4(kPropImportance), 1U);
  EXPECT_EQ(Thrown<pststore::sig_mismatch>([&] { property_bag other(bag.get_node()); }),
            "invalid client_sig");
}

TEST(PropertyBag, SubnodesLargerThanTheirData) {
  // An extended block that claims more than its one page holds.
  PstFileBuilder file;
  const std::array<uint64_t, 1> ids = {file.block(std::string(100, 'x'))};
  const std::array<SubnodeEntry, 1> entries = {{{0x81F, file.extendedBlock(1, ids, 200), 0}}};
  const uint64_t heap = file.block(
      HeapPage(kPropertyContext, 0x20, {BthHeader(2, 6, 0, 0x40), Record2(1, 0x102, 0x81F)}));
  file.node(NodeStore::kNid, heap, file.subnodes(entries));
  const WrittenStore store(file.bytes());
  const property_bag bag(store.context()->lookup_node(NodeStore::kNid));
  EXPECT_EQ(bag.size(1), 200U);
  EXPECT_EQ(Thrown<database_corrupt>([&] { bag.get_value_variable(1); }),
            "child shorter than its place");
}

TEST(PropertyBag, WithoutMemory) {
  PropertyContextBuilder builder(PstLayout::Unicode);
  builder.binary(kPropAttachData, std::string(9000, 'x')).text(kPropDisplayName, u"name");
  const NodeStore store(builder.build());
  FailEachAllocation([&] {
    const property_bag bag(store.node());
    const property_bag copy(bag);
    EXPECT_EQ(Wide(copy, kPropDisplayName), u"name");
    EXPECT_EQ(copy.get_value_variable(kPropAttachData).size(), 9000U);
    EXPECT_EQ(Stream(copy, kPropAttachData).size(), 9000U);
    EXPECT_EQ(copy.get_prop_list().size(), 2U);
  });
}

// Written with records of 8 bytes at every level, as they are read here.
TEST(PropertyBag, ThousandsOfPropertiesLieInATreeOfThreeLevels) {
  for (const PstLayout layout : kLayouts) {
    BthShape shape = BthShape::StrideOf8();
    shape.fanOut = 20;
    PropertyContextBuilder builder(layout, shape);
    for (uint32_t id = 1; id <= 5000; ++id) {
      if (id % 3 == 0) {
        builder.text(static_cast<uint16_t>(id), u"text " + std::u16string(id % 7, u'x'));
      } else {
        builder.number(static_cast<uint16_t>(id), kTypeInt32, id * 7);
      }
    }
    NodeStore store(builder.build(), layout);
    const property_bag bag(store.node());
    const std::vector<uint16_t> list = List(bag);
    ASSERT_EQ(list.size(), 5000u);
    for (uint32_t id = 1; id <= 5000; ++id) {
      const auto key = static_cast<uint16_t>(id);
      EXPECT_EQ(list[id - 1], key);
      if (id % 3 == 0) {
        EXPECT_EQ(Wide(bag, key), u"text " + std::u16string(id % 7, u'x'));
      } else {
        EXPECT_EQ(bag.get_value_4(key), id * 7);
      }
    }
    EXPECT_FALSE(bag.prop_exists(5001));
    EXPECT_FALSE(bag.prop_exists(0));
  }
}

}  // namespace
}  // namespace tarn::test

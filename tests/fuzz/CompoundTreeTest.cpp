// Compound files of unknown making as trees.
#include "mutators/CompoundTree.h"

#include <gtest/gtest.h>

#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

using namespace tarn::fuzz;

// Entries in the order of their names.
std::string Outline(const CompoundEntry& entry) {
  std::map<std::string, std::string> children;
  for (const CompoundEntry& child : entry.children) {
    const std::string name(child.name.begin(), child.name.end());
    children[name] = child.isStream ? "=" + child.bytes : "(" + Outline(child) + ")";
  }
  std::string text;
  for (const auto& [name, content] : children) text += name + content + " ";
  return text;
}

CompoundEntry Read(const std::string& file) {
  const std::optional<CompoundImage> image = MapCompoundFile(file);
  EXPECT_TRUE(image);
  return image ? ReadCompoundTree(*image) : CompoundEntry();
}

class CompoundTreeOptions : public ::testing::TestWithParam<CompoundOptions> {};

INSTANTIATE_TEST_SUITE_P(
    Options, CompoundTreeOptions,
    ::testing::Values(CompoundOptions(), CompoundOptions{.version = CompoundVersion::V4},
                      CompoundOptions{.shape = SiblingShape::LeftList},
                      CompoundOptions{.order = BlockOrder::Descending, .bigShift = 7},
                      CompoundOptions{.order = BlockOrder::Interleaved, .freeBlocks = 3}));

TEST_P(CompoundTreeOptions, AreReadAndWritten) {
  CompoundBuilder file(GetParam());
  const std::string big(70000, 'b');
  file.stream("a", "small").stream("big", big).stream("none", "");
  file.storage("inner").stream("x", std::string(4096, 'x')).storage("deep").stream("y", "yy");
  file.root().classId({1, 2, 3});
  const CompoundEntry root = Read(file.write());
  const std::string inner = "inner(deep(y=yy ) x=" + std::string(4096, 'x') + " ) ";
  EXPECT_EQ(Outline(root), "a=small big=" + big + " " + inner + "none= ");
  EXPECT_EQ(root.classId[2], 3);
  const std::string written = WriteCompoundTree(root, GetParam());
  EXPECT_EQ(written.size(), file.write().size());
  EXPECT_EQ(Outline(Read(written)), Outline(root));
}

TEST(CompoundTree, MapsWhereTheWriterPutIt) {
  CompoundBuilder file;
  file.stream("big", std::string(9000000, 'b')).stream("small", "s");
  const CompoundImage written = file.image();
  const std::optional<CompoundImage> read = MapCompoundFile(written.bytes);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->blockSize, written.blockSize);
  EXPECT_EQ(read->tableBlocks, written.tableBlocks);
  EXPECT_EQ(read->metaBlocks, written.metaBlocks);
  EXPECT_EQ(read->smallTableBlocks, written.smallTableBlocks);
  EXPECT_EQ(read->directoryBlocks, written.directoryBlocks);
  EXPECT_EQ(read->containerBlocks, written.containerBlocks);
}

TEST(CompoundTree, CirclesEnd) {
  CompoundBuilder file;
  file.stream("a", std::string(5000, 'a')).stream("b", "b").storage("s").stream("t", "t");
  CompoundImage image = file.image();
  image.put(image.record("s") + RecordChild, 0);
  image.put(image.record("b") + RecordRight, image.entries.at("b"));
  const auto start = static_cast<uint32_t>(image.get(image.record("a") + RecordStart));
  image.put(image.tableEntry(start), start);
  image.put(image.tableEntry(image.directoryBlocks.back()), image.directoryBlocks.front());
  const std::string outline = Outline(Read(image.bytes));
  EXPECT_NE(outline.find("a=" + std::string(512, 'a') + " "), std::string::npos);
}

TEST(CompoundTree, OtherBytesAreNone) {
  EXPECT_FALSE(MapCompoundFile(""));
  EXPECT_FALSE(MapCompoundFile(std::string(511, '\x09')));
  EXPECT_FALSE(MapCompoundFile(std::string(600, '\0')));
}

}  // namespace
}  // namespace tarn::test

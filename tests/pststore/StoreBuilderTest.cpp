// Whole stores of folders and messages, read back by a reader of the tests' own.
#include <gtest/gtest.h>

#include <filesystem>

#include "NaivePst.h"
#include "support/TempDirectory.h"
#include "support/pst/PstBytes.h"
#include "support/pst/StoreBuilder.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using namespace std::string_literals;

class StoreBuilderLayouts : public ::testing::TestWithParam<std::tuple<PstLayout, PstEncoding>> {
 protected:
  PstLayout layout() const { return std::get<0>(GetParam()); }
  PstEncoding encoding() const { return std::get<1>(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Layouts, StoreBuilderLayouts,
                         ::testing::Combine(::testing::Values(PstLayout::Ansi, PstLayout::Unicode),
                                            ::testing::Values(PstEncoding::None,
                                                              PstEncoding::Permute,
                                                              PstEncoding::Cyclic)));

std::vector<uint32_t> Folders(const NaivePst& read) {
  std::vector<uint32_t> found;
  for (const auto& [nid, node] : read.nodes()) {
    if ((nid & 0x1F) == 2) found.push_back(nid);
  }
  return found;
}

std::vector<uint32_t> RowIds(const NaivePst& read, const NaiveNode& node) {
  std::vector<uint32_t> ids;
  for (const auto& [id, row] : read.rows(node)) ids.push_back(id);
  return ids;
}

TEST_P(StoreBuilderLayouts, EmptyStoreHasTheUsualNodes) {
  StoreBuilder store(layout(), encoding());
  const NaivePst read(store.bytes());
  EXPECT_EQ(read.problems(), "");
  EXPECT_EQ(Folders(read), (std::vector<uint32_t>{0x122, 0x8022, 0x8042}));
  for (uint32_t nid : {0x21U, 0x61U, 0x12DU, 0x12EU, 0x12FU, 0x60DU, 0x60EU, 0x60FU, 0x610U, 0x671U,
                       0x692U, 0x2223U, 0x802DU, 0x802EU, 0x802FU}) {
    EXPECT_TRUE(read.nodes().contains(nid)) << std::hex << nid;
  }
  EXPECT_EQ(RowIds(read, read.nodes().at(0x12D)), std::vector<uint32_t>{0x8022});
  EXPECT_EQ(RowIds(read, read.nodes().at(0x802D)), std::vector<uint32_t>{0x8042});
  EXPECT_EQ(read.nodes().at(0x8042).parent, 0x8022U);
  const auto bag = read.properties(read.nodes().at(0x21));
  EXPECT_EQ(bag.at(0x35E0).size(), 24U);
  EXPECT_EQ(bag.at(0x35E0).substr(4, 16), bag.at(0x0FF9));
  EXPECT_EQ(bag.at(0x35E0).substr(20), "\x22\x80\0\0"s);
}

TEST_P(StoreBuilderLayouts, MessagesHaveWhatIsDescribed) {
  StoreBuilder store(layout(), encoding());
  FolderBuilder& inbox = store.folder("Inbox");
  inbox.message()
      .subject(u"H\u00E9")
      .body(u"text")
      .html("<p>")
      .rtf("packed")
      .from(u"f")
      .to(u"t")
      .cc(u"c")
      .bcc(u"b")
      .importance(2)
      .submitTime(0x0102030405060708)
      .attachment(u"a.png", std::string(20000, 'p'))
      .property(0x1234, kTypeInt32, "\x01\x02\x03\x04");
  inbox.folder(u"Below").message().subject("8-bit \xE9");
  const NaivePst read(store.bytes());
  EXPECT_EQ(read.problems(), "");
  EXPECT_EQ(Folders(read), (std::vector<uint32_t>{0x122, 0x8022, 0x8042, 0x8082, 0x80A2}));

  const auto folder = read.properties(read.nodes().at(0x8082));
  EXPECT_EQ(folder.at(0x3001), "Inbox");
  EXPECT_EQ(folder.at(0x3602), "\x01\0\0\0"s);
  EXPECT_EQ(folder.at(0x360A), "\x01\0\0\0"s);
  EXPECT_EQ(RowIds(read, read.nodes().at(0x808D)), std::vector<uint32_t>{0x80A2});
  EXPECT_EQ(RowIds(read, read.nodes().at(0x808E)), std::vector<uint32_t>{0x200024});

  const NaiveNode& node = read.nodes().at(0x200024);
  EXPECT_EQ(node.parent, 0x8082U);
  const auto message = read.properties(node);
  EXPECT_EQ(message.at(0x0037), "H\0\xE9\0"s);
  EXPECT_EQ(message.at(0x1000), "t\0e\0x\0t\0"s);
  EXPECT_EQ(message.at(0x1013), "<p>");
  EXPECT_EQ(message.at(0x1009), "packed");
  EXPECT_EQ(message.at(0x0C1A), "f\0"s);
  EXPECT_EQ(message.at(0x0E04), "t\0"s);
  EXPECT_EQ(message.at(0x0E03), "c\0"s);
  EXPECT_EQ(message.at(0x0E02), "b\0"s);
  EXPECT_EQ(message.at(0x0017), "\x02\0\0\0"s);
  EXPECT_EQ(message.at(0x0039), "\x08\x07\x06\x05\x04\x03\x02\x01");
  EXPECT_EQ(message.at(0x1234), "\x01\x02\x03\x04");
  EXPECT_EQ(message.at(0x001A), Utf16Bytes(u"IPM.Note"));

  const auto subnodes = read.subnodes(node.subnodeBid);
  EXPECT_EQ(subnodes.size(), 3U);
  EXPECT_EQ(RowIds(read, subnodes.at(0x671)), std::vector<uint32_t>{0x8025});
  EXPECT_TRUE(read.rows(subnodes.at(0x692)).empty());
  const auto attachment = read.properties(subnodes.at(0x8025));
  EXPECT_EQ(attachment.at(0x3707), Utf16Bytes(u"a.png"));
  EXPECT_EQ(attachment.at(0x3701), std::string(20000, 'p'));
  EXPECT_EQ(attachment.at(0x3705), "\x01\0\0\0"s);
  EXPECT_EQ(read.properties(read.nodes().at(0x200044)).at(0x0037), "8-bit \xE9");
}

TEST(StoreBuilder, ContentsRowsRepeatTheirMessages) {
  StoreBuilder store(PstLayout::Unicode);
  store.folder("f").message().importance(2).submitTime(0x1122334455667788);
  const NaivePst read(store.bytes());
  const std::string row = read.rows(read.nodes().at(0x808E)).at(0).second;
  // Row id, row version, then the columns of 4 and 8 bytes in the order of the template.
  EXPECT_EQ(GetLe(row, 8, 4), 2U);
  EXPECT_EQ(GetLe(row, 24, 8), 0x1122334455667788U);
}

TEST(StoreBuilder, BareStoresHaveOnlyWhatIsDescribed) {
  StoreBuilder store(StoreOptions{.isBare = true});
  store.node(0x61, PstNodeParts::OfPages({"map"}));
  FolderBuilder& folder = store.folder(0x122, u"only");
  folder.message(0x44).without(0x001A).withoutAttachmentTable().attachment(u"x", "y");
  folder.row(0x99).count(7).without(0x360A);
  store.folder("next").withoutContentsTable();
  const NaivePst read(store.bytes());
  EXPECT_EQ(read.problems(), "");
  std::vector<uint32_t> nids;
  for (const auto& [nid, node] : read.nodes()) nids.push_back(nid);
  EXPECT_EQ(nids, (std::vector<uint32_t>{0x44, 0x61, 0x122, 0x12E, 0x8082}));
  EXPECT_EQ(RowIds(read, read.nodes().at(0x12E)), (std::vector<uint32_t>{0x44, 0x99}));
  const auto bag = read.properties(read.nodes().at(0x122));
  EXPECT_EQ(bag.at(0x3602), "\x07\0\0\0"s);
  EXPECT_FALSE(bag.contains(0x360A));
  EXPECT_FALSE(read.properties(read.nodes().at(0x44)).contains(0x001A));
  const auto subnodes = read.subnodes(read.nodes().at(0x44).subnodeBid);
  EXPECT_EQ(subnodes.size(), 1U);
  EXPECT_TRUE(subnodes.contains(0x8025));
}

TEST(StoreBuilder, FoldersMayLackTheirCountsAndHaveAnyContentsNode) {
  StoreBuilder store(StoreOptions{.isBare = true});
  store.folder("f").without(0x3602).without(0x3001).contentsTable(
      PstNodeParts::OfPages({"no table"}));
  const NaivePst read(store.bytes());
  const auto bag = read.properties(read.nodes().at(0x8082));
  EXPECT_FALSE(bag.contains(0x3602));
  EXPECT_FALSE(bag.contains(0x3001));
  EXPECT_EQ(read.data(read.nodes().at(0x808E).dataBid), "no table");
}

TEST(StoreBuilder, AttachmentsMayBeMessages) {
  StoreBuilder store(StoreOptions{.isBare = true});
  MessageBuilder& message = store.folder("f").message();
  message.attach().shortName("A.TXT").mimeTag(u"m").contentId(u"c").created(1).modified(2);
  message.attach().longName("inner").embedded().subject(u"inner").attachment(u"deep", "est");
  message.attach().withoutNode();
  const NaivePst read(store.bytes());
  EXPECT_EQ(read.problems(), "");
  const auto subnodes = read.subnodes(read.nodes().at(0x200024).subnodeBid);
  EXPECT_EQ(RowIds(read, subnodes.at(0x671)), (std::vector<uint32_t>{0x8025, 0x8045, 0x8065}));
  EXPECT_FALSE(subnodes.contains(0x8065));
  const auto first = read.properties(subnodes.at(0x8025));
  EXPECT_EQ(first.at(0x3704), "A.TXT");
  EXPECT_EQ(first.at(0x370E), "m\0"s);
  EXPECT_EQ(first.at(0x3712), "c\0"s);
  EXPECT_EQ(first.at(0x3007), LeBytes(1, 8));
  EXPECT_EQ(first.at(0x3008), LeBytes(2, 8));
  const auto second = read.properties(subnodes.at(0x8045));
  EXPECT_EQ(second.at(0x3705), "\x05\0\0\0"s);
  ASSERT_EQ(second.at(0x3701).size(), 8U);
  EXPECT_EQ(second.at(0x3701).substr(0, 4), "\x24\0\x20\0"s);
  const auto inner = read.subnodes(subnodes.at(0x8045).subnodeBid).at(0x200024);
  EXPECT_EQ(read.properties(inner).at(0x0037), Utf16Bytes(u"inner"));
  const auto deep = read.subnodes(inner.subnodeBid).at(0x8025);
  EXPECT_EQ(read.properties(deep).at(0x3701), "est");
}

TEST(StoreBuilder, SmallestStoreIsSmall) {
  StoreBuilder store(StoreOptions::Smallest(PstLayout::Ansi, PstEncoding::Permute));
  store.folder("f").message().subject("s").body("b");
  EXPECT_LT(store.bytes().size(), 3100U);
}

TEST_P(StoreBuilderLayouts, StreamsManyMessages) {
  TempDirectory directory;
  const auto path = directory.path() / "many.pst";
  StoreOptions options;
  options.file.layout = layout();
  options.file.encoding = encoding();
  StoreBuilder store(options, path);
  FolderBuilder& one = store.folder("one");
  FolderBuilder& two = store.folder("two");
  for (int i = 0; i < 1000; ++i) {
    one.message().subject(u"one").body(std::string(static_cast<size_t>(i), 'x'));
    two.message().subject(u"two");
  }
  // What was described is in the file already.
  EXPECT_GT(std::filesystem::file_size(path), 1000000U);
  store.finish();
  const std::string image = ReadWholeFile(path);
  const NaivePst read(image);
  EXPECT_EQ(read.problems(), "");
  EXPECT_EQ(read.properties(read.nodes().at(one.nid())).at(0x3602), LeBytes(1000, 4));
  const auto rows = read.rows(read.nodes().at(ContentsTableOf(two.nid())));
  ASSERT_EQ(rows.size(), 1000U);
  EXPECT_EQ(read.properties(read.nodes().at(rows[999].first)).at(0x0037), Utf16Bytes(u"two"));
  const auto others = read.rows(read.nodes().at(ContentsTableOf(one.nid())));
  EXPECT_EQ(read.properties(read.nodes().at(others.at(999).first)).at(0x1000).size(), 999U);
}

TEST(StoreBuilder, WritesWhatItHasInMemory) {
  TempDirectory directory;
  StoreBuilder store(PstLayout::Unicode);
  store.folder("f").message();
  store.write(directory.path() / "a.pst");
  EXPECT_TRUE(ReadWholeFile(directory.path() / "a.pst") == store.bytes());
}

}  // namespace
}  // namespace tarn::test

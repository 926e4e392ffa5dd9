#include "archive/export/ItemNames.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

ItemFields Fields(std::string subject) {
  ItemFields fields;
  fields.subject = std::move(subject);
  fields.sent = Moment{1714602896, 120};  // 2024-05-01T22:34:56Z
  return fields;
}

TEST(ItemNameTest, HasTheDayByTheSendersClockAndTheSubject) {
  EXPECT_EQ(ItemName(Fields("Plans")), "2024-05-02 Plans");
}

TEST(ItemNameTest, TakesTheDayOfArrivalWhereNoOtherIsKnown) {
  ItemFields fields = Fields("Plans");
  fields.received = std::exchange(fields.sent, std::nullopt);
  fields.received->offsetMinutes.reset();
  EXPECT_EQ(ItemName(fields), "2024-05-01 Plans");
  fields.received.reset();
  EXPECT_EQ(ItemName(fields), "undated Plans");
}

TEST(ItemNameTest, IsSafe) {
  EXPECT_EQ(ItemName(Fields("../../x")), "2024-05-02 _.._x");
  EXPECT_EQ(ItemName(Fields("")), "2024-05-02 no subject");
  EXPECT_EQ(ItemName(Fields("Really. . .")), "2024-05-02 Really");
  EXPECT_EQ(ItemName(Fields("a\xE2\x80\xAE"
                            "gpj.exe")),
            "2024-05-02 agpj.exe");
  EXPECT_EQ(ItemName(Fields("-rf \xF0\x9F\x98\x80")), "2024-05-02 rf \xF0\x9F\x98\x80");
}

TEST(ItemNameTest, IsCutBetweenCharacters) {
  std::string subject;
  for (int count = 0; count < 100; ++count) subject += "\xC3\xA4";  // 200 bytes
  std::string cut;
  for (int count = 0; count < 54; ++count) cut += "\xC3\xA4";  // 11 bytes of the day, and 108
  EXPECT_EQ(ItemName(Fields(subject)), "2024-05-02 " + cut);
}

TEST(ItemNameWithIdTest, GivesRoomToTheId) {
  EXPECT_EQ(ItemNameWithId("2024-05-02 Plans", "200024"), "2024-05-02 Plans [200024]");
  const std::string longest(kLongestSafeName, 'x');
  EXPECT_EQ(ItemNameWithId(longest, "200024"),
            std::string(kLongestSafeName - 9, 'x') + " [200024]");
}

TEST(ItemNameWithIdTest, HashesIdsThatAreNoNames) {
  const std::string one = ItemNameWithId("Plans", "cur/1:2,S");
  const std::string other = ItemNameWithId("Plans", "cur/1:2,s");
  EXPECT_NE(one, other);
  EXPECT_TRUE(one.starts_with("Plans [~"));
  EXPECT_EQ(one.size(), 25u);
}

TEST(NeedsIdTest, IsForNamesThatLookLikeThoseWithIds) {
  EXPECT_TRUE(NeedsId("Plans [200024]"));
  EXPECT_FALSE(NeedsId("Plans [200024] again"));
}

TEST(EmbeddedNameTest, TellsThePlacesWithinTheOutermost) {
  EXPECT_EQ(EmbeddedName("200024/2/1", "200024", Fields("a/b")), "2_1 a_b");
  EXPECT_EQ(EmbeddedName("1/3", "1", Fields("")), "3 no subject");
}

TEST(EmbeddedNameTest, HashesManyPlaces) {
  std::string id = "1";
  for (int depth = 0; depth < 30; ++depth) id += "/10000";
  const std::string name = EmbeddedName(id, "1", Fields("x"));
  EXPECT_TRUE(name.starts_with("~"));
  EXPECT_EQ(name.size(), 19u);
}

TEST(NameHashTest, IsTheSameForNamesThatSystemsTakeForOne) {
  EXPECT_EQ(NameHash("In", "PLANS"), NameHash("in", "plans"));
  EXPECT_EQ(NameHash("", "\xC3\xA4"), NameHash("", "a\xCC\x88"));
  EXPECT_NE(NameHash("In", "Plans"), NameHash("Out", "Plans"));
}

TEST(FolderPathsTest, KeepsFoldersApart) {
  FolderPaths paths;
  EXPECT_EQ(paths.pathOf({}), "");
  EXPECT_EQ(paths.pathOf({"In"}), "In");
  EXPECT_EQ(paths.pathOf({"IN"}), "IN (2)");
  EXPECT_EQ(paths.pathOf({"IN", "a/b"}), "IN (2)/a_b");
  EXPECT_EQ(paths.pathOf({"IN", "a:b"}), "IN (2)/a_b (2)");
  EXPECT_EQ(paths.pathOf({"In", "a/b"}), "In/a_b");
  EXPECT_EQ(paths.pathOf({".."}), "unnamed");
  EXPECT_EQ(paths.pathOf({"CON"}), "_CON");
}

TEST(FolderPathsTest, KeepsPathsShort) {
  FolderPaths paths;
  std::vector<std::string> folder;
  std::set<std::string> all;
  for (int depth = 0; depth < 300; ++depth) {
    folder.push_back(std::string(100, 'x'));
    const std::string& path = paths.pathOf(folder);
    EXPECT_LT(path.size(), 1500u);
    EXPECT_TRUE(all.insert(path).second) << path;
  }
}

}  // namespace
}  // namespace tarn::archive

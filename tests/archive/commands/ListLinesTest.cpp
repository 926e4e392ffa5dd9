#include "archive/commands/ListLines.h"

#include <gtest/gtest.h>

#include "archive/FakeItems.h"
#include "archive/commands/FolderCounts.h"
#include "archive/text/TerminalText.h"
#include "support/LocalZone.h"

namespace tarn::archive {
namespace {

class Lines : public ::testing::Test {
 protected:
  Lines() {
    text_.id = "200024";
    text_.folder = FolderOf({"Inbox", "日本"});
    text_.fields.messageClass = "IPM.Note";
    text_.fields.subject = "Hello";
    text_.fields.from = {"", "ann@example.com"};
  }

  std::string line(ListLines& lines, bool isOneOfSeveral = false) {
    FakeItem item(text_, asked_);
    return lines.lineOf(item, {source_, isOneOfSeveral});
  }

  const test::LocalZone zone_;
  FakeItemText text_;
  Asked asked_;
  FoundSource source_{"box.pst", "box.pst", SourceKind::Store, true};
};

TEST_F(Lines, TabbedOnesNeedNoMoreThanTheHeadline) {
  const auto lines = TabbedLines();
  EXPECT_EQ(line(*lines), "200024\tInbox/日本\t\tann@example.com\tHello\t0\n");
  text_.fields.hasAttachments = true;
  text_.fields.received = Moment{0, std::nullopt};
  EXPECT_EQ(line(*lines, true),
            "200024\tInbox/日本\t1970-01-01 00:00\tann@example.com\tHello\t+\tbox.pst\n");
  text_.fields.attachmentCount = 12;
  EXPECT_NE(line(*lines).find("\t12\n"), std::string::npos);
  EXPECT_EQ(asked_.envelopes, 0U);
}

TEST_F(Lines, OfJsonHaveEveryKey) {
  text_.fields.to = {{"Bob", ""}};
  text_.fields.received = Moment{60, 120};
  EXPECT_EQ(line(*JsonLines()),
            "{\"source\":\"box.pst\",\"id\":\"200024\",\"folder\":\"Inbox/日本\",\"class\":"
            "\"IPM.Note\",\"subject\":\"Hello\",\"from\":{\"name\":\"\",\"address\":"
            "\"ann@example.com\"},\"to\":[{\"name\":\"Bob\",\"address\":\"\"}],\"cc\":[],"
            "\"bcc\":[],\"sent\":null,\"received\":\"1970-01-01T00:01:00Z\",\"attachments\":0,"
            "\"size\":null}\n");
}

TEST_F(Lines, AlignedOnesFillTheTerminalAndNoMore) {
  text_.fields.subject = std::string(300, 's');
  text_.fields.from.name = std::string(300, 'f');
  text_.fields.attachmentCount = 3;
  for (const size_t width : {60U, 80U, 100U, 200U}) {
    const auto lines = AlignedLines(width);
    std::string both = line(*lines);
    const size_t end = both.find('\n');
    EXPECT_LE(Columns(both.substr(0, end)), width);
    both = both.substr(end + 1);
    EXPECT_EQ(Columns(both.substr(0, both.size() - 1)), width) << both;
    EXPECT_TRUE(both.ends_with("  3\n"));
  }
  const auto narrow = AlignedLines(10);
  EXPECT_NE(line(*narrow).find("ssss"), std::string::npos);
}

TEST_F(Lines, AlignedOnesKeepLongIds) {
  text_.id = "200024/1/2/3/4/5";
  EXPECT_NE(line(*AlignedLines(80)).find("200024/1/2/3/4/5  "), std::string::npos);
}

TEST_F(Lines, AlignedOnesNameEachSourceOnce) {
  const auto lines = AlignedLines(80);
  EXPECT_NE(line(*lines, true).find("\nbox.pst:\n200024"), std::string::npos);
  EXPECT_EQ(line(*lines, true).find("box.pst"), std::string::npos);
}

TEST_F(Lines, KeepTheEndOfALongText) {
  EXPECT_EQ(EndWithinColumns("abcdef", 6), "abcdef");
  EXPECT_EQ(EndWithinColumns("abcdef", 4), "…def");
  EXPECT_EQ(EndWithinColumns("日本語", 4), "…語");
  EXPECT_EQ(EndWithinColumns("abc", 0), "");
  EXPECT_EQ(EndWithinColumns(std::string(100000, 'x') + "é", 2), "…é");
}

TEST_F(Lines, FoldersAreATreeWithNumbers) {
  FolderCounts counts;
  counts.meet(FolderOf({"Inbox"}));
  for (int i = 0; i < 12; ++i) counts.add(FolderOf({"Inbox", "20\n24"}));
  counts.add(FolderOf({"Sent"}));
  EXPECT_EQ(counts.asTree({source_, false}),
            "       0  Inbox\n      12    20 24\n       1  Sent\n");
  EXPECT_EQ(counts.asTabbed({source_, true}),
            "Inbox\t0\tbox.pst\nInbox/20 24\t12\tbox.pst\nSent\t1\tbox.pst\n");
}

}  // namespace
}  // namespace tarn::archive

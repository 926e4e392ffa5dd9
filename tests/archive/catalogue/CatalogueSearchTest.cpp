#include "archive/catalogue/CatalogueSearch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "archive/catalogue/Catalogue.h"
#include "archive/catalogue/Database.h"
#include "archive/catalogue/SampleItems.h"
#include "archive/catalogue/SearchQuery.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

class CatalogueSearchTest : public testing::Test {
 protected:
  std::filesystem::path path() const { return directory_.path() / kCatalogueName; }

  void write(const std::vector<CatalogueItem>& items) {
    auto writer = CatalogueWriter::create(path());
    ASSERT_TRUE(writer.ok());
    for (const CatalogueItem& item : items) ASSERT_FALSE((*writer)->add(item).has_value());
    ASSERT_FALSE((*writer)->finish().has_value());
    auto search = CatalogueSearch::open(path());
    ASSERT_TRUE(search.ok()) << search.trouble().reason;
    search_ = std::move(*search);
  }

  // The numbers of the items, the best first.
  std::string found(const std::string& words, const SearchedSpan& span = {}) {
    const std::optional<std::string> query = QueryOf(words);
    if (!query) return "no query";
    Outcome<RankedItems> ranked = search_->find(*query, span);
    if (!ranked) return ranked.trouble().reason;
    std::string numbers;
    while (const std::optional<RankedItem> item = ranked->next()) {
      numbers += (numbers.empty() ? "" : " ") + std::to_string(item->number);
    }
    return numbers;
  }

  // Where the words are in the first item found: "body: the [net] income".
  std::string places(const std::string& words, size_t length = 100) {
    constexpr const char* kNames[] = {"subject", "from", "to", "body", "attachment"};
    Outcome<RankedItems> ranked = search_->find(QueryOf(words).value(), {});
    const auto found = search_->places(ranked->next()->number, length);
    std::string lines;
    for (const FoundPlace& place : *found) {
      if (!lines.empty()) lines += "; ";
      lines += kNames[static_cast<size_t>(place.field)];
      if (place.attachment != 0) lines += " " + std::to_string(place.attachment) + " " + place.name;
      lines += ": ";
      size_t at = 0;
      for (const TextSpan& mark : place.snippet.marks) {
        lines += place.snippet.text.substr(at, mark.begin - at) + "[" +
                 place.snippet.text.substr(mark.begin, mark.end - mark.begin) + "]";
        at = mark.end;
      }
      lines += place.snippet.text.substr(at);
    }
    return lines;
  }

  test::TempDirectory directory_;
  std::unique_ptr<CatalogueSearch> search_;
};

TEST_F(CatalogueSearchTest, FindsItemsWithAllWords) {
  write({Mail("1", "Report", "net income and loss"), Mail("2", "Lunch", "income"),
         Mail("3", "", "income of the net")});
  EXPECT_EQ(found("net income"), "3 1");
  EXPECT_EQ(found("\"net income\""), "1");
  EXPECT_EQ(found("lunch income"), "2");
  EXPECT_EQ(found("loss OR lunch"), "2 1");
  EXPECT_EQ(found("income NOT net"), "2");
  EXPECT_EQ(found("inco* loss"), "1");
  EXPECT_EQ(found("subject:income"), "");
  EXPECT_EQ(found("missing"), "");
}

TEST_F(CatalogueSearchTest, LetsTheSubjectWeighMore) {
  write({Mail("1", "Other", "budget"), Mail("2", "Budget", "other"), Mail("3", "x", "y")});
  EXPECT_EQ(found("budget"), "2 1");
}

TEST_F(CatalogueSearchTest, FindsEveryScript) {
  write({Mail("1", "会議", "東京都庁で"), Mail("2", "회의", "한국어를 배우다"),
         Mail("3", "Ünïcode", "Größe"), Mail("4", "שָׁלוֹם", "ประเทศไทย")});
  EXPECT_EQ(found("東京"), "1");
  EXPECT_EQ(found("京都庁"), "1");
  EXPECT_EQ(found("庁"), "1");
  EXPECT_EQ(found("で"), "1");
  EXPECT_EQ(found("東都"), "");
  EXPECT_EQ(found("한국"), "2");
  EXPECT_EQ(found("unicode grosse"), "3");
  EXPECT_EQ(found("unicode GRÖSSE"), "3");
  EXPECT_EQ(found("שלום"), "4");
  EXPECT_EQ(found("ไทย"), "4");
}

TEST_F(CatalogueSearchTest, ShowsWhereTheWordsAre) {
  CatalogueItem item = FullItem();
  write({item});
  EXPECT_EQ(places("budget"), "subject: [Budget] for May");
  EXPECT_EQ(places("office"), "from: ");
  EXPECT_EQ(places("emil"), "to: ");
  EXPECT_EQ(places("figur*"), "body: The [figures] are in the plan.");
  EXPECT_EQ(places("\"travel costs\""), "attachment 1 plan.txt: [Travel costs] nothing.");
  EXPECT_EQ(places("torn"), "attachment 2 torn.pdf: [torn].pdf");
  EXPECT_EQ(places("plan"),
            "body: The figures are in the [plan].; attachment 1 plan.txt: [plan].txt");
  EXPECT_EQ(places("budget NOT nowhere"), "subject: [Budget] for May");
}

TEST_F(CatalogueSearchTest, MarksTheOriginal) {
  CatalogueItem item = Mail("1", "Straße im Café", "東京都庁 cafe\xCC\x81 ＡＢＣ");
  item.attachments = {{1, "一二.txt", "三四五"}, {2, "六.txt", "四五六"}};
  write({item});
  EXPECT_EQ(places("STRASSE"), "subject: [Straße] im Café");
  EXPECT_EQ(places("cafe"), "subject: Straße im [Café]; body: 東京都庁 [cafe\xCC\x81] ＡＢＣ");
  EXPECT_EQ(places("abc"), "body: 東京都庁 cafe\xCC\x81 [ＡＢＣ]");
  EXPECT_EQ(places("京都"), "body: 東[京都]庁 cafe\xCC\x81 ＡＢＣ");
  EXPECT_EQ(places("庁"), "body: 東京都[庁] cafe\xCC\x81 ＡＢＣ");
  EXPECT_EQ(places("四五"), "attachment 1 一二.txt: 三[四五]; attachment 2 六.txt: [四五]六");
  EXPECT_EQ(places("六"), "attachment 2 六.txt: 四五[六]");
}

TEST_F(CatalogueSearchTest, AsksForDatesAndAttachments) {
  CatalogueItem late = Mail("2", "word", "");
  late.fields.sent = std::nullopt;
  late.fields.received = Moment{1800000000, std::nullopt};
  late.fields.attachmentCount = 1;
  CatalogueItem undated = Mail("3", "word", "");
  undated.fields.sent = std::nullopt;
  write({Mail("1", "word", ""), late, undated});
  SearchedSpan span;
  EXPECT_TRUE(span.isAnything());
  span.since = 1714559696;
  EXPECT_EQ(found("word", span), "1 2");
  span.since = 1714559697;
  EXPECT_EQ(found("word", span), "2");
  span.since = std::nullopt;
  span.until = 1714559696;
  EXPECT_EQ(found("word", span), "1");
  span.until = std::nullopt;
  span.hasAttachment = true;
  EXPECT_EQ(found("word", span), "2");
}

TEST_F(CatalogueSearchTest, GivesTheItem) {
  CatalogueItem parent = Mail("200024", "Outer", "");
  parent.source = "/mail/box.pst";
  write({parent, FullItem()});
  const Outcome<CatalogueItem> item = search_->item(2);
  ASSERT_TRUE(item.ok());
  CatalogueItem expected = FullItem();
  expected.folder = {"Top/Inbox"};
  expected.body.clear();
  expected.attachments.clear();
  expected.fields.sent->offsetMinutes = std::nullopt;
  EXPECT_EQ(PackedItem(*item), PackedItem(expected));
  EXPECT_EQ(search_->parentSubject(*item).value(), "Outer");
  EXPECT_EQ(search_->parentSubject(parent).value(), std::nullopt);
  EXPECT_FALSE(search_->item(3).ok());
}

TEST_F(CatalogueSearchTest, CannotFailOnWords) {
  write({FullItem()});
  for (const char* const words :
       {"(", "a AND", "^a", "{subject}:x", "NEAR(a b)", "a + b", "\"\"\"", "'; DROP TABLE items;--",
        "* a", "a\\b", "subject:subject:x", "\xFF\xFE z", "rank:x", "-a", "\xF0\x9F\x98\x80"}) {
    const std::string numbers = found(words);
    EXPECT_TRUE(numbers.empty() || numbers == "1" || numbers == "no query") << words << numbers;
  }
  std::string many;
  for (int each = 0; each < 2000; ++each) many += "NOT b" + std::to_string(each) + " OR a ";
  EXPECT_EQ(found(many), "");
}

TEST_F(CatalogueSearchTest, RefusesWhatIsNoCatalogue) {
  const auto reason = [&] { return CatalogueSearch::open(path()).trouble().reason; };
  EXPECT_EQ(reason(), "there is no catalogue.sqlite");
  directory_.write(kCatalogueName, "this is no database, whatever its name says");
  EXPECT_EQ(reason(), "the catalogue cannot be read: file is not a database");
  std::filesystem::remove(path());
  Database(path(), DatabaseUse::Make).run("PRAGMA user_version=2;CREATE TABLE a(b)");
  EXPECT_EQ(reason(), "its catalogue is of another version");
}

// Pages of other bytes cost an answer, and no more.
TEST_F(CatalogueSearchTest, SurvivesDamage) {
  std::vector<CatalogueItem> items;
  for (int each = 0; each < 40; ++each) {
    items.push_back(Mail(std::to_string(each), "word " + std::to_string(each), "text of it"));
  }
  write(items);
  search_.reset();
  const std::string whole = test::ReadWholeFile(path());
  size_t troubles = 0;
  for (size_t at = 100; at < whole.size(); at += 997) {
    std::string damaged = whole;
    for (size_t each = at; each < std::min(at + 40, whole.size()); ++each) damaged[each] = '\x7F';
    directory_.write(kCatalogueName, damaged);
    auto search = CatalogueSearch::open(path());
    if (!search) {
      ++troubles;
      continue;
    }
    Outcome<RankedItems> ranked = (*search)->find("\"word\"", {});
    if (!ranked) {
      ++troubles;
      continue;
    }
    while (const std::optional<RankedItem> item = ranked->next()) {
      if (!(*search)->item(item->number) || !(*search)->places(item->number, 80)) ++troubles;
    }
  }
  EXPECT_GT(troubles, 0U);
}

}  // namespace
}  // namespace tarn::archive

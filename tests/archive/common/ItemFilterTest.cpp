#include "archive/common/ItemFilter.h"

#include <gtest/gtest.h>

#include "archive/FakeItems.h"

namespace tarn::archive {
namespace {

class Filter : public ::testing::Test {
 protected:
  Filter() {
    text_.folder = FolderOf({"Top", "Inbox", "2024"});
    text_.fields.messageClass = "IPM.Appointment.Occurrence";
    text_.fields.subject = "Große Straße";
    text_.fields.from = {"Ann Ö", "ann@example.com"};
    text_.fields.sent = Moment{1000, std::nullopt};
    text_.fields.to = {{"Bob", "bob@example.com"}};
    text_.fields.cc = {{"Çelik", ""}};
    text_.fields.bcc = {{"", "dora@example.org"}};
    text_.fields.sender = Address{"Secretary", "office@example.com"};
  }

  bool takes(const FilterOptions& options) {
    ItemFilter filter(options);
    asked_ = Asked();
    FakeItem item(text_, asked_);
    return filter.takes(item);
  }

  bool takesFolder(const std::string& folder) {
    FilterOptions options;
    options.folder = folder;
    return takes(options);
  }

  FakeItemText text_;
  Asked asked_;
};

TEST_F(Filter, TakesAllWithoutOptions) {
  EXPECT_TRUE(takes({}));
  EXPECT_EQ(asked_.envelopes, 0U);
}

TEST_F(Filter, TakesAFolderAndThoseBelowIt) {
  for (const char* folder : {"Top", "top/INBOX", "Top/Inbox/2024", "/Top/", "Top/*", "*2024", "*",
                             "To?", "Top/*/2024", "*Inbox", "", "/"}) {
    EXPECT_TRUE(takesFolder(folder)) << folder;
  }
  for (const char* folder : {"Inbox", "To", "Top/Inbox/2024/x", "Top/In", "Tops", "T?", "2024"}) {
    EXPECT_FALSE(takesFolder(folder)) << folder;
  }
  text_.folder = FolderOf({"Gelöscht"});
  EXPECT_TRUE(takesFolder("GELÖSCHT"));
  EXPECT_TRUE(takesFolder("gel?scht"));
  text_.folder = FolderOf({});
  EXPECT_TRUE(takesFolder(""));
  // Every folder, and a source without any.
  EXPECT_TRUE(takesFolder("*"));
  EXPECT_FALSE(takesFolder("?"));
}

TEST_F(Filter, TellsAFolderThatIsNotThere) {
  FilterOptions options;
  options.folder = "Inbox";
  ItemFilter filter(options);
  EXPECT_TRUE(filter.hasMissedFolder());
  EXPECT_FALSE(filter.takesFolder(FolderOf({"Outbox"})));
  EXPECT_TRUE(filter.hasMissedFolder());
  EXPECT_TRUE(filter.takesFolder(FolderOf({"Inbox"})));
  EXPECT_FALSE(filter.takesFolder(FolderOf({"Outbox"})));
  EXPECT_FALSE(filter.hasMissedFolder());
  EXPECT_FALSE(ItemFilter({}).hasMissedFolder());
}

TEST_F(Filter, ComparesTextsWithoutCase) {
  FilterOptions options;
  options.subject = "STRASSE";
  EXPECT_TRUE(takes(options));
  options.subject = "gasse";
  EXPECT_FALSE(takes(options));
  options = {};
  options.messageClass = "ipm.APPOINTMENT";
  EXPECT_TRUE(takes(options));
  options.messageClass = "Appointment";
  EXPECT_FALSE(takes(options));
}

TEST_F(Filter, LooksForSendersInNamesAndAddresses) {
  FilterOptions options;
  for (const char* from : {"ö", "ANN@", "example.com"}) {
    options.from = from;
    EXPECT_TRUE(takes(options)) << from;
    EXPECT_EQ(asked_.envelopes, 0U);
  }
  for (const char* from : {"secretary", "office@"}) {
    options.from = from;
    EXPECT_TRUE(takes(options)) << from;
  }
  options.from = "bob";
  EXPECT_FALSE(takes(options));
}

TEST_F(Filter, LooksForRecipientsInToCcAndBcc) {
  FilterOptions options;
  for (const char* to : {"BOB", "bob@example", "çelik", "dora"}) {
    options.to = to;
    EXPECT_TRUE(takes(options)) << to;
  }
  options.to = "ann";
  EXPECT_FALSE(takes(options));
}

TEST_F(Filter, TakesDatesWithTheirEnds) {
  FilterOptions options;
  options.since = Span{1000, 1059};
  EXPECT_TRUE(takes(options));
  options.since = Span{1001, 1060};
  EXPECT_FALSE(takes(options));
  options.since.reset();
  options.until = Span{940, 1000};
  EXPECT_TRUE(takes(options));
  options.until = Span{940, 999};
  EXPECT_FALSE(takes(options));
  text_.fields.sent.reset();
  EXPECT_FALSE(takes(options));
  text_.fields.received = Moment{999, std::nullopt};
  EXPECT_TRUE(takes(options));
}

TEST_F(Filter, TakesWhatHasAttachments) {
  FilterOptions options;
  options.hasAttachment = true;
  EXPECT_FALSE(takes(options));
  text_.fields.hasAttachments = true;
  EXPECT_TRUE(takes(options));
}

TEST_F(Filter, AsksTheItemItselfForAttachments) {
  FilterOptions options;
  options.hasAttachment = true;
  text_.isHeadlineWrong = true;
  text_.fields.hasAttachments = true;
  EXPECT_TRUE(takes(options));
  text_.fields.hasAttachments = false;
  EXPECT_FALSE(takes(options));
}

TEST_F(Filter, WantsAllThatIsAskedFor) {
  FilterOptions options;
  options.subject = "straße";
  options.from = "ann";
  options.to = "bob";
  EXPECT_TRUE(takes(options));
  options.to = "nobody";
  EXPECT_FALSE(takes(options));
}

TEST(MatchesPattern, TakesRunsAndSingleCharacters) {
  EXPECT_TRUE(MatchesPattern("", ""));
  EXPECT_TRUE(MatchesPattern("", "**"));
  EXPECT_FALSE(MatchesPattern("", "?"));
  EXPECT_TRUE(MatchesPattern("abc", "a*c"));
  EXPECT_TRUE(MatchesPattern("abcabd", "*ab?"));
  EXPECT_FALSE(MatchesPattern("abcabd", "*abc"));
  EXPECT_TRUE(MatchesPattern("日本", "??"));
  EXPECT_FALSE(MatchesPattern("日本", "?"));
  EXPECT_FALSE(MatchesPattern(std::string(5000, 'a'), std::string(50, '*') + "b"));
  std::string stars;
  for (int i = 0; i < 1000; ++i) stars += "a*";
  EXPECT_FALSE(MatchesPattern(std::string(20000, 'a'), stars + "b"));
}

}  // namespace
}  // namespace tarn::archive

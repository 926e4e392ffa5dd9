#include "archive/catalogue/ItemTexts.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "archive/catalogue/Catalogue.h"

namespace tarn::archive {
namespace {

Attachment Named(const std::string& name, const std::string& mediaType) {
  Attachment attachment;
  attachment.name = name;
  attachment.mediaType = mediaType;
  return attachment;
}

std::string TextOf(const Attachment& attachment, const std::string& bytes) {
  return TextOfAttachment(attachment, *BytesOf(bytes));
}

// Gives "part", then a trouble.
class BreakingSource final : public ByteSource {
 public:
  Outcome<size_t> read(std::span<char> buffer) override {
    if (std::exchange(given_, true)) return Trouble{TroubleKind::Damaged, "torn"};
    return std::string_view("part").copy(buffer.data(), buffer.size());
  }

 private:
  bool given_ = false;
};

// An item with attachments whose bytes are given.
class TextItem final : public Item {
 public:
  void add(Attachment attachment, std::string bytes) {
    attachments_.push_back(std::move(attachment));
    bytes_.push_back(std::move(bytes));
  }

  Bodies held;

  const ItemPlace& place() const override { return place_; }
  const ItemFields& fields(Detail) override { return fields_; }
  Bodies bodies() override { return held; }
  Outcome<std::string> originalHeaders() override { return std::string(); }
  const std::vector<Attachment>& attachments() override { return attachments_; }
  Outcome<std::unique_ptr<ByteSource>> open(size_t index) override {
    if (bytes_[index] == "missing") return Trouble{TroubleKind::Missing, "not there"};
    return BytesOf(bytes_[index]);
  }
  Outcome<std::unique_ptr<Item>> embedded(size_t) override {
    return Trouble{TroubleKind::Missing, "none"};
  }
  Outcome<std::unique_ptr<ByteSource>> original() override { return std::unique_ptr<ByteSource>(); }
  const std::vector<Trouble>& troubles() const override { return troubles_; }

 private:
  ItemPlace place_;
  ItemFields fields_;
  std::vector<Attachment> attachments_;
  std::vector<std::string> bytes_;
  std::vector<Trouble> troubles_;
};

TEST(ItemTextsTest, TellsByTypeThenByName) {
  EXPECT_TRUE(HasText(Named("x", "text/plain")));
  EXPECT_TRUE(HasText(Named("x", "text/x-anything")));
  EXPECT_TRUE(HasText(Named("x", "application/pdf")));
  EXPECT_TRUE(HasText(Named("x", "application/json")));
  EXPECT_TRUE(HasText(Named("Notes.TXT", "")));
  EXPECT_TRUE(HasText(Named("a.b.pdf", "application/octet-stream")));
  EXPECT_FALSE(HasText(Named("x.txt", "image/png")));
  EXPECT_FALSE(HasText(Named("x.exe", "application/octet-stream")));
  EXPECT_FALSE(HasText(Named("txt", "")));
  EXPECT_FALSE(HasText(Named("", "")));
}

TEST(ItemTextsTest, HasNoneOfWhatIsNoData) {
  Attachment attachment = Named("x.txt", "text/plain");
  attachment.kind = AttachmentKind::Reference;
  EXPECT_FALSE(HasText(attachment));
  attachment.kind = AttachmentKind::Item;
  EXPECT_FALSE(HasText(attachment));
  attachment.kind = AttachmentKind::Data;
  attachment.trouble = Trouble{TroubleKind::Damaged, "torn"};
  EXPECT_FALSE(HasText(attachment));
}

TEST(ItemTextsTest, ReadsEachForm) {
  EXPECT_EQ(TextOf(Named("", "text/plain"),
                   "Gr\xFC\xDF"
                   "e"),
            "Grüße");
  EXPECT_EQ(TextOf(Named("", "text/csv"), "a;b\n"), "a;b\n");
  const std::string html = TextOf(Named("", "text/html"), "<p>One</p><script>x()</script>");
  EXPECT_NE(html.find("One"), std::string::npos);
  EXPECT_EQ(html.find("x()"), std::string::npos);
  const std::string rtf = TextOf(Named("a.rtf", ""), "{\\rtf1\\ansi Some {\\b bold} text}");
  EXPECT_NE(rtf.find("Some bold text"), std::string::npos);
  EXPECT_EQ(TextOf(Named("", "application/pdf"), "no PDF"), "");
  EXPECT_EQ(TextOf(Named("", "image/png"), "text"), "");
}

TEST(ItemTextsTest, TakesWhatCanBeRead) {
  BreakingSource torn;
  EXPECT_EQ(TextOfAttachment(Named("", "text/plain"), torn), "part");
  const std::string large(kMostCatalogueText + 10, 'x');
  EXPECT_EQ(TextOf(Named("", "text/plain"), large).size(), kMostCatalogueText);
  // Bytes of another charset grow as they become UTF-8.
  EXPECT_EQ(TextOf(Named("", "text/plain"), std::string(kMostCatalogueText, '\xE4')).size(),
            kMostCatalogueText);
}

TEST(ItemTextsTest, TakesThoseOfAnItem) {
  TextItem item;
  item.held.text = "the body";
  Attachment embedded = Named("inner.eml", "message/rfc822");
  embedded.kind = AttachmentKind::Item;
  item.add(Named("a.txt", "text/plain"), "first");
  item.add(embedded, "never read");
  item.add(Named("b.txt", "text/plain"), "missing");
  item.add(Named("c.png", "image/png"), "never read");
  CatalogueItem record;
  record.attachments.resize(7);
  TextTime time;
  TakeTexts(item, record, time);
  EXPECT_EQ(record.body, "the body");
  ASSERT_EQ(record.attachments.size(), 4U);
  EXPECT_EQ(record.attachments[0].index, 1U);
  EXPECT_EQ(record.attachments[0].name, "a.txt");
  EXPECT_EQ(record.attachments[0].text, "first");
  EXPECT_EQ(record.attachments[1].name, "inner.eml");
  EXPECT_EQ(record.attachments[1].text, "");
  EXPECT_EQ(record.attachments[2].text, "");
  EXPECT_EQ(record.attachments[3].index, 4U);
  EXPECT_EQ(record.attachments[3].text, "");
}

TEST(ItemTextsTest, TakesNoMoreOfAnItemThanItsLimit) {
  TextItem item;
  constexpr size_t kFiles = kMostItemText / kMostCatalogueText + 3;
  for (size_t file = 0; file < kFiles; ++file) {
    item.add(Named("a.txt", "text/plain"), std::string(kMostCatalogueText, 'x'));
  }
  CatalogueItem record;
  TextTime time;
  TakeTexts(item, record, time);
  ASSERT_EQ(record.attachments.size(), kFiles);
  size_t total = 0;
  for (const AttachmentText& attachment : record.attachments) total += attachment.text.size();
  EXPECT_EQ(total, kMostItemText);
  EXPECT_EQ(record.attachments.back().name, "a.txt");
}

TEST(ItemTextsTest, ReadsNothingMoreWhenNoTimeIsLeft) {
  TextItem item;
  item.held.text = "the body";
  item.add(Named("a.txt", "text/plain"), "first");
  CatalogueItem record;
  int beats = 0;
  TextTime time{std::chrono::milliseconds(0), [&] { ++beats; }};
  TakeTexts(item, record, time);
  EXPECT_EQ(record.body, "the body");
  EXPECT_EQ(record.attachments.at(0).text, "");
  EXPECT_EQ(beats, 1);
  time.left = std::chrono::hours(1);
  TakeTexts(item, record, time);
  EXPECT_EQ(record.attachments.at(0).text, "first");
  EXPECT_EQ(beats, 3);
}

TEST(ItemTextsTest, CutsALongBody) {
  TextItem item;
  item.held.text = std::string(kMostCatalogueText + 1, 'x');
  CatalogueItem record;
  TextTime time;
  TakeTexts(item, record, time);
  EXPECT_EQ(record.body.size(), kMostCatalogueText);
  EXPECT_TRUE(record.attachments.empty());
}

}  // namespace
}  // namespace tarn::archive

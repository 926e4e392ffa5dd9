#include "archive/pdf/JoinedPdf.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "ReadMailPdf.h"
#include "SmallPdf.h"
#include "archive/pdf/MailPdf.h"
#include "support/TempDirectory.h"

using namespace tarn::archive;
using namespace tarn::test;

namespace {

namespace fs = std::filesystem;

class JoinedPdfTest : public ::testing::Test {
 protected:
  PdfPart part(const std::string& pdf, const std::string& bookmark) {
    const fs::path path = folder_.path() / ("part" + std::to_string(++count_) + ".pdf");
    std::ofstream(path, std::ios::binary) << pdf;
    return {path.string(), bookmark};
  }

  std::string path() const { return (folder_.path() / "whole.pdf").string(); }

  std::string join(const std::vector<PdfPart>& parts, const std::string& title = "Inbox") {
    const std::optional<Trouble> trouble = JoinPdfs(parts, title, path());
    EXPECT_FALSE(trouble) << trouble->reason;
    std::ifstream file(path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  size_t filesInFolder() const {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
  }

 private:
  TempDirectory folder_;
  int count_ = 0;
};

TEST_F(JoinedPdfTest, HasThePagesOfAllWithABookmarkForEach) {
  const MailPdfFacts facts =
      ReadMailPdf(join({part(SmallPdf({"a1", "a2"}), "Ann \xC3\xA4"), part(SmallPdf({"b1"}), "Bob"),
                        part(SmallPdf({"c1", "c2", "c3"}), "")}));
  EXPECT_EQ(facts.contents, (std::vector<std::string>{"a1", "a2", "b1", "c1", "c2", "c3"}));
  ASSERT_EQ(facts.marks.size(), 3U);
  EXPECT_EQ(facts.marks[0].title, "Ann \xC3\xA4");
  EXPECT_EQ(facts.marks[0].page, 0U);
  EXPECT_EQ(facts.marks[1].title, "Bob");
  EXPECT_EQ(facts.marks[1].page, 2U);
  EXPECT_EQ(facts.marks[2].title, "");
  EXPECT_EQ(facts.marks[2].page, 3U);
  EXPECT_EQ(facts.pageMode, "/UseOutlines");
  EXPECT_EQ(facts.title, "Inbox");
}

TEST_F(JoinedPdfTest, PutsBookmarksBelowOthers) {
  std::vector<PdfPart> parts;
  // The depth of the first has nothing above it, that of the fourth not all that it could have.
  for (const size_t depth : {1U, 0U, 1U, 3U, 2U, 1U, 0U, 0U}) {
    const std::string name = std::to_string(parts.size());
    parts.push_back(part(SmallPdf({name}), name));
    parts.back().depth = depth;
  }
  const MailPdfFacts facts = ReadMailPdf(join(parts));
  std::vector<std::pair<std::string, size_t>> marks;
  for (const PdfMark& mark : facts.marks) {
    marks.emplace_back(mark.title, mark.depth);
    EXPECT_EQ(mark.title, facts.contents[mark.page]);
  }
  EXPECT_EQ(marks,
            (std::vector<std::pair<std::string, size_t>>{
                {"0", 0}, {"1", 0}, {"2", 1}, {"3", 2}, {"4", 2}, {"5", 1}, {"6", 0}, {"7", 0}}));
}

TEST_F(JoinedPdfTest, LeadsToPagesOfTheSamePart) {
  for (const InnerLinks links :
       {InnerLinks::Arrays, InnerLinks::Names, InnerLinks::Actions, InnerLinks::OldNames}) {
    const std::string pdf = SmallPdf({"1", "2", "3"}, links);
    const MailPdfFacts facts = ReadMailPdf(join({part(pdf, "a"), part(pdf, "b")}));
    EXPECT_EQ(facts.links, (std::vector<std::pair<size_t, size_t>>{{0, 2}, {3, 5}}))
        << static_cast<int>(links);
  }
}

std::string Mail(const std::string& text, InnerLinks links = InnerLinks::None) {
  const Outcome<MadePdf> made =
      MailPdf(SmallPdf({text, text + "-2"}, links), {},
              {{"message.eml", "message/rfc822", FileRelation::Mail, "mail " + text}});
  EXPECT_TRUE(made.ok());
  return made.ok() ? made->bytes : std::string();
}

TEST_F(JoinedPdfTest, HasTheFilesOfEachAtItsFirstPage) {
  const MailPdfFacts facts = ReadMailPdf(join({part(Mail("a"), "a"), part(Mail("b"), "b")}));
  ASSERT_EQ(facts.files.size(), 2U);
  EXPECT_EQ(facts.files[0].bytes, "mail a");
  EXPECT_EQ(facts.files[0].page, 0U);
  EXPECT_EQ(facts.files[1].bytes, "mail b");
  EXPECT_EQ(facts.files[1].page, 2U);
  EXPECT_EQ(facts.associated, 0U);
}

// So many that they are joined in groups first.
TEST_F(JoinedPdfTest, JoinsMoreThanAreOpenAtOnce) {
  constexpr size_t kParts = 150;
  std::vector<PdfPart> parts;
  for (size_t i = 0; i < kParts; ++i) {
    parts.push_back(part(Mail(std::to_string(i), InnerLinks::Names), "mail " + std::to_string(i)));
  }
  const MailPdfFacts facts = ReadMailPdf(join(parts));
  ASSERT_EQ(facts.contents.size(), 2 * kParts);
  ASSERT_EQ(facts.marks.size(), kParts);
  ASSERT_EQ(facts.files.size(), kParts);
  ASSERT_EQ(facts.links.size(), kParts);
  for (size_t i = 0; i < kParts; ++i) {
    EXPECT_EQ(facts.contents[2 * i], std::to_string(i));
    EXPECT_EQ(facts.marks[i].title, "mail " + std::to_string(i));
    EXPECT_EQ(facts.marks[i].page, 2 * i);
    EXPECT_EQ(facts.files[i].bytes, "mail " + std::to_string(i));
    EXPECT_EQ(facts.files[i].page, 2 * i);
    EXPECT_EQ(facts.links[i], std::make_pair(2 * i, 2 * i + 1));
  }
  EXPECT_EQ(filesInFolder(), kParts + 1);
}

TEST_F(JoinedPdfTest, IsTheSameForTheSameParts) {
  const std::vector<PdfPart> parts = {part(Mail("a"), "a"), part(Mail("b"), "b")};
  const std::string first = join(parts);
  EXPECT_EQ(join(parts), first);
  EXPECT_NE(join(parts, "Outbox"), first);
}

TEST_F(JoinedPdfTest, NamesThePartThatIsNoPdf) {
  const PdfPart bad = part("<html>", "b");
  const std::optional<Trouble> trouble =
      JoinPdfs({part(SmallPdf({"1"}), "a"), bad}, "Inbox", path());
  ASSERT_TRUE(trouble);
  EXPECT_EQ(trouble->kind, TroubleKind::Damaged);
  EXPECT_TRUE(trouble->reason.starts_with(bad.path + " cannot be joined to others: "));
  EXPECT_FALSE(fs::exists(path()));
}

TEST_F(JoinedPdfTest, SaysThatThereIsNoRoom) {
  const std::string nowhere = path() + "/x/whole.pdf";
  const std::optional<Trouble> trouble = JoinPdfs({part(SmallPdf({"1"}), "a")}, "Inbox", nowhere);
  ASSERT_TRUE(trouble);
  EXPECT_EQ(trouble->kind, TroubleKind::Unreadable);
  EXPECT_TRUE(trouble->reason.starts_with(nowhere + " cannot be written: "));
}

TEST_F(JoinedPdfTest, WritesADocumentOfNoParts) {
  EXPECT_TRUE(ReadMailPdf(join({})).contents.empty());
}

}  // namespace

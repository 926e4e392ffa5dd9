// Files that the system no longer gives: they are cut off after they were opened.
#include <filesystem>

#include "MailReading.h"
#include "ReaderWalk.h"

namespace tarn::archive {
namespace {

constexpr size_t kLength = 400000;

std::string LongMail() {
  return "Subject: long\nContent-Type: multipart/mixed; boundary=b\n\n--b\n\ntext\n--b\n"
         "Content-Type: a/b\n\n" +
         std::string(kLength, 'x') + "\n--b\nContent-Type: message/rfc822\n\nSubject: in\n\n" +
         std::string(kLength, 'y') + "\n--b--\n";
}

class UnreadableMailTest : public ::testing::Test {
 protected:
  std::filesystem::path write(const std::string& bytes) { return directory_.write("mail", bytes); }
  void cutOff() const { std::filesystem::resize_file(directory_.path() / "mail", 10); }

  test::TempDirectory directory_;
};

TEST_F(UnreadableMailTest, GivesWhatCouldBeReadOfAMail) {
  const auto reader = std::move(*OpenMail(write(LongMail())));
  const auto entry = reader->next();
  Item& item = *std::get<std::unique_ptr<Item>>(*entry);
  cutOff();
  EXPECT_EQ(item.fields(Detail::Headline).subject, "long");
  ASSERT_FALSE(item.troubles().empty());
  EXPECT_EQ(item.troubles()[0].kind, TroubleKind::Unreadable);
  const auto original = std::move(*item.original());
  EXPECT_FALSE(ReadAll(*original, size_t{1} << 26).ok());
}

TEST_F(UnreadableMailTest, TellsThatAnAttachmentEnds) {
  const auto reader = std::move(*OpenMail(write(LongMail())));
  const auto entry = reader->next();
  Item& item = *std::get<std::unique_ptr<Item>>(*entry);
  ASSERT_EQ(item.attachments().size(), 2u);
  cutOff();
  const auto source = item.open(0);
  ASSERT_TRUE(source.ok());
  const auto bytes = ReadAll(**source, size_t{1} << 26);
  ASSERT_FALSE(bytes.ok());
  EXPECT_EQ(bytes.trouble().kind, TroubleKind::Unreadable);
  EXPECT_FALSE(item.embedded(1).ok());
}

TEST_F(UnreadableMailTest, TellsThatHeadersEnd) {
  const auto reader = std::move(*OpenMail(write("Subject: " + std::string(kLength, 'x') + "\n\n")));
  const auto entry = reader->next();
  cutOff();
  EXPECT_FALSE(std::get<std::unique_ptr<Item>>(*entry)->originalHeaders().ok());
}

TEST_F(UnreadableMailTest, EndsAnMboxWithATrouble) {
  const std::string line = "From a@b.example Mon Jan  1 10:34:56 2024\n";
  const std::string mail = line + "Subject: a\n\nx\n\n";
  const std::string bytes =
      mail + line + "Subject: b\n\n" + std::string(kLength, 'x') + "\n\n" + line + "Subject: c\n\n";
  const auto reader = std::move(*OpenMbox(write(bytes)));
  cutOff();
  EXPECT_EQ(test::EntriesOf(*reader),
            (std::vector<std::string>{"0 a", std::to_string(mail.size()) +
                                                 ": the file cannot be read from byte 65536 on"}));
  EXPECT_EQ(reader->find(std::to_string(bytes.size() - 54)).trouble().kind,
            TroubleKind::Unreadable);
}

}  // namespace
}  // namespace tarn::archive

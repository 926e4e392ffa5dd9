// Reads every store below the folder that MAIL_CORPUS names, and compares what is in each with a
// table of digests, since the mails are those of others. What the table has was looked at once, as
// a list of subjects and names; besides, folders have as many items as they claim, and pictures and
// documents are whole.

#include <glib.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "StoreCorpusTable.h"
#include "archive/store/StoreReader.h"

namespace tarn::archive {
namespace {

std::string Sha256(const std::string& bytes) {
  char* const digest = g_compute_checksum_for_data(
      G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(bytes.data()), bytes.size());
  std::string text(digest);
  g_free(digest);
  return text;
}

// Pictures and documents begin and end as such do.
void ExpectWhole(const std::string& name, const std::string& bytes) {
  if (name.ends_with(".gif") || name.ends_with(".GIF")) {
    EXPECT_TRUE(bytes.starts_with("GIF8") && bytes.ends_with(';')) << name;
  } else if (name.ends_with(".docx")) {
    EXPECT_TRUE(bytes.starts_with("PK\x03\x04") && bytes.rfind("PK\x05\x06") == bytes.size() - 22);
  }
}

// Digests of the subject and of each attachment; an embedded item in brackets; troubles at the end.
std::string Describe(Item& item) {
  std::string text = Sha256(item.fields(Detail::Envelope).subject).substr(0, 8);
  const std::vector<Attachment> attachments = item.attachments();
  for (size_t index = 0; index < attachments.size(); ++index) {
    if (attachments[index].kind == AttachmentKind::Item) {
      const auto embedded = item.embedded(index);
      text += embedded ? " [" + Describe(**embedded) + "]" : embedded.trouble().reason;
      continue;
    }
    const auto source = item.open(index);
    const auto bytes = source ? ReadAll(**source, size_t{1} << 28) : source.trouble();
    text += " " + (bytes ? Sha256(*bytes).substr(0, 16) : bytes.trouble().reason);
    if (bytes) ExpectWhole(attachments[index].name, *bytes);
  }
  for (const Trouble& trouble : item.bodies().troubles) text += " ! " + trouble.reason;
  for (const Trouble& trouble : item.troubles()) text += " ! " + trouble.reason;
  return text;
}

// A line for every folder that has items, and for items in a row that look alike how many they are.
class Description {
 public:
  void folder(const FolderStart& start) {
    endFolder();
    declared_ = start.declaredItems.value_or(0);
    name_.clear();
    for (const std::string& name : *start.path) name_ += "/" + name;
  }

  void item(Item& item) {
    if (items_++ == 0) line(name_ + " " + item.place().id);
    // What a row tells is what the message tells.
    const std::string subject = item.fields(Detail::Headline).subject;
    const bool hasAttachments = item.fields(Detail::Headline).hasAttachments;
    line(Describe(item));
    EXPECT_EQ(subject, item.fields(Detail::Envelope).subject) << item.place().id;
    EXPECT_EQ(hasAttachments, item.fields(Detail::Envelope).hasAttachments) << item.place().id;
  }

  void line(const std::string& text) {
    if (text != last_) endLine();
    last_ = text;
    ++times_;
  }

  std::string end() {
    endFolder();
    endLine();
    return text_;
  }

 private:
  void endFolder() {
    EXPECT_EQ(items_, declared_) << name_;
    items_ = 0;
  }

  void endLine() {
    if (times_ != 0) text_ += (times_ == 1 ? "" : std::to_string(times_) + " x ") + last_ + "\n";
    times_ = 0;
  }

  std::string text_;
  std::string name_;
  std::string last_;
  uint64_t times_ = 0;
  uint64_t items_ = 0;
  uint64_t declared_ = 0;
};

std::string Describe(ItemReader& reader) {
  Description description;
  while (auto entry = reader.next()) {
    if (const auto* const folder = std::get_if<FolderStart>(&*entry)) {
      description.folder(*folder);
    } else if (const auto* const trouble = std::get_if<PlaceTrouble>(&*entry)) {
      description.line("! " + trouble->trouble.reason);
    } else {
      description.item(*std::get<std::unique_ptr<Item>>(*entry));
    }
  }
  return description.end();
}

TEST(StoreItemCorpus, EveryStore) {
  const char* const corpus = std::getenv("MAIL_CORPUS");
  if (corpus == nullptr) {
    std::cout << "MAIL_CORPUS names no folder of mail files; nothing to read\n";
    return;
  }
  size_t known = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    if (entry.path().extension() != ".pst") continue;
    const std::string name = entry.path().filename().string();
    SCOPED_TRACE(name);
    const auto reader = OpenStore(entry.path(), {.recover = true});
    ASSERT_TRUE(reader.ok());
    const std::string found = Describe(**reader);
    const auto expected = StoresOfCorpus().find(name);
    if (expected == StoresOfCorpus().end()) {
      std::cout << name << ":\n" << found;
      continue;
    }
    EXPECT_EQ(found, expected->second);
    ++known;
  }
  EXPECT_NE(known, 0U);
}

}  // namespace
}  // namespace tarn::archive

// Items that no contents table names, and how much memory a store takes.

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "StoreListing.h"
#include "support/KernelUsage.h"
#include "support/pst/StoreTemplates.h"

namespace tarn::test {
namespace {

using namespace archive;

constexpr uint16_t kSentRepresentingName = 0x0042;

PstNodeParts Message(PstLayout layout, std::u16string_view subject) {
  PropertyContextBuilder bag(layout);
  return bag.text(kPropMessageClass, u"IPM.Note").text(kPropSubject, subject).build();
}

TEST(StoreRecover, AddsWhatNoTableNamesInTheOrderOfTheIds) {
  for (const PstLayout layout : {PstLayout::Ansi, PstLayout::Unicode}) {
    StoreBuilder store(layout);
    FolderBuilder& inbox = store.folder("Inbox");
    inbox.message().subject(u"Listed").from(u"Ann");
    inbox.folder(u"Cut off").withoutRow().message().subject(u"Of a cut off folder").from(u"Ann");
    store.node(0x200804, Message(layout, u"Later"), inbox.nid());
    store.node(0x200404, Message(layout, u"Earlier"), 0x9999902);
    // Associated contents are no items.
    store.node(0x200428, Message(layout, u"Settings"), inbox.nid());
    const std::string listed =
        "folder Deleted Items: 0\n"
        "folder Inbox: 1\n"
        "200024 in Inbox: Listed\n";
    EXPECT_EQ(OpenedStore(store).listing(),
              listed + " in .! items that no folder lists and --recover adds: 3\n");
    EXPECT_EQ(OpenedStore(store, kRecover).listing(),
              listed +
                  "folder Recovered: ?\n"
                  "200044 in Recovered: Of a cut off folder\n"
                  "200404 in Recovered: Earlier\n"
                  "200804 in Recovered: Later\n");
    OpenedStore opened(store);
    EXPECT_EQ(*opened.find("200804")->place().folder, std::vector<std::string>{"Inbox"});
    EXPECT_EQ(*opened.find("200044")->place().folder,
              (std::vector<std::string>{"Inbox", "Cut off"}));
    EXPECT_EQ(*opened.find("200404")->place().folder, std::vector<std::string>());
    const auto known = std::make_shared<const std::vector<std::string>>(1, "Recovered");
    EXPECT_EQ((*opened.reader().findIn(known, "200044"))->place().folder, known);
    EXPECT_EQ(opened.reader().findIn(known, "200064").trouble().kind, TroubleKind::Missing);
  }
}

TEST(StoreRecover, AddsNothingToAStoreThatListsAll) {
  StoreBuilder store(PstLayout::Unicode);
  store.folder("Inbox").message().subject(u"Mail").from(u"Ann");
  EXPECT_EQ(OpenedStore(store, kRecover).listing(),
            "folder Deleted Items: 0\nfolder Inbox: 1\n200024 in Inbox: Mail\n");
}

// A store of so many mails in folders of 1,000, in a file.
std::filesystem::path LargeStore(const TempDirectory& folder, size_t mails) {
  const std::filesystem::path path = folder.path() / (std::to_string(mails) + ".pst");
  StoreBuilder store(StoreOptions{}, path);
  FolderBuilder* inbox = nullptr;
  for (size_t i = 0; i < mails; ++i) {
    if (i % 1000 == 0) inbox = &store.folder(u"Inbox");
    MessageBuilder& message = inbox->message().subject(u"Mail").body(std::string(600, 'x'));
    message.properties().text(kSentRepresentingName, u"Ann");
    if (i % 1000 == 0) message.attachment(u"a", std::string(10000, 'x'));
  }
  store.finish();
  return path;
}

// The most that a walk to the end takes beside what was there before. Of every fourth item all
// fields are asked for, which opens it.
uint64_t PeakOfWalk(const std::filesystem::path& path, size_t mails) {
  uint64_t most = 0;
  const uint64_t before = Usage().liveBytes;
  auto reader = OpenStore(path, kRecover);
  if (!reader) throw std::runtime_error(reader.trouble().reason);
  size_t items = 0;
  while (auto entry = (*reader)->next()) {
    EXPECT_FALSE(std::holds_alternative<PlaceTrouble>(*entry));
    if (auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry)) {
      const Detail detail = ++items % 4 == 0 ? Detail::Envelope : Detail::Headline;
      EXPECT_EQ((*item)->fields(detail).subject, "Mail");
    }
    most = std::max(most, Usage().liveBytes - before);
  }
  EXPECT_EQ(items, mails);
  return most;
}

TEST(StoreMemory, DoesNotGrowWithTheStore) {
  constexpr uint64_t kMegabyte = 1 << 20;
  const TempDirectory folder;
  const uint64_t peak = PeakOfWalk(LargeStore(folder, 20000), 20000);
  EXPECT_LT(peak, PeakOfWalk(LargeStore(folder, 2000), 2000) + 2 * kMegabyte);
  EXPECT_LT(peak, 16 * kMegabyte);
}

}  // namespace
}  // namespace tarn::test

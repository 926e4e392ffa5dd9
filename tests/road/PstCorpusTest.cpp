// Reads every message of every store below MAIL_CORPUS: nine languages in turn, both I/O modes,
// with and without the text flag, through all exports. The number of messages and which of them can
// be reached is compared with the store's own tables. What the messages become is compared with
// nothing; each must end in a documented status and leave nothing behind.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "Internal/Tarnclasses_.h"
#include "pststore/StoreObjects.h"
#include "support/FakeHost.h"
#include "support/LeakCheck.h"

namespace tarn::test {
namespace {

constexpr uint32_t kLanguages[] = {0x0409, 0x0407, 0x0418, 0x040C, 0x0411,
                                   0x0804, 0x0404, 0x0412, 0x2C01};

// What a store's folders and tables say.
struct Tables {
  int32_t claimed = 0;
  std::vector<pststore::ulong> messages;  // node ids in the order of the rows
  // Of each message: the attachments, a plain body, an HTML or RTF body.
  std::vector<uint64_t> attachments;
  std::vector<bool> texts;
  std::vector<bool> pages;
};

// The attachments of a message up to the first one without any name, where listing ends.
uint64_t CountNamedAttachments(const pststore::message& source) {
  uint64_t count = 0;
  if (pststore::get_attachment_count(source) == 0) return 0;
  const pststore::attachment_iterator end = pststore::attachment_end(source);
  for (auto at = pststore::attachment_begin(source); !(at == end); ++at) {
    const pststore::attachment item = pststore::make_attachment(at);
    const pststore::property_bag& bag = item.get_property_bag();
    if (!bag.prop_exists(0x3707) && !bag.prop_exists(0x3704)) break;
    ++count;
  }
  return count;
}

Tables ReadTables(const std::u16string& path) {
  using namespace pststore;
  Tables tables;
  const std::shared_ptr<db_context> store = open_database(path.c_str());
  const folder_iterator end = folder_end(store);
  for (folder_iterator at = folder_begin(store); at != end; ++at) {
    const folder entry = make_folder(at);
    if (entry.get_property_bag().read_prop<wstring>(0x3001) != u"Freebusy Data") {
      tables.claimed += static_cast<int32_t>(entry.get_property_bag().get_value_4(0x3602));
    }
    const pststore::table& contents = *get_contents_table(entry);
    for (pststore::ulong row = 0; row < contents.size(); ++row) {
      const pststore::ulong id = contents.get_impl().get_row_id(row);
      const property_bag bag(store->lookup_node(id));
      if (bag.prop_exists(0x37) && bag.read_prop<wstring>(0x37) == u"LocalFreebusy") continue;
      tables.messages.push_back(id);
      tables.attachments.push_back(CountNamedAttachments(message(property_bag(bag))));
      tables.texts.push_back(bag.prop_exists(0x1000));
      tables.pages.push_back(bag.prop_exists(0x1013) || bag.prop_exists(0x1009));
    }
  }
  return tables;
}

int documents = 0;
uint64_t attachmentsRead = 0;

void ReadDocuments(FakeHost& host, const Tables& tables, size_t index, const std::string& where) {
  for (const int32_t ioMode : {0, 3}) {
    for (const int32_t textOnly : {0, 1}) {
      PlainKernelSetIoMode(ioMode);
      PlainKernelSetLanguage(
          kLanguages[(index * 4 + (ioMode == 0 ? 0 : 2) + static_cast<size_t>(textOnly)) % 9]);
      host.calls.clear();
      host.infoContext->messageNumber = static_cast<int32_t>(index) + 1;
      host.infoContext->textOnly = textOnly;
      const int32_t status = host.info();
      const bool exists = textOnly != 0 ? tables.texts[index] : tables.pages[index];
      if (!exists) {
        EXPECT_EQ(status, StatusNotSupported) << where;
      } else {
        EXPECT_TRUE(status == StatusOk || status == StatusOutOfMemory || status == StatusFailed ||
                    status == StatusNotSupported)
            << status << where;
      }
      if (status == StatusOk) {
        EXPECT_EQ(Copy(host.hostInfo->messageCount), tables.claimed);
      }
      host.clearSlot();
      host.loadContext->messageNumber = static_cast<int32_t>(index) + 1;
      host.loadContext->textOnly = textOnly;
      EXPECT_EQ(host.load(), status) << where;
      EXPECT_EQ(host.directory().listing(), "mail") << where;
      if (status != StatusOk) continue;
      ++documents;
      ASSERT_EQ(host.calls.size(), 2u);
      EXPECT_EQ(host.calls[0].document, host.calls[1].document) << where;
    }
  }
}

void ReadAttachments(FakeHost& host, uint64_t count, size_t index, const std::string& where) {
  host.attachmentOptions->messageNumber = static_cast<int32_t>(index) + 1;
  ASSERT_EQ(host.attachmentInfo(), StatusOk) << where;
  AttachmentInfoBlock* const block = host.listContext->block;
  EXPECT_EQ(Copy(block->itemCount), count) << where;
  for (uint64_t i = 0; i < block->itemCount; ++i) {
    host.extractContext->data = nullptr;
    EXPECT_EQ(host.extract(static_cast<int32_t>(i + 1)), StatusOk) << where;
    if (host.extractContext->data == nullptr) continue;
    KernelFree(host.extractContext->data, TARN_HERE);
    ++attachmentsRead;
  }
  FreeAttachmentBlock(block);
}

void ReadStore(const std::filesystem::path& file) {
  const Tables tables = ReadTables(file.u16string());
  FakeHost host(ReadWholeFile(file));
  host.moreInfoOut.push_back({offsetof(HostFileInfo, messageCount), 4});
  if (tables.claimed < 1) {
    EXPECT_EQ(host.info(), StatusBadArgument) << file;
    EXPECT_EQ(host.attachmentInfo(), StatusBadArgument) << file;
    return;
  }
  for (size_t i = 0; i < tables.messages.size() && i < static_cast<size_t>(tables.claimed); ++i) {
    const std::string where = " " + file.string() + " message " + std::to_string(i + 1);
    ReadDocuments(host, tables, i, where);
    ReadAttachments(host, tables.attachments[i], i, where);
  }
  for (size_t i = tables.messages.size(); i < static_cast<size_t>(tables.claimed); ++i) {
    host.infoContext->messageNumber = static_cast<int32_t>(i) + 1;
    EXPECT_EQ(host.info(), StatusNotSupported) << file << i;
  }
}

TEST(PstCorpus, EveryMessageInEveryVariant) {
  const char* const corpus = std::getenv("MAIL_CORPUS");
  if (corpus == nullptr) {
    std::cout << "MAIL_CORPUS names no folder of mail files; nothing to read\n";
    return;
  }
  int files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    if (entry.path().extension() != ".pst") continue;
    ++files;
    ReadStore(entry.path());
  }
  std::cout << files << " stores, " << documents << " documents, " << attachmentsRead
            << " attachments\n";
}

}  // namespace
}  // namespace tarn::test

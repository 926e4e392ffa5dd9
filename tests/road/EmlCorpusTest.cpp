// Reads every mail file below the folder that MAIL_CORPUS names, in every variant: nine languages,
// both I/O modes, with and without the text flag, through all exports. What the files become is
// not compared with anything; each must end in a documented status and leave nothing behind.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "Internal/Tarnclasses_.h"
#include "support/FakeHost.h"
#include "support/LeakCheck.h"

namespace tarn::test {
namespace {

constexpr uint32_t kLanguages[] = {0x0409, 0x0407, 0x0418, 0x040C, 0x0411,
                                   0x0804, 0x0404, 0x0412, 0x2C01};

void ExpectStatus(int32_t status, const std::filesystem::path& file) {
  EXPECT_TRUE(status == StatusOk || status == StatusDone || status == StatusNotSupported ||
              status == StatusReadFailed || status == StatusFailed || status == StatusOutOfMemory ||
              status == StatusCreateFailed || status == StatusPathOverflow)
      << status << " " << file;
}

void ReadDocument(const std::string& mail, const std::filesystem::path& file, int32_t& documents) {
  for (const uint32_t language : kLanguages) {
    for (const int32_t ioMode : {0, 3}) {
      for (const int32_t textOnly : {0, 1}) {
        PlainKernelSetLanguage(language);
        PlainKernelSetIoMode(ioMode);
        FakeHost host(mail);
        host.infoContext->textOnly = textOnly;
        const int32_t status = host.info();
        ExpectStatus(status, file);
        host.clearSlot();
        host.loadContext->textOnly = textOnly;
        EXPECT_EQ(host.load(), status) << file;
        EXPECT_EQ(host.directory().listing(), "mail") << file;
        if (status != StatusOk) continue;
        ++documents;
        // Both calls make the same document.
        ASSERT_EQ(host.calls.size(), 2u);
        EXPECT_EQ(host.calls[0].document, host.calls[1].document) << file;
      }
    }
  }
}

void ReadAttachments(const std::string& mail, const std::filesystem::path& file,
                     uint64_t& attachments) {
  FakeHost host(mail);
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  const int32_t listed = host.attachmentInfo();
  ExpectStatus(listed, file);
  if (listed != StatusOk) {
    // A list that ends half way leaves what its items own.
    PlainKernelUsageRecord after = {};
    PlainKernelUsage(&after);
    AllowBlocksLeft(after.liveBlocks - before.liveBlocks);
    return;
  }
  AttachmentInfoBlock* const block = host.listContext->block;
  for (uint64_t i = 0; i < block->itemCount; ++i) {
    host.extractContext->data = nullptr;
    ASSERT_EQ(host.extract(static_cast<int32_t>(i + 1)), StatusOk) << file;
    EXPECT_EQ(Copy(host.extractContext->size), block->items[i].size) << file;
    if (host.extractContext->data != nullptr) KernelFree(host.extractContext->data, TARN_HERE);
    ++attachments;
  }
  FreeAttachmentBlock(block);
}

TEST(EmlCorpus, EveryMailInEveryVariant) {
  const char* const corpus = std::getenv("MAIL_CORPUS");
  if (corpus == nullptr) {
    std::cout << "MAIL_CORPUS names no folder of mail files; nothing to read\n";
    return;
  }
  int files = 0;
  int32_t documents = 0;
  uint64_t attachments = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    if (entry.path().extension() != ".eml") continue;
    ++files;
    const std::string mail = ReadWholeFile(entry.path());
    ReadDocument(mail, entry.path(), documents);
    ReadAttachments(mail, entry.path(), attachments);
  }
  std::cout << files << " mails, " << documents << " documents, " << attachments
            << " attachments\n";
  EXPECT_GT(files, 0);
  EXPECT_GT(documents, 0);
}

}  // namespace
}  // namespace tarn::test

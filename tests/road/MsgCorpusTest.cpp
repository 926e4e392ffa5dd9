// Reads every MSG file below the folder that MAIL_CORPUS names, in every variant: nine languages,
// both I/O modes, with and without the text flag, through all exports; extracts every attachment,
// and opens those that are messages again. What the files become is not compared with anything;
// each must end in a documented status and leave nothing behind.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "Internal/Tarnclasses_.h"
#include "support/FakeHost.h"

namespace tarn::test {
namespace {

constexpr uint32_t kLanguages[] = {0x0409, 0x0407, 0x0418, 0x040C, 0x0411,
                                   0x0804, 0x0404, 0x0412, 0x2C01};
constexpr std::string_view kMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

struct Counts {
  int files = 0;
  int documents = 0;
  int attachments = 0;
  int messages = 0;  // embedded ones that opened again
  int headless = 0;  // extracted with success, without a header
};

bool IsDocumented(int32_t status) {
  return status == StatusOk || status == StatusNotSupported || status == StatusOutOfMemory;
}

void ReadMessage(const std::string& mail, const std::string& where, Counts& counts);

void ReadDocuments(const std::string& mail, const std::string& where, Counts& counts) {
  for (const uint32_t language : kLanguages) {
    for (const int32_t ioMode : {0, 3}) {
      for (const int32_t textOnly : {0, 1}) {
        PlainKernelSetLanguage(language);
        PlainKernelSetIoMode(ioMode);
        FakeHost host(mail);
        host.infoContext->textOnly = textOnly;
        const int32_t status = host.info();
        EXPECT_TRUE(IsDocumented(status)) << status << " " << where;
        host.clearSlot();
        host.loadContext->textOnly = textOnly;
        EXPECT_EQ(host.load(), status) << where;
        EXPECT_EQ(host.directory().listing(), "mail") << where;
        if (status != StatusOk) continue;
        ++counts.documents;
        ASSERT_EQ(host.calls.size(), 2u);
        EXPECT_EQ(host.calls[0].document, host.calls[1].document) << where;
        EXPECT_FALSE(host.calls[0].document.empty()) << where;
      }
    }
  }
}

void ReadAttachments(const std::string& mail, const std::string& where, Counts& counts) {
  FakeHost host(mail);
  ASSERT_EQ(host.attachmentInfo(), StatusOk) << where;
  AttachmentInfoBlock* const block = host.listContext->block;
  EXPECT_EQ(block->format, FormatMsg);
  const uint64_t count = block->itemCount;
  FreeAttachmentBlock(block);
  const std::u16string path = host.directory().wide() + u"/out";
  for (uint64_t i = 1; i <= count; ++i) {
    const std::string place = where + " #" + std::to_string(i);
    host.extractContext->data = nullptr;
    ASSERT_EQ(host.extract(static_cast<int32_t>(i)), StatusOk) << place;
    void* const data = host.extractContext->data;
    ASSERT_NE(data, nullptr) << place;
    const std::string bytes(static_cast<const char*>(data), Copy(host.extractContext->size));
    KernelFree(data, TARN_HERE);
    ASSERT_EQ(host.extract(static_cast<int32_t>(i), path.c_str()), StatusOk) << place;
    EXPECT_EQ(ReadWholeFile(path), bytes) << place;
    ++counts.attachments;
    if (bytes.starts_with(kMagic)) {
      ++counts.messages;
      ReadMessage(bytes, place, counts);
    } else if (bytes.size() > 2048 && bytes.substr(0, 512) == std::string(512, '\0')) {
      ++counts.headless;
    }
  }
}

void ReadMessage(const std::string& mail, const std::string& where, Counts& counts) {
  ReadDocuments(mail, where, counts);
  ReadAttachments(mail, where, counts);
}

TEST(MsgCorpus, EveryMessageInEveryVariant) {
  const char* const corpus = std::getenv("MAIL_CORPUS");
  if (corpus == nullptr) {
    std::cout << "MAIL_CORPUS names no folder of mail files; nothing to read\n";
    return;
  }
  Counts counts;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
    if (entry.path().extension() != ".msg") continue;
    ++counts.files;
    ReadMessage(ReadWholeFile(entry.path()), entry.path().filename().string(), counts);
  }
  std::cout << counts.files << " files, " << counts.documents << " documents, "
            << counts.attachments << " attachments, " << counts.messages
            << " messages in messages, " << counts.headless << " without a header\n";
  EXPECT_GT(counts.files, 0);
  EXPECT_GE(counts.documents, counts.files * 18);
}

}  // namespace
}  // namespace tarn::test

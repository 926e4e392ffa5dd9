// summary.cpp - a host in C++: what each message of a mail file becomes, and its attachments.
//
//     summary MAIL
//
// Shows how to own what the filter hands out, how siblings take a document over, and how to catch
// what a damaged PST store throws through an export.
#include <TarnPst.h>
#include <Tarnbase/Kernel.h>

#include <cstdint>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Owners ------------------------------------------------------------------------------------------

struct FreeBlock {
  void operator()(void* block) const { KernelFree(block, __LINE__, u"summary.cpp"); }
};
template <typename T>
using Block = std::unique_ptr<T, FreeBlock>;

class File {
 public:
  explicit File(const std::u16string& path)
      : handle_(KernelFileOpen(path.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE)) {
    if (handle_ == KERNEL_BAD_HANDLE) throw std::runtime_error("cannot be opened");
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { KernelFileClose(handle_); }

  uint64_t handle() const { return handle_; }
  std::string contents() const {
    const uint64_t size = KernelFileSeek(handle_, 0, KERNEL_SEEK_END);
    KernelFileSeek(handle_, 0, KERNEL_SEEK_START);
    std::string bytes(size, '\0');
    if (KernelFileReadLarge(handle_, bytes.data(), size) != size) {
      throw std::runtime_error("cannot be read");
    }
    return bytes;
  }

 private:
  uint64_t handle_;
};

// Text --------------------------------------------------------------------------------------------

std::string Utf8(const char16_t* text) {
  const std::u16string_view wide(text);
  std::string utf8(3 * wide.size() + 1, '\0');
  utf8.resize(
      static_cast<size_t>(KernelWideToUtf8(wide.data(), static_cast<int64_t>(wide.size()),
                                           utf8.data(), static_cast<int64_t>(utf8.size()))));
  return utf8;
}

// Siblings ----------------------------------------------------------------------------------------

struct Document {
  int32_t kind = 0;  // TarnSibling
  std::string bytes;
};

// The filter calls siblings with no value of the host's, so that the thread remembers who asked.
thread_local Document* wanted = nullptr;

// Takes the document over in place of laying it out. Nothing may be thrown through the filter.
template <typename Read>
int32_t TakeDocument(void* info, Read read) {
  try {
    auto& answer = *static_cast<HostFileInfo*>(info);
    *wanted = {answer.format, read()};
    answer.pageCount = 1;
    answer.xResolution = answer.yResolution = 96;  // never 0
    return StatusOk;
  } catch (const std::exception&) {
    return StatusReadFailed;
  }
}

// HTML comes in a file, which is gone when the filter is done; inline images lie beside it.
int32_t InfoByName(const char16_t* path, void* info, int32_t, int32_t, void*) {
  return TakeDocument(info, [path] { return File(path).contents(); });
}

// RTF and text come from memory, perhaps with NULs behind them.
int32_t InfoFromMemory(const void* data, void* info, int32_t, uint64_t size, int32_t, void*) {
  return TakeDocument(info, [data, size] {
    std::string bytes(static_cast<const char*>(data), size);
    bytes.erase(bytes.find_last_not_of('\0') + 1);
    return bytes;
  });
}

// The host ----------------------------------------------------------------------------------------

void Check(int32_t status) {
  if (status != StatusOk) {
    throw std::runtime_error("the filter answered " + std::to_string(status));
  }
}

struct Message {
  Document document;
  int32_t messageCount = 1;
};

// The filter's status.
int32_t AskDocument(const std::u16string& path, int32_t number, int32_t textOnly,
                    Message& message) {
  const File file(path);
  HostFileInfo info = {};
  const HostLoadOptions options = {};
  FilterInfoContext context = {};
  context.path = path.c_str();
  context.handle = file.handle();
  context.info = &info;  // without a slot nothing is left behind
  context.options = &options;
  context.infoByName = InfoByName;
  context.infoFromMemory = InfoFromMemory;
  context.messageNumber = number;
  context.textOnly = textOnly;
  wanted = &message.document;
  const int32_t status = fltInfo(&context);
  if (status == StatusOk && info.format == FormatPst) message.messageCount = info.messageCount;
  return status;
}

Message ReadMessage(const std::u16string& path, int32_t number) {
  Message message;
  int32_t status = AskDocument(path, number, 0, message);
  // A message of a store with nothing but a plain body has to be asked for that.
  if (status == StatusNotSupported) status = AskDocument(path, number, 1, message);
  Check(status);
  return message;
}

struct Attachment {
  std::string name;
  uint64_t size = 0;
};

uint64_t ExtractedSize(const std::u16string& path, const AttachmentOptions& options,
                       int32_t number) {
  ExtractAttachmentContext context = {};
  context.path = path.c_str();
  context.attachmentNumber = number;
  context.options = &options;
  Check(fltExtractAttachment(&context));
  const Block<void> data(context.data);
  return context.size;
}

std::vector<Attachment> ListAttachments(const std::u16string& path, int32_t messageNumber) {
  AttachmentOptions options = {};
  options.messageNumber = messageNumber;
  GetAttachmentInfoContext context = {};
  context.path = path.c_str();
  context.options = &options;
  Check(fltGetAttachmentInfo(&context));

  const Block<AttachmentInfoBlock> block(context.block);
  const Block<AttachmentInfoItem> items(block->items);
  // Owned before anything else is done with them: what follows may throw.
  std::vector<Block<void>> owned;
  owned.reserve(3 * block->itemCount);
  for (uint64_t i = 0; i < block->itemCount; ++i) {
    owned.emplace_back(block->items[i].name);
    owned.emplace_back(block->items[i].description);
    owned.emplace_back(block->items[i].properties);
  }
  std::vector<Attachment> attachments;
  for (uint64_t i = 0; i < block->itemCount; ++i) {
    const AttachmentInfoItem& item = block->items[i];
    attachments.push_back({item.name == nullptr ? "(no name)" : Utf8(item.name),
                           ExtractedSize(path, options, static_cast<int32_t>(item.number))});
  }
  return attachments;
}

const char* KindName(int32_t kind) {
  return kind == SiblingHtml ? "HTML" : kind == SiblingRtf ? "RTF" : "text";
}

void PrintSummary(const std::u16string& path) {
  int32_t count = 1;
  for (int32_t number = 1; number <= count; ++number) {
    const Message message = ReadMessage(path, number);
    count = message.messageCount;
    std::cout << "message " << number << " of " << count << ": " << KindName(message.document.kind)
              << ", " << message.document.bytes.size() << " bytes\n";
    for (const Attachment& attachment : ListAttachments(path, number)) {
      std::cout << "  " << attachment.name << ", " << attachment.size << " bytes\n";
    }
  }
}

// The exit status.
int Summarize(const std::u16string& path) {
  try {
    PrintSummary(path);
    return 0;
  } catch (const std::exception& error) {
    // Ours, or a damaged store's: by now everything that the call held has been released.
    std::cerr << Utf8(path.c_str()) << ": " << error.what() << '\n';
    return 1;
  }
}

int Usage() {
  std::cerr << "usage: summary MAIL\n";
  return 2;
}

}  // namespace

#if defined(_WIN32)

// Windows gives arguments as UTF-16 here, which is what paths of the filter are.
int wmain(int argc, wchar_t** argv) {
  if (argc != 2) return Usage();
  const std::wstring_view path(argv[1]);
  return Summarize({path.begin(), path.end()});
}

#else

// Arguments are UTF-8 here.
static std::u16string Wide(const std::string& text) {
  std::u16string wide(text.size() + 1, u'\0');
  wide.resize(
      static_cast<size_t>(KernelUtf8ToWide(text.data(), static_cast<int64_t>(text.size()),
                                           wide.data(), static_cast<int64_t>(wide.size()))));
  return wide;
}

int main(int argc, char** argv) {
  if (argc != 2) return Usage();
  return Summarize(Wide(argv[1]));
}

#endif

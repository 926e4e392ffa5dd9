// MSG files inside the process: the document of a typical message of about 100 KB (the aim is less
// than a millisecond), against a plain copy of the file's bytes through the kernel; and a message
// of many small streams, with the reads that each of them takes.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "FileFormats/Pst/MsgDocument.h"
#include "msg/MsgStreams.h"
#include "support/RtfCompressor.h"
#include "support/msg/MsgBuilder.h"

namespace {

using tarn::test::MsgBuilder;

constexpr uint64_t kTime = 134397288000000000;

// A file in the temporary directory, gone with the object.
class MailFile {
 public:
  explicit MailFile(const std::string& bytes, const char* name = "MsgBench.msg")
      : path_(std::filesystem::temp_directory_path() / name), size_(bytes.size()) {
    std::ofstream(path_, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    wide_ = path_.u16string();
  }
  MailFile(const MailFile&) = delete;
  MailFile& operator=(const MailFile&) = delete;
  ~MailFile() { std::filesystem::remove(path_); }

  const char16_t* path() const { return wide_.c_str(); }
  size_t size() const { return size_; }

 private:
  std::filesystem::path path_;
  size_t size_;
  std::u16string wide_;
};

std::string Words(size_t bytes) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() < bytes) {
    for (uint64_t i = 2 + random() % 9; i > 0; --i) {
      text += static_cast<char>('a' + random() % 26);
    }
    text += random() % 12 == 0 ? "<br>\r\n" : " ";
  }
  return text;
}

std::u16string Wide(const std::string& text) { return {text.begin(), text.end()}; }

void AddFields(MsgBuilder& msg) {
  msg.text(0x0037, u"The figures of the quarter").text(0x0C1A, u"Clara Weber");
  msg.text(0x5D01, u"clara.weber@example.com").text(0x0E04, u"Daniel Okafor");
  msg.submitTime(kTime).importance(2);
  for (int i = 0; i < 5; ++i) msg.recipient(u"Daniel Okafor", u"daniel.okafor@example.org");
  // What mail programs add and the filter does not read.
  for (uint16_t id = 0x3000; id < 0x3040; ++id) msg.text(id, u"some property");
}

// HTML of 30 KB with an inline image of 20 KB, its text, and a document of 30 KB.
std::string HtmlMessage() {
  MsgBuilder msg;
  AddFields(msg);
  msg.binary(0x1013,
             "<html><head></head><body><img src=\"cid:a@x\">" + Words(30000) + "</body></html>");
  msg.text(0x1000, Wide(Words(5000)));
  msg.attachment(u"a.png", std::string(20000, 'i')).contentId(u"a@x");
  msg.attachment(u"b.pdf", std::string(30000, 'p'));
  return msg.write();
}

// The same with RTF that wraps the HTML.
std::string RtfMessage() {
  MsgBuilder msg;
  AddFields(msg);
  msg.binary(0x1009, tarn::test::PackRtf(
                         "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 {\\fonttbl{\\f0 Arial;}}\r\n"
                         "{\\*\\htmltag64 <html><body>}" +
                         Words(40000) + "{\\*\\htmltag72 </body></html>}}"));
  msg.text(0x1000, Wide(Words(5000)));
  msg.attachment(u"b.pdf", std::string(50000, 'p'));
  return msg.write();
}

void MakeDocuments(benchmark::State& state, const std::string& bytes, bool textOnly) {
  const MailFile file(bytes);
  for (auto _ : state) {
    tarn::PstFilterData data;
    tarn::DocumentRequest request;
    request.path = file.path();
    request.textOnly = textOnly;
    tarn::DocumentResult result;
    if (!ReadMsgDocument(request, data, result).ok()) std::abort();
    benchmark::DoNotOptimize(data.document.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(file.size()) * state.iterations());
}

void HtmlDocument(benchmark::State& state) { MakeDocuments(state, HtmlMessage(), false); }
void RtfDocument(benchmark::State& state) { MakeDocuments(state, RtfMessage(), false); }
void TextDocument(benchmark::State& state) { MakeDocuments(state, HtmlMessage(), true); }

// Opening, reading and closing the file of the HTML message, and nothing else.
void ReadFile(benchmark::State& state) {
  const MailFile file(HtmlMessage());
  std::string buffer(file.size(), '\0');
  for (auto _ : state) {
    const uint64_t handle = KernelFileOpen(file.path(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
    if (KernelFileReadLarge(handle, buffer.data(), buffer.size()) != buffer.size()) std::abort();
    KernelFileClose(handle);
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(file.size()) * state.iterations());
}

// All properties of a message of a thousand streams of 100 bytes, in the order of the listing.
void SmallStreams(benchmark::State& state) {
  constexpr int kStreams = 1000;
  MsgBuilder msg;
  for (uint16_t i = 0; i < kStreams; ++i) {
    msg.text8(static_cast<uint16_t>(0x4000 + i), std::string(100, 't'));
  }
  const MailFile file(msg.write());
  for (auto _ : state) {
    const uint64_t handle = KernelFileOpen(file.path(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
    {
      tarn::CompoundFile compound = tarn::CompoundFile::open(handle);
      tarn::CompoundStorage storage{&compound};
      for (const auto& name : ListEntryNames(storage, "/")) {
        tarn::SizedBytes bytes;
        if (ReadMsgStream(storage, name, bytes).failed()) std::abort();
        benchmark::DoNotOptimize(bytes.data());
      }
    }
    KernelFileClose(handle);
  }
  state.SetItemsProcessed(kStreams * state.iterations());
}

constexpr size_t kLarge = 50 << 20;

bool WriteFile(const char16_t* path, const char* bytes, uint64_t size) {
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_CREATE, KERNEL_OPEN_MODE);
  const bool written = KernelFileWriteLarge(handle, bytes, size) == size;
  KernelFileClose(handle);
  return written;
}

void ExtractLarge(benchmark::State& state) {
  MsgBuilder msg;
  msg.attachment(u"large.bin", std::string(kLarge, 'x'));
  const MailFile file(msg.write());
  const MailFile target("", "MsgBench.out");
  const tarn::AttachmentRequest request = {
      1, false,
      [](void* user, tarn::TrackedBuffer<char>* data, const char16_t*,
         tarn::PropertyList*) -> tarn::Status {
        const auto* const path = static_cast<const MailFile*>(user)->path();
        return WriteFile(path, data->data(), data->length()) ? StatusOk : StatusWriteFailed;
      },
      const_cast<MailFile*>(&target)};
  for (auto _ : state) {
    tarn::PstFilterData data;
    tarn::DocumentRequest wanted;
    wanted.path = file.path();
    wanted.attachments = &request;
    tarn::DocumentResult none;
    if (!ReadMsgDocument(wanted, data, none).ok()) std::abort();
  }
  state.SetBytesProcessed(static_cast<int64_t>(kLarge) * state.iterations());
}

void CopyLarge(benchmark::State& state) {
  const MailFile file(std::string(kLarge, 'x'));
  const MailFile target("", "MsgBench.out");
  std::string buffer(1 << 20, '\0');
  for (auto _ : state) {
    const uint64_t from = KernelFileOpen(file.path(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
    const uint64_t to = KernelFileOpen(target.path(), KERNEL_OPEN_CREATE, KERNEL_OPEN_MODE);
    while (const uint64_t read = KernelFileReadLarge(from, buffer.data(), buffer.size())) {
      if (KernelFileWriteLarge(to, buffer.data(), read) != read) std::abort();
    }
    KernelFileClose(to);
    KernelFileClose(from);
  }
  state.SetBytesProcessed(static_cast<int64_t>(kLarge) * state.iterations());
}

BENCHMARK(HtmlDocument)->Unit(benchmark::kMicrosecond);
BENCHMARK(RtfDocument)->Unit(benchmark::kMicrosecond);
BENCHMARK(TextDocument)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadFile)->Unit(benchmark::kMicrosecond);
BENCHMARK(SmallStreams)->Unit(benchmark::kMicrosecond);
BENCHMARK(ExtractLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(CopyLarge)->Unit(benchmark::kMillisecond);

}  // namespace

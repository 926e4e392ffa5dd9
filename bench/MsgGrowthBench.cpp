// MSG files with n, 2n and 4n attachments: their list, the images among them put into the body, in
// memory and as files, and an embedded message of as many, written as a file of its own. The
// storages hang together as a balanced tree or as one list.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "FileFormats/Pst/MsgDocument.h"
#include "Growth.h"
#include "support/msg/MsgBuilder.h"

namespace {

using tarn::bench::MeasureGrowth;
using tarn::test::CompoundOptions;
using tarn::test::MsgBuilder;
using tarn::test::SiblingShape;

constexpr int kFewest = 1000;

std::filesystem::path Folder() { return std::filesystem::temp_directory_path() / "MsgGrowthBench"; }

void AddImages(MsgBuilder& msg, int count) {
  const std::string image(100, 'i');
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(100000 + i);
    const std::u16string wide(number.begin(), number.end());
    msg.attachment(u"image" + wide + u".png", image).contentId(u"id" + wide).mimeType(u"image/png");
  }
}

// Images that the body refers to in their order.
std::string Mail(int count, const CompoundOptions& options) {
  MsgBuilder msg;
  AddImages(msg, count);
  std::string html = "<html><body>";
  for (int i = 0; i < count; ++i) {
    html += "<img src=\"cid:id" + std::to_string(100000 + i) + "\">\r\n";
  }
  msg.text(0x0037, u"Images").binary(0x1013, html + "</body></html>");
  return msg.write(options);
}

// A message with such images as the only attachment.
std::string Wrapper(int count, const CompoundOptions& options) {
  MsgBuilder msg;
  AddImages(msg.attachment().text(0x3707, u"inner.msg").embedded(), count);
  return msg.write(options);
}

// The files of n, 2n and 4n attachments, gone with the object.
class Files {
 public:
  using Maker = std::string (*)(int, const CompoundOptions&);

  Files(Maker make, SiblingShape shape) {
    std::filesystem::create_directories(Folder());
    CompoundOptions options;
    options.shape = shape;
    for (size_t i = 0; i < paths_.size(); ++i) {
      const std::filesystem::path path = Folder() / (std::to_string(i) + ".msg");
      const std::string bytes = make(kFewest << i, options);
      std::ofstream(path, std::ios::binary)
          .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
      paths_[i] = path.u16string();
    }
  }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;
  ~Files() { std::filesystem::remove_all(Folder()); }

  const char16_t* operator[](size_t size) const { return paths_[size].c_str(); }

 private:
  std::array<std::u16string, 3> paths_;
};

tarn::Status CountCall(void* calls, tarn::TrackedBuffer<char>*, const char16_t*,
                       tarn::PropertyList*) {
  ++*static_cast<int*>(calls);
  return StatusOk;
}

void Walk(const char16_t* path, bool infoOnly, int expected) {
  int calls = 0;
  const tarn::AttachmentRequest request = {tarn::kAllAttachments, infoOnly, CountCall, &calls};
  tarn::PstFilterData data;
  tarn::DocumentRequest wanted;
  wanted.path = path;
  wanted.attachments = &request;
  tarn::DocumentResult none;
  if (!ReadMsgDocument(wanted, data, none).ok()) std::abort();
  if (calls != expected) std::abort();
}

void List(benchmark::State& state, SiblingShape shape) {
  const Files files(Mail, shape);
  MeasureGrowth(state, [&](size_t size) { Walk(files[size], true, kFewest << size); });
}

void Embedded(benchmark::State& state, SiblingShape shape) {
  const Files files(Wrapper, shape);
  MeasureGrowth(state, [&](size_t size) { Walk(files[size], false, 1); });
}

void Images(benchmark::State& state, SiblingShape shape, bool toFiles) {
  const Files files(Mail, shape);
  MeasureGrowth(state, [&](size_t size) {
    std::filesystem::path folder;
    {
      tarn::PstFilterData data;
      data.useTempFile = toFiles;
      tarn::DocumentRequest request;
      request.path = files[size];
      tarn::DocumentResult result;
      if (!ReadMsgDocument(request, data, result).ok()) std::abort();
      if (!data.attachmentStatus.ok()) std::abort();
      std::u16string name = data.tempDirectory;
      while (name.ends_with(u'\\')) name.pop_back();
      folder = name;
    }
    if (!folder.empty()) std::filesystem::remove_all(folder);
  });
}

BENCHMARK_CAPTURE(List, balanced, SiblingShape::Balanced)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(List, asList, SiblingShape::RightList)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Embedded, balanced, SiblingShape::Balanced)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Embedded, asList, SiblingShape::RightList)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Images, inMemory, SiblingShape::Balanced, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Images, asFiles, SiblingShape::Balanced, true)->Unit(benchmark::kMillisecond);

}  // namespace

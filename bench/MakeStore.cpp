// MakeStore FILE [MESSAGES [MEGABYTES]]: writes a store for measurements, 20,000 messages in about
// 400 MB unless told otherwise. Bodies have 2 to 50 KB in equal shares of HTML and compressed RTF;
// they hold text that packs about as well as mail does, and the same numbers give the same file.
// The first and the last message have HTML. Contents tables have what a list shows of a message.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

#include "support/RtfCompressor.h"
#include "support/pst/StoreBuilder.h"

namespace {

using tarn::test::FolderBuilder;
using tarn::test::StoreBuilder;

constexpr const char* kWords[] = {
    "meeting", "about", "the",       "quarterly", "figures",  "please",   "find",  "report",
    "below",   "and",   "regarding", "thanks",    "tomorrow", "schedule", "draft", "version"};

constexpr uint16_t kSentRepresentingName = 0x0042;
constexpr uint16_t kDeliveryTime = 0x0E06;

class Texts {
 public:
  std::string words(size_t size) {
    std::string text;
    text.reserve(size + 32);
    while (text.size() < size) {
      text += kWords[generator_() % std::size(kWords)];
      text += generator_() % 4 == 0 ? std::to_string(generator_() % 100000) + " " : " ";
    }
    return text;
  }
  size_t size(size_t least, size_t most) { return least + generator_() % (most - least + 1); }

 private:
  std::mt19937 generator_{4711};
};

void WriteStore(const char* path, uint64_t messages, uint64_t megabytes) {
  tarn::test::StoreOptions options;
  options.file.encoding = tarn::test::PstEncoding::Permute;
  StoreBuilder store(options, path);
  Texts texts;
  FolderBuilder* folder = nullptr;
  // One message in eight has 40 KB on the average, so that sizes spread; the others make it up.
  // Compressed RTF comes to less than the size asked for: a fifth more makes up for that.
  const uint64_t average = megabytes * 1200000 / messages;
  const uint64_t ofOthers = average > 5000 ? (average - 5000) * 8 / 7 : 0;
  const uint64_t most = std::max<uint64_t>(2 * ofOthers, 4100) - 2000;
  for (uint64_t i = 0; i < messages; ++i) {
    if (i % 1000 == 0) folder = &store.folder("Folder " + std::to_string(i / 1000));
    const size_t size = i % 8 == 7 ? texts.size(30000, 50000) : texts.size(2000, most);
    auto& message = folder->message();
    message.subject(u"Message").from(u"Ann").to(u"Bob").submitTime(132539328000000000 + i);
    message.properties().text(kSentRepresentingName, u"Ann");
    message.properties().time(kDeliveryTime, 132539328010000000 + i);
    message.properties().number(tarn::test::kPropMessageSize, tarn::test::kTypeInt32, size);
    if (i % 2 == 0 || i + 1 == messages) {
      message.html("<html><body><p>" + texts.words(size) + "</p></body></html>");
    } else {
      // Packed to about half.
      message.rtf(tarn::test::PackRtf("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\pard " +
                                      texts.words(2 * size) + "\\par}"));
    }
  }
  store.finish();
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::cerr << "usage: MakeStore FILE [MESSAGES [MEGABYTES]]\n";
    return 2;
  }
  WriteStore(arguments[1], count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 20000,
             count > 3 ? std::strtoull(arguments[3], nullptr, 10) : 400);
}

// MakeCatalogue DIR COUNT - the catalogue and the page of an export of so many mails with texts of
// some 200 words, out of 20,000 different ones that are as common as those of a language.
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "archive/catalogue/Catalogue.h"
#include "archive/catalogue/IndexWriter.h"

namespace {

using tarn::archive::CatalogueItem;

// The same words each time.
class Words {
 public:
  // A word of a rank that is the rarer the higher it is.
  std::string next() {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    const double part = static_cast<double>(state_ >> 33) / 2147483648.0;
    return "w" + std::to_string(static_cast<unsigned>(std::pow(20000.0, part)));
  }

 private:
  uint64_t state_ = 1;
};

CatalogueItem ItemOf(size_t number, Words& words) {
  CatalogueItem item;
  item.source = "/mail/box.pst";
  item.id = std::to_string(number);
  item.folder = {"Top", "Folder " + std::to_string(number % 50)};
  item.fields.messageClass = "IPM.Note";
  for (int each = 0; each < 5; ++each) item.fields.subject += words.next() + ' ';
  item.fields.from = {"Sender " + std::to_string(number % 500),
                      "s" + std::to_string(number % 500) + "@example.com"};
  item.fields.to = {{"Receiver", "receiver@example.com"}};
  item.fields.sent = tarn::archive::Moment{1500000000 + static_cast<int64_t>(number) * 600, 60};
  item.files = {{"box/" + item.id + "/message.html", "html", 4000, std::string(64, 'a'), "", 0}};
  for (int each = 0; each < 200; ++each) item.body += words.next() + ' ';
  return item;
}

double Since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::filesystem::path directory = argv[1];
  auto catalogue =
      tarn::archive::CatalogueWriter::create(directory / tarn::archive::kCatalogueName);
  auto index = tarn::archive::IndexWriter::create(directory);
  if (!catalogue || !index) return 1;
  Words words;
  const size_t count = std::strtoul(argv[2], nullptr, 10);
  double inCatalogue = 0;
  double inIndex = 0;
  for (size_t number = 0; number < count; ++number) {
    const CatalogueItem item = ItemOf(number, words);
    auto start = std::chrono::steady_clock::now();
    if ((*catalogue)->add(item)) return 1;
    inCatalogue += Since(start);
    start = std::chrono::steady_clock::now();
    if ((*index)->add(item)) return 1;
    inIndex += Since(start);
  }
  auto start = std::chrono::steady_clock::now();
  if ((*catalogue)->finish()) return 1;
  inCatalogue += Since(start);
  start = std::chrono::steady_clock::now();
  if ((*index)->finish()) return 1;
  inIndex += Since(start);
  std::printf("catalogue %.2f s, page %.2f s\n", inCatalogue, inIndex);
}

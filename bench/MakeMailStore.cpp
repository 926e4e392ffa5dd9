// MakeMailStore FILE [MESSAGES [MEGABYTES [PDFS]]]: writes a store as people have them, 20,000
// messages in about 400 MB unless told otherwise. The same numbers give the same file.
//
//   Text     1.3 KB at the median and 3 KB on the average, at most 100 KB, in lines of some 70
//            characters. Its words are drawn from 200,000, as often as those of a language: the
//            most common is every eighteenth one, and half of all are among the 450 most common.
//            One word in forty is a number of up to nine digits.
//   Form     70 of 100 messages have HTML, with 4 KB of styles and an element with attributes
//            around every line; 15 have compressed RTF, 15 plain text alone.
//   Files    Every fourth message has one to three. They are what is left of the size, each of
//            a size between a sixteenth and four times their average. Of 100 there are 50 pictures,
//            30 documents of office programs and archives, 12 of text (csv, txt, html; at most 50
//            KB), and 8 PDFs, with a page of text for each 40 KB, where PDFS is 1, which it is
//            unless told otherwise; else there are pictures in their place.
//
// Text that is searched is about a fifth of such a store. (MakeStore writes bodies alone, and of
// those more text than the store has bytes.)

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/RtfCompressor.h"
#include "support/pst/StoreBuilder.h"

namespace {

using tarn::test::FolderBuilder;
using tarn::test::MessageBuilder;
using tarn::test::StoreBuilder;

constexpr uint16_t kSentRepresentingName = 0x0042;
constexpr uint16_t kDeliveryTime = 0x0E06;
constexpr uint64_t kBeginning = 132539328000000000;  // 2020-12-31, as a file time
constexpr uint64_t kTenMinutes = 6000000000;

class Texts {
 public:
  Texts() {
    words_.reserve(kWords);
    while (words_.size() < kWords) words_.push_back(newWord());
  }

  uint64_t below(uint64_t end) { return generator_() % end; }
  double part() { return static_cast<double>(generator_()) / 4294967296.0; }

  // Lines of words, about so many bytes together.
  std::vector<std::string> lines(size_t size) {
    std::vector<std::string> lines(1);
    size_t total = 0;
    while (total < size) {
      const size_t before = lines.back().size();
      appendWord(lines.back());
      total += lines.back().size() - before;
      if (lines.back().size() >= kLine) lines.emplace_back();
    }
    return lines;
  }

  std::string words(size_t count) {
    std::string text;
    while (count-- != 0) appendWord(text);
    text.pop_back();
    return text;
  }

  // Sizes of texts: the logarithms are spread as a bell is.
  size_t textSize() {
    double sum = 0;
    for (int each = 0; each < 12; ++each) sum += part();
    const double size = 1300.0 * std::exp((sum - 6.0) * 1.3);
    return static_cast<size_t>(std::min(std::max(size, 40.0), 100000.0));
  }

  std::string noise(size_t size) {
    std::string bytes;
    bytes.reserve(size + sizeof(uint32_t));
    while (bytes.size() < size) {
      const auto number = static_cast<uint32_t>(generator_());
      bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    }
    bytes.resize(size);
    return bytes;
  }

 private:
  static constexpr size_t kWords = 200000;
  static constexpr size_t kLine = 70;

  std::string newWord() {
    static constexpr std::string_view kVowels = "eaoiu";
    static constexpr std::string_view kOthers = "tnsrhldcmfpgwybvkxjqz";
    // The more words there are, the longer.
    const size_t rank = words_.size();
    const size_t length = rank < 20 ? 2 : rank < 400 ? 2 + below(4) : 4 + below(8);
    std::string word;
    for (size_t at = 0; at < length; ++at) {
      const std::string_view from = (at + rank) % 2 == 0 ? kOthers : kVowels;
      word += from[std::min(below(from.size()), below(from.size()))];
    }
    return word;
  }

  // The chance of a rank falls as 1 / rank does.
  void appendWord(std::string& text) {
    if (below(40) == 0) {
      text += std::to_string(below(below(3) == 0 ? 1000000000 : 5000));
    } else {
      const auto rank = static_cast<size_t>(std::pow(static_cast<double>(kWords), part())) - 1;
      const size_t begin = text.size();
      text += words_[rank];
      if (below(12) == 0) text[begin] = static_cast<char>(text[begin] - 'a' + 'A');
    }
    const uint64_t sign = below(24);
    if (sign < 2) text += ',';
    if (sign == 2) text += '.';
    text += ' ';
  }

  std::mt19937 generator_{4711};
  std::vector<std::string> words_;
};

std::string Joined(const std::vector<std::string>& lines, std::string_view before,
                   std::string_view after) {
  std::string text;
  for (const std::string& line : lines) text.append(before).append(line).append(after);
  return text;
}

std::string StylesOfHtml() {
  std::string styles = "<style>\r\n<!--\r\n";
  for (int each = 1; styles.size() < 4000; ++each) {
    styles += "p.text" + std::to_string(each) +
              ", li.text, div.text {margin:0cm; margin-bottom:.0001pt; font-size:11.0pt; "
              "font-family:\"Arial\",sans-serif; color:windowtext;}\r\n";
  }
  return styles + "-->\r\n</style>";
}

std::string Html(const std::vector<std::string>& lines) {
  static const std::string styles = StylesOfHtml();
  return "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\r\n" +
         styles + "</head>\r\n<body lang=\"EN-GB\" link=\"blue\" vlink=\"purple\">\r\n" +
         Joined(lines, "<p class=\"text1\"><span style='font-family:\"Arial\",sans-serif'>",
                "</span></p>\r\n") +
         "</body></html>";
}

// Pages of text, and bytes that no page draws as those of a picture.
class Pdf {
 public:
  Pdf(Texts& texts, size_t size) {
    const size_t pages = 1 + size / 40000;
    std::string kids;
    for (size_t page = 0; page < pages; ++page) {
      kids += std::to_string(4 + 2 * page) + " 0 R ";
    }
    object("<</Type/Catalog/Pages 2 0 R>>");
    object("<</Type/Pages/Count " + std::to_string(pages) + "/Kids[" + kids + "]>>");
    object("<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>");
    for (size_t page = 0; page < pages; ++page) {
      object(
          "<</Type/Page/Parent 2 0 R/MediaBox[0 0 595 842]/Resources<</Font<</F 3 0 R>>>>"
          "/Contents " +
          std::to_string(5 + 2 * page) + " 0 R>>");
      stream("", "BT /F 10 Tf 12 TL 50 790 Td\n" + Joined(texts.lines(2500), "(", ") ' \n") + "ET");
    }
    const size_t rest = size > bytes_.size() + 500 ? size - bytes_.size() - 500 : 100;
    stream(
        "/Type/XObject/Subtype/Image/Filter/DCTDecode/Width 1000/Height 1000"
        "/ColorSpace/DeviceRGB/BitsPerComponent 8",
        texts.noise(rest));
    finish();
  }

  const std::string& bytes() const { return bytes_; }

 private:
  void object(const std::string& content) {
    places_.push_back(bytes_.size());
    bytes_ += std::to_string(places_.size()) + " 0 obj\n" + content + "\nendobj\n";
  }
  void stream(const std::string& keys, const std::string& content) {
    object("<<" + keys + "/Length " + std::to_string(content.size()) + ">>\nstream\n" + content +
           "\nendstream");
  }
  void finish() {
    const size_t table = bytes_.size();
    const std::string count = std::to_string(places_.size() + 1);
    bytes_ += "xref\n0 " + count + "\n0000000000 65535 f \n";
    for (const size_t place : places_) {
      const std::string digits = std::to_string(place);
      bytes_ += std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
    }
    bytes_ += "trailer\n<</Root 1 0 R/Size " + count + ">>\nstartxref\n" + std::to_string(table) +
              "\n%%EOF\n";
  }

  std::string bytes_ = "%PDF-1.4\n";
  std::vector<size_t> places_;
};

struct Attached {
  std::u16string name;
  std::string bytes;
};

Attached NewFile(Texts& texts, size_t size, bool hasPdfs) {
  static constexpr std::array<const char16_t*, 4> kPictures = {u"image001.png", u"photo.jpg",
                                                               u"logo.gif", u"scan.jpg"};
  static constexpr std::array<const char16_t*, 4> kDocuments = {u"report.docx", u"figures.xlsx",
                                                                u"slides.pptx", u"all.zip"};
  const uint64_t drawn = texts.below(100);
  const uint64_t one = texts.below(4);
  if (drawn < 12) {
    const std::vector<std::string> lines = texts.lines(std::min<size_t>(size, 50000));
    if (one == 0) return {u"table.html", Html(lines)};
    return {one == 1 ? u"notes.txt" : u"figures.csv", Joined(lines, "", ",\r\n")};
  }
  if (drawn < 42) return {kDocuments[one], "PK\3\4" + texts.noise(size)};
  if (drawn < 50 && hasPdfs) return {u"invoice.pdf", Pdf(texts, size).bytes()};
  return {kPictures[one], "\x89" + texts.noise(size)};
}

class MailStore {
 public:
  MailStore(const char* path, uint64_t messages, uint64_t megabytes, bool hasPdfs)
      : messages_(messages), hasPdfs_(hasPdfs), store_(options(), path) {
    // Bodies come to about 9.5 KB each with what the store has beside them, and there is half a
    // file for each message.
    const uint64_t each = megabytes * 1000000 / messages;
    fileSize_ = each > 12000 ? (each - 9500) * 2 : 5000;
  }

  void write() {
    FolderBuilder* folder = nullptr;
    for (uint64_t number = 0; number < messages_; ++number) {
      if (number % 1000 == 0) folder = &store_.folder("Folder " + std::to_string(number / 1000));
      writeMessage(folder->message(), number);
    }
    store_.finish();
  }

 private:
  static tarn::test::StoreOptions options() {
    tarn::test::StoreOptions options;
    options.file.encoding = tarn::test::PstEncoding::Permute;
    return options;
  }

  void writeMessage(MessageBuilder& message, uint64_t number) {
    const std::string subject = texts_.words(3 + texts_.below(6));
    message.subject(std::u16string(subject.begin(), subject.end()));
    const std::string sender = "Person " + std::to_string(texts_.below(400));
    const std::u16string name(sender.begin(), sender.end());
    message.from(name).to(u"Bob").submitTime(kBeginning + number * kTenMinutes);
    const size_t size = texts_.textSize();
    message.properties().text(kSentRepresentingName, std::u16string_view(name));
    message.properties().time(kDeliveryTime, kBeginning + number * kTenMinutes);
    message.properties().number(tarn::test::kPropMessageSize, tarn::test::kTypeInt32, size);
    addBody(message, texts_.lines(size));
    if (number % 4 == 3) addFiles(message);
  }

  void addBody(MessageBuilder& message, const std::vector<std::string>& lines) {
    const uint64_t drawn = texts_.below(100);
    if (drawn < 70) {
      message.html(Html(lines));
    } else if (drawn < 85) {
      message.rtf(tarn::test::PackRtf("{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}" +
                                      Joined(lines, "\\pard ", "\\par\r\n") + "}"));
    } else {
      const std::string text = Joined(lines, "", "\r\n");
      message.body(std::u16string(text.begin(), text.end()));
    }
  }

  void addFiles(MessageBuilder& message) {
    for (uint64_t left = 1 + texts_.below(3); left != 0; --left) {
      // These powers are 0.95 on the average.
      const double part = std::pow(2.0, texts_.part() * 6.0 - 4.0) / 0.95;
      const auto size = static_cast<size_t>(static_cast<double>(fileSize_) * part);
      const Attached file = NewFile(texts_, size, hasPdfs_);
      message.attachment(file.name, file.bytes);
    }
  }

  const uint64_t messages_;
  const bool hasPdfs_;
  uint64_t fileSize_ = 0;
  Texts texts_;
  StoreBuilder store_;
};

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::cerr << "usage: MakeMailStore FILE [MESSAGES [MEGABYTES [PDFS]]]\n";
    return 2;
  }
  const auto number = [&](int place, uint64_t usual) {
    return count > place ? std::strtoull(arguments[place], nullptr, 10) : usual;
  };
  MailStore(arguments[1], number(2, 20000), number(3, 400), number(4, 1) != 0).write();
}

// Protocol.h - what a program that wants pages and its helper say to each other.
//
// One request at a time, and one answer to it. Before its answer the helper may ask for files of
// the document's folder and report progress; each of these is answered before it goes on.
//
//   LayOutRequest + document ->      <- FileRequest      FileAnswer (+ copy) ->     <- LaidOut
//   PageSizeRequest          ->                                                     <-
//   PageSizeAnswer DrawRequest   + room     ->      <- ProgressReport   ProgressAnswer -> <- Drawn
//   PdfRequest    + room     ->      <- ProgressReport   ProgressAnswer ->          <- PdfMade
//
// The helper begins with Ready; Failed may take the place of any answer, and of Ready. Documents
// and files go as sealed memory files, which nobody can change. Bitmaps and PDFs come back in a
// memory file that the request brought along, the room: the program that wants pages takes no file
// from its helper, which a document may have taken over.
//
// A message is its kind in one byte, then its fields in order: numbers and sizes of pages in eight
// bytes, texts as their length and bytes. Both ends are on one machine.
#ifndef TARN_SIBLINGS_CLIENT_PROTOCOL_H
#define TARN_SIBLINGS_CLIENT_PROTOCOL_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "siblings/Pages.h"

namespace tarn::pages {

inline constexpr size_t kMaxMessage = 60'000;
inline constexpr size_t kMaxFileName = 4'096;
inline constexpr size_t kMaxProperty = 10'000;
inline constexpr uint64_t kMaxFolderFile = uint64_t{64} << 20;
inline constexpr uint64_t kMaxBitmapBytes = uint64_t{256} << 20;
inline constexpr int32_t kMaxPages = 1'000'000;
inline constexpr int32_t kMaxDotsPerInch = 2'400;
inline constexpr double kMaxPageSide = 14'400;  // 200 inches, the most that PDF has without units

enum class MessageKind : uint8_t {
  LayOutRequest,
  PageSizeRequest,
  DrawRequest,
  PdfRequest,
  FileAnswer,
  ProgressAnswer,
  Ready,
  LaidOut,
  PageSizeAnswer,
  Drawn,
  PdfMade,
  FileRequest,
  ProgressReport,
  Failed
};

// Each message names its kind and shows its fields, in order, to whoever writes or reads it.

struct LayOutRequest {
  static constexpr MessageKind kKind = MessageKind::LayOutRequest;
  DocumentKind kind = DocumentKind::Html;
  Paper paper = Paper::A4;
  bool hasFolder = false;
  uint64_t size = 0;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.choice(kind, DocumentKind::Text);
    visit.choice(paper, Paper::Letter);
    visit.flag(hasFolder);
    visit.number(size);
  }
};

struct PageSizeRequest {
  static constexpr MessageKind kKind = MessageKind::PageSizeRequest;
  int32_t page = 0;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.number(page);
  }
};

struct DrawRequest {
  static constexpr MessageKind kKind = MessageKind::DrawRequest;
  int32_t page = 0;
  int32_t dotsPerInch = 0;
  bool hearsProgress = false;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.number(page);
    visit.number(dotsPerInch);
    visit.flag(hearsProgress);
  }
};

struct PdfRequest {
  static constexpr MessageKind kKind = MessageKind::PdfRequest;
  PageRange range;
  PdfProperties properties;
  bool hearsProgress = false;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.number(range.first);
    visit.number(range.last);
    visit.text(properties.title);
    visit.text(properties.author);
    visit.text(properties.date);
    visit.flag(hearsProgress);
  }
};

struct FileAnswer {
  static constexpr MessageKind kKind = MessageKind::FileAnswer;
  bool found = false;
  uint64_t size = 0;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.flag(found);
    visit.number(size);
  }
};

struct ProgressAnswer {
  static constexpr MessageKind kKind = MessageKind::ProgressAnswer;
  bool goOn = true;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.flag(goOn);
  }
};

struct Ready {
  static constexpr MessageKind kKind = MessageKind::Ready;
  template <class Visitor>
  void fields(Visitor&) {}
};

struct LaidOutAnswer {
  static constexpr MessageKind kKind = MessageKind::LaidOut;
  int32_t pageCount = 0;
  PageSize firstPage;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.number(pageCount);
    visit.real(firstPage.width);
    visit.real(firstPage.height);
  }
};

struct PageSizeAnswer {
  static constexpr MessageKind kKind = MessageKind::PageSizeAnswer;
  PageSize size;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.real(size.width);
    visit.real(size.height);
  }
};

struct DrawnAnswer {
  static constexpr MessageKind kKind = MessageKind::Drawn;
  int32_t width = 0;
  int32_t height = 0;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.number(width);
    visit.number(height);
  }
};

struct PdfMade {
  static constexpr MessageKind kKind = MessageKind::PdfMade;
  uint64_t size = 0;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.number(size);
  }
};

struct FileRequest {
  static constexpr MessageKind kKind = MessageKind::FileRequest;
  std::string name;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.text(name);
  }
};

struct ProgressReport {
  static constexpr MessageKind kKind = MessageKind::ProgressReport;
  int32_t percent = 0;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.number(percent);
  }
};

struct Failed {
  static constexpr MessageKind kKind = MessageKind::Failed;
  Trouble trouble = Trouble::BadDocument;
  std::string line;
  template <class Visitor>
  void fields(Visitor& visit) {
    visit.choice(trouble, Trouble::Stopped);
    visit.text(line);
  }
};

class FieldWriter {
 public:
  explicit FieldWriter(MessageKind kind) : bytes_(1, static_cast<char>(kind)) {}

  template <class Number>
  void number(const Number& value) {
    raw(static_cast<int64_t>(value));
  }
  template <class Choice>
  void choice(const Choice& value, Choice) {
    raw(static_cast<int64_t>(value));
  }
  void flag(const bool& value) { raw(static_cast<int64_t>(value)); }
  void real(const double& value) { raw(value); }
  void text(const std::string& value) {
    number(value.size());
    bytes_ += value;
  }

  std::string take() { return std::move(bytes_); }

 private:
  template <class Value>
  void raw(Value value) {
    char room[sizeof value];
    std::memcpy(room, &value, sizeof value);
    bytes_.append(room, sizeof room);
  }

  std::string bytes_;
};

// Reads fields while they are there and in the range of their types; after the first that is not,
// nothing is right any more.
class FieldReader {
 public:
  explicit FieldReader(std::string_view bytes) : rest_(bytes) {}

  template <class Number>
  void number(Number& value) {
    const int64_t read = raw<int64_t>();
    value = static_cast<Number>(read);
    if (static_cast<int64_t>(value) != read || (std::is_unsigned_v<Number> && read < 0)) {
      isRight_ = false;
    }
  }
  template <class Choice>
  void choice(Choice& value, Choice last) {
    const int64_t read = raw<int64_t>();
    if (read < 0 || read > static_cast<int64_t>(last)) {
      isRight_ = false;
      return;
    }
    value = static_cast<Choice>(read);
  }
  void flag(bool& value) {
    const int64_t read = raw<int64_t>();
    if (read != 0 && read != 1) isRight_ = false;
    value = read == 1;
  }
  void real(double& value) { value = raw<double>(); }
  void text(std::string& value) {
    uint64_t size = 0;
    number(size);
    if (!isRight_ || size > rest_.size()) {
      isRight_ = false;
      return;
    }
    value = rest_.substr(0, static_cast<size_t>(size));
    rest_.remove_prefix(static_cast<size_t>(size));
  }

  // All was there, and nothing more.
  bool isComplete() const { return isRight_ && rest_.empty(); }

 private:
  template <class Value>
  Value raw() {
    Value value = {};
    if (!isRight_ || rest_.size() < sizeof value) {
      isRight_ = false;
      return value;
    }
    std::memcpy(&value, rest_.data(), sizeof value);
    rest_.remove_prefix(sizeof value);
    return value;
  }

  std::string_view rest_;
  bool isRight_ = true;
};

template <class Record>
std::string Encode(Record record) {
  FieldWriter writer(Record::kKind);
  record.fields(writer);
  return writer.take();
}

inline bool IsOfKind(std::string_view message, MessageKind kind) {
  return !message.empty() && message.front() == static_cast<char>(kind);
}

// False when the message is none of that kind, or has other fields; the record is then of no use.
template <class Record>
bool Decode(std::string_view message, Record& record) {
  if (!IsOfKind(message, Record::kKind)) return false;
  FieldReader reader(message.substr(1));
  record.fields(reader);
  return reader.isComplete();
}

}  // namespace tarn::pages

#endif

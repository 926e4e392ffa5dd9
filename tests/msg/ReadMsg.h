// ReadMsg.h - opens and reads MSG files for tests.
#ifndef TARN_TESTS_MSG_READMSG_H
#define TARN_TESTS_MSG_READMSG_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "compound/CompoundOperations.h"
#include "compound/CompoundStream.h"
#include "msg/MsgAttachments.h"
#include "msg/MsgReader.h"
#include "support/MemoryMail.h"
#include "support/TempDirectory.h"
#include "support/msg/MsgBuilder.h"

namespace tarn::test {

// The submit time of sample messages, and what it becomes in UTC.
inline constexpr uint64_t kSampleTime = 134397288000000000;
inline constexpr std::string_view kSampleSent{"Sat Nov 21, 2026 10:00 AM\0", 26};

// Bytes with NULs in them, from a literal.
template <size_t N>
std::string Raw(const char (&literal)[N]) {
  return std::string(literal, N - 1);
}

// All that the length counts; "(null)" without a block.
inline std::string Bytes(const SizedBytes& text) {
  return text.hasBlock() ? std::string(text.view()) : "(null)";
}

inline void Set(SizedBytes& text, std::string_view bytes) {
  KernelBlock<char> block = AllocateBlock<char>(bytes.size(), TARN_HERE);
  bytes.copy(block.get(), bytes.size());
  text.adopt(std::move(block), bytes.size());
}

// A compound file of these bytes, loaded from memory.
class OpenMsg {
 public:
  explicit OpenMsg(std::string_view bytes)
      : mail_(bytes), file_(CompoundFile::open(mail_.handle())) {}

  CompoundFile& file() { return file_; }
  const CompoundStorage& storage() const { return storage_; }
  // The bytes of a stream; "(none)" when there is none.
  std::string stream(std::string_view path) {
    std::optional<CompoundStream> stream = file_.open(path);
    if (!stream) return "(none)";
    std::string bytes(stream->size(), '?');
    auto* const buffer = reinterpret_cast<unsigned char*>(bytes.data());
    bytes.resize(StreamRead(*stream, 0, {buffer, bytes.size()}));
    return bytes;
  }
  // The names below a storage, joined by blanks.
  std::string names(std::string_view path) {
    std::string all;
    for (const KernelString& name : ListEntryNames(storage_, path)) {
      if (!all.empty()) all += ' ';
      all += name;
    }
    return all;
  }

 private:
  MemoryMail mail_;
  CompoundFile file_;
  CompoundStorage storage_{&file_};
};

// A file read by ReadMsgFile, inline images in memory.
class MsgReading {
 public:
  explicit MsgReading(std::string_view bytes) : path_(directory_.write("mail.msg", bytes)) {}
  explicit MsgReading(const MsgBuilder& msg) : MsgReading(msg.write()) {}

  Status run(const AttachmentRequest* request = nullptr) {
    return ReadMsgFile(message, data, path_.u16string().c_str(), request);
  }

  MailMessage message;
  PstFilterData data;

 private:
  TempDirectory directory_;
  std::filesystem::path path_;
};

// What a callback was given.
struct Delivered {
  std::optional<std::u16string> name;
  std::string bytes;
  bool hasBlock = false;
  std::vector<std::pair<std::u16string, std::u16string>> properties;
};

// A request whose callback keeps what it is given, and answers what it is told to.
class Deliveries {
 public:
  explicit Deliveries(uint32_t index = kAllAttachments, bool infoOnly = false)
      : request{index, infoOnly, take, this} {}

  AttachmentRequest request;
  Status answer;
  std::vector<Delivered> all;

 private:
  static Status take(void* user, TrackedBuffer<char>* data, const char16_t* name,
                     PropertyList* properties) {
    auto& self = *static_cast<Deliveries*>(user);
    Delivered& one = self.all.emplace_back();
    if (name != nullptr) one.name = name;
    one.hasBlock = data->hasBlock();
    one.bytes = data->view();
    for (const AttachmentProperty& property : properties->elements()) {
      one.properties.emplace_back(property.name, property.value);
    }
    return self.answer;
  }
};

}  // namespace tarn::test

#endif

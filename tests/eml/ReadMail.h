// ReadMail.h - reads a mail from memory, and takes down what it reports.
#ifndef TARN_TESTS_EML_READMAIL_H
#define TARN_TESTS_EML_READMAIL_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"
#include "Internal/PstFilterData.h"
#include "eml/EmlReader.h"
#include "support/MemoryMail.h"
#include "support/Texts.h"

namespace tarn::test {

struct ReadMail {
  EmlMessage message;
  PstFilterData filterData;
  Status status;

  explicit ReadMail(std::string_view bytes, const AttachmentRequest* request = nullptr) {
    const MemoryMail mail(bytes);
    status = ReadEmlMessage(message, mail.handle(), filterData, request);
  }

  // All bytes that the body's length counts.
  std::string body() const { return std::string(message.body.view()); }
};

// What a callback got.
struct ReportedAttachment {
  std::string bytes;
  std::optional<std::u16string> name;
  std::vector<std::pair<std::u16string, std::u16string>> properties;
};

// A request for all attachments whose callback takes down what it gets and gives `results`, one
// after another, and StatusOk after them.
struct AttachmentRecorder {
  AttachmentRequest request{kAllAttachments, false, &AttachmentRecorder::Take, this};
  std::vector<ReportedAttachment> attachments;
  std::vector<Status> results;

  AttachmentRecorder() = default;
  AttachmentRecorder(const AttachmentRecorder&) = delete;
  AttachmentRecorder& operator=(const AttachmentRecorder&) = delete;

  static Status Take(void* user, TrackedBuffer<char>* data, const char16_t* name,
                     PropertyList* properties) {
    auto& self = *static_cast<AttachmentRecorder*>(user);
    ReportedAttachment attachment;
    attachment.bytes.assign(data->data(), data->length());
    if (name != nullptr) attachment.name = name;
    for (uint64_t i = 0; i < properties->length(); ++i) {
      attachment.properties.emplace_back(properties->data()[i].name, properties->data()[i].value);
    }
    self.attachments.push_back(attachment);
    const size_t number = self.attachments.size();
    return number <= self.results.size() ? self.results[number - 1] : Status(StatusOk);
  }
};

}  // namespace tarn::test

#endif

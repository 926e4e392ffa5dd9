// MailReading.h - mails of a test, opened as files.
#ifndef TARN_TESTS_ARCHIVE_MAILREADING_H
#define TARN_TESTS_ARCHIVE_MAILREADING_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "archive/mail/MailReaders.h"
#include "support/TempDirectory.h"

namespace tarn::test {

// The one item of a file with one mail.
class OpenedMail {
 public:
  explicit OpenedMail(std::string_view bytes) {
    auto reader = archive::OpenMail(directory_.write("mail.eml", bytes));
    EXPECT_TRUE(reader.ok());
    if (!reader) return;
    reader_ = std::move(*reader);
    auto entry = reader_->next();
    EXPECT_TRUE(entry.has_value());
    if (entry) item_ = std::move(std::get<std::unique_ptr<archive::Item>>(*entry));
    EXPECT_FALSE(reader_->next().has_value());
  }

  archive::Item* operator->() const { return item_.get(); }
  archive::Item& operator*() const { return *item_; }
  const archive::ItemFields& fields() const { return item_->fields(archive::Detail::Envelope); }

 private:
  TempDirectory directory_;
  std::unique_ptr<archive::ItemReader> reader_;
  std::unique_ptr<archive::Item> item_;
};

// All bytes of attachment `index`; what is wrong with it where there are none.
inline std::string AttachmentBytes(archive::Item& item, size_t index) {
  const auto source = item.open(index);
  if (!source) return "trouble: " + source.trouble().reason;
  const auto bytes = archive::ReadAll(**source, size_t{1} << 26);
  return bytes ? *bytes : "trouble: " + bytes.trouble().reason;
}

// "Ann <ann@example.com>, <bob@example.com>"
inline std::string Written(const std::vector<archive::Address>& addresses) {
  std::string text;
  for (const archive::Address& address : addresses) {
    if (!text.empty()) text += ", ";
    text += address.name;
    if (address.address.empty()) continue;
    if (!address.name.empty()) text += ' ';
    text += '<' + address.address + '>';
  }
  return text;
}

// "2024-05-01T10:34:56Z +120"; the second part only where the offset is known.
inline std::string Written(const std::optional<archive::Moment>& moment) {
  if (!moment) return "none";
  std::string text = Iso8601(*moment);
  if (moment->offsetMinutes) text += ' ' + std::to_string(*moment->offsetMinutes);
  return text;
}

}  // namespace tarn::test

#endif

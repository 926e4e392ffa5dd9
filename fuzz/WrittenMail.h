// WrittenMail.h - mails in memory as items, and what is written of them.
#ifndef TARN_FUZZ_WRITTENMAIL_H
#define TARN_FUZZ_WRITTENMAIL_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/mail/MailBytes.h"
#include "archive/mail/MailItem.h"
#include "archive/model/Item.h"
#include "archive/model/TextSink.h"

namespace tarn::fuzz {

using archive::TextSink;

// Null for bytes that are no mail.
inline std::unique_ptr<archive::Item> ItemOfMail(std::string_view bytes) {
  archive::ItemPlace place{"1", std::nullopt, std::make_shared<const std::vector<std::string>>()};
  auto source = archive::mail::MailSourceOfFile(archive::mail::BytesInMemory(std::string(bytes)),
                                                std::move(place));
  return source ? archive::mail::MakeMailItem(std::move(*source)) : nullptr;
}

}  // namespace tarn::fuzz

#endif

#include "pages/MailProperties.h"

#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "Internal/EmlMessage.h"
#include "KernelFile.h"
#include "Platform/Utf8.h"
#include "StoreSearch.h"
#include "TarnPst.h"
#include "compound/CompoundFile.h"
#include "console/Text.h"
#include "eml/Charsets.h"
#include "eml/HeaderFields.h"
#include "eml/HeaderSearch.h"
#include "msg/MsgStreams.h"
#include "msg/PropertyStreams.h"
#include "pages/MailDates.h"

namespace tarn::host {
namespace {

using pages::PdfProperties;

// Control characters become blanks, what is no character U+FFFD, and there is nothing before the
// text or after it.
std::string InOneLine(std::string_view text) {
  constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  std::string line;
  while (!text.empty()) {
    const platform::Character character = platform::FirstCharacter(text);
    const bool isControl =
        character.codePoint < 0x20 || (character.codePoint >= 0x7F && character.codePoint < 0xA0);
    if (isControl) {
      line += ' ';
    } else {
      line += character.isWellFormed ? text.substr(0, character.size) : kReplacement;
    }
    text.remove_prefix(character.size);
  }
  const size_t first = line.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return line.substr(first, line.find_last_not_of(' ') - first + 1);
}

// A field in which the mail has bytes that are not UTF-8, and names no charset for them.
std::string FieldText(SizedBytes& field) {
  RepairFieldToUtf8(field, ClassifyCharset("windows-1252"));
  return InOneLine(field.text());
}

PdfProperties OfMail(const char16_t* path) {
  PdfProperties properties;
  std::string mail;
  EmlMessage message;
  if (ReadWholeFile(path, mail) != StatusOk) return properties;
  mail.resize(FindHeaderEnd(mail));
  if (!message.data.append(mail).ok()) return properties;
  if (!ParseEmlHeaders(message, mail.size()).ok()) return properties;
  properties.title = FieldText(message.subject);
  properties.author = FieldText(message.from);
  properties.date = IsoFromMailDate(message.date.text());
  return properties;
}

std::string MsgText(const CompoundStorage& storage, std::string_view stream) {
  SizedBytes text;
  if (!ReadMsgTextProperty(storage, stream, text).ok()) return {};
  return FieldText(text);
}

// Whichever address the header block would show: one with an "@".
std::string MsgAddress(const CompoundStorage& storage) {
  std::string address = MsgText(storage, msg_stream::kSenderSmtpAddress);
  if (address.empty()) address = MsgText(storage, msg_stream::kRepresentedAddress);
  return address.find('@') == std::string::npos ? std::string() : address;
}

PdfProperties OfMsg(const char16_t* path) {
  constexpr uint64_t kMessageRecordsStart = 32;  // in the properties of a message of its own
  constexpr uint16_t kSubmitTime = 0x0039;
  PdfProperties properties;
  const KernelFile file(path);
  if (!file.isOpen()) return properties;
  CompoundFile compound = CompoundFile::open(file.handle());
  if (compound.result() != CompoundOk) return properties;
  const CompoundStorage storage{&compound};
  properties.title = MsgText(storage, msg_stream::kSubject);
  properties.author = MsgText(storage, msg_stream::kSenderName);
  const std::string address = MsgAddress(storage);
  if (!address.empty())
    properties.author += (properties.author.empty() ? "<" : " <") + address + ">";
  SizedBytes fixed;
  if (ReadMsgStream(storage, msg_stream::kProperties, fixed).ok()) {
    const std::optional<uint64_t> time =
        FindPropertyRecord(fixed.view(), kMessageRecordsStart, kPropertyTime, kSubmitTime);
    if (time) properties.date = IsoFromFileTime(static_cast<int64_t>(*time));
  }
  return properties;
}

std::string WideText(const pststore::wstring& text) {
  return InOneLine(Utf8FromWide({text.data(), text.size()}));
}

PdfProperties OfStoreMessage(const char16_t* path, int32_t messageNumber) {
  PdfProperties properties;
  StoreSearch search(pststore::open_database(path), messageNumber);
  search.run();
  if (!search.isFound() || !search.last()) return properties;
  const pststore::property_bag& message = *search.last();
  if (const auto subject = SubjectOf(message)) properties.title = WideText(*subject);
  if (message.prop_exists(PR_SENDER_NAME)) {
    properties.author = WideText(message.read_prop<pststore::wstring>(PR_SENDER_NAME));
  }
  if (message.prop_exists(PR_CLIENT_SUBMIT_TIME) && message.size(PR_CLIENT_SUBMIT_TIME) == 8) {
    const pststore::ulonglong time = message.get_value_8(PR_CLIENT_SUBMIT_TIME);
    properties.date = IsoFromFileTime(static_cast<int64_t>(time));
  }
  return properties;
}

}  // namespace

PdfProperties PropertiesOfMail(const char16_t* path, MailFormat format, int32_t messageNumber) try {
  switch (format) {
    case MailFormat::Store:
      return OfStoreMessage(path, messageNumber);
    case MailFormat::Msg:
      return OfMsg(path);
    default:
      return OfMail(path);
  }
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception&) {
  return {};
}

}  // namespace tarn::host

// MailFile.h - one mail file in the hands of the filter, and one message of it.
#ifndef TARN_TARNMAIL_MAILFILE_H
#define TARN_TARNMAIL_MAILFILE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "AttachmentList.h"
#include "FilterLibrary.h"
#include "KernelBytes.h"
#include "RecordingSiblings.h"
#include "TarnPst.h"

namespace tarn::host {

// Which message of which file, as the command line names it.
struct MessageChoice {
  std::string file;           // UTF-8
  int32_t messageNumber = 1;  // 1-based; a number beyond a store's messages means its last one
  bool textOnly = false;      // the plain text of the message, for the text sibling
};

// What fltInfo tells of the message, and the document that its sibling got.
struct MessageAnswer {
  int32_t format = FormatNone;
  int32_t messageCount = 1;
  int32_t messageNumber = 1;  // 1-based, of the message used
  int32_t pageCount = 0;      // 0 when nobody has laid the document out
  int32_t attachmentCount = 0;
  RecordedDocument document;
};

// All calls throw Failure (Failed) with the file, the meaning and the code when the filter refuses.
class MailFile {
 public:
  // Throws Failure (Usage) when there is no such file, it is no regular file or cannot be read.
  MailFile(const FilterLibrary& filter, const MessageChoice& choice);
  MailFile(const MailFile&) = delete;
  MailFile& operator=(const MailFile&) = delete;
  // Ends the filter's record, with its temporary files, and closes the file.
  ~MailFile();

  MessageAnswer read();
  std::vector<Attachment> attachments() const;
  // Nothing when the message has no attachment of that number.
  std::optional<KernelBytes> extract(int32_t attachmentNumber) const;

 private:
  AttachmentOptions attachmentOptions() const;
  [[noreturn]] void refuse(const std::string& why) const;

  const FilterLibrary& filter_;
  const MessageChoice choice_;
  const std::u16string path_;
  const KernelFile file_;
  FilterDataSlot slot_ = {};
};

}  // namespace tarn::host

#endif

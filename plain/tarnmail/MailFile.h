// MailFile.h - one mail file in the hands of the filter, and one message of it.
#ifndef TARN_TARNMAIL_MAILFILE_H
#define TARN_TARNMAIL_MAILFILE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "AttachmentList.h"
#include "FilterLibrary.h"
#include "FilterSlot.h"
#include "InputFile.h"
#include "KernelBytes.h"
#include "KernelFile.h"
#include "MailFormat.h"
#include "RecordingSiblings.h"
#include "TarnPst.h"
#include "console/PrivateFolder.h"

namespace tarn::host {

// Which message of which file, as the command line names it.
struct MessageChoice {
  std::string file;           // a name, or "-" for standard input
  int32_t messageNumber = 1;  // 1-based
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

// All calls throw Refusal with the file, the reason and the code when the filter refuses, and
// Failure (Usage) for a message number that the file does not have: the filter would take its last
// message.
class MailFile {
 public:
  // Throws Failure as InputFile does, and for a message number beyond the file's as far as that can
  // be told. The folder outlives this.
  MailFile(const FilterLibrary& filter, const MessageChoice& choice, PrivateFolder& folder);
  MailFile(const MailFile&) = delete;
  MailFile& operator=(const MailFile&) = delete;

  // How messages call the file.
  const std::string& name() const { return input_.name(); }
  // As the filter opens it.
  const std::u16string& path() const { return input_.path(); }
  MailFormat format() const { return format_; }
  // The messages of a store as far as they can be counted; 1 for other files.
  std::optional<int32_t> countMessages() const;

  MessageAnswer read() const;
  // As read(), with the siblings that `attach` puts into the context and without a recorded
  // document. What the filter keeps is in the slot, which is new.
  MessageAnswer ask(FilterSlot& slot, const std::function<void(FilterInfoContext&)>& attach) const;
  // One page of the message that the slot holds. `prepare` puts the siblings, the bitmap and the
  // model into the context. Gives the sibling's result, and throws nothing of its own.
  int32_t load(FilterSlot& slot, int32_t pageNumber,
               const std::function<void(FilterLoadContext&)>& prepare) const;
  std::vector<Attachment> attachments() const;
  // Nothing when the message has no attachment of that number.
  std::optional<KernelBytes> extract(int32_t attachmentNumber) const;

 private:
  AttachmentOptions attachmentOptions() const;
  int32_t callInfo(bool textOnly, FilterSlot& slot,
                   const std::function<void(FilterInfoContext&)>& attach,
                   MessageAnswer& answer) const;
  int32_t askForDocument(bool textOnly, MessageAnswer& answer) const;
  void check(int32_t status, const MessageAnswer& answer) const;
  bool showsOtherText() const;
  bool showsByTempFiles() const;
  [[noreturn]] void refuse(int32_t status, bool isDocument) const;
  [[noreturn]] void missMessage(int32_t count) const;

  const FilterLibrary& filter_;
  const MessageChoice choice_;
  PrivateFolder& folder_;
  const InputFile input_;
  const KernelFile file_;
  const MailFormat format_;
};

}  // namespace tarn::host

#endif

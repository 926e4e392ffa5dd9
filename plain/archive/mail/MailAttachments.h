// MailAttachments.h - the attachments of a mail: parts, files uuencoded in its texts, and those of
// a message within it.
#ifndef TARN_ARCHIVE_MAILATTACHMENTS_H
#define TARN_ARCHIVE_MAILATTACHMENTS_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "archive/mail/MailBytes.h"
#include "archive/mail/MailLayout.h"
#include "archive/mail/TnefParts.h"
#include "archive/model/Item.h"

namespace tarn::archive::mail {

// Where the bytes of an attachment are.
struct AttachmentSource {
  const LaidPart* laid = nullptr;
  size_t file = 0;          // of an uuencoded text, or of a message: which of its files
  Item* message = nullptr;  // the message in a part that has it
};

struct MailAttachments {
  std::vector<Attachment> list;
  std::vector<AttachmentSource> sources;  // one for each
};

// How many there are, in proportion to the parts, unless texts have to be searched for files, and
// messages within it opened.
size_t CountAttachments(const MailLayout& layout, TnefParts& tnefs);

// The layout and the messages must outlive them. What goes wrong in finding one is the one's own
// trouble.
MailAttachments ReadAttachments(MailBytes& mail, const MailLayout& layout, TnefParts& tnefs);

// The bytes of one that has no trouble.
Outcome<std::unique_ptr<ByteSource>> OpenAttachment(const SharedBytes& mail,
                                                    const AttachmentSource& source);

// The mail that one of kind Item is. TooLarge where it is encoded and too large for memory.
Outcome<SharedBytes> BytesOfEmbedded(const SharedBytes& mail, const LaidPart& part);

}  // namespace tarn::archive::mail

#endif

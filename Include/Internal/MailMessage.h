// MailMessage.h - a message of a PST store or an MSG file between its reader and the renderer.
//
// The reader fills the header fields and a body; the renderer puts the header block into the body;
// the driver moves the finished text out. Every text is UTF-8 unless a field says otherwise.
#ifndef TARN_INTERNAL_MAILMESSAGE_H
#define TARN_INTERNAL_MAILMESSAGE_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

struct MailMessage {
  Status inlineStatus;  // first failure of the inline attachments of an MSG file
  SizedBytes text;      // plain body: raw UTF-16 of a store, UTF-8 of an MSG file
  SizedBytes body;      // HTML or RTF; after rendering, the whole document
  SizedBytes from;
  SizedBytes fromAddress;  // MSG only, and only with an "@" in it
  SizedBytes to;
  SizedBytes subject;
  SizedBytes sent;  // as FormatFileTime writes it
  SizedBytes cc;
  SizedBytes bcc;
  SizedBytes originalAuthor;  // MSG only
  SizedBytes importance;      // as ImportanceText writes it; empty for a normal message
  uint32_t attachmentCount = 0;
  // MSG only: compressed RTF of an unknown kind, kept although no body came of it. The members are
  // freed from here upwards.
  KernelBlock<char> compressedRtf;

  MailMessage() = default;
  MailMessage(const MailMessage&) = delete;
  MailMessage& operator=(const MailMessage&) = delete;
};

// The messages of a store. One record serves all: a message before the wanted one is not looked at
// again once it has been read.
struct MessageList {
  int32_t count = 0;               // messages that the folders claim
  MailMessage* records = nullptr;  // an array of one: the wanted message
};

}  // namespace tarn

#endif

// Item.h - one item of a mailbox, from whatever file: a mail, a contact, an appointment, a task.
//
// All text is UTF-8, without NULs at its end. An item reads what it is asked for when it is asked,
// and keeps only the fields; it lives no longer than the reader that gave it, and is used by one
// thread. Nothing here throws but std::bad_alloc: what cannot be read is a Trouble.
#ifndef TARN_ARCHIVE_ITEM_H
#define TARN_ARCHIVE_ITEM_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/model/ByteSource.h"
#include "archive/model/Moment.h"
#include "archive/model/Trouble.h"

namespace tarn::archive::mapi {
class MapiMessage;
}

namespace tarn::archive {

// An item within an item within ... : the outermost has depth 0. Deeper ones are a Trouble.
inline constexpr int kDeepestItem = 32;

struct Address {
  std::string name;     // as shown; may be empty
  std::string address;  // ann@example.com; empty where the source has none

  friend bool operator==(const Address&, const Address&) = default;
};

// Where an item is in its source.
struct ItemPlace {
  // Stable: the same file gives the same ids. In a store the node id in hexadecimal; in an mbox the
  // offset of the item; of a file with one item "1". An embedded item's is its parent's, a slash,
  // and the place of the attachment that it is, from 1.
  std::string id;
  std::optional<std::string> parent;  // the id of the item that this one is embedded in
  std::shared_ptr<const std::vector<std::string>> folder;  // names from the root down; never null
};

// How much of the fields is wanted. A list of a large store is quick because it asks for no more
// than its tables tell.
enum class Detail : uint8_t {
  Headline,  // what a line of a list shows
  Envelope   // everything
};

struct ItemFields {
  // Headline:
  std::string messageClass;  // as "IPM.Note"; mails have that or what their type stands for
  std::string subject;
  Address from;  // of Headline perhaps without the address
  std::optional<Moment> sent;
  std::optional<Moment> received;
  std::optional<uint64_t> size;  // bytes of the item
  bool hasAttachments = false;   // as attachmentCount counts; of Headline perhaps not

  // Envelope:
  std::vector<Address> to;
  std::vector<Address> cc;
  std::vector<Address> bcc;
  std::optional<Address> sender;  // where it is not the one that the mail is from
  std::string messageId;          // without angle brackets
  size_t attachmentCount = 0;     // embedded items and pictures of the text among them
};

struct HtmlBody {
  std::string bytes;    // as the source has them
  std::string charset;  // IANA name; empty where only the bytes themselves tell
};

// What the source has of the text. A wrapped body is unwrapped: RTF that holds HTML or plain text
// gives that, and is there as RTF too.
struct Bodies {
  std::optional<HtmlBody> html;
  std::optional<std::string> text;
  std::optional<std::string> rtf;  // uncompressed
  std::vector<Trouble> troubles;   // bodies that are there and cannot be read
};

enum class AttachmentKind : uint8_t {
  Data,       // bytes
  Item,       // an embedded item; mails have its bytes too
  Ole,        // an object of another program: its storage or stream as bytes, where they can be had
  Reference,  // a file or address elsewhere: nothing to read
  Signature   // the signature of a signed mail, kept as it is
};

// "data", "item", "ole", "reference", "signature"
std::string_view NameOf(AttachmentKind kind);

struct Attachment {
  AttachmentKind kind = AttachmentKind::Data;
  std::string name;       // as the mail names it, nothing cleaned; empty when it has none
  std::string mediaType;  // lower case, "image/png"; empty when nothing tells
  std::string charset;    // of text, as a mail names it; empty where it does not
  std::string contentId;  // without angle brackets
  std::string contentLocation;
  bool isInline = false;           // the text shows it
  std::optional<uint64_t> size;    // of its bytes, where the source tells without reading them
  std::string target;              // of a Reference
  std::optional<Trouble> trouble;  // it is known to be there and no more
};

class Item {
 public:
  Item() = default;
  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;
  virtual ~Item() = default;

  virtual const ItemPlace& place() const = 0;

  // Valid until the next call. What could not be read is empty, and troubles() names it.
  virtual const ItemFields& fields(Detail detail) = 0;

  virtual Bodies bodies() = 0;

  // The header section of an internet mail as it came, CRLF or LF as there; empty where there is
  // none.
  virtual Outcome<std::string> originalHeaders() = 0;

  // In the order of the source; an attachment's place is its index + 1. Ends early, with a trouble
  // in troubles(), where the list breaks off.
  virtual const std::vector<Attachment>& attachments() = 0;

  // The bytes of attachment `index`, after transfer decoding. Missing where there is none.
  virtual Outcome<std::unique_ptr<ByteSource>> open(size_t index) = 0;

  // The item that attachment `index` of kind Item is. Keeps nothing of this item alive: this one
  // must outlive it.
  virtual Outcome<std::unique_ptr<Item>> embedded(size_t index) = 0;

  // The mail as it is in its file, where the source is internet mail; null otherwise.
  virtual Outcome<std::unique_ptr<ByteSource>> original() = 0;

  // The properties, where the source has such (stores, MSG files, TNEF); null otherwise. Owned by
  // the item.
  virtual mapi::MapiMessage* properties() { return nullptr; }

  // What was met so far and could not be read, of fields and of the list of attachments.
  virtual const std::vector<Trouble>& troubles() const = 0;
};

}  // namespace tarn::archive

#endif

// MailItem.h - a mail as an Item.
#ifndef TARN_ARCHIVE_MAILITEM_H
#define TARN_ARCHIVE_MAILITEM_H

#include <memory>
#include <string>
#include <vector>

#include "archive/mail/MailBytes.h"
#include "archive/model/Item.h"

namespace tarn::archive::mail {

// Where the mail is, and what is known of it from outside.
struct MailSource {
  ItemPlace place;
  SharedBytes bytes;              // all of the mail, without what an mbox adds
  std::string mboxLine;           // "From ann@example.com Mon Jan  1 10:34:56 2024", if any
  int depth = 0;                  // the items that it is embedded in
  std::vector<Trouble> troubles;  // why not all of it is as it was
  SharedBytes whole;              // with a broken line before its headers; null without one
};

std::unique_ptr<Item> MakeMailItem(MailSource source);

// The bytes in UTF-8 where a byte order mark says that they are UTF-16 (TooLarge where they are too
// many for memory), and with LF where their lines end with CR alone. As they are otherwise.
Outcome<SharedBytes> UsualText(SharedBytes bytes);

// A file with one mail, as UsualText. Its start may be anything that FindMailStart passes over.
Outcome<MailSource> MailSourceOfFile(SharedBytes bytes, ItemPlace place);

}  // namespace tarn::archive::mail

#endif

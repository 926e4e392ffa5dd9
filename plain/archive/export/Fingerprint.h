// Fingerprint.h - what tells whether two items say the same.
#ifndef TARN_ARCHIVE_FINGERPRINT_H
#define TARN_ARCHIVE_FINGERPRINT_H

#include <string>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive {

struct Fingerprint {
  std::string sum;
  // Two items of that sum are the same. Of an item without message id, date, text and attachments,
  // unless it is a contact or something of a calendar, too little is known for that.
  bool isTelling = false;
};

// Of message id, sender, subject, time, bodies, and what its attachments are: a text of each, empty
// where there is none. Of other classes than mail also of the class, and of what the item has as
// such: its vCard or iCalendar but for the marks of the one copy, or else its named properties; of
// all these also the fields that people are described by, and that somebody made.
Fingerprint FingerprintOf(Item& item, const std::vector<std::string>& attachments);

}  // namespace tarn::archive

#endif

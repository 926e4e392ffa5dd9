// MailLayout.h - which parts of a mail are its text, and which are attachments (RFC 2046, 2387,
// 1847, 3156, 6522).
#ifndef TARN_ARCHIVE_MAILLAYOUT_H
#define TARN_ARCHIVE_MAILLAYOUT_H

#include <gmime/gmime.h>

#include <string>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive::mail {

struct BodyPart {
  GMimePart* part = nullptr;
  bool isHtml = false;
  bool isOfHtml =
      false;  // HTML itself, or text of the alternative that has HTML, such as its footer
};

// A piece of the text: a part of its own, or the alternatives of one piece.
struct BodyPiece {
  std::vector<BodyPart> parts;
  std::string loose;  // text that is in no part, since the parts have no boundary
};

struct LaidPart {
  GMimeObject* part = nullptr;
  AttachmentKind kind = AttachmentKind::Data;
  bool isRelated = false;          // of the HTML beside it
  bool isTnef = false;             // a winmail.dat, which may hold attachments itself
  GMimePart* uuencoded = nullptr;  // a text that may have files in it, rather than an attachment
  std::vector<std::string> boundaries;  // of an item: those of the parts that it is in
};

// Owns nothing: all parts are those of the message.
struct MailLayout {
  std::vector<BodyPiece> pieces;
  std::vector<LaidPart> parts;  // in the order of the mail
  GMimePart* calendar = nullptr;
  GMimePart* deliveryStatus = nullptr;
};

// `seeksUuencode`: whether texts may have uuencoded files in them.
MailLayout LayOut(GMimeMessage* message, bool seeksUuencode);

// "IPM.Note", or the class of what the mail is by its Content-Type:
//   REPORT.IPM.Note.NDR, .DR       delivery reports (RFC 3464): of a failure, of anything else
//   REPORT.IPM.Note.IPNRN          disposition notifications (RFC 8098)
//   IPM.Schedule.Meeting.Request, .Canceled, .Resp.Pos, .Resp.Neg, .Resp.Tent
//                                  calendars (RFC 6047) whose Content-Type has such a method
std::string ClassOf(GMimeMessage* message, const MailLayout& layout);

}  // namespace tarn::archive::mail

#endif

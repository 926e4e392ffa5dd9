#include "archive/mail/MailLayout.h"

#include <utility>

#include "archive/mail/HeaderFields.h"
#include "archive/mail/PartBytes.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

bool IsHtml(std::string_view type) {
  return type == "text/html" || type == "text/enriched" || type == "text/richtext";
}

bool IsTnef(GMimeObject* part, std::string_view type) {
  return type == "application/ms-tnef" || type == "application/vnd.ms-tnef" ||
         (type == "application/octet-stream" && EqualsNoCase(FileNameOf(part), "winmail.dat"));
}

bool IsSignature(std::string_view type) {
  return type == "application/pgp-signature" || type == "application/pkcs7-signature" ||
         type == "application/x-pkcs7-signature";
}

// The part of multipart/related that the others belong to: the one that "start" names, else the
// first.
int RootOf(GMimeMultipart* multipart) {
  std::string start = ParameterOf(GMIME_OBJECT(multipart), "start");
  if (start.starts_with('<')) start.erase(0, 1);
  if (start.ends_with('>')) start.pop_back();
  if (start.empty()) return 0;
  const int count = g_mime_multipart_get_count(multipart);
  for (int i = 0; i < count; ++i) {
    const char* id = g_mime_object_get_content_id(g_mime_multipart_get_part(multipart, i));
    if (id != nullptr && start == id) return i;
  }
  return 0;
}

class Layouter {
 public:
  Layouter(MailLayout& layout, bool seeksUuencode)
      : layout_(layout), seeksUuencode_(seeksUuencode) {}

  // GMime ends the nesting of parts where recursion would be too deep.
  void take(GMimeObject* part);

 private:
  void takeMultipart(GMimeMultipart* multipart);
  void takeAlternatives(GMimeMultipart* multipart);
  void takeAlternative(GMimeObject* part);
  void takeSigned(GMimeMultipart* multipart);
  void takeRelated(GMimeMultipart* multipart);
  void takeLeaf(GMimeObject* part);
  bool takeText(GMimePart* part, std::string_view type);
  void attach(GMimeObject* part, AttachmentKind kind);

  MailLayout& layout_;
  bool seeksUuencode_;
  BodyPiece* alternatives_ = nullptr;  // the piece that alternatives go to
  std::vector<size_t>
      textsOfAlternative_;  // places in it, of those that are in no alternative within
  bool alternativeHasHtml_ = false;
  bool isRelated_ = false;
  bool isFirst_ = true;  // no leaf has come yet
  std::vector<std::string> boundaries_;
};

void Layouter::take(GMimeObject* part) {
  if (part == nullptr) return;
  if (GMIME_IS_MULTIPART(part)) {
    takeMultipart(GMIME_MULTIPART(part));
  } else if (GMIME_IS_MESSAGE_PART(part)) {
    attach(part, AttachmentKind::Item);
  } else if (GMIME_IS_PART(part)) {
    takeLeaf(part);
  }
}

void Layouter::takeMultipart(GMimeMultipart* multipart) {
  const int count = g_mime_multipart_get_count(multipart);
  if (count == 0) {
    std::string text = TextOfLines(g_mime_multipart_get_prologue(multipart));
    if (!text.empty()) layout_.pieces.push_back({{}, std::move(text)});
    return;
  }
  const char* boundary = g_mime_multipart_get_boundary(multipart);
  boundaries_.emplace_back(boundary == nullptr ? "" : boundary);
  const std::string type = MediaTypeOf(GMIME_OBJECT(multipart));
  if (type == "multipart/signed") {
    takeSigned(multipart);
  } else if (type == "multipart/related") {
    takeRelated(multipart);
  } else if (type == "multipart/alternative") {
    takeAlternatives(multipart);
  } else {
    for (int i = 0; i < count; ++i) take(g_mime_multipart_get_part(multipart, i));
  }
  boundaries_.pop_back();
}

// Alternatives within alternatives are of the same piece.
void Layouter::takeAlternatives(GMimeMultipart* multipart) {
  const int count = g_mime_multipart_get_count(multipart);
  BodyPiece piece;
  const bool isOutermost = alternatives_ == nullptr;
  if (isOutermost) alternatives_ = &piece;
  for (int i = 0; i < count; ++i) takeAlternative(g_mime_multipart_get_part(multipart, i));
  if (!isOutermost) return;
  alternatives_ = nullptr;
  if (!piece.parts.empty()) layout_.pieces.push_back(std::move(piece));
}

void Layouter::takeAlternative(GMimeObject* part) {
  const std::vector<size_t> textsAround = std::exchange(textsOfAlternative_, {});
  const bool hadHtml = std::exchange(alternativeHasHtml_, false);
  take(part);
  if (alternativeHasHtml_) {
    for (const size_t text : textsOfAlternative_) alternatives_->parts[text].isOfHtml = true;
  }
  textsOfAlternative_ = textsAround;
  alternativeHasHtml_ |= hadHtml;
}

void Layouter::takeSigned(GMimeMultipart* multipart) {
  const int count = g_mime_multipart_get_count(multipart);
  take(g_mime_multipart_get_part(multipart, 0));
  for (int i = 1; i < count; ++i) {
    GMimeObject* part = g_mime_multipart_get_part(multipart, i);
    if (GMIME_IS_PART(part) && IsSignature(MediaTypeOf(part))) {
      attach(part, AttachmentKind::Signature);
    } else {
      take(part);
    }
  }
}

void Layouter::takeRelated(GMimeMultipart* multipart) {
  const bool wasRelated = isRelated_;
  const int root = RootOf(multipart);
  const int count = g_mime_multipart_get_count(multipart);
  for (int i = 0; i < count; ++i) {
    isRelated_ = wasRelated || i != root;
    take(g_mime_multipart_get_part(multipart, i));
  }
  isRelated_ = wasRelated;
}

void Layouter::takeLeaf(GMimeObject* part) {
  const std::string type = MediaTypeOf(part);
  const bool taken = takeText(GMIME_PART(part), type);
  isFirst_ = false;
  if (taken) return;
  if (type == "text/calendar" && layout_.calendar == nullptr) layout_.calendar = GMIME_PART(part);
  if (type == "message/delivery-status" && layout_.deliveryStatus == nullptr) {
    layout_.deliveryStatus = GMIME_PART(part);
  }
  if (type == "message/external-body") {
    attach(part, AttachmentKind::Reference);
  } else if (type == "message/rfc822" || type == "message/global") {
    // Its bytes are encoded, so that GMime has not looked into it.
    attach(part, AttachmentKind::Item);
  } else {
    attach(part, AttachmentKind::Data);
    layout_.parts.back().isTnef = IsTnef(part, type);
  }
}

// Whether a part is text that is to be read, rather than a file.
bool Layouter::takeText(GMimePart* part, std::string_view type) {
  if (type != "text/plain" && !IsHtml(type)) return false;
  GMimeObject* object = GMIME_OBJECT(part);
  const char* disposition = g_mime_object_get_disposition(object);
  if (disposition != nullptr && EqualsNoCase(disposition, "attachment")) return false;
  if (isRelated_) return false;
  const bool hasName = !FileNameOf(object).empty();
  // Programs that name the text itself say nothing of its disposition.
  const bool isTextItself = disposition == nullptr && (isFirst_ || alternatives_ != nullptr);
  if (hasName && !isTextItself) return false;
  const bool isHtml = type != "text/plain";
  const BodyPart body{part, isHtml, isHtml};
  if (alternatives_ == nullptr) {
    layout_.pieces.push_back({{body}, {}});
  } else {
    if (!isHtml) textsOfAlternative_.push_back(alternatives_->parts.size());
    alternativeHasHtml_ |= isHtml;
    alternatives_->parts.push_back(body);
  }
  if (seeksUuencode_ && type == "text/plain") {
    LaidPart laid;
    laid.uuencoded = part;
    layout_.parts.push_back(std::move(laid));
  }
  return true;
}

void Layouter::attach(GMimeObject* part, AttachmentKind kind) {
  LaidPart laid;
  laid.part = part;
  laid.kind = kind;
  laid.isRelated = isRelated_;
  if (kind == AttachmentKind::Item) laid.boundaries = boundaries_;
  layout_.parts.push_back(std::move(laid));
  isFirst_ = false;
}

std::string LoweredStart(GMimePart* part) {
  constexpr size_t kLooked = 65536;
  return LoweredAscii(StartOfPart(part, kLooked));
}

std::string ClassOfCalendar(GMimePart* calendar) {
  const std::string method = LoweredAscii(ParameterOf(GMIME_OBJECT(calendar), "method"));
  if (method == "request") return "IPM.Schedule.Meeting.Request";
  if (method == "cancel") return "IPM.Schedule.Meeting.Canceled";
  if (method != "reply") return {};
  const std::string text = LoweredStart(calendar);
  if (text.find("partstat=accepted") != std::string::npos) return "IPM.Schedule.Meeting.Resp.Pos";
  if (text.find("partstat=declined") != std::string::npos) return "IPM.Schedule.Meeting.Resp.Neg";
  if (text.find("partstat=tentative") != std::string::npos) return "IPM.Schedule.Meeting.Resp.Tent";
  return {};
}

}  // namespace

MailLayout LayOut(GMimeMessage* message, bool seeksUuencode) {
  MailLayout layout;
  Layouter(layout, seeksUuencode).take(g_mime_message_get_mime_part(message));
  return layout;
}

std::string ClassOf(GMimeMessage* message, const MailLayout& layout) {
  GMimeObject* root = g_mime_message_get_mime_part(message);
  if (root != nullptr && MediaTypeOf(root) == "multipart/report") {
    const std::string type = LoweredAscii(ParameterOf(root, "report-type"));
    if (type == "disposition-notification") return "REPORT.IPM.Note.IPNRN";
    if (type == "delivery-status" && layout.deliveryStatus != nullptr) {
      const std::string status = LoweredStart(layout.deliveryStatus);
      return status.find("action: failed") != std::string::npos ? "REPORT.IPM.Note.NDR"
                                                                : "REPORT.IPM.Note.DR";
    }
  }
  std::string calendar;
  if (layout.calendar != nullptr) calendar = ClassOfCalendar(layout.calendar);
  return calendar.empty() ? "IPM.Note" : calendar;
}

}  // namespace tarn::archive::mail

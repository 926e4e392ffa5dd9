#include "archive/mail/PartialMail.h"

#include <string>
#include <utility>

#include "archive/mail/MailBodies.h"
#include "archive/mail/MailBytes.h"
#include "archive/mail/MailLayout.h"
#include "archive/mail/ParseMail.h"

namespace tarn::archive::mail {
namespace {

// The bodies of the mail that the first piece begins.
Bodies BodiesWithin(GMimePart* piece) {
  Bodies none;
  Outcome<std::string> all = BytesOfText(piece);
  if (!all) {
    none.troubles.push_back(all.trouble());
    return none;
  }
  SharedBytes bytes = BytesInMemory(std::move(*all));
  const Outcome<MailStart> start = FindMailStart(*bytes);
  if (!start) {
    none.troubles.push_back(start.trouble());
    return none;
  }
  const uint64_t size = bytes->size();
  const ParsedMail mail = ParseMail(RangeOf(std::move(bytes), start->offset, size));
  const MailLayout layout = LayOut(mail.message.get(), mail.sawUuencode);
  Bodies bodies = BodiesOf(layout, mail.sawUuencode);
  bodies.troubles.insert(bodies.troubles.end(), mail.troubles.begin(), mail.troubles.end());
  return bodies;
}

}  // namespace

void AddPieceOfMail(GMimeMessage* message, Bodies& bodies) {
  GMimeObject* root = g_mime_message_get_mime_part(message);
  if (root == nullptr || !GMIME_IS_MESSAGE_PARTIAL(root)) return;
  auto* partial = GMIME_MESSAGE_PARTIAL(root);
  const int number = g_mime_message_partial_get_number(partial);
  const int total = g_mime_message_partial_get_total(partial);
  const std::string note = "[This mail is piece " + std::to_string(number) +
                           (total > 0 ? " of " + std::to_string(total) : "") +
                           " of a longer one.]\n";
  Bodies within = number == 1 ? BodiesWithin(GMIME_PART(root)) : Bodies();
  if (within.text || !within.html) {
    bodies.text = note + (within.text ? "\n" + *within.text : "");
  }
  if (within.html) {
    within.html->bytes.insert(0, "<p>" + note + "</p>\n");
    bodies.html = std::move(within.html);
  }
  bodies.troubles.insert(bodies.troubles.end(), within.troubles.begin(), within.troubles.end());
}

}  // namespace tarn::archive::mail

#include <algorithm>
#include <string>

#include "archive/writers/ItemText.h"
#include "archive/writers/MailComposer.h"
#include "archive/writers/MboxSink.h"
#include "archive/writers/SinkBuffer.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

// The address in the line that begins a mail: that of the sender, as far as it is one word.
std::string MboxSender(const ItemFields& fields) {
  const std::string& address = fields.sender ? fields.sender->address : fields.from.address;
  const bool isWord = std::all_of(address.begin(), address.end(), [](char c) {
    return static_cast<unsigned char>(c) > ' ' && c != 0x7F;
  });
  return address.empty() || !isWord ? "MAILER-DAEMON" : address;
}

}  // namespace

Written WriteEml(Item& item, ByteSink& sink) {
  Written written;
  SinkBuffer out(sink);
  MailComposer(out, written.lost).put(item);
  written.full = out.finish();
  return written;
}

Written WriteMbox(Item& item, ByteSink& sink) {
  Written written;
  SinkBuffer out(sink);
  const ItemFields& fields = item.fields(Detail::Envelope);
  const Moment date = fields.received.value_or(fields.sent.value_or(Moment()));
  out.put("From ").put(MboxSender(fields)).put(" ").put(MboxDateText(date)).put("\n");
  MboxSink mbox(out);
  SinkBuffer mail(mbox);
  MailComposer(mail, written.lost).put(item);
  mail.finish();
  mbox.finish();
  written.full = out.finish();
  return written;
}

}  // namespace tarn::archive

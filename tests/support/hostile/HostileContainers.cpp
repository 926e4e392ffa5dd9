// TNEF of many attributes, and mboxes of many mails and lines.
#include "support/TnefBuilder.h"
#include "support/hostile/HostileShapes.h"
#include "support/hostile/HostileText.h"

namespace tarn::test {
namespace {

TnefBuilder Tnef() {
  TnefBuilder mail;
  mail.codePage(1252).text8(TnefMessageLevel, 0x8004, "Shape");
  return mail;
}

std::string Attributes(size_t count) {
  TnefBuilder mail = Tnef();
  for (size_t i = 0; i < count; ++i) mail.text8(TnefMessageLevel, 0x8004, "Again");
  return mail.write();
}

std::string Attachments(size_t count) {
  TnefBuilder mail = Tnef();
  for (size_t i = 0; i < count; ++i) {
    mail.attachment()
        .text8(TnefAttachmentLevel, 0x8010, std::to_string(i) + ".txt")
        .attachmentData("content");
  }
  return mail.write();
}

std::string Properties(size_t count) {
  TnefList list;
  for (size_t i = 0; i < count; ++i) list.integer(static_cast<uint16_t>(0x1100 + i % 0x6000), 1);
  return Tnef().properties(list).write();
}

std::string NamedProperties(size_t count) {
  TnefList list;
  for (size_t i = 0; i < count; ++i) {
    list.named(std::string(16, 's'), u"Name" + Wide(i))
        .integer(static_cast<uint16_t>(0x8000 + i % 0x7000), 1);
  }
  return Tnef().properties(list).write();
}

std::string Values(size_t count) {
  TnefList list;
  list.values(0x3A58, 0x101E, std::vector<std::string>(count, std::string("a\0", 2)));
  return Tnef().properties(list).write();
}

std::string PropertyLists(size_t count) {
  TnefBuilder mail = Tnef();
  for (size_t i = 0; i < count; ++i) mail.properties(TnefList().integer(0x0017, 2));
  return mail.write();
}

std::string Recipients(size_t count) {
  std::vector<TnefList> rows(count, TnefList().integer(0x0C15, 1).text(0x3001, u"Bob"));
  return Tnef().recipients(rows).write();
}

std::string NestedMessages(size_t count) {
  std::string inner = Tnef().write();
  for (size_t i = 0; i < count; ++i) {
    inner = Tnef()
                .attachment(2)
                .attachmentProperties(
                    TnefList().integer(0x3705, 5).object(0x3701, kTnefMessageInterface, inner))
                .write();
  }
  return inner;
}

constexpr std::string_view kMail =
    "From ann@example.com Wed May  1 12:34:56 2024\nFrom: Ann <ann@example.com>\nTo: Bob "
    "<bob@example.com>\nSubject: Shape\nDate: Wed, 1 May 2024 12:34:56 +0200\n\nText\n\n";

std::string Mails(size_t count) { return Times(count, kMail); }

std::string EmptyMails(size_t count) { return std::string(kMail) + Times(count, "From a\n\n"); }

std::string FromLines(size_t count) { return std::string(kMail) + Times(count, "From a\n"); }

std::string QuotedFromLines(size_t count) {
  return std::string(kMail) + Times(count, ">>From a\n");
}

std::string QuoteSigns(size_t count) { return std::string(kMail) + Times(count, ">") + "From a\n"; }

std::string EmptyLines(size_t count) { return std::string(kMail) + Times(count, "\n"); }

constexpr HostileShape kShapes[] = {
    {"Attributes", HostileFormat::Tnef, Attributes, 50000},
    {"Attachments", HostileFormat::Tnef, Attachments, 2000},
    {"Properties", HostileFormat::Tnef, Properties, 20000},
    {"NamedProperties", HostileFormat::Tnef, NamedProperties, 10000},
    {"Values", HostileFormat::Tnef, Values, 50000},
    {"PropertyLists", HostileFormat::Tnef, PropertyLists, 20000},
    {"Recipients", HostileFormat::Tnef, Recipients, 10000},
    {"NestedMessages", HostileFormat::Tnef, NestedMessages, 200},
    {"Mails", HostileFormat::Mbox, Mails, 2000},
    {"EmptyMails", HostileFormat::Mbox, EmptyMails, 5000},
    {"FromLines", HostileFormat::Mbox, FromLines, 100000},
    {"QuotedFromLines", HostileFormat::Mbox, QuotedFromLines, 100000},
    {"QuoteSigns", HostileFormat::Mbox, QuoteSigns, 500000},
    {"EmptyLines", HostileFormat::Mbox, EmptyLines, 500000},
};

}  // namespace

std::span<const HostileShape> HostileContainers() { return kShapes; }

}  // namespace tarn::test

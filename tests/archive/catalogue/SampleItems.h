// SampleItems.h - items as an export tells of them.
#ifndef TARN_TESTS_ARCHIVE_CATALOGUE_SAMPLEITEMS_H
#define TARN_TESTS_ARCHIVE_CATALOGUE_SAMPLEITEMS_H

#include <string>

#include "archive/catalogue/CatalogueItem.h"

namespace tarn::archive {

// Has a value in every field.
inline CatalogueItem FullItem() {
  CatalogueItem item;
  item.source = "/mail/box.pst";
  item.id = "200024/1";
  item.parent = "200024";
  item.folder = {"Top", "Inbox"};
  item.fields.messageClass = "IPM.Note";
  item.fields.subject = "Budget for May";
  item.fields.from = {"Ann Example", "ann@example.com"};
  item.fields.sent = Moment{1714559696, 120};
  item.fields.received = Moment{1714559700, std::nullopt};
  item.fields.size = 4711;
  item.fields.hasAttachments = true;
  item.fields.to = {{"Bob", "bob@example.com"}, {"", "carl@example.com"}};
  item.fields.cc = {{"Dora", ""}};
  item.fields.bcc = {{"Emil", "emil@example.com"}};
  item.fields.sender = Address{"Office", "office@example.com"};
  item.fields.messageId = "one@example.com";
  item.fields.attachmentCount = 2;
  item.status = ExportStatus::Partial;
  item.reason = "an attachment is damaged";
  item.files = {{"box/Inbox/Budget/message.html", "html", 1234, std::string(64, 'a'), "", 0},
                {"box/Inbox/Budget/attachments/plan.txt", "attachment", 9, std::string(64, 'b'),
                 "plan.txt", 1}};
  item.body = "The figures are in the plan.";
  item.attachments = {{1, "plan.txt", "Travel costs nothing."}, {2, "torn.pdf", ""}};
  return item;
}

// A plain mail.
inline CatalogueItem Mail(const std::string& id, const std::string& subject,
                          const std::string& body) {
  CatalogueItem item;
  item.source = "/mail/box.mbox";
  item.id = id;
  item.fields.messageClass = "IPM.Note";
  item.fields.subject = subject;
  item.fields.from = {"Ann Example", "ann@example.com"};
  item.fields.to = {{"Bob", "bob@example.com"}};
  item.fields.sent = Moment{1714559696, std::nullopt};
  item.files = {{"box/" + id + "/message.html", "html", 10, std::string(64, 'c'), "", 0}};
  item.body = body;
  return item;
}

}  // namespace tarn::archive

#endif

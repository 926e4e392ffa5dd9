// MailComposer.h - an item that is no internet mail as one: what a mail program would have sent.
//
//   multipart/mixed            where there are attachments that the text does not show
//     multipart/alternative    where there are text and HTML
//       text/plain
//       multipart/related      where the HTML shows pictures that the mail brings along
//         text/html
//         pictures
//     attachments; embedded items as message/rfc822, references as message/external-body
//
// A signed or encrypted mail is kept as one attachment (MS-OXOSMIME 2.1.3): that is its content.
//
// Boundaries come from the content and a counter, and begin with "=_", which no encoded content
// has. Attachments stream.
#ifndef TARN_ARCHIVE_MAILCOMPOSER_H
#define TARN_ARCHIVE_MAILCOMPOSER_H

#include <cstddef>
#include <string>
#include <vector>

#include "archive/model/Item.h"
#include "archive/writers/MimeHeaders.h"
#include "archive/writers/MimeText.h"
#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {

class MailComposer {
 public:
  MailComposer(SinkBuffer& out, std::vector<Trouble>& lost) : out_(out), lost_(lost) {}

  // The bytes of the source, where the item is internet mail, or a mail made of the item.
  void put(Item& item);

 private:
  struct Text {
    std::string mediaType;
    std::string charset;
    MimeText encoded;
  };
  struct Plan {
    std::vector<Text> texts;      // the best is the last
    std::vector<size_t> related;  // attachments that the last of the texts shows
    std::vector<size_t> others;
  };

  void compose(Item& item);
  void putHeaders(Item& item);
  bool putSecured(Item& item);
  Plan planOf(Item& item);
  void putTexts(Item& item, const Plan& plan);
  void putText(const Text& text);
  void putRelated(Item& item, const Plan& plan);
  void putAttachment(Item& item, size_t index, bool isRelated);
  void putData(Item& item, size_t index, PartHeaders headers);
  void putEmbedded(Item& item, size_t index, PartHeaders headers);
  void lose(const Attachment& attachment, size_t index, const Trouble& trouble);

  std::string startMultipart(std::string_view subtype);
  void putDelimiter(const std::string& boundary);
  void endMultipart(const std::string& boundary);

  SinkBuffer& out_;
  std::vector<Trouble>& lost_;
  std::string seed_;
  size_t boundaries_ = 0;
};

}  // namespace tarn::archive

#endif

// CleanHtml.h - a mail's HTML as a piece of a page of our own, harmless and whole in itself.
//
// Kept is what a reader sees: elements, styles, links, and the pictures that the mail brings along,
// as data: URLs. Gone are scripts, attributes of events, forms, frames, objects, and everything
// that leads elsewhere by itself; a picture that would be fetched leaves a mark, "[image: its
// text]". Tags are written anew, so that none comes out that is not known here.
#ifndef TARN_ARCHIVE_CLEANHTML_H
#define TARN_ARCHIVE_CLEANHTML_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/text/HtmlTokens.h"
#include "archive/writers/MailImages.h"
#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {

class HtmlCleaner {
 public:
  // `paths` are those of the attachments beside the file, or empty.
  HtmlCleaner(MailImages& images, const std::vector<std::string>& paths, SinkBuffer& out)
      : images_(images), paths_(paths), out_(out) {}

  // All of a mail's HTML, UTF-8, in an element that has the attributes of its body.
  void putBody(std::string_view html);

  // The same without that element.
  void put(std::string_view html);

 private:
  void putBodyStyle(const HtmlToken& body);
  void putStart(const HtmlToken& tag);
  void takeBase(const HtmlToken& tag);
  void putAttributes(const HtmlToken& tag);
  void putDeclarations(std::string_view value);
  void putLink(const HtmlToken& tag);
  std::optional<MailImage> loadBackground(const HtmlToken& tag);
  void putBackground(const HtmlToken& tag);
  void putImage(const HtmlToken& tag);
  void putImageMark(const HtmlToken& tag);
  void putRawText(const HtmlToken& raw);
  void putText(std::string_view text);
  void putStyle(std::string_view css);

  MailImages& images_;
  const std::vector<std::string>& paths_;
  SinkBuffer& out_;
  std::string base_;  // what relative addresses are relative to; empty without such
};

// The path of a file as a relative URL.
std::string UrlOfPath(std::string_view path);

// An address as a link may have it: trimmed, without control characters, and absolute but for a
// place of the same page ("#name"). Empty for one of a scheme that is not kept, and for a relative
// one where the mail does not tell its base. Without a scheme, "//host" is of https.
std::string KeptAddress(std::string_view address, std::string_view base);

}  // namespace tarn::archive

#endif

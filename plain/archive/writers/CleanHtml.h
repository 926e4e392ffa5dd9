// CleanHtml.h - a mail's HTML as a piece of a page of our own, harmless and whole in itself.
//
// Kept is what a reader sees: elements, styles, links, and the pictures that the mail brings along,
// as data: URLs. Gone are scripts, attributes of events, forms, frames, objects, and everything
// that leads elsewhere by itself; a picture that would be fetched leaves a mark, "[image: its
// text]". Tags are written anew, so that none comes out that is not known here.
#ifndef TARN_ARCHIVE_CLEANHTML_H
#define TARN_ARCHIVE_CLEANHTML_H

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

  // All of a mail's HTML, UTF-8.
  void put(std::string_view html);

 private:
  void putStart(const HtmlToken& tag);
  void putAttributes(const HtmlToken& tag);
  void putLink(const HtmlToken& tag);
  void putBackground(const HtmlToken& tag);
  void putImage(const HtmlToken& tag);
  void putImageMark(const HtmlToken& tag);
  void putRawText(const HtmlToken& raw);
  void putText(std::string_view text);
  void putStyle(std::string_view css);

  MailImages& images_;
  const std::vector<std::string>& paths_;
  SinkBuffer& out_;
};

// The path of a file as a relative URL.
std::string UrlOfPath(std::string_view path);

// An address as a link may have it: trimmed, without control characters; empty for one of a scheme
// that is not kept, and for one that has none but a place of the same page ("#name").
std::string KeptAddress(std::string_view address);

}  // namespace tarn::archive

#endif

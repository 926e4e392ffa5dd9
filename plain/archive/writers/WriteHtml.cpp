#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "archive/text/BodyText.h"
#include "archive/text/HtmlTokens.h"
#include "archive/writers/CleanHtml.h"
#include "archive/writers/ItemDetails.h"
#include "archive/writers/ItemText.h"
#include "archive/writers/MailImages.h"
#include "archive/writers/SinkBuffer.h"
#include "archive/writers/TextLinks.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {
namespace {

// The policy comes before everything, and the charset within the bytes that browsers look at.
constexpr std::string_view kHead =
    "<!DOCTYPE html>\n"
    "<html>\n"
    "<head>\n"
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
    "style-src 'unsafe-inline'\">\n"
    "<meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width\">\n"
    "<title>";

// The frame follows the colours of the system; mails are written for white. The rules of a mail
// name nothing outside of <main>, and nothing of a mail lies outside of its place, or on paper
// above the header. What a mail lays below its text is above the background of its body, as on a
// page of its own; a picture is at most as wide as the window, since a box that has nothing but
// pictures with places of their own is 0 wide.
constexpr std::string_view kStyle =
    "</title>\n"
    "<style>\n"
    ":root{color-scheme:light dark}\n"
    "body{margin:0;font:15px/1.5 system-ui,sans-serif;background:#fff;color:#1b1b1b}\n"
    ".tarn-head,.tarn-head *{all:revert!important}\n"
    ".tarn-head{padding:16px 24px!important;background:#f2f3f5!important;color:#1b1b1b!important;"
    "border-bottom:1px solid #ccc!important;position:relative!important;"
    "z-index:1!important;font:15px/1.5 system-ui,sans-serif!important}\n"
    ".tarn-head h1{font-size:20px!important;margin:0 0 8px!important}\n"
    ".tarn-head th{text-align:left!important;vertical-align:top!important;"
    "padding:0 16px 2px 0!important;font-weight:600!important;white-space:nowrap!important}\n"
    ".tarn-head td{padding:0 0 2px!important;overflow-wrap:anywhere!important}\n"
    ".tarn-head .tarn-size{opacity:.7!important;padding-left:8px!important}\n"
    ".tarn-mail{display:block!important;position:relative!important;z-index:0!important;contain:"
    "content!important;"
    "overflow:auto!important;background:#fff;color:#000;color-scheme:light}\n"
    "tarn-body,.tarn-text{display:block;padding:16px 24px}\n"
    "tarn-body{isolation:isolate}\n"
    ".tarn-mail img{max-width:calc(100vw - 48px)}\n"
    ".tarn-text p{white-space:pre-wrap;overflow-wrap:anywhere;margin:0 0 1em}\n"
    ".tarn-image{color:#555;border:1px dashed #999;padding:0 4px}\n"
    "@media (prefers-color-scheme:dark){\n"
    "body{background:#1b1c1e;color:#e8e8e8}\n"
    ".tarn-head{background:#26282b!important;color:#e8e8e8!important;"
    "border-color:#444!important}\n"
    ".tarn-head a{color:#8ab4f8!important}\n"
    "}\n"
    "@media print{.tarn-mail{overflow:visible!important;contain:none!important}}\n"
    "</style>\n"
    "</head>\n"
    "<body>\n"
    "<header class=\"tarn-head\">\n";

void PutRow(std::string_view name, const std::string& value, SinkBuffer& out) {
  if (value.empty()) return;
  out.put("<tr><th>").put(name).put("</th><td>").put(EscapedHtml(value)).put("</td></tr>\n");
}

void PutDetail(std::string_view name, std::string_view lines, SinkBuffer& out) {
  out.put("<tr><th>").put(name).put("</th><td>");
  for (bool isFirst = true; !lines.empty(); isFirst = false) {
    const size_t end = std::min(lines.find('\n'), lines.size());
    out.put(isFirst ? "" : "<br>\n").put(EscapedHtml(lines.substr(0, end)));
    lines.remove_prefix(std::min(end + 1, lines.size()));
  }
  out.put("</td></tr>\n");
}

void PutAttachmentRow(const std::vector<Attachment>& attachments, const AttachmentPaths& paths,
                      SinkBuffer& out) {
  if (attachments.empty()) return;
  out.put("<tr><th>Attachments</th><td>");
  for (size_t index = 0; index < attachments.size() && !out.isFull(); ++index) {
    const Attachment& attachment = attachments[index];
    const bool hasFile = index < paths.size() && !paths[index].empty();
    if (index != 0) out.put("<br>\n");
    if (hasFile) {
      out.put("<a href=\"").put(UrlOfPath(paths[index])).put("\" rel=\"noopener noreferrer\">");
    }
    out.put(EscapedHtml(AttachmentTitle(attachment, index)));
    if (hasFile) out.put("</a>");
    if (attachment.size) {
      out.put("<span class=\"tarn-size\">").put(SizeText(*attachment.size)).put("</span>");
    }
  }
  out.put("</td></tr>\n");
}

void PutHeader(Item& item, const AttachmentPaths& paths, SinkBuffer& out) {
  const ItemFields& fields = item.fields(Detail::Envelope);
  const std::string subject = EscapedHtml(OneLine(fields.subject));
  out.put(kHead).put(subject).put(kStyle);
  if (!subject.empty()) out.put("<h1>").put(subject).put("</h1>\n");
  out.put("<table>\n");
  PutRow("From", AddressText(fields.from), out);
  if (fields.sender) PutRow("Sender", AddressText(*fields.sender), out);
  PutRow("To", AddressesText(fields.to), out);
  PutRow("Cc", AddressesText(fields.cc), out);
  PutRow("Bcc", AddressesText(fields.bcc), out);
  const std::optional<Moment>& date = fields.sent ? fields.sent : fields.received;
  if (date) PutRow("Date", DateText(*date, UnknownZone::Utc), out);
  PutRow("Subject", OneLine(fields.subject), out);
  for (const auto& [label, value] : DetailsOf(item)) PutDetail(label, ManyLines(value), out);
  PutAttachmentRow(item.attachments(), paths, out);
  out.put("</table>\n</header>\n");
}

void PutBody(Item& item, const AttachmentPaths& paths, SinkBuffer& out,
             std::vector<Trouble>& lost) {
  Bodies bodies = item.bodies();
  AppendTroubles(bodies.troubles, lost);
  if (bodies.html) {
    std::string html = Utf8OfHtml(*bodies.html);
    DropControls(html);
    bodies = {};
    MailImages images(item, lost);
    std::string_view text = html;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    HtmlCleaner(images, paths, out).putBody(text);
    return;
  }
  const bool hasText = bodies.text && !bodies.text->empty();
  if (!hasText && bodies.rtf) bodies.text = TextOfRtf(*bodies.rtf);
  out.put("<div class=\"tarn-text\">\n");
  if (bodies.text) PutParagraphs(ManyLines(*bodies.text), out);
  out.put("</div>");
}

}  // namespace

Written WriteHtml(Item& item, const AttachmentPaths& attachments, ByteSink& sink) {
  Written written;
  SinkBuffer out(sink);
  PutHeader(item, attachments, out);
  out.put("<main class=\"tarn-mail\">\n");
  PutBody(item, attachments, out, written.lost);
  out.put("\n</main>\n</body>\n</html>\n");
  AppendTroubles(item.troubles(), written.lost);
  written.full = out.finish();
  return written;
}

}  // namespace tarn::archive

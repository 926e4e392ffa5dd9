// SampleMails.h - a few whole mails and the documents they become, written out by hand.
#ifndef TARN_TESTS_SUPPORT_SAMPLEMAILS_H
#define TARN_TESTS_SUPPORT_SAMPLEMAILS_H

#include <string>

#include "support/HeaderRows.h"

namespace tarn::test {

// The header fields that the sample mails share, and their rows.
inline const std::string kSampleFields =
    "From: Ann <ann@example.com>\r\n"
    "To: Bob <bob@example.com>\r\n"
    "Date: Sat, 21 Nov 2026 10:00:00 +0000\r\n"
    "Subject: Hello\r\n";

inline std::string SampleHtmlBlock() {
  return HtmlBlock(EmlHtmlRow("From:", "Ann &lt;ann@example.com&gt;") +
                   EmlHtmlRow("To:", "Bob &lt;bob@example.com&gt;") +
                   EmlHtmlRow("Sent:", "Sat, 21 Nov 2026 10:00:00 +0000") +
                   EmlHtmlRow("Subject:", "Hello"));
}

inline const std::string kSampleTextBlock =
    "From:   \tAnn <ann@example.com>\r\n"
    "To:     \tBob <bob@example.com>\r\n"
    "Sent:   \tSat, 21 Nov 2026 10:00:00 +0000\r\n"
    "Subject:\tHello\r\n"
    "\r\n";

// One HTML part, no multipart.
inline const std::string kHtmlMail = kSampleFields +
                                     "Content-Type: text/html\r\n"
                                     "\r\n"
                                     "<html><head></head><body><p>Hi</p></body></html>";

inline std::string HtmlMailDocument() {
  return "<html><head><meta http-equiv=Content-Type content=\"text/html; charset=utf-8\"></head>"
         "<body>" +
         SampleHtmlBlock() + "<p>Hi</p></body></html>";
}

// One plain part, no Content-Type at all.
inline const std::string kPlainMail = kSampleFields + "\r\nHi there\r\n";

inline const std::string kPlainMailDocument = kSampleTextBlock + "Hi there\r\n";

// 60 bytes that serve as an image, and their base64 form.
inline const std::string kImageBytes =
    "0123456789abcdefghij0123456789ABCDEFGHIJ0123456789klmnopqrst";
inline const std::string kImageBase64 =
    "MDEyMzQ1Njc4OWFiY2RlZmdoaWowMTIzNDU2Nzg5QUJDREVGR0hJSjAxMjM0NTY3ODlrbG1ub3BxcnN0";

// HTML with an inline image after it, and an attachment with a full set of properties.
inline const std::string kImageMail =
    kSampleFields +
    "Content-Type: multipart/related; boundary=\"sep\"\r\n"
    "\r\n"
    "--sep\r\n"
    "Content-Type: text/html\r\n"
    "\r\n"
    "<html><head></head><body><img src=\"cid:pic@x\"></body></html>\r\n"
    "--sep\r\n"
    "Content-Type: image/png; name=\"pic.png\"\r\n"
    "Content-ID: <pic@x>\r\n"
    "Content-Disposition: inline; filename=\"pic.png\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n" +
    kImageBase64 +
    "\r\n"
    "--sep\r\n"
    "Content-Type: application/pdf\r\n"
    "Content-Description: The report\r\n"
    "Content-Disposition: attachment; filename=\"report.pdf\";\r\n"
    " creation-date=\"Sat, 21 Nov 2026 10:00:00 GMT\";\r\n"
    " modification-date=\"Sun, 22 Nov 2026 11:30:05 GMT\"\r\n"
    "\r\n"
    "%PDF-1.4 not much of one\r\n"
    "--sep--\r\n";

// A plain body and one attachment after it.
inline const std::string kAttachmentMail =
    kSampleFields +
    "Content-Type: multipart/mixed; boundary=sep\r\n"
    "\r\n"
    "--sep\r\n"
    "Content-Type: text/plain\r\n"
    "\r\n"
    "Hi\r\n"
    "--sep\r\n"
    "Content-Type: application/pdf\r\n"
    "Content-Description: The report\r\n"
    "Content-Disposition: attachment; filename=report.pdf\r\n"
    "\r\n"
    "%PDF-1.4 not much of one\r\n"
    "--sep--\r\n";

}  // namespace tarn::test

#endif

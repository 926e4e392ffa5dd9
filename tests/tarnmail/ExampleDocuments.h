// ExampleDocuments.h - the documents that the mails of examples/ become, written out by hand.
#ifndef TARN_TESTS_TARNMAIL_EXAMPLEDOCUMENTS_H
#define TARN_TESTS_TARNMAIL_EXAMPLEDOCUMENTS_H

#include <string>

#include "support/SampleMails.h"

namespace tarn::test {

// `image` is what the image element names as its source.
inline std::string InlineImageDocument(const std::string& image) {
  return "<html>\r\n"
         "<head><meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">"
         "<title>Orders</title></head>\r\n"
         "<body style=\"font-family: sans-serif\">" +
         HtmlBlock(EmlHtmlRow("From:", "Clara Weber &lt;clara.weber@example.com&gt;") +
                   EmlHtmlRow("To:", "Daniel Okafor &lt;daniel.okafor@example.org&gt;") +
                   EmlHtmlRow("Sent:", "Thu, 12 Mar 2026 09:24:51 +0100") +
                   EmlHtmlRow("Cc:", "Sales Team &lt;sales@example.com&gt;") +
                   EmlHtmlRow("Subject:", "Orders in the first quarter")) +
         "\r\n"
         "<p>Hello Daniel,</p>\r\n"
         "<p>the chart shows the orders of <b>January</b>, <b>February</b> and <b>March</b>. March "
         "stands at 12&nbsp;480&nbsp;\u20AC, the best so far.</p>\r\n"
         "<p><img src=\"" +
         image +
         "\" width=\"128\" height=\"96\" alt=\"Orders by month\"></p>\r\n"
         "<p>Greetings from Cologne<br>Clara</p>\r\n"
         "</body>\r\n"
         "</html>\r\n";
}

inline const std::string kChartBase64 =
    "iVBORw0KGgoAAAANSUhEUgAAACAAAAAYCAIAAAAUMWhjAAAANklEQVR42mP4T2PAMOItOKahgYZG"
    "LRiaFoimHkBDoxaMWoDVAr1aIzQ0asGoBaMWUMuCKBoDAEXPw+WYnvxYAAAAAElFTkSuQmCC";

inline std::string NestedDocument() {
  return "<html>\r\n"
         "<head><meta http-equiv=Content-Type content=\"text/html; charset=utf-8\">"
         "<title>Minutes</title></head>\r\n"
         "<body>" +
         HtmlBlock(EmlHtmlRow("From:", "\"Nora Lindqvist\" &lt;nora@example.org&gt;") +
                   EmlHtmlRow("To:",
                              "Paul Meyer &lt;paul@example.com&gt;, Ines Costa "
                              "&lt;ines@example.com&gt;") +
                   EmlHtmlRow("Sent:", "Tue, 19 May 2026 16:40:12 +0200") +
                   EmlHtmlRow("Subject:", "Minutes, and the rooms for June") +
                   EmlHtmlRow("Importance:", "High")) +
         "\r\n"
         "<p>Hello Paul, hello Ines,</p>\r\n"
         "<p>the <i>minutes</i> of today's meeting and the <i>plan of the rooms</i> are attached, "
         "and so is the mail of the caretaker.</p>\r\n"
         "<p>Nora</p>\r\n"
         "</body>\r\n"
         "</html>\r\n";
}

inline const std::string kMinutes =
    "1. Budget: agreed.\r\n2. Summer party: 26 June.\r\n3. Next meeting: 16 June.\r\n";

inline const std::string kRooms =
    "Room,Day,From,To\r\n"
    "Blue,Monday,09:00,10:30\r\n"
    "Green,Tuesday,13:00,14:00\r\n"
    "Blue,Friday,11:00,12:00\r\n";

inline const std::string kCaretakerMail =
    "From: Caretaker <caretaker@example.org>\r\n"
    "To: Nora Lindqvist <nora@example.org>\r\n"
    "Date: Mon, 18 May 2026 08:15:00 +0200\r\n"
    "Subject: Keys for the blue room\r\n"
    "MIME-Version: 1.0\r\n"
    "Content-Type: text/plain; charset=us-ascii\r\n"
    "\r\n"
    "The keys for the blue room are at the reception from Monday on.\r\n";

inline const std::string kJapaneseDocument =
    "From:   \t山田太郎 <taro.yamada@example.com>\r\n"
    "To:     \thanako.sato@example.org\r\n"
    "Sent:   \tMon, 6 Apr 2026 18:05:00 +0900\r\n"
    "Subject:\t会議の資料について\r\n"
    "\r\n"
    "佐藤様\r\n"
    "\r\n"
    "お世話になっております。\r\n"
    "明日の会議の資料をお送りします。\r\n"
    "場所は第２会議室、時間は１０時からです。\r\n"
    "\r\n"
    "よろしくお願いいたします。\r\n"
    "山田\r\n";

// The mark of 7-bit content comes before the header rows.
inline const std::string kSevenBitDocument =
    "+/vFrom:   \tAda Brown <ada@example.com>\r\n"
    "To:     \tBen Carter <ben@example.org>\r\n"
    "Sent:   \tFri, 9 Jan 2026 07:58:03 +0000\r\n"
    "Subject:\tLunch on Friday?\r\n"
    "\r\n"
    "Hi Ben,\r\n"
    "\r\n"
    "shall we have lunch at the harbour at noon?\r\n"
    "\r\n"
    "Ada\r\n";

}  // namespace tarn::test

#endif

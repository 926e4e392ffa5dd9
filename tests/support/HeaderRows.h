// HeaderRows.h - the header block as it is in a document, byte for byte, and the labels of its rows
// in the nine languages.
//
// A "mail" row is of a store's message or of an MSG file, an "eml" row of a mail file.
#ifndef TARN_TESTS_SUPPORT_HEADERROWS_H
#define TARN_TESTS_SUPPORT_HEADERROWS_H

#include <cstdint>
#include <string>

namespace tarn::test {

// HTML. Values are as they are in the document: escaped where that escapes.
inline std::string MailHtmlRow(const std::string& label, const std::string& value) {
  return "\n<tr><td style = 'width:87pt; padding: 0px; vertical-align:top'><b><span style = "
         "'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; color:black'>" +
         label +
         "</span></b></td><td style = 'padding: 0px'><span style = "
         "'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; color:black; "
         "word-wrap: break-word;'>" +
         value + "</span></td></tr>\r\n";
}

inline std::string EmlHtmlRow(const std::string& label, const std::string& value) {
  return "<tr><td style = 'width:87pt; padding: 0px; vertical-align:top'><b><span lang = EN-US "
         "style = 'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; "
         "color:black; mso-ansi-language:EN-US'>" +
         label +
         "</span></b></td><td style = 'padding: 0px'><span lang = EN-US style = "
         "'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; color:black; "
         "mso-ansi-language:EN-US; word-wrap: break-word;'>" +
         value + "</span></td></tr>\r\n";
}

inline std::string HtmlBlock(const std::string& rows) {
  return "<table style = 'border-collapse: collapse ; table-layout: fixed; width: 100%'>\r\n" +
         rows + "</table>\r\n<p class=MsoNormal><o:p>&nbsp;</o:p></p>\r\n";
}

// RTF. Label and value are RTF already; the label of an "eml" row brings its tabs.
inline std::string MailRtfRow(const std::string& label, const std::string& value) {
  return "\r"
         R"({\rtlch\fcs1 \ab\af37 \ltrch\fcs0 \b\cf0\insrsid5716485 )" +
         label + R"(\tab }{\rtlch\fcs1 \af37 \ltrch\fcs0 \cf0 )" + value +
         R"(\insrsid5716485 \par })"
         "\r\n";
}

inline std::string EmlRtfRow(const std::string& label, const std::string& value) {
  return R"({\rtlch\fcs1 \ab\af37 \ltrch\fcs0 \b\cf0\insrsid5716485 )" + label +
         R"(}{\rtlch\fcs1 \af37 \ltrch\fcs0 \cf0 )" + value +
         R"(\insrsid5716485 \par })"
         "\r\n";
}

// The empty paragraph after the rows.
inline const std::string kRtfEmptyParagraph =
    R"(\pard \ltrpar\ql \li0\ri0\widctlpar\wrapdefault\aspalpha\aspnum\faauto\adjustright)"
    R"(\rin0\lin0\itap0 {\rtlch\fcs1 \af1 \ltrch\fcs0 \insrsid5716485 \par })";

// Of a message of a store or an MSG file.
struct HeaderLabels {
  uint32_t language;
  std::string from, sent, to, subject, importance, high;
};

inline const HeaderLabels kHeaderLabels[] = {
    {0x0409, "From:      ", "Sent:      ", "To:        ", "Subject:   ", "Importance:", "High"},
    {0x0407, "Von:       ", "Gesendet:  ", "An:        ", "Betreff:   ", "Priorit\u00e4t: ",
     "H\u00f6"
     "ch"},
    {0x0418, "De la:     ", "Trimis:    ", "C\u0103tre:     ", "Subiect:   ",
     "Importan\u021b\u0103:", "Maxim"},
    {0x040C,
     "De:        ", "Envoy\u00e8:    ", "\u00c0:         ", "Objet:     ", "Importance:", "Haute"},
    {0x0411, "差出人:  ", "送信日時:", "宛先:    ", "件名:    ", "重要度:  ", "高"},
    {0x0804, "发件人:  ", "发送时间:", "收件人:  ", "主题:    ", "重要性:  ", "高"},
    {0x0404, "寄件者:  ", "寄件日期:", "收件者:  ", "主旨:    ", "重要性:  ", "高"},
    {0x0412, "보낸 사람:", "보낸 날짜:", "받는 사람:", "제목:     ", "중요도:  ", "높음"},
    {0x2C01, "نمن :  ", "تاريخ الإرسال:", "إلى :  ", "الموضوع:", "الأهمية: ", "عالية"}};

inline const HeaderLabels& kEnglishLabels = kHeaderLabels[0];

}  // namespace tarn::test

#endif

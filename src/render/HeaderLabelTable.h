// HeaderLabelTable.h - the labels of the header block in nine languages, and the regional languages
// that share a set with another.
//
// Texts are UTF-8 and reach the document byte for byte; the blanks that pad them to one width are
// part of them. Arabic is in reading order, first letter first.
#ifndef TARN_RENDER_HEADER_LABEL_TABLE_H
#define TARN_RENDER_HEADER_LABEL_TABLE_H

#include <array>
#include <cstdint>

namespace tarn {

struct HeaderLabelSet {
  uint32_t language;                 // a Windows LANGID
  std::array<const char*, 9> texts;  // by HeaderRow
};

// The first set serves every language that has none. The Cc label of 0x0411 is that of 0x0804.
inline constexpr std::array<HeaderLabelSet, 9> kHeaderLabelSets = {{
    {0x0409,
     {"From:      ", "To:        ", "Bcc:       ", "Cc:        ", "Sent:      ", "Subject:   ",
      "Importance:", "High", "Low"}},
    {0x0407,
     {"Von:       ", "An:        ", "Bcc:       ", "Cc:        ", "Gesendet:  ", "Betreff:   ",
      "Priorität: ", "Höch", "Niedrig"}},
    {0x0418,
     {"De la:     ", "Către:     ", "Bcc:       ", "Cc:        ", "Trimis:    ", "Subiect:   ",
      "Importanță:", "Maxim", "Minim"}},
    {0x040C,
     {"De:        ", "À:         ", "Bcc:       ", "Cc:        ", "Envoyè:    ", "Objet:     ",
      "Importance:", "Haute", "Faible"}},
    {0x0411,
     {"差出人:  ", "宛先:    ", "Bcc:    ", "抄送:   ", "送信日時:", "件名:    ", "重要度:  ", "高",
      "低"}},
    {0x0804,
     {"发件人:  ", "收件人:  ", "Bcc:    ", "抄送:   ", "发送时间:", "主题:    ", "重要性:  ", "高",
      "低"}},
    {0x0404,
     {"寄件者:  ", "收件者:  ", "Bcc:    ", "副本:   ", "寄件日期:", "主旨:    ", "重要性:  ", "高",
      "低"}},
    {0x0412,
     {"보낸 사람:", "받는 사람:", "Bcc:    ", "참조:   ", "보낸 날짜:", "제목:     ", "중요도:  ",
      "높음", "낮음"}},
    {0x2C01,
     {"نمن :  ", "إلى :  ", "Bcc:   ", "نسخة:  ", "تاريخ الإرسال:", "الموضوع:", "الأهمية: ",
      "عالية", "منخفضة"}},
}};

struct LanguageFold {
  uint32_t from;
  uint32_t to;
};

// Searched from the top. 0x1401 is here twice, and 0x0801 not at all: its labels are English.
inline constexpr std::array<LanguageFold, 21> kLanguageFolds = {{
    {0x0004, 0x0804}, {0x7804, 0x0804}, {0x1004, 0x0804}, {0x0C04, 0x0404}, {0x7C04, 0x0404},
    {0x1404, 0x0404}, {0x1401, 0x2C01}, {0x1401, 0x2C01}, {0x3C01, 0x2C01}, {0x0C01, 0x2C01},
    {0x3401, 0x2C01}, {0x3001, 0x2C01}, {0x1001, 0x2C01}, {0x1801, 0x2C01}, {0x2001, 0x2C01},
    {0x4001, 0x2C01}, {0x0401, 0x2C01}, {0x2801, 0x2C01}, {0x1C01, 0x2C01}, {0x3801, 0x2C01},
    {0x2401, 0x2C01},
}};

}  // namespace tarn

#endif

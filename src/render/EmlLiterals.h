// EmlLiterals.h - the constant texts around the fields of a mail file's header block, by kind of
// document. Labels are English whatever the host's language.
#ifndef TARN_RENDER_EML_LITERALS_H
#define TARN_RENDER_EML_LITERALS_H

#include <algorithm>
#include <array>
#include <string_view>

#include "TarnPst.h"
#include "render/HtmlDocument.h"
#include "render/RtfSplice.h"

namespace tarn {

// What a row opens with, label included.
struct EmlRowOpeners {
  TarnDocumentKind kind;
  std::array<std::string_view, 7> texts;  // by HeaderRow
};

// What a row and the whole block end with.
struct EmlTails {
  TarnDocumentKind kind;
  std::string_view row;
  std::string_view block;
};

// Constant texts put together into one while compiling.
template <const std::string_view&... kParts>
class Joined {
  static constexpr auto kBytes = [] {
    std::array<char, (kParts.size() + ...)> bytes = {};
    auto out = bytes.begin();
    ((out = std::copy(kParts.begin(), kParts.end(), out)), ...);
    return bytes;
  }();

 public:
  static constexpr std::string_view kText{kBytes.data(), kBytes.size()};
};

namespace eml_label {
inline constexpr std::string_view kFrom = "From:";
inline constexpr std::string_view kTo = "To:";
inline constexpr std::string_view kBcc = "Bcc:";
inline constexpr std::string_view kCc = "Cc:";
inline constexpr std::string_view kSent = "Sent:";
inline constexpr std::string_view kSubject = "Subject:";
inline constexpr std::string_view kImportance = "Importance:";
}  // namespace eml_label

// Around a label of the HTML table. Unlike the row of a MailMessage it does not begin with a line
// feed.
inline constexpr std::string_view kEmlHtmlHead =
    "<tr><td style = 'width:87pt; padding: 0px; vertical-align:top'><b><span lang = EN-US style = "
    "'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; color:black; "
    "mso-ansi-language:EN-US'>";
inline constexpr std::string_view kEmlHtmlMiddle =
    "</span></b></td><td style = 'padding: 0px'><span lang = EN-US style = "
    "'font-family:\"Calibri\",\"sans-serif\";mso-bidi-font-family:Calibri; color:black; "
    "mso-ansi-language:EN-US; word-wrap: break-word;'>";

template <const std::string_view& kLabel>
inline constexpr std::string_view kEmlHtmlOpener =
    Joined<kEmlHtmlHead, kLabel, kEmlHtmlMiddle>::kText;

// Around a label in RTF. Unlike the row of a MailMessage it does not begin with a CR. The labels
// are not padded; tabs align the fields.
inline constexpr std::string_view kEmlRtfHead =
    "{\\rtlch\\fcs1 \\ab\\af37 \\ltrch\\fcs0 \\b\\cf0\\insrsid5716485 ";
inline constexpr std::string_view kEmlRtfThreeTabs = "\\tab \\tab \\tab ";
inline constexpr std::string_view kEmlRtfFourTabs = "\\tab \\tab \\tab \\tab ";
inline constexpr std::string_view kEmlRtfMiddle = "}{\\rtlch\\fcs1 \\af37 \\ltrch\\fcs0 \\cf0 ";

template <const std::string_view& kLabel, const std::string_view& kTabs>
inline constexpr std::string_view kEmlRtfOpener =
    Joined<kEmlRtfHead, kLabel, kTabs, kEmlRtfMiddle>::kText;

// One row of each table for every kind that is rendered. The text row of Importance ends with a
// blank where the others have a tab; in RTF it has the four tabs of a short label.
inline constexpr std::array<EmlRowOpeners, 3> kEmlRowOpeners = {{
    {DocumentHtml,
     {kEmlHtmlOpener<eml_label::kFrom>, kEmlHtmlOpener<eml_label::kTo>,
      kEmlHtmlOpener<eml_label::kBcc>, kEmlHtmlOpener<eml_label::kCc>,
      kEmlHtmlOpener<eml_label::kSent>, kEmlHtmlOpener<eml_label::kSubject>,
      kEmlHtmlOpener<eml_label::kImportance>}},
    {DocumentRtf,
     {kEmlRtfOpener<eml_label::kFrom, kEmlRtfFourTabs>,
      kEmlRtfOpener<eml_label::kTo, kEmlRtfFourTabs>,
      kEmlRtfOpener<eml_label::kBcc, kEmlRtfThreeTabs>,
      kEmlRtfOpener<eml_label::kCc, kEmlRtfFourTabs>,
      kEmlRtfOpener<eml_label::kSent, kEmlRtfFourTabs>,
      kEmlRtfOpener<eml_label::kSubject, kEmlRtfThreeTabs>,
      kEmlRtfOpener<eml_label::kImportance, kEmlRtfFourTabs>}},
    {DocumentText,
     {"From:   \t", "To:     \t", "Bcc:    \t", "Cc:     \t", "Sent:   \t", "Subject:\t",
      "Importance: "}},
}};

inline constexpr std::array<EmlTails, 3> kEmlTails = {{
    {DocumentHtml, kHtmlRowTail, kHtmlBlockTail},
    {DocumentRtf, kRtfRowTail, kRtfSeparator},
    {DocumentText, "\r\n", "\r\n"},
}};

}  // namespace tarn

#endif

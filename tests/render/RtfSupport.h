// RtfSupport.h - the rows of the header block in RTF, as they are to stand in a document.
#ifndef TARN_TESTS_RENDER_RTFSUPPORT_H
#define TARN_TESTS_RENDER_RTFSUPPORT_H

#include <string>

namespace tarn::test {

// A row of a message of a store or an MSG file. Label and value are RTF already.
inline std::string MailRtfRow(const std::string& label, const std::string& value) {
  return "\r"
         R"({\rtlch\fcs1 \ab\af37 \ltrch\fcs0 \b\cf0\insrsid5716485 )" +
         label + R"(\tab }{\rtlch\fcs1 \af37 \ltrch\fcs0 \cf0 )" + value +
         R"(\insrsid5716485 \par })"
         "\r\n";
}

// A row of a mail file; the label brings its tabs.
inline std::string EmlRtfRow(const std::string& label, const std::string& value) {
  return R"({\rtlch\fcs1 \ab\af37 \ltrch\fcs0 \b\cf0\insrsid5716485 )" + label +
         R"(}{\rtlch\fcs1 \af37 \ltrch\fcs0 \cf0 )" + value +
         R"(\insrsid5716485 \par })"
         "\r\n";
}

// The empty paragraph behind the rows.
inline const std::string kRtfEmptyParagraph =
    R"(\pard \ltrpar\ql \li0\ri0\widctlpar\wrapdefault\aspalpha\aspnum\faauto\adjustright)"
    R"(\rin0\lin0\itap0 {\rtlch\fcs1 \af1 \ltrch\fcs0 \insrsid5716485 \par })";

}  // namespace tarn::test

#endif

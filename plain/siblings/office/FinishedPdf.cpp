#include "siblings/office/FinishedPdf.h"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <memory>

namespace tarn::pages {

namespace {

// Are there digits where the pattern has a 0, and elsewhere its own characters?
bool Matches(std::string_view text, std::string_view pattern) {
  if (text.size() != pattern.size()) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (pattern[i] == '0' ? !digit : text[i] != pattern[i]) return false;
  }
  return true;
}

QPDFObjectHandle Information(const PdfProperties& properties) {
  QPDFObjectHandle information = QPDFObjectHandle::newDictionary();
  const auto put = [&information](const char* key, const std::string& text) {
    if (!text.empty()) information.replaceKey(key, QPDFObjectHandle::newUnicodeString(text));
  };
  put("/Producer", "tarnmail");
  put("/Title", properties.title);
  put("/Author", properties.author);
  put("/CreationDate", PdfDate(properties.date).value_or(""));
  return information;
}

// What the writer of the pages has left of itself.
void RemoveTraces(QPDF& pdf) {
  pdf.getRoot().removeKey("/Metadata");
  pdf.getRoot().removeKey("/OpenAction");
  QPDFObjectHandle trailer = pdf.getTrailer();
  for (const std::string& key : trailer.getKeys()) {
    if (key != "/Root" && key != "/Size") trailer.removeKey(key);
  }
}

}  // namespace

std::optional<std::string> PdfDate(std::string_view date) {
  constexpr std::string_view kTime = "0000-00-00T00:00:00";
  if (date.size() < kTime.size() || !Matches(date.substr(0, kTime.size()), kTime)) {
    return std::nullopt;
  }
  std::string result = "D:";
  for (const char c : date.substr(0, kTime.size())) {
    if (c >= '0' && c <= '9') result += c;
  }
  const std::string_view offset = date.substr(kTime.size());
  if (offset.empty()) return result;
  if (offset == "Z") return result + 'Z';
  if (!Matches(offset, "+00:00") && !Matches(offset, "-00:00")) return std::nullopt;
  return result.append(offset.substr(0, 3))
      .append(1, '\'')
      .append(offset.substr(4))
      .append(1, '\'');
}

std::string FinishedPdf(const std::string& pdf, const PdfProperties& properties) try {
  QPDF document;
  document.setSuppressWarnings(true);
  document.processMemoryFile("pages", pdf.data(), pdf.size());
  RemoveTraces(document);
  document.getTrailer().replaceKey("/Info", document.makeIndirectObject(Information(properties)));
  if (!properties.title.empty()) {
    QPDFObjectHandle preferences = QPDFObjectHandle::newDictionary();
    preferences.replaceKey("/DisplayDocTitle", QPDFObjectHandle::newBool(true));
    document.getRoot().replaceKey("/ViewerPreferences", preferences);
  }
  QPDFWriter writer(document);
  writer.setOutputMemory();
  writer.setDeterministicID(true);
  writer.setObjectStreamMode(qpdf_o_generate);
  writer.write();
  const std::shared_ptr<Buffer> buffer = writer.getBufferSharedPointer();
  return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
} catch (const QPDFExc& failure) {
  throw PageFailure(Trouble::BadDocument,
                    std::string("the PDF cannot be finished: ") + failure.what());
}

}  // namespace tarn::pages

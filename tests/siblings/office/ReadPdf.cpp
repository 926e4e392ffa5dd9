#include "ReadPdf.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

namespace tarn::test {

PdfFacts ReadPdf(const std::string& pdf) {
  QPDF document;
  document.processMemoryFile("test", pdf.data(), pdf.size());
  PdfFacts facts;
  QPDFObjectHandle information = document.getTrailer().getKey("/Info");
  for (const std::string& key : information.getKeys()) {
    facts.properties[key] = information.getKey(key).getUTF8Value();
  }
  facts.trailerKeys = document.getTrailer().getKeys();
  facts.rootKeys = document.getRoot().getKeys();
  QPDFObjectHandle preferences = document.getRoot().getKey("/ViewerPreferences");
  facts.showsTitle =
      preferences.isDictionary() && preferences.getKey("/DisplayDocTitle").getBoolValue();
  facts.id = document.getTrailer().getKey("/ID").unparse();
  for (auto& page : QPDFPageDocumentHelper(document).getAllPages()) {
    ++facts.pages;
    for (auto& annotation : page.getAnnotations("/Link")) {
      QPDFObjectHandle uri = annotation.getObjectHandle().getKey("/A").getKey("/URI");
      facts.links.insert(uri.isString() ? uri.getStringValue() : "inside");
    }
  }
  for (auto& object : document.getAllObjects()) facts.objects += object.unparseResolved() + '\n';
  return facts;
}

}  // namespace tarn::test

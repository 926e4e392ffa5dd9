#include "ReadMailPdf.h"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEFStreamObjectHelper.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFOutlineDocumentHelper.hh>

#include <memory>

namespace tarn::test {
namespace {

std::string Data(QPDFObjectHandle stream) {
  const std::shared_ptr<Buffer> data = stream.getStreamData(qpdf_dl_all);
  return {reinterpret_cast<const char*>(data->getBuffer()), data->getSize()};
}

std::string NameOf(QPDFObjectHandle object) { return object.isName() ? object.getName() : ""; }

class Reading {
 public:
  explicit Reading(const std::string& pdf) {
    document_.processMemoryFile("test", pdf.data(), pdf.size());
    pages_ = document_.getAllPages();
  }

  MailPdfFacts facts() {
    MailPdfFacts facts;
    for (QPDFObjectHandle& page : pages_) facts.contents.push_back(Data(page.getKey("/Contents")));
    facts.links = links();
    facts.files = files();
    QPDFObjectHandle root = document_.getRoot();
    if (root.getKey("/AF").isArray()) {
      facts.associated = static_cast<size_t>(root.getKey("/AF").getArrayNItems());
    }
    addMarks(QPDFOutlineDocumentHelper(document_).getTopLevelOutlines(), 0, facts.marks);
    if (root.hasKey("/Metadata")) facts.metadata = Data(root.getKey("/Metadata"));
    facts.pageMode = NameOf(root.getKey("/PageMode"));
    QPDFObjectHandle information = document_.getTrailer().getKey("/Info");
    if (information.isDictionary() && information.hasKey("/Title")) {
      facts.title = information.getKey("/Title").getUTF8Value();
    }
    return facts;
  }

 private:
  size_t pageOf(QPDFObjectHandle page) {
    return static_cast<size_t>(document_.findPage(page.getObjGen()));
  }

  std::vector<std::pair<size_t, size_t>> links() {
    std::vector<std::pair<size_t, size_t>> links;
    for (size_t i = 0; i < pages_.size(); ++i) {
      QPDFObjectHandle annotations = pages_[i].getKey("/Annots");
      if (!annotations.isArray()) continue;
      for (QPDFObjectHandle annotation : annotations.getArrayAsVector()) {
        QPDFObjectHandle destination = annotation.getKey("/Dest");
        if (destination.isArray()) links.emplace_back(i, pageOf(destination.getArrayItem(0)));
      }
    }
    return links;
  }

  std::vector<PdfFile> files() {
    std::vector<PdfFile> files;
    QPDFEmbeddedFileDocumentHelper helper(document_);
    for (const auto& [key, specification] : helper.getEmbeddedFiles()) {
      QPDFEFStreamObjectHelper stream(specification->getEmbeddedFileStream());
      PdfFile file;
      file.name = specification->getFilename();
      file.mediaType = stream.getSubtype();
      file.relation = NameOf(specification->getObjectHandle().getKey("/AFRelationship"));
      file.description = specification->getDescription();
      file.bytes = Data(stream.getObjectHandle());
      file.page = pageWith(specification->getObjectHandle());
      files.push_back(file);
    }
    return files;
  }

  std::optional<size_t> pageWith(QPDFObjectHandle specification) {
    for (size_t i = 0; i < pages_.size(); ++i) {
      QPDFObjectHandle associated = pages_[i].getKey("/AF");
      if (!associated.isArray()) continue;
      for (QPDFObjectHandle one : associated.getArrayAsVector()) {
        if (one.getObjGen() == specification.getObjGen()) return i;
      }
    }
    return std::nullopt;
  }

  void addMarks(std::vector<QPDFOutlineObjectHelper> outlines, size_t depth,
                std::vector<PdfMark>& marks) {
    for (QPDFOutlineObjectHelper& outline : outlines) {
      marks.push_back({outline.getTitle(), pageOf(outline.getDestPage()), depth});
      addMarks(outline.getKids(), depth + 1, marks);
    }
  }

  QPDF document_;
  std::vector<QPDFObjectHandle> pages_;
};

}  // namespace

MailPdfFacts ReadMailPdf(const std::string& pdf) { return Reading(pdf).facts(); }

}  // namespace tarn::test

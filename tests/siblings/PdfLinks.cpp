#include "siblings/PdfLinks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

#include "support/TempDirectory.h"

namespace tarn::test {
namespace {

std::string OutputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string output;
  std::array<char, 4096> buffer = {};
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe.get())) {
    output.append(buffer.data(), count);
  }
  return output;
}

std::string WordsWithin(const std::string& file, const PdfLink& link) {
  constexpr int kPerPoint = 10;
  constexpr double kInside = 0.5;  // what only touches it is not within it
  const auto area = [](double points) { return std::to_string(std::lround(points * kPerPoint)); };
  const std::string page = std::to_string(link.page);
  std::istringstream text(
      OutputOf("pdftotext -r " + std::to_string(72 * kPerPoint) + " -f " + page + " -l " + page +
               " -x " + area(link.left + kInside) + " -y " + area(link.top) + " -W " +
               area(link.width - 2 * kInside) + " -H " + area(link.height) + " '" + file + "' -"));
  std::string words;
  for (std::string word; text >> word;) words += (words.empty() ? "" : " ") + word;
  return words;
}

PdfLink LinkOf(QPDFObjectHandle annotation, const QPDFObjectHandle::Rectangle& paper) {
  const QPDFObjectHandle::Rectangle box = annotation.getKey("/Rect").getArrayAsRectangle();
  PdfLink link;
  link.left = std::min(box.llx, box.urx) - paper.llx;
  link.top = paper.ury - std::max(box.lly, box.ury);
  link.width = std::abs(box.urx - box.llx);
  link.height = std::abs(box.ury - box.lly);
  if (annotation.hasKey("/A") && annotation.getKey("/A").hasKey("/URI")) {
    link.to = annotation.getKey("/A").getKey("/URI").getStringValue();
  }
  return link;
}

}  // namespace

std::vector<PdfLink> PdfLinks(const std::string& pdf) {
  const TempDirectory directory;
  const std::string file = directory.write("links.pdf", pdf).string();
  QPDF document;
  document.processMemoryFile("test", pdf.data(), pdf.size());
  std::vector<PdfLink> links;
  std::size_t number = 0;
  for (auto& page : QPDFPageDocumentHelper(document).getAllPages()) {
    ++number;
    const auto paper = page.getMediaBox().getArrayAsRectangle();
    for (auto& annotation : page.getAnnotations("/Link")) {
      PdfLink link = LinkOf(annotation.getObjectHandle(), paper);
      link.page = number;
      link.words = WordsWithin(file, link);
      links.push_back(std::move(link));
    }
  }
  return links;
}

std::vector<std::string> WordsOfLinks(const std::string& pdf) {
  std::vector<std::string> shown;
  for (const PdfLink& link : PdfLinks(pdf)) shown.push_back(link.words + " > " + link.to);
  return shown;
}

}  // namespace tarn::test

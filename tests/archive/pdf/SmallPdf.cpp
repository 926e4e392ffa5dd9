#include "SmallPdf.h"

#include <array>
#include <cstdio>

namespace tarn::test {
namespace {

// The body of a file, whose objects are numbered from 1.
class Objects {
 public:
  void add(const std::string& object) {
    starts_.push_back(file_.size());
    file_ += std::to_string(starts_.size()) + " 0 obj\n" + object + "\nendobj\n";
  }

  std::string finish() {
    const size_t table = file_.size();
    file_ += "xref\n0 " + std::to_string(starts_.size() + 1) + "\n0000000000 65535 f \n";
    for (const size_t start : starts_) {
      std::array<char, 32> row;
      std::snprintf(row.data(), row.size(), "%010zu 00000 n \n", start);
      file_ += row.data();
    }
    file_ += "trailer\n<< /Size " + std::to_string(starts_.size() + 1) +
             " /Root 1 0 R >>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
    return file_;
  }

 private:
  std::string file_ = "%PDF-1.7\n";
  std::vector<size_t> starts_;
};

std::string LinkTo(InnerLinks links, const std::string& destination) {
  const std::string start = "/Annots [ << /Type /Annot /Subtype /Link /Rect [0 0 10 10] ";
  switch (links) {
    case InnerLinks::None:
      break;
    case InnerLinks::Arrays:
      return start + "/Dest " + destination + " >> ]";
    case InnerLinks::Names:
      return start + "/Dest (end) >> ]";
    case InnerLinks::Actions:
      return start + "/A << /S /GoTo /D (end) >> >> ]";
    case InnerLinks::OldNames:
      return start + "/Dest /end >> ]";
  }
  return "";
}

}  // namespace

std::string SmallPdf(const std::vector<std::string>& contents, InnerLinks links) {
  constexpr size_t kFirstPage = 3;  // after the catalog and the tree of pages
  const auto page = [](size_t i) { return std::to_string(kFirstPage + 2 * i) + " 0 R"; };
  const std::string destination =
      contents.empty() ? "null" : "[" + page(contents.size() - 1) + " /XYZ 1 2 0]";
  Objects objects;
  std::string catalog = "<< /Type /Catalog /Pages 2 0 R ";
  if (links == InnerLinks::Names || links == InnerLinks::Actions) {
    catalog += "/Names << /Dests << /Names [(end) << /D " + destination + " >>] >> >> ";
  }
  if (links == InnerLinks::OldNames) catalog += "/Dests << /end " + destination + " >> ";
  objects.add(catalog + ">>");
  std::string kids;
  for (size_t i = 0; i < contents.size(); ++i) kids += page(i) + ' ';
  objects.add("<< /Type /Pages /Count " + std::to_string(contents.size()) + " /Kids [" + kids +
              "] >>");
  for (size_t i = 0; i < contents.size(); ++i) {
    objects.add("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents " +
                std::to_string(kFirstPage + 2 * i + 1) + " 0 R " +
                (i == 0 ? LinkTo(links, destination) : "") + " >>");
    objects.add("<< /Length " + std::to_string(contents[i].size()) + " >>\nstream\n" + contents[i] +
                "\nendstream");
  }
  return objects.finish();
}

}  // namespace tarn::test

// HtmlReader.h - the text of HTML, as a person reads it on a terminal.
//
// The markup is read tag by tag; what is open is on a stack that is no deeper than the text is
// long, and nothing recurses. An end tag ends what is open of its kind within the same cell, with
// all that was opened in it; others mean nothing. Tables within tables beyond kDeepestTable are
// text.
#ifndef TARN_ARCHIVE_HTMLREADER_H
#define TARN_ARCHIVE_HTMLREADER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "archive/text/HtmlElements.h"
#include "archive/text/HtmlStyles.h"
#include "archive/text/HtmlTokens.h"
#include "archive/text/TextFlow.h"
#include "archive/text/TextTable.h"

namespace tarn::archive {

class HtmlReader {
 public:
  // UTF-8.
  HtmlReader(std::string_view html, size_t width) : tokens_(html), width_(width) {}

  std::string read();

 private:
  static constexpr size_t kDeepestTable = 24;
  static constexpr size_t kKinds = static_cast<size_t>(HtmlElement::UnnumberedList) + 1;

  struct Open {
    HtmlElement element = HtmlElement::Other;
    size_t prefixLength = 0;  // of what is around it
    int64_t number = 0;       // of a list: that of its last item
    char numbering = '1';
    bool keepsSpaces = false;
    bool hasMargins = false;
  };
  // What text goes into: the body, or a cell.
  struct Frame {
    TextFlow flow;
    std::vector<Open> open;
    std::array<uint32_t, kKinds> counts{};  // of `open`, by kind
    std::vector<size_t> lists;              // places in `open`
    std::vector<size_t> items;
    uint32_t keepingSpaces = 0;
  };
  struct OpenTable {
    std::vector<TextRow> rows;
    std::string prefix;
    size_t frame = 0;  // that it is in
    bool isInRow = false;
  };

  void take(const HtmlToken& token);
  bool takeHidden(const HtmlToken& token);
  bool takeSeen(const HtmlToken& token);
  void endHidden();
  bool endsHidden(std::string_view next) const;
  void startElement(const HtmlToken& tag);
  void endElement(const HtmlToken& tag);
  void takeRawText(const HtmlToken& token);
  void addText(std::string_view text);

  void startBlock(const HtmlToken& tag, HtmlElement element);
  void startList(const HtmlToken& tag, HtmlElement element);
  void startItem(const HtmlToken& tag);
  void startLink(const HtmlToken& tag);
  void endLink();
  void takeImage(const HtmlToken& tag);
  void takeInput(const HtmlToken& tag);
  void takeRule();

  void startTable();
  void startRow();
  void startCell(const HtmlToken& tag);
  void endCell();
  void endTable();

  void push(Open open);
  void pop();
  bool end(HtmlElement element);
  void endParagraph();
  void startsNewLine();
  Frame& frame() { return frames_.back(); }
  bool isInCell() const { return !tables_.empty() && frames_.size() > tables_.back().frame + 1; }

  HtmlTokens tokens_;
  const size_t width_;
  std::vector<Frame> frames_ = std::vector<Frame>(1);
  std::vector<OpenTable> tables_;
  LinePrefix prefix_;

  bool isInLink_ = false;
  std::string linkAddress_;
  std::string linkText_;  // what the link shows

  // An element that is hidden, or is seen within one that is.
  struct Layer {
    std::string element;
    Hiding hiding = Hiding::None;
    std::map<std::string, size_t, std::less<>> open;  // elements in it, and itself
    bool hasSeen = false;                             // whether something in a hidden one is seen
  };
  std::vector<Layer> layers_;  // each within the one before; a hidden one is the first
};

}  // namespace tarn::archive

#endif

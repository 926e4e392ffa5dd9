#include "archive/text/HtmlReader.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "archive/text/BodyText.h"
#include "archive/text/HtmlReferences.h"
#include "archive/text/HtmlStyles.h"
#include "archive/text/LinkText.h"
#include "archive/text/ListMarks.h"

namespace tarn::archive {
namespace {

constexpr size_t kLongestRule = 72;

std::string ValueOf(const HtmlToken& tag, std::string_view name) {
  const std::string_view* const value = tag.attribute(name);
  return value == nullptr ? std::string() : DecodedHtmlValue(*value);
}

// As text in a line.
std::string LineOf(std::string_view text) {
  std::string line(WithoutBlanks(text));
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c >= '\t' && c <= '\r'; }, ' ');
  return line;
}

int64_t NumberOf(const HtmlToken& tag, std::string_view name, int64_t otherwise) {
  constexpr int64_t kLargest = 999999999;
  const std::string text = ValueOf(tag, name);
  int64_t number = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = end.ec == std::errc() && number >= -kLargest && number <= kLargest;
  return isNumber ? number : otherwise;
}

// Whether a reader could follow it.
bool LeadsSomewhere(std::string_view address) {
  return !address.empty() && !address.starts_with('#') && !address.starts_with("javascript:") &&
         !address.starts_with("cid:");
}

bool IsBlock(HtmlElement element) {
  return element != HtmlElement::Other && element != HtmlElement::Link &&
         element != HtmlElement::Image && element != HtmlElement::Input &&
         element != HtmlElement::Break && element != HtmlElement::QuoteMark &&
         element != HtmlElement::Option;
}

bool IsList(HtmlElement element) {
  return element == HtmlElement::NumberedList || element == HtmlElement::UnnumberedList;
}

// Whether an end tag within hidden text means what is around it.
bool IsAroundText(HtmlElement element) {
  return element == HtmlElement::Cell || element == HtmlElement::Row ||
         element == HtmlElement::TablePart || element == HtmlElement::Table;
}

}  // namespace

std::string HtmlReader::read() {
  for (;;) {
    const HtmlToken& token = tokens_.next();
    if (token.kind == HtmlTokenKind::End) break;
    // A layer that a token ends leaves it to the one before.
    bool isTaken = false;
    while (!isTaken && !layers_.empty()) {
      isTaken = layers_.back().hiding == Hiding::None ? takeSeen(token) : takeHidden(token);
    }
    if (!isTaken) take(token);
  }
  endLink();
  while (!tables_.empty()) endTable();
  endParagraph();
  return LinesOf(frame().flow.paragraphs(), width_);
}

void HtmlReader::take(const HtmlToken& token) {
  switch (token.kind) {
    case HtmlTokenKind::Text:
      return addText(DecodedHtmlText(token.text));
    case HtmlTokenKind::RawText:
      return takeRawText(token);
    case HtmlTokenKind::StartTag:
      if (const Hiding hiding = HidingOf(token);
          hiding != Hiding::None && !IsVoidElement(token.name)) {
        layers_.push_back({token.name, hiding, {{token.name, 1}}, false});
        return;
      }
      return startElement(token);
    case HtmlTokenKind::EndTag:
      return endElement(token);
    case HtmlTokenKind::End:
      return;
  }
}

// Some elements end where the next one begins, unless that is in an element between the two.
bool HtmlReader::endsHidden(std::string_view next) const {
  const HtmlElement hidden = ElementOf(layers_.back().element);
  const HtmlElement element = ElementOf(next);
  const auto holds = [this](std::string_view name) { return layers_.back().open.contains(name); };
  switch (hidden) {
    case HtmlElement::Paragraph:
      return IsBlock(element);
    case HtmlElement::Item:
      return element == hidden && !holds("ul") && !holds("ol");
    case HtmlElement::Row:
      return element == hidden && !holds("table");
    case HtmlElement::Cell:
      return (element == hidden || element == HtmlElement::Row) && !holds("table");
    default:
      return false;
  }
}

// What is hidden ends with its element, or with one that is around it. False, and the layer is
// gone, where the token is not of the layer.
bool HtmlReader::takeHidden(const HtmlToken& token) {
  Layer& layer = layers_.back();
  if (token.kind == HtmlTokenKind::StartTag) {
    if (endsHidden(token.name)) {
      endHidden();
      return false;
    }
    if (IsVoidElement(token.name)) return true;
    if (IsSeenWithin(layer.hiding, token) && HidingOf(token) == Hiding::None) {
      layer.hasSeen = true;
      if (IsBlock(ElementOf(layer.element))) endParagraph();
      layers_.push_back({token.name, Hiding::None, {{token.name, 1}}, false});
      take(token);
      return true;
    }
    ++layer.open[token.name];
    return true;
  }
  if (token.kind != HtmlTokenKind::EndTag) return true;
  const auto open = layer.open.find(token.name);
  if (open == layer.open.end()) {
    const HtmlElement element = ElementOf(token.name);
    const bool isOpen = frame().counts[static_cast<size_t>(element)] != 0;
    if (!isOpen && !(IsAroundText(element) && !tables_.empty())) return true;
    endHidden();
    return false;
  }
  if (--open->second == 0) layer.open.erase(open);
  if (!layer.open.contains(layer.element)) endHidden();
  return true;
}

// What was seen in a block has lines of its own.
void HtmlReader::endHidden() {
  const Layer& layer = layers_.back();
  if (layer.hasSeen && IsBlock(ElementOf(layer.element))) endParagraph();
  layers_.pop_back();
}

// What is seen within something hidden ends with its element, or with one that is around it.
bool HtmlReader::takeSeen(const HtmlToken& token) {
  const size_t at = layers_.size() - 1;
  if (token.kind == HtmlTokenKind::StartTag) {
    if (!IsVoidElement(token.name) && HidingOf(token) == Hiding::None) {
      ++layers_.back().open[token.name];
    }
    take(token);
    return true;
  }
  if (token.kind != HtmlTokenKind::EndTag) {
    take(token);
    return true;
  }
  const auto open = layers_.back().open.find(token.name);
  if (open == layers_.back().open.end()) {
    if (!layers_[at - 1].open.contains(token.name) && !IsAroundText(ElementOf(token.name))) {
      take(token);
      return true;
    }
    layers_.pop_back();
    return false;
  }
  if (--open->second == 0) layers_.back().open.erase(open);
  take(token);
  if (!layers_[at].open.contains(layers_[at].element)) layers_.pop_back();
  return true;
}

void HtmlReader::addText(std::string_view text) {
  if (isInLink_) linkText_ += text;
  frame().flow.addText(text, frame().keepingSpaces != 0);
}

void HtmlReader::takeRawText(const HtmlToken& token) {
  if (token.name == "textarea") return addText(DecodedHtmlText(token.text));
  if (token.name != "xmp" && token.name != "plaintext") return;
  endParagraph();
  frame().flow.addText(token.text, true);
  frame().flow.endParagraph(prefix_, true);
}

void HtmlReader::startElement(const HtmlToken& tag) {
  const HtmlElement element = ElementOf(tag.name);
  switch (element) {
    case HtmlElement::Other:
      return;
    case HtmlElement::Break:
      frame().flow.addLineEnd();
      return;
    case HtmlElement::Image:
      return takeImage(tag);
    case HtmlElement::Input:
      return takeInput(tag);
    case HtmlElement::Option:
      return addText(" ");
    case HtmlElement::QuoteMark:
      push({.element = element, .prefixLength = prefix_.others().size()});
      return addText("\"");
    case HtmlElement::Link:
      return startLink(tag);
    case HtmlElement::Rule:
      return takeRule();
    case HtmlElement::NumberedList:
    case HtmlElement::UnnumberedList:
      return startList(tag, element);
    case HtmlElement::Item:
      return startItem(tag);
    case HtmlElement::Table:
      return startTable();
    case HtmlElement::TablePart:
      if (isInCell()) endCell();
      return;
    case HtmlElement::Row:
      return startRow();
    case HtmlElement::Cell:
      return startCell(tag);
    default:
      return startBlock(tag, element);
  }
}

void HtmlReader::startBlock(const HtmlToken& tag, HtmlElement element) {
  startsNewLine();
  if (element == HtmlElement::Definition || element == HtmlElement::Term) {
    end(HtmlElement::Definition);
  }
  Open open{.element = element, .prefixLength = prefix_.others().size()};
  open.keepsSpaces = element == HtmlElement::Preformatted || KeepsSpaces(tag);
  open.hasMargins = element == HtmlElement::Heading || element == HtmlElement::Preformatted ||
                    element == HtmlElement::Quote ||
                    (element == HtmlElement::Paragraph && !HasNoMargins(tag));
  if (element == HtmlElement::Quote) open.prefixLength = prefix_.push("> ");
  if (element == HtmlElement::Definition) open.prefixLength = prefix_.push("    ");
  if (open.hasMargins) frame().flow.askForBlank();
  push(open);
}

void HtmlReader::startList(const HtmlToken& tag, HtmlElement element) {
  startsNewLine();
  Open open{.element = element, .prefixLength = prefix_.others().size()};
  open.hasMargins = frame().lists.empty();
  open.number = NumberOf(tag, "start", 1) - 1;
  const std::string type = ValueOf(tag, "type");
  if (type.size() == 1) open.numbering = type[0];
  if (open.hasMargins) frame().flow.askForBlank();
  push(open);
}

void HtmlReader::startItem(const HtmlToken& tag) {
  startsNewLine();
  const std::vector<size_t>& lists = frame().lists;
  const std::vector<size_t>& items = frame().items;
  // One that is open in the same list ends.
  if (!items.empty() && (lists.empty() || items.back() > lists.back())) end(HtmlElement::Item);
  std::string mark = "* ";
  if (!lists.empty()) {
    Open& list = frame().open[lists.back()];
    list.number = NumberOf(tag, "value", list.number + 1);
    if (list.element == HtmlElement::NumberedList) mark = MarkOfItem(list.number, list.numbering);
  }
  const size_t length = prefix_.push(mark, std::string(mark.size(), ' '));
  push({.element = HtmlElement::Item, .prefixLength = length});
}

void HtmlReader::startLink(const HtmlToken& tag) {
  endLink();
  linkAddress_ = LineOf(ValueOf(tag, "href"));
  isInLink_ = LeadsSomewhere(linkAddress_);
  linkText_.clear();
}

void HtmlReader::endLink() {
  if (!std::exchange(isInLink_, false)) return;
  if (WithoutBlanks(linkText_).empty() || TellsAddress(linkText_, linkAddress_)) return;
  frame().flow.addText(" <" + linkAddress_ + ">", false);
}

void HtmlReader::takeImage(const HtmlToken& tag) {
  const std::string text = LineOf(ValueOf(tag, "alt"));
  if (!text.empty()) {
    addText("[" + text + "]");
  } else if (isInLink_) {
    linkText_ += "[]";  // what the link shows
  }
}

void HtmlReader::takeInput(const HtmlToken& tag) {
  const std::string type = ValueOf(tag, "type");
  const std::string value = LineOf(ValueOf(tag, "value"));
  if (type == "hidden" || type == "image" || type == "radio" || type == "checkbox") return;
  if (!value.empty()) addText("[" + value + "]");
}

void HtmlReader::takeRule() {
  startsNewLine();
  const size_t taken = prefix_.others().size();
  const size_t room = width_ == 0 || width_ > kLongestRule + taken ? kLongestRule
                      : width_ > taken + 3                         ? width_ - taken
                                                                   : 3;
  frame().flow.add({std::string(room, '-'), prefix_.first(), prefix_.others(), true, false});
  prefix_.takeFirst();
}

void HtmlReader::endElement(const HtmlToken& tag) {
  const HtmlElement element = ElementOf(tag.name);
  switch (element) {
    case HtmlElement::Link:
      return endLink();
    case HtmlElement::QuoteMark:
      if (end(element)) addText("\"");
      return;
    case HtmlElement::Table:
      if (!tables_.empty()) endTable();
      return;
    case HtmlElement::Cell:
    case HtmlElement::Row:
    case HtmlElement::TablePart:
      endParagraph();
      if (isInCell()) endCell();
      if (element != HtmlElement::Cell && !tables_.empty()) tables_.back().isInRow = false;
      return;
    case HtmlElement::Break:
      frame().flow.addLineEnd();
      return;
    default:
      break;
  }
  if (!IsBlock(element)) return;
  endParagraph();
  const bool wasOpen = end(element);
  // An end of a paragraph that is not open is an empty one.
  if (!wasOpen && tag.name == "p") frame().flow.askForBlank();
}

void HtmlReader::startTable() {
  startsNewLine();
  if (tables_.size() >= kDeepestTable) return;
  tables_.push_back({.rows = {}, .prefix = prefix_.others(), .frame = frames_.size() - 1});
}

void HtmlReader::startRow() {
  endParagraph();
  if (tables_.empty()) return;
  if (isInCell()) endCell();
  tables_.back().rows.emplace_back();
  tables_.back().isInRow = true;
}

void HtmlReader::startCell(const HtmlToken& tag) {
  endParagraph();
  if (tables_.empty()) return;
  if (isInCell()) endCell();
  if (!tables_.back().isInRow) startRow();
  TextRow& row = tables_.back().rows.back();
  if (NumberOf(tag, "colspan", 1) > 1) row.hasWideCells = true;
  frames_.emplace_back();
}

void HtmlReader::endCell() {
  endLink();
  endParagraph();
  while (!frame().open.empty()) pop();
  std::vector<TextParagraph> cell = std::move(frame().flow.paragraphs());
  frames_.pop_back();
  tables_.back().rows.back().cells.push_back(std::move(cell));
}

void HtmlReader::endTable() {
  if (isInCell()) endCell();
  endParagraph();
  OpenTable table = std::move(tables_.back());
  tables_.pop_back();
  std::vector<TextParagraph> paragraphs =
      ParagraphsOfTable(std::move(table.rows), table.prefix, width_);
  const bool isAligned = !paragraphs.empty() && paragraphs.back().isAsIs;
  frame().flow.addAll(std::move(paragraphs));
  if (isAligned) frame().flow.askForBlank();
  prefix_.takeFirst();
}

void HtmlReader::push(Open open) {
  ++frame().counts[static_cast<size_t>(open.element)];
  if (open.keepsSpaces) ++frame().keepingSpaces;
  if (IsList(open.element)) frame().lists.push_back(frame().open.size());
  if (open.element == HtmlElement::Item) frame().items.push_back(frame().open.size());
  frame().open.push_back(open);
}

void HtmlReader::pop() {
  const Open open = frame().open.back();
  frame().open.pop_back();
  --frame().counts[static_cast<size_t>(open.element)];
  if (open.keepsSpaces) --frame().keepingSpaces;
  if (IsList(open.element)) frame().lists.pop_back();
  if (open.element == HtmlElement::Item) frame().items.pop_back();
  if (open.hasMargins) frame().flow.askForBlank();
  prefix_.cutTo(open.prefixLength);
}

bool HtmlReader::end(HtmlElement element) {
  if (frame().counts[static_cast<size_t>(element)] == 0) return false;
  while (frame().open.back().element != element) pop();
  pop();
  return true;
}

void HtmlReader::endParagraph() {
  const bool isAsIs = frame().counts[static_cast<size_t>(HtmlElement::Preformatted)] != 0;
  frame().flow.endParagraph(prefix_, isAsIs);
}

// What begins a line ends a paragraph that is open.
void HtmlReader::startsNewLine() {
  endParagraph();
  end(HtmlElement::Paragraph);
}

}  // namespace tarn::archive

#include "siblings/layout/HtmlPlaces.h"

#include <set>
#include <string_view>

#include "siblings/layout/DocumentPictures.h"

namespace tarn::pages {
namespace {

// The address that leads to the element, by its attribute, if it is one of those that are wanted.
void TakePlace(const litehtml::element& element, const char* attribute,
               const std::map<std::string, std::string>& wanted,
               std::map<std::string, double>& places) {
  const char* const name = element.get_attr(attribute, nullptr);
  if (name == nullptr) return;
  const auto known = wanted.find(name);
  if (known != wanted.end()) places.emplace(known->second, element.get_placement().y);
}

}  // namespace

bool IsInnerAddress(const std::string& address) { return address.size() > 1 && address[0] == '#'; }

std::map<std::string, double> FindPlaces(litehtml::document& document,
                                         const std::vector<std::string>& links) {
  std::map<std::string, std::string> wanted;  // addresses by the names in them
  for (const std::string& address : links) {
    if (!IsInnerAddress(address)) continue;
    wanted.emplace(DecodePercents(std::string_view(address).substr(1)), address);
  }
  std::map<std::string, double> places;
  if (wanted.empty()) return places;
  std::vector<litehtml::element::ptr> left = {document.root()};
  while (!left.empty()) {
    const litehtml::element::ptr element = left.back();
    left.pop_back();
    TakePlace(*element, "id", wanted, places);
    const char* const tag = element->get_tagName();
    if (tag != nullptr && std::string_view(tag) == "a") TakePlace(*element, "name", wanted, places);
    for (size_t i = element->get_children_count(); i > 0; --i) {
      left.push_back(element->get_child(static_cast<int>(i - 1)));
    }
  }
  return places;
}

}  // namespace tarn::pages

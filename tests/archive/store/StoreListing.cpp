#include "StoreListing.h"

#include <gtest/gtest.h>

namespace tarn::test {
namespace {

using namespace archive;

std::string PathText(const ItemPlace& place) {
  std::string text;
  for (const std::string& name : *place.folder) text += (text.empty() ? "" : "/") + name;
  return text.empty() ? "." : text;
}

std::string LineOf(Item& item) {
  std::string line = item.place().id + " in " + PathText(item.place()) + ": " +
                     item.fields(Detail::Headline).subject;
  for (const Trouble& trouble : item.troubles()) line += " !" + trouble.reason;
  return line;
}

}  // namespace

OpenedStore::OpenedStore(const std::string& image, const ReaderOptions& options) {
  auto opened = OpenStore(folder_.write("store.pst", image), options);
  if (!opened) throw std::runtime_error(opened.trouble().reason);
  reader_ = std::move(*opened);
}

std::string OpenedStore::listing() {
  std::string lines;
  while (auto entry = reader_->next()) {
    if (auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry)) {
      lines += LineOf(**item);
    } else if (const auto* const start = std::get_if<FolderStart>(&*entry)) {
      lines += "folder " + PathText({{}, {}, start->path}) + ": " +
               (start->declaredItems ? std::to_string(*start->declaredItems) : "?");
    } else {
      const auto& [place, trouble] = std::get<PlaceTrouble>(*entry);
      lines += place.id + " in " + PathText(place) + "! " + trouble.reason;
    }
    lines += "\n";
  }
  return lines;
}

void OpenedStore::forEachItem(const std::function<void(Item&)>& look) {
  while (auto entry = reader_->next()) {
    if (auto* const item = std::get_if<std::unique_ptr<Item>>(&*entry)) look(**item);
  }
}

std::unique_ptr<Item> OpenedStore::find(std::string_view id) {
  auto found = reader_->find(id);
  if (!found) throw std::runtime_error(found.trouble().reason);
  return std::move(*found);
}

std::string AddressText(const Address& person) { return person.name + " <" + person.address + ">"; }

std::string AddressText(const std::vector<Address>& people) {
  std::string text;
  for (const Address& person : people) text += (text.empty() ? "" : ", ") + AddressText(person);
  return text;
}

std::string Reasons(const std::vector<Trouble>& troubles) {
  std::string text;
  for (const Trouble& trouble : troubles) text += trouble.reason + "\n";
  return text;
}

std::string AttachmentBytes(Item& item, size_t index) {
  auto source = item.open(index);
  if (!source) return "!" + source.trouble().reason;
  Outcome<std::string> bytes = ReadAll(**source, size_t{1} << 28);
  return bytes ? *bytes : "!" + bytes.trouble().reason;
}

}  // namespace tarn::test

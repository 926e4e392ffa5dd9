// ReaderWalk.h - what the reader of a test gives, as lines of text.
#ifndef TARN_TESTS_ARCHIVE_READERWALK_H
#define TARN_TESTS_ARCHIVE_READERWALK_H

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "archive/model/ItemReader.h"

namespace tarn::test {

// The bytes that an item has in its file.
inline std::string OriginalOf(archive::Item& item) {
  const auto source = item.original();
  if (!source) return "trouble: " + source.trouble().reason;
  const auto bytes = archive::ReadAll(**source, size_t{1} << 26);
  return bytes ? *bytes : "trouble: " + bytes.trouble().reason;
}

inline std::string Written(const std::vector<std::string>& folder) {
  std::string path;
  for (const std::string& name : folder) path += (path.empty() ? "" : "/") + name;
  return path;
}

// "id subject", "[folder] count" and "id: trouble", in the reader's order.
inline std::vector<std::string> EntriesOf(archive::ItemReader& reader) {
  std::vector<std::string> lines;
  while (auto entry = reader.next()) {
    if (auto* item = std::get_if<std::unique_ptr<archive::Item>>(&*entry)) {
      const std::string subject = (*item)->fields(archive::Detail::Headline).subject;
      lines.push_back((*item)->place().id + " " + subject);
    } else if (const auto* folder = std::get_if<archive::FolderStart>(&*entry)) {
      lines.push_back("[" + Written(*folder->path) + "] " +
                      std::to_string(folder->declaredItems.value_or(0)));
    } else if (const auto* broken = std::get_if<archive::PlaceTrouble>(&*entry)) {
      lines.push_back(broken->place.id + ": " + broken->trouble.reason);
    }
  }
  return lines;
}

}  // namespace tarn::test

#endif

// TextLinks.h - web and mail addresses in plain text.
#ifndef TARN_SIBLINGS_LAYOUT_TEXTLINKS_H
#define TARN_SIBLINGS_LAYOUT_TEXTLINKS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::pages {

struct TextLink {
  size_t start = 0;
  size_t end = 0;
  std::string address;
};

// Addresses with http, https, ftp or mailto, and those that begin with "www.". A full stop, comma
// or bracket that ends a sentence is none of an address's. Those beyond kLongestAddress are none.
std::vector<TextLink> FindTextLinks(std::string_view line);

}  // namespace tarn::pages

#endif

// OutwardAddress.h - which links of a document stay in its pages: those into the net, by mail and
// to a telephone, and none into the machine that shows them. The same for all kinds of documents.
#ifndef TARN_SIBLINGS_OUTWARDADDRESS_H
#define TARN_SIBLINGS_OUTWARDADDRESS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace tarn::pages {

inline constexpr std::array<std::string_view, 8> kOutwardSchemes = {
    "http", "https", "ftp", "ftps", "mailto", "tel", "news", "sip"};

// No program follows longer ones, and each line of a link repeats its address in a PDF.
inline constexpr std::size_t kLongestAddress = 8'192;

inline std::string_view WithoutBlanksAround(std::string_view address) {
  const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  while (!address.empty() && isBlank(address.front())) address.remove_prefix(1);
  while (!address.empty() && isBlank(address.back())) address.remove_suffix(1);
  return address;
}

inline bool IsOutwardAddress(std::string_view address) {
  const auto isSame = [](char written, char known) {
    return (written >= 'A' && written <= 'Z' ? written + ('a' - 'A') : written) == known;
  };
  const std::string_view scheme = address.substr(0, address.find(':'));
  return scheme.size() < address.size() && address.size() <= kLongestAddress &&
         std::any_of(kOutwardSchemes.begin(), kOutwardSchemes.end(), [&](std::string_view known) {
           return std::equal(scheme.begin(), scheme.end(), known.begin(), known.end(), isSame);
         });
}

}  // namespace tarn::pages

#endif

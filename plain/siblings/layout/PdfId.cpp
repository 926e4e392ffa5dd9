#include "siblings/layout/PdfId.h"

#include <glib.h>

#include <memory>
#include <string_view>

namespace tarn::pages {

std::string WithPdfId(std::string file) {
  constexpr std::string_view kTrailer = "\ntrailer\n<<";
  const size_t trailer = file.rfind(kTrailer);
  if (trailer == std::string::npos) return file;
  const std::unique_ptr<char, decltype(&g_free)> digest(
      g_compute_checksum_for_data(G_CHECKSUM_MD5, reinterpret_cast<const guchar*>(file.data()),
                                  file.size()),
      &g_free);
  const std::string part = std::string("<") + digest.get() + ">";
  file.insert(trailer + kTrailer.size(), " /ID [" + part + part + "]\n  ");
  return file;
}

}  // namespace tarn::pages

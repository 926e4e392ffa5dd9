// LinkText.h - links in text: the address after what is shown, unless that says it.
#ifndef TARN_ARCHIVE_LINKTEXT_H
#define TARN_ARCHIVE_LINKTEXT_H

#include <string>
#include <string_view>

namespace tarn::archive {

// Whether a reader of the text knows the address: they differ in the scheme, a slash at the end,
// and case at most.
bool TellsAddress(std::string_view text, std::string_view address);

// The address in a field's instruction (HYPERLINK "address"); empty for other fields and for places
// of the document itself.
std::string AddressOfHyperlink(std::string_view instruction);

}  // namespace tarn::archive

#endif

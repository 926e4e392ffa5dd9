// FieldInstruction.h - what a field of a document may ask for.
//
// An RTF field has an instruction and the result that its writer saw. Most instructions read files,
// fetch pictures, or tell the time of reading; of those the result is shown, as it was. Three are
// carried out: links into the net, the number of the page, and the number of pages.
#ifndef TARN_SIBLINGS_OFFICE_FIELDINSTRUCTION_H
#define TARN_SIBLINGS_OFFICE_FIELDINSTRUCTION_H

#include <string>
#include <string_view>

namespace tarn::pages {

// The instruction to put in the place of this one, as RTF that needs no escapes; empty: none, so
// that the result is shown.
//
// A link is kept when its address has a scheme of the net (http, https, ftp, mailto, tel, news,
// sip) or when it leads to a bookmark of the document. An address is UTF-8; what is not printable
// ASCII in it, blanks, quotes, backslashes and braces included, is written as %XX.
std::string HarmlessInstruction(std::string_view instruction);

}  // namespace tarn::pages

#endif

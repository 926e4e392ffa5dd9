// MailStyles.h - the style sheets of a mail, made to reach nothing but the mail.
//
// Of a sheet (CSS Syntax 3) its rules are taken one by one, and each selector is put within the
// element that the page has around the mail: `p, body td` becomes `main p, main tarn-body td`. What
// a selector names is therefore in the mail, and how the mail's rules outweigh each other stays as
// it was. The body of the mail is an element of the page, <tarn-body>, so that its rules work; the
// root of the mail is the same element.
//
// Kept are rules, also within @media and @supports, and keyframes. Rules within rules, and all
// other at-rules, are left out: those of pages, layers and scopes reach further. Declarations that
// would have something fetched are left out; a picture that the style holds itself (data:) stays.
// What is not well formed, or may be read otherwise by others, is left out too.
#ifndef TARN_ARCHIVE_MAILSTYLES_H
#define TARN_ARCHIVE_MAILSTYLES_H

#include <string>
#include <string_view>

namespace tarn::archive {

// The elements of a page that hold a mail: the page's own, and the mail's body.
inline constexpr std::string_view kMailElement = "main";
inline constexpr std::string_view kBodyElement = "tarn-body";

// A sheet as one of the page. It has no "<", and ends whatever it begins.
std::string StylesWithinMail(std::string_view css);

// Whether a style attribute may have something fetched; and its declarations that do not.
bool MayFetch(std::string_view declarations);
std::string DeclarationsWithinMail(std::string_view declarations);

// A selector as one of the page; empty for one that would name what is outside of the mail.
std::string SelectorWithinMail(std::string_view selector);

}  // namespace tarn::archive

#endif

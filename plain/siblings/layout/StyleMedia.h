// StyleMedia.h - the media that style sheets are for, in words that the layout library knows.
//
// The library takes a media feature that it has never heard of for one that holds, so that styles
// for dark screens would colour the pages. By Media Queries Level 4 (3.2) such a feature does not
// hold, and pages are light.
#ifndef TARN_SIBLINGS_LAYOUT_STYLEMEDIA_H
#define TARN_SIBLINGS_LAYOUT_STYLEMEDIA_H

#include <string>
#include <string_view>

namespace tarn::pages {

// A list of media queries, as "screen and (prefers-color-scheme: dark)": features that are unknown
// become one that never holds, those that ask for a light page one that always does.
std::string KnownMedia(std::string_view queries);

// A style sheet whose "@media" rules have known media.
std::string WithKnownMedia(std::string_view sheet);

// What the tag of a style element says of its media; empty where it says nothing. `inside` is what
// is between the element's name and ">".
std::string_view MediaOfTag(std::string_view inside);

}  // namespace tarn::pages

#endif

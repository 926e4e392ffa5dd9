// StatusText.h - what the filter's results mean, for people.
#ifndef TARN_TARNMAIL_STATUSTEXT_H
#define TARN_TARNMAIL_STATUSTEXT_H

#include <cstdint>
#include <string>

namespace tarn::host {

// The meaning of a result other than StatusOk and the number itself: "the file could not be opened
// (-10)". A number that the filter does not define is called so.
std::string StatusText(int32_t status);

// StatusText of StatusSiblingRefused with the code of the sibling that refused.
std::string SiblingRefusalText(int32_t siblingResult);

}  // namespace tarn::host

#endif

// MailOfAll.h - one mail that takes every road through the reader of mails, for sweeps over its
// calls.
#ifndef TARN_TESTS_SUPPORT_MAILOFALL_H
#define TARN_TESTS_SUPPORT_MAILOFALL_H

#include <string>

namespace tarn::test {

// A subject of encoded words in two charsets.
inline const std::string kWords = "=?iso-8859-1?Q?f=FCr?= =?iso-2022-jp?B?GyRCJCIbKEI=?= dich";

// Fields that need a charset (those are only repaired when the subject has no words), charsets of
// parts, nested parts, an image, an attachment whose name and description are words.
std::string MailOfAll(const std::string& subject);

}  // namespace tarn::test

#endif

// BadNameMail.h - a mail whose list of attachments fails: its second attachment has a name that is
// not UTF-8.
#ifndef TARN_TESTS_DUMP_BADNAMEMAIL_H
#define TARN_TESTS_DUMP_BADNAMEMAIL_H

#include <string>

#include "support/SampleMails.h"

namespace tarn::test {

inline std::string BadNameMail() {
  const std::string end = "--sep--\r\n";
  return kAttachmentMail.substr(0, kAttachmentMail.size() - end.size()) +
         "--sep\r\n"
         "Content-Type: application/pdf\r\n"
         "Content-Disposition: attachment; filename=\xFF.pdf\r\n"
         "\r\n"
         "%PDF-1.4 not much of one\r\n" +
         end;
}

}  // namespace tarn::test

#endif

#include "support/MailOfAll.h"

#include "support/EmlBuilder.h"

namespace tarn::test {

std::string MailOfAll(const std::string& subject) {
  return EmlBuilder::Usual()
      .field("Subject", subject)
      .field("Cc", "J\xF6rg")
      .body(EmlEntity::Multipart("mixed", "out")
                .part(EmlEntity::Multipart("related", "in")
                          .part(EmlEntity::Leaf("text/plain; charset=iso-8859-1", "f\xFCr"))
                          .part(EmlEntity::Leaf("text/html; charset=windows-1252",
                                                "<img src=\"cid:a@b\">\xE4")
                                    .encoded(EmlEncoding::QuotedPrintable))
                          .part(EmlEntity::Leaf("image/png; name=\"=?utf-8?Q?a=2Epng?=\"",
                                                "0123456789abcde")
                                    .contentId("a@b")
                                    .encoded(EmlEncoding::Base64)
                                    .disposition("inline; filename=\"a.png\"")))
                .part(EmlEntity::Leaf("application/pdf", "%PDF")
                          .header("Content-Description", "=?iso-8859-1?Q?=E4?=")
                          .header("Content-Location", "http://x/y.pdf")
                          .disposition("attachment; filename=\"=?iso-8859-1?Q?=E4=2Epdf?=\"; "
                                       "creation-date=\"Sat, 21 Nov 2026\"")))
      .build();
}

}  // namespace tarn::test

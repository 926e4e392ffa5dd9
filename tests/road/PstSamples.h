// PstSamples.h - stores that tests of whole roads use.
#ifndef TARN_TESTS_ROAD_PSTSAMPLES_H
#define TARN_TESTS_ROAD_PSTSAMPLES_H

#include <string>

#include "support/RtfCompressor.h"
#include "support/SampleMails.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {

// 2021-01-01 00:00 UTC.
inline constexpr uint64_t kSampleFileTime = 132539328000000000;

inline const std::string kSampleRtf = "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}\\pard Hello}";

// Four messages: 1 HTML with an image and an attachment, and a plain body; 2 RTF; 3 plain body
// only; 4 HTML in the second folder. The two folders claim six.
inline std::string SampleStore(PstLayout layout, PstEncoding encoding = PstEncoding::Permute) {
  StoreBuilder store(layout, encoding);
  FolderBuilder& inbox = store.folder("Inbox").count(4);
  MessageBuilder& first = inbox.message();
  first.subject(u"\1\5Re: Image").from(u"Ann").to(u"Bob").importance(2).submitTime(kSampleFileTime);
  first.html("<html><body><img src=\"cid:pic.png\"></body></html>").body(u"See the image");
  first.attach().longName(u"pic.png").data(kImageBytes).mimeTag(u"image/png");
  first.attach()
      .longName(u"report.pdf")
      .shortName(u"REPORT~1.PDF")
      .data("%PDF-1.4 not much of one")
      .created(kSampleFileTime)
      .modified(kSampleFileTime + 600000000);
  inbox.message().subject(u"").rtf(PackRtf(kSampleRtf)).html("<p>not shown");
  inbox.message().subject(u"Plain").body(u"only");
  MessageBuilder& last = store.folder("Second").count(2).message();
  last.subject(u"").html("last");
  return store.bytes();
}

}  // namespace tarn::test

#endif

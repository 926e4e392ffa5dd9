// MailStream.h - MailBytes as GMime reads them.
#ifndef TARN_ARCHIVE_MAILSTREAM_H
#define TARN_ARCHIVE_MAILSTREAM_H

#include <gmime/gmime.h>

#include <optional>

#include "archive/mail/GObjectPtr.h"
#include "archive/mail/MailBytes.h"
#include "archive/mail/StructureWatch.h"

namespace tarn::archive::mail {

// What a stream tells its owner of a parse.
struct StreamReport {
  StructureWatch watch;
  std::optional<Trouble> trouble;  // the bytes could not be read to their end
};

// A stream over all the bytes. Where there is a report, it gives what the watch allows; the report
// lives until EndReport. Streams of parts of it, which GMime asks for, read without one.
GObjectPtr<GMimeStream> StreamFor(SharedBytes bytes, StreamReport* report);

// From here on the stream reads without a report. Throws the std::bad_alloc that was met.
void EndReport(GMimeStream* stream);

}  // namespace tarn::archive::mail

#endif

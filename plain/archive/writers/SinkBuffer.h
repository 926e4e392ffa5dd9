// SinkBuffer.h - what a writer writes, on its way to the sink in large pieces.
#ifndef TARN_ARCHIVE_SINKBUFFER_H
#define TARN_ARCHIVE_SINKBUFFER_H

#include <optional>
#include <string>
#include <string_view>

#include "archive/model/ByteSink.h"
#include "archive/model/ByteSource.h"

namespace tarn::archive {

// After the sink has refused bytes, nothing more goes to it, and what comes is dropped.
class SinkBuffer {
 public:
  explicit SinkBuffer(ByteSink& sink) : sink_(sink) {}
  SinkBuffer(const SinkBuffer&) = delete;
  SinkBuffer& operator=(const SinkBuffer&) = delete;

  SinkBuffer& put(std::string_view bytes);

  bool isFull() const { return full_.has_value(); }

  // Whatever waits goes to the sink. Why the sink takes no more, if it does not.
  std::optional<Trouble> finish();

 private:
  ByteSink& sink_;
  std::string waiting_;
  std::optional<Trouble> full_;
};

// All bytes of a source. Why it broke off, if it did; what came before is there.
std::optional<Trouble> PutAll(ByteSource& source, SinkBuffer& out);

enum class Base64Lines : unsigned char {
  None,  // one run, as in URLs
  Mime   // CRLF after each 76 characters and at the end (RFC 2045 6.8)
};

std::optional<Trouble> PutBase64(ByteSource& source, Base64Lines lines, SinkBuffer& out);
void PutBase64(std::string_view bytes, Base64Lines lines, SinkBuffer& out);

}  // namespace tarn::archive

#endif

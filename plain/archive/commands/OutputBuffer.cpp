#include "archive/commands/OutputBuffer.h"

#include <system_error>

#include "console/Failure.h"
#include "console/StandardStreams.h"
#include "console/SystemErrors.h"

namespace tarn::archive {

constexpr size_t kWrittenAtOnce = 1 << 16;

void WriteOut(std::string_view bytes) {
  const std::error_code error = host::WriteStandardOutput(bytes);
  if (error == std::errc::broken_pipe) throw NobodyReads();
  if (error) {
    throw host::Failure(host::ExitStatus::Failed, "standard output", host::ErrorText(error));
  }
}

void OutputBuffer::write(std::string_view line) {
  waiting_ += line;
  if (isFirst_ || isTerminal_ || waiting_.size() >= kWrittenAtOnce) flush();
  isFirst_ = false;
}

void OutputBuffer::flush() {
  if (waiting_.empty()) return;
  WriteOut(waiting_);
  waiting_.clear();
}

void OutputBuffer::flushForError() {
  if (isTerminal_) flush();
}

}  // namespace tarn::archive

// OutputBuffer.h - lines on their way to standard output: the first at once, each at once to a
// terminal, else many together.
#ifndef TARN_ARCHIVE_OUTPUTBUFFER_H
#define TARN_ARCHIVE_OUTPUTBUFFER_H

#include <exception>
#include <string>
#include <string_view>

namespace tarn::archive {

// Nobody reads what is written any more, as after `| head`: the command ends and has nothing to
// say.
class NobodyReads : public std::exception {
 public:
  const char* what() const noexcept override { return "nobody reads standard output"; }
};

class OutputBuffer {
 public:
  // To a terminal, where `isTerminal`.
  explicit OutputBuffer(bool isTerminal) : isTerminal_(isTerminal) {}
  OutputBuffer(const OutputBuffer&) = delete;
  OutputBuffer& operator=(const OutputBuffer&) = delete;

  // For a line with its end. Throws NobodyReads, and host::Failure (Failed) where the bytes cannot
  // be written.
  void write(std::string_view line);

  // Whatever waits; to be called at the end.
  void flush();

  // Before a line goes to standard error: a terminal shows both in their order.
  void flushForError();

 private:
  std::string waiting_;
  bool isTerminal_;
  bool isFirst_ = true;
};

// As OutputBuffer writes.
void WriteOut(std::string_view bytes);

}  // namespace tarn::archive

#endif

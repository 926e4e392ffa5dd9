// DumpLines.h - the two outputs of a dump: a line for each answer, and the answers themselves.
//
// A line has its fields between tabs: file, call, variant, outcome, size and hash of the bytes.
// Other lines begin with a word of their own: "usage" (what the calls took, which a change of the
// code may change) and "left" (what they left behind, which it may not).
#ifndef TARN_TESTS_DUMP_DUMPLINES_H
#define TARN_TESTS_DUMP_DUMPLINES_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "support/road/Answer.h"

namespace tarn::test {

class DumpLines {
 public:
  // Lines go to `lines`. With a path the answers go there, unbuffered: one write, one answer.
  explicit DumpLines(std::FILE* lines) : lines_(lines) {}
  bool openRaw(const std::string& path);

  void answer(const std::string& file, const std::string& variant, const Answer& answer);
  void note(const char* word, const std::string& file, const std::string& variant,
            const std::string& text);

  uint64_t answers() const { return answers_; }
  // True when everything was written.
  bool finish();

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::FILE* lines_;
  std::unique_ptr<std::FILE, Closer> raw_;
  uint64_t answers_ = 0;
  bool isComplete_ = true;
};

}  // namespace tarn::test

#endif

#include "DumpLines.h"

#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid_io.hpp>

namespace tarn::test {
namespace {

// 122 bits of a SHA-1, which is enough against chance.
std::string Hash(const std::string& bytes) {
  static const boost::uuids::name_generator_sha1 generate{boost::uuids::ns::oid()};
  return to_string(generate(bytes.data(), bytes.size()));
}

}  // namespace

bool DumpLines::openRaw(const std::string& path) {
  raw_.reset(std::fopen(path.c_str(), "wb"));
  return raw_ != nullptr && std::setvbuf(raw_.get(), nullptr, _IONBF, 0) == 0;
}

void DumpLines::answer(const std::string& file, const std::string& variant, const Answer& answer) {
  ++answers_;
  const std::string head = file + "\t" + answer.call + "\t" + variant + "\t" + answer.outcome;
  if (raw_ != nullptr) {
    const std::string text = head + "\n" + answer.bytes;
    isComplete_ =
        isComplete_ && std::fwrite(text.data(), 1, text.size(), raw_.get()) == text.size();
    return;
  }
  const std::string size = std::to_string(answer.bytes.size());
  std::fprintf(lines_, "%s\t%s\t%s\n", head.c_str(), size.c_str(), Hash(answer.bytes).c_str());
  std::fflush(lines_);  // the last line of a process that dies tells how far it came
}

void DumpLines::note(const char* word, const std::string& file, const std::string& variant,
                     const std::string& text) {
  std::fprintf(lines_, "%s\t%s\t%s\t%s\n", word, file.c_str(), variant.c_str(), text.c_str());
  std::fflush(lines_);
}

bool DumpLines::finish() {
  isComplete_ = isComplete_ && std::fflush(lines_) == 0 && std::ferror(lines_) == 0;
  return isComplete_;
}

}  // namespace tarn::test

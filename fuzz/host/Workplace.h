// Workplace.h - a folder of this process's own, with the file that is read, and with the kernel's
// temporary files.
#ifndef TARN_FUZZ_HOST_WORKPLACE_H
#define TARN_FUZZ_HOST_WORKPLACE_H

#include <string>
#include <string_view>

namespace tarn::fuzz {

class Workplace {
 public:
  // Makes the folder, and tells the kernel that its temporary files go there.
  Workplace();
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;
  // Removes both files and the folder.
  ~Workplace();

  // Replaces the file's bytes.
  void write(std::string_view bytes) const;
  const char16_t* file() const { return wideFile_.c_str(); }
  // Where attachments go to; takeOutput removes the file and gives its bytes.
  const char16_t* output() const { return wideOutput_.c_str(); }
  std::string takeOutput() const;
  // Whether the folder holds the file alone.
  bool hasOnlyTheFile() const;
  // A path in a folder that is not there.
  const char16_t* nowhere() const { return wideNowhere_.c_str(); }

 private:
  std::string folder_;
  std::string file_;
  std::string output_;
  std::u16string wideFile_;
  std::u16string wideOutput_;
  std::u16string wideNowhere_;
};

}  // namespace tarn::fuzz

#endif

// TempNamesFixture.h - names that the kernel makes for temporary files.
#ifndef TARN_TESTS_KERNEL_TEMPNAMESFIXTURE_H
#define TARN_TESTS_KERNEL_TEMPNAMESFIXTURE_H

#include <array>
#include <string>

#include "Scratch.h"

namespace tarn::test {

class TempNames : public Scratch {
 protected:
  static constexpr int32_t kCapacity = 264;

  int32_t Make(const char16_t* directory, const char16_t* prefix, const char16_t* extension,
               int32_t capacity = kCapacity) {
    name_.fill(u'#');
    return KernelTempFileName(directory, name_.data(), capacity, 1, prefix, extension);
  }
  int32_t MakeIn(const std::string& directory, const char16_t* extension = nullptr,
                 int32_t capacity = kCapacity) {
    return Make(Widen(directory).c_str(), u"pst", extension, capacity);
  }
  // The name made, with the unique part taken out after a look at it.
  std::string Frame(size_t front) const {
    const std::string name = Narrow(name_.data());
    const std::string unique = name.substr(front, kUnique);
    EXPECT_EQ(unique.find_first_not_of("abcdefghijklmnopqrstuvwxyz234567"), std::string::npos);
    return name.substr(0, front) + "*" + name.substr(front + kUnique);
  }
  void Delete() { KernelDeleteFile(name_.data()); }

  static constexpr size_t kUnique = 16;
  std::array<char16_t, 600> name_;
};

}  // namespace tarn::test

#endif

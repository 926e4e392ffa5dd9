// Descriptor.h - an open file, closed with its object.
#ifndef TARN_SIBLINGS_CLIENT_DESCRIPTOR_H
#define TARN_SIBLINGS_CLIENT_DESCRIPTOR_H

#include <utility>

namespace tarn::pages {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, kNone)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    other.close();
    return *this;
  }
  ~Descriptor() { close(); }

  explicit operator bool() const { return number_ >= 0; }
  int get() const { return number_; }

  void close();

 private:
  static constexpr int kNone = -1;
  int number_ = kNone;
};

}  // namespace tarn::pages

#endif

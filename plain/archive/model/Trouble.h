// Trouble.h - why something of a mail file is not there, as a value.
//
// A trouble costs what it concerns and nothing else: a page of a store, a folder, an item, one
// attachment. Whoever meets it goes on with the next.
#ifndef TARN_ARCHIVE_TROUBLE_H
#define TARN_ARCHIVE_TROUBLE_H

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace tarn::archive {

enum class TroubleKind : uint8_t {
  Damaged,      // the bytes are not what the format asks for
  Missing,      // something is referred to and not there
  Unreadable,   // the system does not give the bytes
  Unsupported,  // a format, an encryption or a kind that is not read
  TooDeep,      // items within items beyond kDeepestItem
  TooLarge      // beyond what is read of such a thing
};

struct Trouble {
  TroubleKind kind = TroubleKind::Damaged;
  std::string
      reason;  // one line for a person, UTF-8, without a full stop: "the recipients cannot be read"
};

// A value, or why there is none.
template <typename T>
class Outcome {
 public:
  Outcome(T value) : held_(std::in_place_index<0>, std::move(value)) {}
  Outcome(Trouble trouble) : held_(std::in_place_index<1>, std::move(trouble)) {}

  bool ok() const { return held_.index() == 0; }
  explicit operator bool() const { return ok(); }

  // Only of an outcome that is ok.
  T& value() { return *std::get_if<0>(&held_); }
  const T& value() const { return *std::get_if<0>(&held_); }
  T& operator*() { return value(); }
  const T& operator*() const { return value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }

  // Only of an outcome that is not.
  const Trouble& trouble() const { return *std::get_if<1>(&held_); }

 private:
  std::variant<T, Trouble> held_;
};

}  // namespace tarn::archive

#endif

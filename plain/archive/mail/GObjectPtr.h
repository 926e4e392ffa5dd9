// GObjectPtr.h - GMime's objects and strings, let go when their owner goes.
#ifndef TARN_ARCHIVE_GOBJECTPTR_H
#define TARN_ARCHIVE_GOBJECTPTR_H

#include <glib-object.h>
#include <glib.h>

#include <memory>

namespace tarn::archive::mail {

struct UnrefObject {
  void operator()(void* object) const { g_object_unref(object); }
};

// One reference to an object. Null where there is none.
template <typename T>
using GObjectPtr = std::unique_ptr<T, UnrefObject>;

// A reference of its own to an object that someone else owns.
template <typename T>
GObjectPtr<T> ShareObject(T* object) {
  if (object != nullptr) g_object_ref(object);
  return GObjectPtr<T>(object);
}

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
using GText = std::unique_ptr<char, FreeText>;

struct UnrefDate {
  void operator()(GDateTime* date) const { g_date_time_unref(date); }
};
using GDatePtr = std::unique_ptr<GDateTime, UnrefDate>;

}  // namespace tarn::archive::mail

#endif

// ContextRef.h - how pages and blocks refer to their context: weakly. One that outlives it can no
// longer load children, and says so with std::bad_weak_ptr.
#ifndef TARN_PSTSTORE_CONTEXTREF_H
#define TARN_PSTSTORE_CONTEXTREF_H

#include <memory>

namespace pststore {

class db_context;

class context_ref {
 protected:
  explicit context_ref(const std::shared_ptr<db_context>& context) : context_(context) {}
  context_ref(const context_ref&) = default;
  ~context_ref() = default;

  // The context; std::bad_weak_ptr when it has died.
  std::shared_ptr<db_context> get_context() const { return std::shared_ptr<db_context>(context_); }

 private:
  std::weak_ptr<db_context> context_;
};

}  // namespace pststore

#endif

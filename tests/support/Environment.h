// Environment.h - a variable of the process's environment for the time of a test.
#ifndef TARN_TESTS_SUPPORT_ENVIRONMENT_H
#define TARN_TESTS_SUPPORT_ENVIRONMENT_H

#include <optional>
#include <string>

namespace tarn::test {

// The variable that says where the system wants temporary files.
extern const char* const kTempVariable;

// Sets the variable, or with null takes it away, for the runtime library and the system alike.
// Where the system knows no empty variables, an empty value takes it away too. Values are UTF-8.
void SetVariable(const char* name, const char* value);
std::optional<std::string> GetVariable(const char* name);

// A value while the object lives; then the one before.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name), before_(GetVariable(name)) {
    SetVariable(name, value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { SetVariable(name_, before_ ? before_->c_str() : nullptr); }

 private:
  const char* name_;
  std::optional<std::string> before_;
};

}  // namespace tarn::test

#endif

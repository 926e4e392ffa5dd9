#include "support/Environment.h"

#include <stdlib.h>

namespace tarn::test {

const char* const kTempVariable = "TMPDIR";

void SetVariable(const char* name, const char* value) {
  value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1);
}

std::optional<std::string> GetVariable(const char* name) {
  const char* const value = ::getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace tarn::test

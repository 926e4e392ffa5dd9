#include "Arguments.h"

namespace tarn::host {

std::vector<std::string> CommandLineWords(int argc, char** argv) {
  return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

}  // namespace tarn::host

#include "StatusText.h"

#include "TarnPst.h"

namespace tarn::host {
std::string StatusText(int32_t status) {
  return std::string(TarnStatusText(status)) + " (" + std::to_string(status) + ")";
}

std::string SiblingRefusalText(int32_t siblingResult) {
  return std::string(TarnStatusText(StatusSiblingRefused)) + ": " + TarnStatusText(siblingResult) +
         " (" + std::to_string(StatusSiblingRefused) + ", " + std::to_string(siblingResult) + ")";
}

}  // namespace tarn::host

#include "SystemErrors.h"

namespace tarn::host {

std::string ErrorText(const std::error_code& error) { return error.message(); }

}  // namespace tarn::host

#include "SystemErrors.h"

namespace tarn::host {

std::string ErrorText(const std::error_code& error, std::string_view) { return error.message(); }

}  // namespace tarn::host

// PlanChoices.h - the options of an export as a plan tells them.
#ifndef TARN_ARCHIVE_PLANCHOICES_H
#define TARN_ARCHIVE_PLANCHOICES_H

#include <nlohmann/json.hpp>
#include <string>

#include "archive/export/Export.h"

namespace tarn::archive {

// Those that shape the result: not where it goes, nor how it is made.
nlohmann::ordered_json JsonOfChoices(const ExportOptions& options);

// Throws nlohmann::json::exception where something is not as it is written there.
ExportOptions ChoicesOfJson(const nlohmann::ordered_json& json);

// Texts that need not be UTF-8: what is none has its bytes in hexadecimal, in an object.
nlohmann::ordered_json JsonOfText(const std::string& text);
std::string TextOfJson(const nlohmann::ordered_json& json);

}  // namespace tarn::archive

#endif

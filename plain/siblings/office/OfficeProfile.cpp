#include "siblings/office/OfficeProfile.h"

#include <array>
#include <fstream>
#include <string>
#include <string_view>

namespace tarn::pages {

namespace {

struct Setting {
  std::string_view path;
  std::string_view name;
  std::string_view value;
};

// Below "/org.openoffice.".
constexpr std::array<Setting, 27> kSettings = {{
    {"Office.Common/Security/Scripting", "BlockUntrustedRefererLinks", "true"},
    {"Office.Common/Security/Scripting", "MacroSecurityLevel", "3"},
    {"Office.Common/Security/Scripting", "DisableMacrosExecution", "true"},
    {"Office.Common/Security/Scripting", "ExecutePlugins", "false"},
    {"Office.Common/Security/Scripting", "OfficeBasic", "0"},
    {"Office.Common/Save/Document", "LoadPrinter", "false"},
    {"Office.Common/Misc", "FirstRun", "false"},
    {"Office.Common/Misc", "UseOpenCL", "false"},
    {"Office.Common/History", "PickListSize", "0"},
    {"Office.Writer/Content/Update", "Link", "0"},
    {"Office.Writer/Content/Update", "Field", "false"},
    {"Office.Writer/Content/Update", "Chart", "false"},
    {"Office.Writer/Content/NonprintingCharacter", "Bookmarks", "false"},
    {"Office.Writer/Content/NonprintingCharacter", "ProtectedSpace", "false"},
    {"Office.Writer/Content/NonprintingCharacter", "OptionalHyphen", "false"},
    {"Office.Writer/Layout/Window", "HorizontalScroll", "false"},
    {"Office.Writer/Layout/Window", "VerticalScroll", "false"},
    {"Office.Writer/Layout/Window", "ShowRulers", "false"},
    {"Office.Writer/Layout/Window", "HorizontalRuler", "false"},
    {"Office.Writer/Content/Display", "Note", "false"},
    {"Office.Linguistic/General", "DefaultLocale", "en-US"},
    {"Office.Linguistic/SpellChecking", "IsSpellAuto", "false"},
    {"Office.Recovery/AutoSave", "Enabled", "false"},
    {"Office.Recovery/RecoveryInfo", "Enabled", "false"},
    {"Setup/L10N", "ooLocale", "en-US"},
    {"Setup/L10N", "ooSetupSystemLocale", "en-US"},
    {"Setup/Office", "ooSetupInstCompleted", "true"},
}};

// Aids for those who edit, which are no part of a page.
constexpr std::array<std::string_view, 8> kHiddenAids = {
    "DocBoundaries", "ObjectBoundaries",    "TableBoundaries",   "Shadow",
    "LinksVisited",  "WriterFieldShadings", "WriterIdxShadings", "WriterSectionBoundaries"};

constexpr std::string_view kColourScheme =
    "Office.UI/ColorScheme/ColorSchemes/org.openoffice.Office.UI:ColorScheme['LibreOffice']/";

void Write(std::ostream& file, std::string_view path, std::string_view name,
           std::string_view value) {
  file << R"(<item oor:path="/org.openoffice.)" << path << R"("><prop oor:name=")" << name
       << R"(" oor:op="fuse"><value>)" << value << "</value></prop></item>\n";
}

// "7.4" of the line "ProductKey=LibreOffice 7.4"; empty where it is kept elsewhere.
std::string VersionOf(const std::filesystem::path& installation) {
  std::ifstream file(installation / "bootstraprc");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("ProductKey=", 0) != 0) continue;
    std::string version = line.substr(line.find_last_of(" =") + 1);
    if (version.find_first_not_of("0123456789.") == std::string::npos) return version;
  }
  return {};
}

}  // namespace

void WriteOfficeProfile(const std::filesystem::path& profile,
                        const std::filesystem::path& installation) {
  std::filesystem::create_directories(profile / "user");
  std::ofstream file(profile / "user/registrymodifications.xcu", std::ios::binary);
  file << R"(<?xml version="1.0" encoding="UTF-8"?>)"
          "\n"
          R"(<oor:items xmlns:oor="http://openoffice.org/2001/registry")"
          R"( xmlns:xs="http://www.w3.org/2001/XMLSchema")"
          R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">)"
          "\n";
  for (const Setting& setting : kSettings) Write(file, setting.path, setting.name, setting.value);
  for (const std::string_view aid : kHiddenAids) {
    Write(file, std::string(kColourScheme).append(aid), "IsVisible", "false");
  }
  const std::string version = VersionOf(installation);
  if (!version.empty()) Write(file, "Setup/Product", "ooSetupLastVersion", version);
  file << "</oor:items>\n";
  file.close();
  if (!file) {
    throw std::filesystem::filesystem_error("the profile cannot be written", profile,
                                            std::make_error_code(std::errc::io_error));
  }
}

}  // namespace tarn::pages

// tarnmail-office: lays out RTF. Its engine starts before the first document, since it wants more
// of the system then than afterwards.
#include <cstdlib>
#include <memory>

#include "HelperMain.h"
#include "siblings/office/OfficeEngine.h"

int main(int argc, char** argv) {
  using namespace tarn::pages;
  std::unique_ptr<Engine> engine;
  const HelperTrade trade = {Files::WrittenToo, [&engine](const std::filesystem::path& folder) {
                               engine = MakeOfficeEngine(folder);
                               return [&engine](DocumentKind kind) -> Engine& {
                                 if (kind == DocumentKind::Rtf) return *engine;
                                 throw PageFailure(Trouble::BadDocument,
                                                   "only RTF is laid out here");
                               };
                             }};
  std::_Exit(RunHelper(argc, argv, trade));
}

#include "FilterLibrary.h"

#include <exception>
#include <new>

#include "console/Failure.h"

namespace tarn::host {
namespace {

template <typename Function>
void Resolve(const DynamicLibrary& library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(library.function(name));
}

// Runs one export. What it throws is turned into text while the library's own types are at hand.
template <typename Export, typename Context>
int32_t Call(const std::string& file, Export function, Context& context) {
  try {
    return function(&context);
  } catch (const std::bad_alloc&) {
    throw Failure(ExitStatus::Failed, file, "out of memory");
  } catch (const std::exception& error) {
    throw Failure(ExitStatus::Failed, file, std::string("the store is damaged: ") + error.what());
  } catch (...) {
    throw Failure(ExitStatus::Failed, file, "the filter gave up without saying why");
  }
}

}  // namespace

FilterLibrary::FilterLibrary() : library_("TarnPst"), exports_() {
  Resolve(library_, "fltInfo", exports_.info);
  Resolve(library_, "fltLoad", exports_.load);
  Resolve(library_, "fltFreeData", exports_.freeData);
  Resolve(library_, "fltGetAttachmentInfo", exports_.getAttachmentInfo);
  Resolve(library_, "fltExtractAttachment", exports_.extractAttachment);
  Resolve(library_, "TARN_Load", exports_.loadStub);
}

int32_t FilterLibrary::info(const std::string& file, FilterInfoContext& context) const {
  return Call(file, exports_.info, context);
}

int32_t FilterLibrary::load(const std::string& file, FilterLoadContext& context) const {
  return Call(file, exports_.load, context);
}

int32_t FilterLibrary::attachmentInfo(const std::string& file,
                                      GetAttachmentInfoContext& context) const {
  return Call(file, exports_.getAttachmentInfo, context);
}

int32_t FilterLibrary::extractAttachment(const std::string& file,
                                         ExtractAttachmentContext& context) const {
  return Call(file, exports_.extractAttachment, context);
}

void FilterLibrary::freeData(void* data) const noexcept {
  try {
    exports_.freeData(data, 0);
  } catch (...) {
    return;
  }
}

}  // namespace tarn::host

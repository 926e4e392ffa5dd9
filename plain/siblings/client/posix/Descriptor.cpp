#include "siblings/client/Descriptor.h"

#include <unistd.h>

namespace tarn::pages {

void Descriptor::close() {
  if (number_ >= 0) ::close(std::exchange(number_, kNone));
}

}  // namespace tarn::pages

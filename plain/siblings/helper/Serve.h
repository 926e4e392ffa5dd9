// Serve.h - a helper's work: takes requests from its channel and has engines do them.
//
// Whatever an engine throws becomes the answer Failed: a PageFailure as it is, a lack of memory
// as TooLarge, anything else as BadDocument. The next request finds the helper well.
#ifndef TARN_SIBLINGS_HELPER_SERVE_H
#define TARN_SIBLINGS_HELPER_SERVE_H

#include <functional>

#include "siblings/client/Channel.h"
#include "siblings/layout/Engine.h"

namespace tarn::pages {

// The engine for documents of that kind. Throws PageFailure when there is none.
using EngineFor = std::function<Engine&(DocumentKind)>;

enum class Served {
  ToTheEnd,  // the other end was closed
  Nonsense   // something came that is no request
};

Served Serve(Channel& channel, const EngineFor& engineFor);

}  // namespace tarn::pages

#endif

// A C++ host compiles against the public header alone.
#include "TarnPst.h"

int32_t CallFromCpp(FilterLoadContext* context) { return fltLoad(context); }

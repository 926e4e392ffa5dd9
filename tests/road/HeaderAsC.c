/* A C host compiles against the public header alone. */
#include "TarnPst.h"

int32_t CallFromC(FilterInfoContext* context) { return fltInfo(context); }

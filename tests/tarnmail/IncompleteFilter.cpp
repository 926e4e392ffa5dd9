// A library with one export of the filter and without the other five.
#include "TarnPst.h"

int32_t fltInfo(FilterInfoContext*) { return StatusOk; }

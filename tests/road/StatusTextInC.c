#include "StatusTextInC.h"

#include "TarnPst.h"

const char* StatusTextFromC(int32_t status) { return TarnStatusText(status); }

// SystemHeaders.h - the system's header, without the parts that nobody here uses.
#ifndef TARN_KERNEL_WIN32_SYSTEMHEADERS_H
#define TARN_KERNEL_WIN32_SYSTEMHEADERS_H

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#endif

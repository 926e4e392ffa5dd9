// TrackedObjects.h - the objects of the new expression, and the kernel's device contexts and fonts.
#ifndef TARN_KERNEL_TRACKEDOBJECTS_H
#define TARN_KERNEL_TRACKEDOBJECTS_H

#include "ObjectRegister.h"

namespace tarn::kernel {

// The registers: what callers announce, and what KernelCreateDC and KernelCreateFont made.
ObjectRegister& TrackedObjects();
ObjectRegister& GraphicsObjects();

}  // namespace tarn::kernel

#endif

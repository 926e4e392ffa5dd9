// SystemGraphics.h - device contexts and fonts as the operating system has them. One folder a
// system implements them (posix/, win32/); which of them are alive is the kernel's business.
#ifndef TARN_KERNEL_SYSTEMGRAPHICS_H
#define TARN_KERNEL_SYSTEMGRAPHICS_H

namespace tarn::kernel {

// A device context for the screen; null when the system gives none.
void* MakeContext();
void DestroyContext(void* context);

// A font for a LOGFONTW record of 92 bytes, of any alignment; null when the system gives none.
void* MakeFont(const void* logFont);
void DestroyFont(void* font);

}  // namespace tarn::kernel

#endif

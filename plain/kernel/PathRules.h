// PathRules.h - the rules of names that differ from system to system. One folder a system
// implements them (posix/, win32/). Paths are UTF-8; "\" and "/" separate.
#ifndef TARN_KERNEL_PATHRULES_H
#define TARN_KERNEL_PATHRULES_H

#include <string>

namespace tarn::kernel {

// Whether a component leads up, as "..".
bool ClimbsUp(const std::string& path);

// Whether the path may name a temporary file. Names of images come out of mail, which may be
// hostile: not one that climbs up, nor one by which the system would open anything but the file of
// that name in that directory.
bool MayNameTemporary(const std::string& path);

// One spelling for all that differ in separators, doubled separators and "." components only, and
// in what else the system does not tell apart by itself. Only for comparing with others.
std::string OneSpelling(const std::string& path);

}  // namespace tarn::kernel

#endif

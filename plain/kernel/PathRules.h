// PathRules.h - the rules of names that differ from system to system. One folder a system
// implements them (posix/, win32/). Paths are UTF-8; "\" and "/" separate.
#ifndef TARN_KERNEL_PATHRULES_H
#define TARN_KERNEL_PATHRULES_H

#include <string>

namespace tarn::kernel {

// Whether a component leads up, as "..".
bool ClimbsUp(const std::string& path);

// Whether temporary files may lie in the directory. Names of images come out of mail, which may be
// hostile: not one that climbs up, nor one by which the system would reach anything but files of
// that name in that directory, such as streams and devices.
bool MayHoldTemporaries(const std::string& directory);

// Whether the path may name a temporary file: likewise, and its last component is a name. A
// separator at the end, or nothing after it but what the system leaves out, names a directory,
// although some calls of the system take it for the file before it.
//
// Short names that a volume keeps beside the long ones ("AVER~OTA.JPE") are second names of the
// same files, and are not refused: what they mean depends on what the directory holds.
bool MayNameTemporary(const std::string& path);

// The path by which every program finds the temporary file that the kernel makes by `path`.
std::string SpellingForOthers(const std::string& path);

// One spelling for all that differ in separators, doubled separators and "." components only, and
// in what else the system's rules of spelling do not tell apart. Second names of a file (links,
// short names) are others. Only for comparing with others.
std::string OneSpelling(const std::string& path);

}  // namespace tarn::kernel

#endif

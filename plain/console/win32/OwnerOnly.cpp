#include "OwnerOnly.h"

#include <sddl.h>

#include <array>
#include <string>

#include "FileHandle.h"

namespace tarn::host {
namespace {

// As text, "S-1-5-..."; empty on an error.
std::wstring UserOfThisProcess() {
  HANDLE opened = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == 0) return {};
  const FileHandle token(opened);
  alignas(TOKEN_USER) std::array<unsigned char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> room;
  DWORD size = 0;
  wchar_t* text = nullptr;
  const bool isTold = GetTokenInformation(token.get(), TokenUser, room.data(),
                                          static_cast<DWORD>(room.size()), &size) != 0 &&
                      ConvertSidToStringSidW(
                          reinterpret_cast<const TOKEN_USER*>(room.data())->User.Sid, &text) != 0;
  if (!isTold) return {};
  const std::wstring user = text;
  LocalFree(text);
  return user;
}

}  // namespace

OwnerOnly::OwnerOnly() {
  const std::wstring user = UserOfThisProcess();
  // Protected from what is inherited; all rights, also of what is in it, for the system and the
  // user.
  const std::wstring rules = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;" + user + L")";
  void* descriptor = nullptr;
  const bool isMade =
      !user.empty() && ConvertStringSecurityDescriptorToSecurityDescriptorW(
                           rules.c_str(), SDDL_REVISION_1, &descriptor, nullptr) != 0;
  if (!isMade) {
    error_ = GetLastError();
    return;
  }
  descriptor_.reset(descriptor);
  attributes_.nLength = sizeof attributes_;
  attributes_.lpSecurityDescriptor = descriptor;
}

}  // namespace tarn::host

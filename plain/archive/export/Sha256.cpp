#include "archive/export/Sha256.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>
#include <new>

namespace tarn::archive {
namespace {

// The library fails here for want of memory alone.
void Check(int isDone) {
  if (isDone != 1) throw std::bad_alloc();
}

}  // namespace

void Sha256::Free::operator()(evp_md_ctx_st* context) const { EVP_MD_CTX_free(context); }

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
  // Without its own context the library would end the process.
  Check(OSSL_LIB_CTX_get0_global_default() != nullptr ? 1 : 0);
  Check(context_ != nullptr ? EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) : 0);
}

void Sha256::add(std::string_view bytes) {
  Check(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()));
}

void Sha256::addText(std::string_view text) {
  addLength(text.size());
  add(text);
}

void Sha256::addLength(uint64_t bytes) { add(std::to_string(bytes) + ":"); }

std::string Sha256::digest() const {
  const Sha256 copy;
  Check(EVP_MD_CTX_copy_ex(copy.context_.get(), context_.get()));
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes;
  unsigned int size = 0;
  Check(EVP_DigestFinal_ex(copy.context_.get(), bytes.data(), &size));
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  std::string text;
  for (unsigned int at = 0; at < size; ++at) {
    text += kHexDigits[bytes[at] >> 4];
    text += kHexDigits[bytes[at] & 0xF];
  }
  return text;
}

}  // namespace tarn::archive

// Sha256.h - SHA-256 (FIPS 180-4) of bytes that come one after the other.
#ifndef TARN_ARCHIVE_SHA256_H
#define TARN_ARCHIVE_SHA256_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct evp_md_ctx_st;

namespace tarn::archive {

class Sha256 {
 public:
  Sha256();
  Sha256(Sha256&&) = default;
  Sha256& operator=(Sha256&&) = default;
  ~Sha256() = default;

  void add(std::string_view bytes);
  // With a length before the text, so that neighbours cannot be taken for one another.
  void addText(std::string_view text);
  // That length alone, for a text that comes after it in pieces.
  void addLength(uint64_t bytes);

  // Of all that was added, 64 digits in lower case; more may be added afterwards.
  std::string digest() const;

 private:
  struct Free {
    void operator()(evp_md_ctx_st* context) const;
  };
  std::unique_ptr<evp_md_ctx_st, Free> context_;
};

}  // namespace tarn::archive

#endif

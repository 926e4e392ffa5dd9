#include "archive/store/StoreSession.h"

#include <array>
#include <fstream>
#include <string_view>

#include "archive/store/StoreText.h"
#include "archive/store/StoreTrouble.h"
#include "pststore/Disk.h"
#include "pststore/Errors.h"

namespace tarn::archive::store {
namespace {

using UnicodeLayout = pststore::disk::layout<pststore::ulonglong>;
using AnsiLayout = pststore::disk::layout<pststore::ulong>;

// A context that has read so much has a few megabytes in memory at most.
constexpr uint64_t kFullContext = 6u << 20;

// As one context of the store layer may read (pststore/StoreFile.h).
constexpr uint64_t kFreeBytes = uint64_t{1} << 30;
constexpr uint64_t kBytesPerFileByte = 64;

constexpr uint16_t kFirstVersionOfLargePages = 36;
constexpr unsigned char kPermute = 1;
constexpr unsigned char kCyclic = 2;

Trouble Unreadable() { return {TroubleKind::Unreadable, "the store cannot be opened"}; }

}  // namespace

Outcome<bool> StoreSession::expectHeader(const std::filesystem::path& path) {
  std::array<unsigned char, UnicodeLayout::header_size> header = {};
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(header.data()), header.size());
  std::error_code error;
  fileSize_ = std::filesystem::file_size(path, error);
  if (error || file.gcount() == 0) return Unreadable();
  if (file.gcount() < static_cast<std::streamsize>(AnsiLayout::header_size)) {
    return Trouble{TroubleKind::Damaged, "the store ends within its header"};
  }
  version_ = pststore::disk::load<uint16_t>(header, pststore::disk::header_version);
  const bool isUnicode = version_ >= pststore::disk::first_unicode_version;
  blockSize_ = isUnicode ? UnicodeLayout::max_block_data : AnsiLayout::max_block_data;
  const unsigned char encoding =
      header[isUnicode ? UnicodeLayout::header_crypt_method : AnsiLayout::header_crypt_method];
  if (encoding > kPermute && encoding != kCyclic) {
    return Trouble{TroubleKind::Unsupported, "the store is encrypted"};
  }
  return true;
}

Outcome<std::unique_ptr<StoreSession>> StoreSession::Open(const std::filesystem::path& path) {
  const std::u8string name = path.u8string();
  const auto wide = Utf16OfUtf8({reinterpret_cast<const char*>(name.data()), name.size()});
  if (!wide) return Trouble{TroubleKind::Unreadable, "the path of the store is not UTF-8"};
  std::unique_ptr<StoreSession> session(new StoreSession(*wide));
  const Outcome<bool> header = session->expectHeader(path);
  if (!header) return header.trouble();

  const Outcome<bool> opened = Guarded("the store cannot be opened", [&] {
    session->context();
    return true;
  });
  if (!opened) return opened.trouble();
  const Outcome<bool> indexed = Guarded("the index of the store cannot be read", [&] {
    session->context()->read_nbt_root();
    session->context()->read_bbt_root();
    return true;
  });
  if (!indexed && session->version_ >= kFirstVersionOfLargePages) {
    return Trouble{TroubleKind::Unsupported, "stores with pages of 4096 bytes are not read"};
  }
  if (!indexed) return indexed.trouble();
  return Outcome<std::unique_ptr<StoreSession>>(std::move(session));
}

const std::shared_ptr<pststore::db_context>& StoreSession::context() {
  if (context_ == nullptr) {
    if (taken_ > kFreeBytes && (taken_ - kFreeBytes) / kBytesPerFileByte > fileSize_) {
      throw pststore::database_corrupt("the same data is read too often");
    }
    context_ = pststore::open_database(path_.c_str());
  }
  return context_;
}

bool StoreSession::isFull() const {
  return context_ != nullptr && context_->get_bytes_taken() > kFullContext;
}

void StoreSession::drop() {
  if (context_ == nullptr) return;
  taken_ += context_->get_bytes_taken();
  context_ = nullptr;
}

}  // namespace tarn::archive::store

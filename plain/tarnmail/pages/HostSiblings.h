// HostSiblings.h - the host's siblings for HTML, RTF and text: the six functions that the filter
// calls, on a page maker.
//
//   info   lays the document out and answers with its page count, the size of its first page and
//          the bytes of that page's bitmap, at the resolution that the record has, else at 96 dots
//          per inch. The host's wish for another is the filter's work.
//   load   draws the page of the options into the host's bitmap (HostBitmap.h), at the resolution
//   of
//          the host's model, else at 96. A page number beyond the document is taken for the last
//          one, and one below 1 for the first.
//   target refuses.
//
// A mail has one document, which the text sibling gets too when the host asks for text: HTML is
// then laid out as HTML. The last two bytes of the texts of stores and MSG files come after the end
// that their size gives, and are shown.
//
// A document that was laid out is not laid out again as long as the maker holds it. Which one that
// is, a small block tells that the filter keeps for the siblings in the slot. The last document is
// remembered besides, since fltLoad passes the block of the first message whatever the message is.
// Whether it is that document is told by its bytes and its folder.
//
// Results are codes of TarnPst.h; why a call failed is in failure(). Nothing is thrown into the
// filter:
//   StatusOk
//   StatusNotSupported  the document cannot be laid out; a sibling of another kind
//   StatusBadArgument   another bitmap than 24 bits a pixel in that order; different resolutions
//                       across and down; no such page
//   StatusOutOfMemory   also for a bitmap or a document beyond the maker's limits
//   StatusDone          stopped by the progress callback
//   StatusFailed        the maker failed: too long, ended, not installed
//   others              of ReadWholeFile, for a document by name
#ifndef TARN_TARNMAIL_PAGES_HOSTSIBLINGS_H
#define TARN_TARNMAIL_PAGES_HOSTSIBLINGS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnPst.h"
#include "tarnmail/KernelBytes.h"
#include "tarnmail/MailFormat.h"
#include "tarnmail/pages/PageMaker.h"

namespace tarn::host {

inline constexpr int32_t kUsualResolution = 96;  // dots per inch

// The block that is kept: names the document that a maker holds.
struct KeptLayout {
  static constexpr int32_t kFormat = 0x47415054;  // "TPAG"

  pages::LaidOut laidOut;
  pages::DocumentKind kind = pages::DocumentKind::Html;
  uint64_t documentBytes = 0;
  uint64_t documentHash = 0;  // of the bytes and of the folder
};

// The filter calls siblings without a value of the host's, so that one object at a time is the one
// that answers. It outlives the slots that it was used with: the blocks in them are its own.
class HostSiblings {
 public:
  // `format` is that of the files that are open.
  HostSiblings(PageMaker& maker, pages::Paper paper, MailFormat format);
  HostSiblings(const HostSiblings&) = delete;
  HostSiblings& operator=(const HostSiblings&) = delete;
  ~HostSiblings();

  void attachTo(FilterInfoContext& context) const;
  void attachTo(FilterLoadContext& context) const;

  // Why the last call failed; nothing when it did not, or when its code tells.
  const std::optional<pages::PageFailure>& failure() const { return failure_; }
  // What the last call that succeeded laid out, or found laid out.
  const std::optional<KeptLayout>& last() const { return last_; }
  // The TarnSibling that the last call was for.
  int32_t lastSibling() const { return lastSibling_; }

 private:
  struct Document;
  struct LoadCall;

  static int32_t InfoByName(const char16_t* path, void* info, int32_t infoSize, int32_t mode,
                            void* options);
  static int32_t InfoFromMemory(const void* data, void* info, int32_t infoSize, uint64_t size,
                                int32_t mode, void* options);
  static int32_t LoadByName(const char16_t* path, void* bitmap, int32_t bitmapSize, int32_t depth,
                            int32_t order, int32_t flag, void* callback, uint64_t userValue,
                            void* options, void* info);
  static int32_t LoadFromMemory(const void* data, void* bitmap, int32_t bitmapSize, int32_t depth,
                                int32_t order, int32_t flag, void* callback, uint64_t userValue,
                                uint64_t size, void* options, void* info);
  static int32_t TargetByName(const char16_t* path, uint64_t opaque, void* options, void* info);
  static int32_t TargetFromMemory(const void* data, uint64_t opaque, uint64_t size, void* options,
                                  void* info);

  template <typename Call>
  int32_t run(const Call& call) noexcept;
  int32_t fail(pages::Trouble trouble, const char* why) noexcept;
  Document documentByName(const char16_t* path, std::string_view bytes,
                          const HostFileInfo& info) const;
  Document documentInMemory(const void* data, uint64_t size, const HostFileInfo& info) const;
  int32_t info(const Document& document, HostFileInfo& info, int32_t mode,
               const HostLoadOptions& options);
  int32_t load(const Document& document, const LoadCall& call);
  KeptLayout layOut(const Document& document, const HostLoadOptions& options);
  void keep(const KeptLayout& layout, const HostLoadOptions& options, HostFileInfo& info);

  static HostSiblings* active_;
  PageMaker& maker_;
  const pages::Paper paper_;
  const MailFormat format_;
  std::optional<pages::PageFailure> failure_;
  std::optional<KeptLayout> last_;
  int32_t lastSibling_ = 0;
  std::vector<KernelBytes> blocks_;
};

}  // namespace tarn::host

#endif

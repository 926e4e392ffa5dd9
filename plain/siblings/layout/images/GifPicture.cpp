#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

namespace {

struct CloseGif {
  void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

int ReadBytes(GifFileType* gif, GifByteType* buffer, int count) {
  auto& rest = *static_cast<std::string_view*>(gif->UserData);
  const size_t taken = std::min(rest.size(), static_cast<size_t>(std::max(count, 0)));
  std::memcpy(buffer, rest.data(), taken);
  rest.remove_prefix(taken);
  return static_cast<int>(taken);
}

// Reads what comes before the first frame; the transparent colour, if one is named, is put down.
bool FindFrame(GifFileType* gif, int& transparent) {
  while (true) {
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    if (DGifGetRecordType(gif, &record) == GIF_ERROR) return false;
    if (record == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(gif) != GIF_ERROR;
    if (record != EXTENSION_RECORD_TYPE) return false;
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return false;
    if (code == GRAPHICS_EXT_FUNC_CODE && block != nullptr) {
      GraphicsControlBlock control = {};
      if (DGifExtensionToGCB(block[0], block + 1, &control) != GIF_ERROR) {
        transparent = control.TransparentColor;
      }
    }
    while (block != nullptr) {
      if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return false;
    }
  }
}

// The rows of a frame in the order in which its file has them.
std::vector<int> RowOrder(int height, bool interlaced) {
  std::vector<int> order;
  const std::array<std::array<int, 2>, 4> passes = {{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
  if (!interlaced) {
    for (int row = 0; row < height; ++row) order.push_back(row);
    return order;
  }
  for (const auto& [first, step] : passes) {
    for (int row = first; row < height; row += step) order.push_back(row);
  }
  return order;
}

}  // namespace

std::optional<Picture> DecodeGif(std::string_view file) {
  const std::unique_ptr<GifFileType, CloseGif> gif(DGifOpen(&file, ReadBytes, nullptr));
  int transparent = NO_TRANSPARENT_COLOR;
  if (!gif || !FindFrame(gif.get(), transparent)) return std::nullopt;
  const GifImageDesc& frame = gif->Image;
  std::optional<Picture> picture = MakePicture(gif->SWidth, gif->SHeight);
  if (!picture || !MakePicture(frame.Width, 1)) return std::nullopt;
  const ColorMapObject* colours = frame.ColorMap != nullptr ? frame.ColorMap : gif->SColorMap;
  if (colours == nullptr || frame.Height > 32'767) return std::nullopt;
  std::vector<GifPixelType> row(static_cast<size_t>(frame.Width));
  for (const int y : RowOrder(frame.Height, frame.Interlace)) {
    if (DGifGetLine(gif.get(), row.data(), frame.Width) == GIF_ERROR) break;
    if (frame.Top + y < 0 || frame.Top + y >= picture->height) continue;
    uint8_t* target = RowOf(*picture, frame.Top + y);
    for (int x = 0; x < frame.Width; ++x) {
      const int index = row[static_cast<size_t>(x)];
      const int column = frame.Left + x;
      if (index == transparent || index >= colours->ColorCount) continue;
      if (column < 0 || column >= picture->width) continue;
      const GifColorType& colour = colours->Colors[index];
      const std::array<uint8_t, 4> pixel = {colour.Blue, colour.Green, colour.Red, 255};
      std::memcpy(target + 4 * static_cast<ptrdiff_t>(column), pixel.data(), pixel.size());
    }
  }
  FinishPicture(*picture);
  return picture;
}

}  // namespace tarn::pages

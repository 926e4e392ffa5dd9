// HtmlContainer.h - what the HTML library asks of its surroundings: fonts, images, and a place to
// draw. What it draws becomes a display list. Whatever else it may ask for, other style sheets
// above all, it does not get.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLCONTAINER_H
#define TARN_SIBLINGS_LAYOUT_HTMLCONTAINER_H

#include <litehtml.h>

#include <map>
#include <string>

#include "siblings/layout/DisplayList.h"
#include "siblings/layout/DocumentPictures.h"
#include "siblings/layout/HtmlFonts.h"

namespace tarn::pages {

class HtmlContainer : public litehtml::document_container {
 public:
  HtmlContainer(PangoContext* fonts, DocumentPictures& pictures, int width, int height)
      : fonts_(fonts), pictures_(pictures), width_(width), height_(height) {}
  virtual ~HtmlContainer() = default;

  // What was drawn since the last call.
  DisplayList takeDisplayList();
  // The fonts that the display lists refer to.
  HtmlFonts takeFonts() { return std::move(fonts_); }

  // For the elements: what is drawn until leaveLink belongs to that link.
  void enterLink(const std::string& written);
  void leaveLink();
  void keepTogether(const litehtml::position& box);
  // Counts work that a document can make grow without end. Trouble::TooLong when it has.
  void countCellLayout();
  // How many columns or rows a cell gets that wants so many: all that it spans are kept somewhere.
  int takeSpan(const char* wanted);

  litehtml::uint_ptr create_font(const litehtml::tchar_t* faceName, int size, int weight,
                                 litehtml::font_style italic, unsigned int decoration,
                                 litehtml::font_metrics* fm) override;
  void delete_font(litehtml::uint_ptr hFont) override;
  int text_width(const litehtml::tchar_t* text, litehtml::uint_ptr hFont) override;
  void draw_text(litehtml::uint_ptr hdc, const litehtml::tchar_t* text, litehtml::uint_ptr hFont,
                 litehtml::web_color color, const litehtml::position& pos) override;
  int pt_to_px(int pt) const override;
  int get_default_font_size() const override;
  const litehtml::tchar_t* get_default_font_name() const override;
  void draw_list_marker(litehtml::uint_ptr hdc, const litehtml::list_marker& marker) override;
  void load_image(const litehtml::tchar_t* src, const litehtml::tchar_t* baseurl,
                  bool redraw_on_ready) override;
  void get_image_size(const litehtml::tchar_t* src, const litehtml::tchar_t* baseurl,
                      litehtml::size& sz) override;
  void draw_background(litehtml::uint_ptr hdc, const litehtml::background_paint& bg) override;
  void draw_borders(litehtml::uint_ptr hdc, const litehtml::borders& borders,
                    const litehtml::position& draw_pos, bool root) override;
  void set_caption(const litehtml::tchar_t* caption) override;
  void set_base_url(const litehtml::tchar_t* base_url) override;
  void link(const std::shared_ptr<litehtml::document>& doc,
            const litehtml::element::ptr& el) override;
  void on_anchor_click(const litehtml::tchar_t* url, const litehtml::element::ptr& el) override;
  void set_cursor(const litehtml::tchar_t* cursor) override;
  void transform_text(litehtml::tstring& text, litehtml::text_transform tt) override;
  void import_css(litehtml::tstring& text, const litehtml::tstring& url,
                  litehtml::tstring& baseurl) override;
  void set_clip(const litehtml::position& pos, const litehtml::border_radiuses& bdr_radius,
                bool valid_x, bool valid_y) override;
  void del_clip() override;
  void get_client_rect(litehtml::position& client) const override;
  litehtml::element::ptr create_element(const litehtml::tchar_t* tag_name,
                                        const litehtml::string_map& attributes,
                                        const std::shared_ptr<litehtml::document>& doc) override;
  void get_media_features(litehtml::media_features& media) const override;
  void get_language(litehtml::tstring& language, litehtml::tstring& culture) const override;
  litehtml::tstring resolve_color(const litehtml::tstring& color) const override;
  void split_text(const char* text, const std::function<void(const litehtml::tchar_t*)>& on_word,
                  const std::function<void(const litehtml::tchar_t*)>& on_space) override;

 private:
  int32_t currentLink() const { return links_.empty() ? -1 : links_.back(); }

  HtmlFonts fonts_;
  DocumentPictures& pictures_;
  int width_;
  int height_;
  DisplayList list_;
  std::map<std::string, int32_t> knownLinks_;
  std::vector<int32_t> links_;  // that are open
  size_t cellLayouts_ = 0;
  int spans_ = 0;
};

}  // namespace tarn::pages

#endif

// MasterStyle.h - how HTML looks that says nothing of it.
#ifndef TARN_SIBLINGS_LAYOUT_MASTERSTYLE_H
#define TARN_SIBLINGS_LAYOUT_MASTERSTYLE_H

namespace tarn::pages {

// After "Rendering" of the HTML standard. Pages have margins of their own, so that the body has
// none; and lines of pre are wrapped, since a page cannot be moved sideways.
inline constexpr const char* kMasterStyle = R"css(
html { display: block }
head, title, style, script, link, meta, base, template, area, datalist, noembed, noframes, param,
  rp { display: none }
body { display: block; margin: 0 }
address, article, aside, blockquote, center, dd, details, dialog, dir, div, dl, dt, fieldset,
  figcaption, figure, footer, form, h1, h2, h3, h4, h5, h6, header, hgroup, hr, legend, listing,
  main, menu, nav, ol, optgroup, option, p, pre, search, section, summary, ul, xmp { display: block }
p, blockquote, dl, figure, listing, pre, ul, ol, menu, dir { margin-top: 1em; margin-bottom: 1em }
blockquote, figure { margin-left: 40px; margin-right: 40px }
dd { margin-left: 40px }
ul, ol, menu, dir { padding-left: 40px }
ul ul, ul ol, ol ul, ol ol { margin-top: 0; margin-bottom: 0 }
ul, menu, dir { list-style-type: disc }
ol { list-style-type: decimal }
ul ul { list-style-type: circle }
ul ul ul { list-style-type: square }
ul ul ul ul ul ul, ol ol ol ol ol ol { padding-left: 4px }
blockquote blockquote blockquote blockquote blockquote blockquote { margin-left: 4px;
  margin-right: 0 }
li { display: list-item }
h1 { font-size: 2em; font-weight: bold; margin-top: 0.67em; margin-bottom: 0.67em }
h2 { font-size: 1.5em; font-weight: bold; margin-top: 0.83em; margin-bottom: 0.83em }
h3 { font-size: 1.17em; font-weight: bold; margin-top: 1em; margin-bottom: 1em }
h4 { font-weight: bold; margin-top: 1.33em; margin-bottom: 1.33em }
h5 { font-size: 0.83em; font-weight: bold; margin-top: 1.67em; margin-bottom: 1.67em }
h6 { font-size: 0.67em; font-weight: bold; margin-top: 2.33em; margin-bottom: 2.33em }
b, strong, th, dt b { font-weight: bold }
i, em, cite, dfn, var, address { font-style: italic }
u, ins { text-decoration: underline }
s, strike, del { text-decoration: line-through }
a[href] { color: #0563c1; text-decoration: underline }
tt, code, kbd, samp, pre, listing, xmp { font-family: monospace; font-size: 0.8125em }
pre code, pre tt, pre kbd, pre samp { font-size: 1em }
pre, listing, xmp { white-space: pre-wrap }
big { font-size: 1.2em }
small { font-size: 0.83em }
sub { display: inline-block; position: relative; top: 0.3em; font-size: 0.75em }
sup { display: inline-block; position: relative; top: -0.4em; font-size: 0.75em }
mark { background-color: #ffff00; color: #000000 }
center { text-align: center }
nobr { white-space: nowrap }
hr { border: 1px inset #808080; margin-top: 0.5em; margin-bottom: 0.5em }
img { display: inline-block }
button { display: inline-block }
fieldset { margin-left: 2px; margin-right: 2px; padding: 6px 12px 10px 12px; border: 2px solid #c0c0c0 }
table { display: table; border-collapse: separate; border-spacing: 2px; border-top-color: gray;
  border-left-color: gray; border-bottom-color: black; border-right-color: black; font-size: medium;
  font-weight: normal; font-style: normal; text-align: left; white-space: normal }
table[border] { border-style: solid }
tbody { display: table-row-group; vertical-align: middle }
thead { display: table-header-group; vertical-align: middle }
tfoot { display: table-footer-group; vertical-align: middle }
tr { display: table-row; vertical-align: inherit; border-color: inherit }
td, th { display: table-cell; vertical-align: inherit; padding: 1px }
th { text-align: center }
caption { display: table-caption; text-align: center }
colgroup { display: table-column-group }
col { display: table-column }
br { display: inline-block }
*[dir="rtl"] { text-align: right }
*[hidden] { display: none }
)css";

}  // namespace tarn::pages

#endif

#pragma once
#include <QFont>
#include <string>

namespace cvn73100::ui {

// The font a control's dialog or page is drawn in: `name` at `pointSize` points. A family this computer
// lacks (the catalogue's "MS Sans Serif") falls back to the desktop's sans-serif font at that size,
// and glyphs the family lacks come from a font that has them, so CJK texts never show as boxes. An
// empty name or a size below 1 keeps the application font's part.
QFont DialogFont(const std::string& name, int pointSize);
// The font of the current language: catalogue messages 102 (name) and 103 (size).
QFont LanguageFont();
// The width in pixels of `chars` average Latin characters in `font`. A CJK font's own average is that
// of its full-width glyphs, twice as wide, which would make every box sized by it twice too wide.
int LatinTextWidth(const QFont& font, int chars);

}  // namespace cvn73100::ui

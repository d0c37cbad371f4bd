#include "Theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>

namespace lodex {

namespace {

struct Colours {
    QColor window, base, text, dim, highlight, link;
};

QPalette palette_of(const Colours& colours)
{
    QPalette palette(colours.window);
    for (const auto role : {QPalette::Window, QPalette::Button})
        palette.setColor(role, colours.window);
    palette.setColor(QPalette::AlternateBase, colours.window);
    palette.setColor(QPalette::ToolTipBase, colours.window);
    palette.setColor(QPalette::Base, colours.base);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, colours.text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colours.dim);
    palette.setColor(QPalette::PlaceholderText, colours.dim);
    palette.setColor(QPalette::Highlight, colours.highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, colours.link);
    return palette;
}

Theme& current()
{
    static Theme theme = Theme::System;
    return theme;
}

} // namespace

void use_theme(Theme theme)
{
    static const QPalette system = QApplication::palette();
    current() = theme;
    switch (theme) {
    case Theme::System: QApplication::setPalette(system); break;
    case Theme::Light:
        QApplication::setPalette(palette_of({QColor(239, 239, 239), Qt::white, QColor(20, 20, 20),
                                             QColor(130, 130, 130), QColor(48, 110, 180), QColor(0, 80, 170)}));
        break;
    case Theme::Dark:
        QApplication::setPalette(palette_of({QColor(58, 58, 62), QColor(30, 30, 32), QColor(228, 228, 228),
                                             QColor(140, 140, 140), QColor(42, 92, 145), QColor(110, 175, 255)}));
        break;
    }
}

Theme current_theme()
{
    return current();
}

} // namespace lodex

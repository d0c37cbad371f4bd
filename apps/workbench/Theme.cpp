#include "Theme.h"

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>

namespace lodex {

namespace {

/// The desktop's style; on dark grounds the outlines of check boxes and radio buttons, which it derives from the ground,
/// are drawn lighter, so that empty ones can be seen.
class ThemeStyle final : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        const bool box = element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton ||
                         element == PE_IndicatorItemViewItemCheck;
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        const auto* item = qstyleoption_cast<const QStyleOptionViewItem*>(option);
        if (!box || option->palette.color(QPalette::Window).lightness() >= dark_below || (!button && !item)) {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            return;
        }
        const QColor outline = option->palette.color(option->state & State_Enabled ? outline_of_box : outline_of_disabled);
        const auto draw = [&](auto copy) {
            copy.palette.setColor(QPalette::Window, outline);
            QProxyStyle::drawPrimitive(element, &copy, painter, widget);
        };
        if (button)
            draw(*button);
        else
            draw(*item);
    }

private:
    static constexpr int dark_below = 128; // lightness
    static constexpr QPalette::ColorRole outline_of_box = QPalette::WindowText, outline_of_disabled = QPalette::Mid;
};

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
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colours.dim); // sliders and selections fade as well
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, colours.base);
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
    static const bool styled = [] {
        QApplication::setStyle(new ThemeStyle); // the application owns it
        return true;
    }();
    static_cast<void>(styled);
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

#pragma once

#include <QIconEngine>
#include <QString>

namespace lodex {

/// Draws an icon from an SVG file of the resources, sharp at every size, in the colours of the theme. Works without any
/// icon plug-in of the toolkit.
class SvgIconEngine : public QIconEngine {
public:
    /// AsDrawn keeps the file's own colours, for pictures that are loaded once.
    enum class Colours { Theme, AsDrawn };

    explicit SvgIconEngine(QString file, Colours colours = Colours::Theme) : file_(std::move(file)), colours_(colours)
    {
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    [[nodiscard]] QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    [[nodiscard]] QIconEngine* clone() const override;
    [[nodiscard]] QString key() const override { return QStringLiteral("lodex_svg"); }
    [[nodiscard]] bool isNull() override { return false; }

private:
    QString file_;
    Colours colours_;
};

} // namespace lodex

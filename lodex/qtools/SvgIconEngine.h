#pragma once

#include <QIconEngine>
#include <QString>

namespace lodex {

/// Draws an icon from an SVG file of the resources, sharp at every size. Works without any icon plug-in of the toolkit.
class SvgIconEngine : public QIconEngine {
public:
    explicit SvgIconEngine(QString file) : file_(std::move(file)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    [[nodiscard]] QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    [[nodiscard]] QIconEngine* clone() const override;
    [[nodiscard]] QString key() const override { return QStringLiteral("lodex_svg"); }
    [[nodiscard]] bool isNull() override { return false; }

private:
    QString file_;
};

} // namespace lodex

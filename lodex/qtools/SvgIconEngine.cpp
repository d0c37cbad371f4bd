#include <lodex/qtools/SvgIconEngine.h>

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QStyle>
#include <QStyleOption>
#include <QSvgRenderer>

namespace lodex {

namespace {

constexpr int dark_below = 128; // lightness of the window's colour

/// The picture's text in the colours of the theme: lines that are drawn in grey take the colour of texts, somewhat
/// fainter; on a dark ground the other colours become lighter.
QByteArray themed(const QString& file, const QPalette& palette)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return {};
    QByteArray text = source.readAll();
    const QColor ground = palette.color(QPalette::Button), ink = palette.color(QPalette::ButtonText);
    const auto mixed = [](int a, int b) { return (3 * a + 2 * b) / 5; };
    const QColor line(mixed(ink.red(), ground.red()), mixed(ink.green(), ground.green()),
                      mixed(ink.blue(), ground.blue()));
    text.replace("#7d8288", line.name().toLatin1());
    if (ground.lightness() < dark_below) {
        for (const char* colour : {"#3a83cc", "#c8701a", "#4c9a63", "#d99a3c"})
            text.replace(colour, QColor(QLatin1String(colour)).lighter(135).name().toLatin1());
    }
    return text;
}

} // namespace

void SvgIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    QPixmap picture = pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state);
    picture.setDevicePixelRatio(ratio);
    painter->drawPixmap(rect, picture);
}

QPixmap SvgIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State)
{
    if (size.isEmpty())
        return {};
    const QPalette palette = QApplication::palette();
    const QString look = palette.color(QPalette::Button).name() + palette.color(QPalette::ButtonText).name() +
                         (mode == QIcon::Disabled ? QStringLiteral("-") : QString()) +
                         (colours_ == Colours::AsDrawn ? QStringLiteral("=") : QString());
    const QString cached = QStringLiteral("lodex_svg:%1:%2x%3:%4")
                               .arg(file_, QString::number(size.width()), QString::number(size.height()), look);
    QPixmap picture;
    if (QPixmapCache::find(cached, &picture))
        return picture;

    QSvgRenderer renderer;
    if (colours_ == Colours::Theme)
        renderer.load(themed(file_, palette));
    else
        renderer.load(file_);
    if (!renderer.isValid())
        return {};
    picture = QPixmap(size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    const QSize drawn = renderer.defaultSize().scaled(size, Qt::KeepAspectRatio);
    const QPoint corner((size.width() - drawn.width()) / 2, (size.height() - drawn.height()) / 2);
    renderer.render(&painter, QRectF(corner, drawn));
    painter.end();
    if (mode == QIcon::Disabled) {
        QStyleOption option;
        option.palette = palette;
        picture = QApplication::style()->generatedIconPixmap(QIcon::Disabled, picture, &option);
    }
    QPixmapCache::insert(cached, picture);
    return picture;
}

QIconEngine* SvgIconEngine::clone() const
{
    return new SvgIconEngine(*this);
}

} // namespace lodex

#include <lodex/qtools/SvgIconEngine.h>

#include <QApplication>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>
#include <QStyleOption>
#include <QSvgRenderer>

namespace lodex {

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
    // How a disabled picture is greyed depends on the theme.
    const QString look = mode == QIcon::Disabled ? QApplication::palette().color(QPalette::Window).name() : QString();
    const QString cached = QStringLiteral("lodex_svg:%1:%2x%3:%4")
                               .arg(file_, QString::number(size.width()), QString::number(size.height()), look);
    QPixmap picture;
    if (QPixmapCache::find(cached, &picture))
        return picture;

    QSvgRenderer renderer(file_);
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
        option.palette = QApplication::palette();
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

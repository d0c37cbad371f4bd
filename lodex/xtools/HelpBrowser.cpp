#include <lodex/xtools/HelpBrowser.h>

#include <QImage>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace lodex {

HelpBrowser::HelpBrowser(QWidget* parent) : QTextBrowser(parent), settled_(new QTimer(this))
{
    settled_->setSingleShot(true);
    settled_->setInterval(std::chrono::milliseconds(150));
    connect(settled_, &QTimer::timeout, this, &HelpBrowser::fit_pictures);
}

int HelpBrowser::picture_width() const
{
    const int bar = verticalScrollBar()->isVisible() ? 0 : verticalScrollBar()->sizeHint().width();
    return std::max(200, viewport()->width() - bar - 2 * static_cast<int>(document()->documentMargin()));
}

QVariant HelpBrowser::loadResource(int type, const QUrl& name)
{
    QVariant resource = QTextBrowser::loadResource(type, name);
    if (type != QTextDocument::ImageResource)
        return resource;
    QImage image = resource.value<QImage>();
    if (image.isNull() && !image.loadFromData(resource.toByteArray()))
        return resource;
    if (fitted_width_ == 0)
        fitted_width_ = picture_width(); // the same for the whole page, which loads its pictures one after the other
    if (image.width() > fitted_width_)
        image = image.scaledToWidth(fitted_width_, Qt::SmoothTransformation);
    return image;
}

void HelpBrowser::resizeEvent(QResizeEvent* event)
{
    QTextBrowser::resizeEvent(event);
    settled_->start();
}

void HelpBrowser::fit_pictures()
{
    if (fitted_width_ == 0 || fitted_width_ == picture_width())
        return;
    const QScrollBar* const bar = verticalScrollBar();
    fitted_width_ = 0;
    const double place = bar->maximum() > 0 ? double(bar->value()) / bar->maximum() : 0;
    document()->clear(); // forgets the pictures, which a reload alone does not
    reload();
    verticalScrollBar()->setValue(static_cast<int>(place * verticalScrollBar()->maximum()));
}

} // namespace lodex

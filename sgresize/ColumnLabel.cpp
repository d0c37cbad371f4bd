#include "sgresize/ColumnLabel.h"

#include <QPainter>
#include <QRegularExpression>
#include <QStyle>

namespace Kelvane {

ColumnLabel::ColumnLabel(const QString& text, QWidget* parent) : QLabel(text, parent)
{
    setTextFormat(Qt::PlainText);
}

QStringList ColumnLabel::titles() const
{
    static const QRegularExpression gap(QStringLiteral(" {2,}"));
    return text().split(gap, Qt::SkipEmptyParts);
}

void ColumnLabel::set_lefts(const QList<int>& lefts)
{
    lefts_ = lefts;
    updateGeometry();
    update();
}

int ColumnLabel::left(int title) const
{
    return title < lefts_.size() ? lefts_[title] : 0;
}

QSize ColumnLabel::sizeHint() const
{
    if (lefts_.isEmpty())
        return QLabel::sizeHint();
    const QStringList all = titles();
    const int last = static_cast<int>(all.size()) - 1;
    const int end = last < 0 ? 0 : left(last) + fontMetrics().horizontalAdvance(all[last]);
    return {end, QLabel::sizeHint().height()};
}

QSize ColumnLabel::minimumSizeHint() const
{
    return sizeHint();
}

void ColumnLabel::paintEvent(QPaintEvent* event)
{
    const QStringList all = titles();
    if (lefts_.size() != all.size()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const int alignment = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter);
    for (int i = 0; i < all.size(); ++i) {
        const QRect place = rect().adjusted(lefts_[i], 0, 0, 0);
        style()->drawItemText(&painter, QStyle::visualRect(layoutDirection(), rect(), place), alignment, palette(),
                              isEnabled(), all[i], foregroundRole());
    }
}

} // namespace Kelvane

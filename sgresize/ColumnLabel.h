#pragma once

#include <QLabel>
#include <QList>

namespace Kelvane {

/// A line of column titles in one text, with two blanks or more between the titles. Each title is drawn over its own
/// column, whatever the font makes of the blanks.
class ColumnLabel : public QLabel {
    Q_OBJECT

public:
    explicit ColumnLabel(const QString& text, QWidget* parent);

    /// The titles in order.
    [[nodiscard]] QStringList titles() const;
    /// Left edges of the titles in pixels; one for each.
    void set_lefts(const QList<int>& lefts);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] int left(int title) const;

    QList<int> lefts_;
};

} // namespace Kelvane

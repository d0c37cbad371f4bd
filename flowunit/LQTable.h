#pragma once

#include <QColor>
#include <QTableWidget>

class QKeyEvent;

namespace Kelvane {

class LQFlowUnitWidget;

/// A table whose owner says how cells are painted and what keys do. Cells cannot be edited; the selected ones can be
/// copied as tab-separated text.
class LQTable : public QTableWidget {
    Q_OBJECT

public:
    /// The owner is asked as long as the table lives.
    explicit LQTable(LQFlowUnitWidget* owner, QWidget* parent = nullptr);

    /// Background of a cell; invalid for a plainly painted one.
    [[nodiscard]] QColor cellColor(int row, int column) const;
    /// Black or white, whichever stands out from the background.
    [[nodiscard]] static QColor textColorOn(const QColor& background);

    /// Empty when the cell has never been written.
    [[nodiscard]] QString cellText(int row, int column) const;
    void setCellText(int row, int column, const QString& text);

    /// Between beginUpdate() and endUpdate() written cells are not announced one by one; the whole is painted at the
    /// end.
    void beginUpdate();
    void endUpdate();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void copySelection() const;

    LQFlowUnitWidget* owner_;
    bool signals_were_blocked_ = false;
};

} // namespace Kelvane

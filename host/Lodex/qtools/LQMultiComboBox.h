#pragma once

#include <QComboBox>
#include <QStringList>

namespace Lodex {

/// A selection list in a combo box: one entry or, in multiple selection, any number with check marks.
class LQMultiComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit LQMultiComboBox(QWidget* parent = nullptr);

    /// Single selection at first. Switching keeps the first selected entry.
    void setMultiSelection(bool multi);
    [[nodiscard]] bool multiSelection() const { return multi_; }

    /// The selected entries in list order, joined by "+"; the entry itself in single selection; empty when none is.
    [[nodiscard]] QString currentText() const;
    [[nodiscard]] QStringList selectedItems() const;
    [[nodiscard]] QStringList items() const;

    /// Selects exactly the entries of these names; names that are not in the list are passed over.
    void setSelectedItems(const QStringList& names);
    /// Selects or unselects one entry; out of range does nothing. In single selection it replaces the former one.
    void setSelected(int index, bool selected);
    [[nodiscard]] bool isSelected(int index) const;

    /// Inserts before index; -1 appends. Selects nothing.
    void insertItem(const QString& text, int index = -1);
    /// Removes one entry; a selected one leaves no other selected in its place. Out of range does nothing.
    void removeItem(int index);
    /// Removes all entries and the selection.
    void clear();

    /// Between begin and end the list may be rebuilt; selectionChanged() comes once at the end, and only when the
    /// selected texts are others than before. Calls nest.
    void beginRefill();
    void endRefill();

signals:
    /// The set of selected texts changed, by the user or by a program.
    void selectionChanged();

protected:
    void showPopup() override;
    void hidePopup() override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void toggle(int index);
    void selectionTouched();
    void currentIndexTouched();
    void mark(int index, bool selected);
    void followFirstSelected();
    [[nodiscard]] QString shownText() const;

    bool multi_ = false;
    int refilling_ = 0;
    bool signals_were_blocked_ = false;
    bool pressed_in_popup_ = false;
    int former_index_ = -1;
    QString former_text_;
    QStringList last_selection_;
};

} // namespace Lodex

#include <Lodex/qtools/LQMultiComboBox.h>

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

namespace Lodex {

namespace {

constexpr int kShownCharacters = 12;
constexpr int kToolTipEntries = 25;
constexpr int kWidestList = 600; // pixels

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

LQMultiComboBox::LQMultiComboBox(QWidget* parent) : QComboBox(parent)
{
    // With a placeholder the base class leaves the first entry unselected.
    setPlaceholderText(QStringLiteral(" "));
    setInsertPolicy(QComboBox::NoInsert);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(kShownCharacters);
    setFocusPolicy(Qt::StrongFocus);
    installEventFilter(this);
    connect(this, &QComboBox::currentIndexChanged, this, &LQMultiComboBox::currentIndexTouched);
    connect(this, &QComboBox::editTextChanged, this, &LQMultiComboBox::selectionTouched);
    connect(model(), &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int first, int last) {
        if (!multi_)
            return;
        const QSignalBlocker blocker(this);
        for (int i = first; i <= last; ++i)
            setItemData(i, Qt::Unchecked, Qt::CheckStateRole);
    });
    connect(model(), &QAbstractItemModel::dataChanged, this, &LQMultiComboBox::selectionTouched);
}

void LQMultiComboBox::setMultiSelection(bool multi)
{
    if (multi == multi_)
        return;
    beginRefill();
    int first = 0;
    while (first < count() && !isSelected(first))
        ++first;
    multi_ = multi;
    for (int i = 0; i < count(); ++i)
        setItemData(i, multi ? QVariant(i == first ? Qt::Checked : Qt::Unchecked) : QVariant(), Qt::CheckStateRole);
    setCurrentIndex(first < count() ? first : -1);
    endRefill();
    update();
}

QString LQMultiComboBox::currentText() const
{
    if (isEditable() && !multi_)
        return QComboBox::currentText();
    return selectedItems().join(u'+');
}

QStringList LQMultiComboBox::selectedItems() const
{
    if (isEditable() && !multi_)
        return QComboBox::currentText().isEmpty() ? QStringList() : QStringList(QComboBox::currentText());
    QStringList names;
    for (int i = 0; i < count(); ++i) {
        if (isSelected(i))
            names.append(itemText(i));
    }
    return names;
}

QStringList LQMultiComboBox::items() const
{
    QStringList names;
    for (int i = 0; i < count(); ++i)
        names.append(itemText(i));
    return names;
}

void LQMultiComboBox::setSelectedItems(const QStringList& names)
{
    beginRefill();
    if (multi_) {
        for (int i = 0; i < count(); ++i)
            mark(i, names.contains(itemText(i)));
        followFirstSelected();
    } else {
        int chosen = -1;
        for (const QString& name : names) {
            chosen = static_cast<int>(items().indexOf(name));
            if (chosen >= 0)
                break;
        }
        setCurrentIndex(chosen);
    }
    endRefill();
}

void LQMultiComboBox::setSelected(int index, bool selected)
{
    if (index < 0 || index >= count() || isSelected(index) == selected)
        return;
    beginRefill();
    if (multi_) {
        mark(index, selected);
        followFirstSelected();
    } else {
        setCurrentIndex(selected ? index : -1);
    }
    endRefill();
}

bool LQMultiComboBox::isSelected(int index) const
{
    if (index < 0 || index >= count())
        return false;
    return multi_ ? itemData(index, Qt::CheckStateRole).toInt() == Qt::Checked : index == currentIndex();
}

void LQMultiComboBox::insertItem(const QString& text, int index)
{
    beginRefill();
    QComboBox::insertItem(index < 0 ? count() : index, text);
    endRefill();
}

void LQMultiComboBox::removeItem(int index)
{
    if (index < 0 || index >= count())
        return;
    beginRefill();
    const bool was_selected = isSelected(index);
    QComboBox::removeItem(index);
    if (multi_)
        followFirstSelected();
    else if (was_selected)
        setCurrentIndex(-1);
    endRefill();
}

void LQMultiComboBox::clear()
{
    beginRefill();
    QComboBox::clear();
    endRefill();
}

void LQMultiComboBox::beginRefill()
{
    if (refilling_++ > 0)
        return;
    former_index_ = currentIndex();
    former_text_ = currentText();
    signals_were_blocked_ = blockSignals(true);
}

void LQMultiComboBox::endRefill()
{
    if (refilling_ == 0 || --refilling_ > 0)
        return;
    blockSignals(signals_were_blocked_);
    // Kept apart from the members: a slot may change the list again.
    const bool index_changed = currentIndex() != former_index_;
    const QString text = currentText();
    const bool text_changed = text != former_text_;
    update();
    if (index_changed)
        emit currentIndexChanged(currentIndex());
    if (text_changed)
        emit currentTextChanged(text);
    selectionTouched();
}

void LQMultiComboBox::showPopup()
{
    if (multi_) {
        pressed_in_popup_ = false;
        for (QObject* part : {static_cast<QObject*>(view()), static_cast<QObject*>(view()->viewport())}) {
            part->removeEventFilter(this); // the filter put in last comes first, before the popup's own
            part->installEventFilter(this);
        }
    }
    // Wide enough for the names with their check marks, within reason.
    const auto metric = [this](QStyle::PixelMetric what) { return style()->pixelMetric(what, nullptr, this); };
    int longest = 0;
    for (int i = 0; i < count(); ++i)
        longest = std::max(longest, view()->fontMetrics().horizontalAdvance(itemText(i)));
    const int beside = metric(QStyle::PM_ScrollBarExtent) + 4 * metric(QStyle::PM_IndicatorWidth);
    view()->setMinimumWidth(std::min(longest + beside, kWidestList));
    QComboBox::showPopup();
    if (multi_ && count() > 0 && !view()->currentIndex().isValid())
        view()->setCurrentIndex(model()->index(0, modelColumn()));
}

void LQMultiComboBox::hidePopup()
{
    pressed_in_popup_ = false;
    QComboBox::hidePopup();
}

QString LQMultiComboBox::shownText() const
{
    return multi_ ? selectedItems().join(QStringLiteral(", ")) : currentText();
}

void LQMultiComboBox::paintEvent(QPaintEvent* event)
{
    if (isEditable()) {
        QComboBox::paintEvent(event);
        return;
    }
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText = fontMetrics().elidedText(shownText(), Qt::ElideRight, field.width() - 2);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void LQMultiComboBox::keyPressEvent(QKeyEvent* event)
{
    if (!multi_) {
        QComboBox::keyPressEvent(event);
        return;
    }
    const bool opens = event->key() == Qt::Key_Space || event->key() == Qt::Key_F4 || event->key() == Qt::Key_Up ||
                       event->key() == Qt::Key_Down;
    const bool plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    const bool searches = plain && !event->text().isEmpty() && event->text().at(0).isPrint();
    if (opens) {
        showPopup();
    } else if (searches) {
        showPopup();
        view()->keyboardSearch(event->text());
    } else {
        event->ignore(); // Enter and Escape belong to the dialog
    }
}

void LQMultiComboBox::wheelEvent(QWheelEvent* event)
{
    event->ignore(); // scrolls what the box stands in
}

bool LQMultiComboBox::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == this && event->type() == QEvent::ToolTip && multi_) {
        QStringList lines;
        if (!toolTip().isEmpty())
            lines.append(toolTip());
        QStringList selected = selectedItems();
        const qsizetype more = selected.size() - kToolTipEntries;
        if (more > 0) {
            selected.resize(kToolTipEntries);
            selected.append(tr("... and %1 more").arg(more));
        }
        lines += selected;
        QString text = lines.join(u'\n');
        if (Qt::mightBeRichText(text))
            text = Qt::convertFromPlainText(text);
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text, this);
        return true;
    }
    if (!multi_ || watched == this)
        return QComboBox::eventFilter(watched, event);

    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        pressed_in_popup_ = watched == view()->viewport();
        break;
    case QEvent::MouseButtonRelease: {
        if (watched != view()->viewport())
            break;
        // The release of the click that opened the list comes here as well and must neither select nor close.
        const QModelIndex index = view()->indexAt(static_cast<QMouseEvent*>(event)->position().toPoint());
        if (pressed_in_popup_ && index.isValid() && (index.flags() & Qt::ItemIsEnabled))
            toggle(index.row());
        pressed_in_popup_ = false;
        return true;
    }
    case QEvent::KeyPress: {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (watched != view())
            break;
        if (key->matches(QKeySequence::SelectAll)) {
            setSelectedItems(items());
            return true;
        }
        if (key->key() == Qt::Key_Space || key->key() == Qt::Key_Select) {
            toggle(view()->currentIndex().row());
            return true;
        }
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            hidePopup();
            return true;
        }
        break;
    }
    default:
        break;
    }
    return QComboBox::eventFilter(watched, event);
}

void LQMultiComboBox::toggle(int index)
{
    if (index < 0 || index >= count())
        return;
    setSelected(index, !isSelected(index));
    view()->viewport()->update();
    emit activated(index);
    emit textActivated(itemText(index));
}

/// Changes the check mark of one entry; the caller stands between beginRefill() and endRefill().
void LQMultiComboBox::mark(int index, bool selected)
{
    setItemData(index, selected ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
}

/// In multiple selection the current entry of the base class is the first selected one.
void LQMultiComboBox::followFirstSelected()
{
    int first = 0;
    while (first < count() && !isSelected(first))
        ++first;
    setCurrentIndex(first < count() ? first : -1);
}

/// Somebody called setCurrentIndex(), the user chose an entry, or rows before the current one came or went.
void LQMultiComboBox::currentIndexTouched()
{
    if (multi_ && refilling_ == 0 && currentIndex() >= 0 && !isSelected(currentIndex()))
        setSelectedItems({itemText(currentIndex())});
    selectionTouched();
}

void LQMultiComboBox::selectionTouched()
{
    if (refilling_ > 0)
        return;
    const QStringList now = sorted(selectedItems());
    if (now == last_selection_)
        return;
    last_selection_ = now;
    update();
    emit selectionChanged();
}

} // namespace Lodex

#include "Lodex/qtools/moc_LQMultiComboBox.cpp"

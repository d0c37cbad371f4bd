#include "sgresize/LQSGSectionEditor.h"

#include "sgresize/LQSGManualAxisEditorMngr.h"
#include "sgresize/SpinBoxValue.h"

#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/xtools/LQActionAdapter.h>

#include <QEvent>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QToolButton>

namespace Kelvane {

namespace {

/// Leaves the wheel to the scroll area behind a box that has no focus.
class WheelGuard : public QObject {
public:
    using QObject::QObject;

private:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() != QEvent::Wheel || !widget || widget->hasFocus())
            return false;
        event->ignore();
        return true;
    }
};

} // namespace

LQSGSectionEditor::LQSGSectionEditor(LQSGManualAxisEditorMngr* manager)
    : from_value_(new Lodex::IntValue(first_section)), to_value_(new Lodex::IntValue(last_section)),
      pick_from_(new PickTool(from_value_.get(), manager->axis())),
      pick_to_(new PickTool(to_value_.get(), manager->axis())), manager_(manager)
{
}

LQSGSectionEditor::~LQSGSectionEditor()
{
    release();
}

void LQSGSectionEditor::release()
{
    manager_ = nullptr;
    for (const auto& widget : widgets_) {
        if (widget)
            widget->disconnect(this);
    }
    widgets_.clear();
    auto* graphics = Lodex::GraphicLib::instance();
    for (const auto& tool : tools_) {
        if (graphics->tool() == tool.get())
            graphics->reset_tool();
    }
    tools_.clear();
}

void LQSGSectionEditor::set_min(long n)
{
    if (n > 0 && from_)
        from_->setValue(static_cast<int>(n + 1));
}

void LQSGSectionEditor::set_pick_axis(int axis)
{
    pick_from_->set_axis(axis);
    pick_to_->set_axis(axis);
}

void LQSGSectionEditor::commit()
{
    for (const auto& widget : QList(widgets_)) {
        if (auto* box = qobject_cast<QSpinBox*>(widget.data()))
            box->interpretText();
    }
}

long LQSGSectionEditor::max() const
{
    return from_ ? from_->maximum() : 0;
}

long LQSGSectionEditor::allowed_max() const
{
    return to_ ? to_->maximum() : 0;
}

void LQSGSectionEditor::paintSections(int)
{
    if (manager_ && manager_->holds(this))
        manager_->updatePaintedSections();
}

void LQSGSectionEditor::updateCells(int)
{
    if (manager_ && manager_->holds(this))
        manager_->updateCells();
}

void LQSGSectionEditor::adopt(QWidget* widget)
{
    widget->setFocusPolicy(Qt::StrongFocus);
    widget->installEventFilter(new WheelGuard(widget));
    widgets_.append(widget);
}

QSpinBox* LQSGSectionEditor::new_box(const char* name, const QString& tip, int minimum, int maximum)
{
    auto* box = new QSpinBox;
    box->setObjectName(name);
    box->setToolTip(tip);
    box->setAccessibleName(tip);
    box->setKeyboardTracking(false);
    box->setRange(minimum, maximum);
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("99999")) + 40);
    adopt(box);
    return box;
}

void LQSGSectionEditor::set_picked_cell(QTableWidget* table, int row, int column, QSpinBox* box, Lodex::IntValue* value,
                                        PickTool* tool)
{
    new SpinBoxValue(box, value);
    auto* cell = new QWidget;
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(box, 1);

    auto* button = new QToolButton(cell);
    button->setObjectName("pick_" + box->objectName());
    button->setIcon(Lodex::LQPixmapLib::icon("ptr_right"));
    button->setToolTip(tr("Select cell section by picking in the Camera"));
    button->setAccessibleName(button->toolTip());
    button->setFocusPolicy(Qt::StrongFocus);
    auto* adapter = new Lodex::LQActionAdapter(tool, button);
    connect(button, &QToolButton::clicked, adapter, &Lodex::LQActionAdapter::run);
    layout->addWidget(button);
    widgets_.append(button);
    tools_.append(Lodex::Ref(tool));
    set_cell(table, row, column, cell);
}

void LQSGSectionEditor::set_cell(QTableWidget* table, int row, int column, QWidget* widget)
{
    auto* cell = new QWidget;
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(3, 2, 3, 2);
    layout->addWidget(widget);
    table->setCellWidget(row, column, cell);
}

QList<QWidget*> LQSGSectionEditor::with_pick_buttons(std::initializer_list<QSpinBox*> boxes)
{
    QList<QWidget*> widgets;
    for (QSpinBox* box : boxes) {
        if (!box)
            continue;
        widgets.append(box);
        if (auto* pick = box->parentWidget()->findChild<QToolButton*>("pick_" + box->objectName()))
            widgets.append(pick);
    }
    return widgets;
}

void LQSGSectionEditor::build_row_buttons(QTableWidget* table, int row, int column)
{
    const auto build = [&](const char* name, const QString& text, const QString& tip, int place) {
        auto* button = new QPushButton(text);
        button->setObjectName(name);
        button->setToolTip(tip);
        button->setAccessibleName(tip);
        button->setAutoDefault(false);
        button->setFixedWidth(button->fontMetrics().horizontalAdvance(text) + 20);
        set_cell(table, row, place, button);
        widgets_.append(button);
        return button;
    };
    add_button_ = build("add_button", tr(" N "), tr("add a new section editor after this line"), column);
    remove_button_ = build("remove_button", tr(" D "), tr("delete current section editor"), column + 1);
    connect(add_button_, &QPushButton::clicked, this, &LQSGSectionEditor::add_a_section);
    connect(remove_button_, &QPushButton::clicked, this, &LQSGSectionEditor::remove_a_section);
}

} // namespace Kelvane

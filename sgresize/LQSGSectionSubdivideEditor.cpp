#include "sgresize/LQSGSectionSubdivideEditor.h"

#include "sgresize/LQSGSubdivideAxisEditorMngr.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/MapCoordinateSystem.h>
#include <Lodex/qtools/CommandTextValidator.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>

#include <algorithm>
#include <array>
#include <utility>

namespace Kelvane {

using Lodex::LayerInfo;

namespace {

constexpr int smallest_amount = 2;
constexpr int largest_amount = 9999;

/// Keyword and layering of each entry of the stratigraphy combo, in its order.
constexpr std::array<std::pair<const char*, LayerInfo::LayeringStyle>, 3> layerings{
    {{"proportional", LayerInfo::Proportional},
     {"parallel_to_base", LayerInfo::ParallelToBase},
     {"parallel_to_top", LayerInfo::ParallelToTop}}};

} // namespace

LQSGSectionSubdivideEditor::LQSGSectionSubdivideEditor(LQSGSubdivideAxisEditorMngr* manager)
    : LQSGSectionEditor(manager), subdivide_manager_(manager)
{
}

void LQSGSectionSubdivideEditor::build(QTableWidget* table, int row)
{
    from_ = new_box("from_", tr("First cell index of the section to be subdivided"), first_section, last_section);
    set_picked_cell(table, row, FromColumn, from_, from_value_.get(), pick_from_.get());
    to_ = new_box("to_", tr("Last cell index of the section to be subdivided"), first_section, last_section);
    set_picked_cell(table, row, ToColumn, to_, to_value_.get(), pick_to_.get());
    amount_ = new_box("amount_", tr("Number of cells to be substituted to the current cell"), smallest_amount,
                      largest_amount);
    set_cell(table, row, AmountColumn, amount_);

    strati_ = new QComboBox;
    strati_->setObjectName("strati_");
    strati_->setToolTip(tr("Stratigraphy of the new cells"));
    strati_->setAccessibleName(strati_->toolTip());
    strati_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    // Wide enough for the words of every axis, so that a change of axis does not move the columns.
    int width = 0;
    for (int axis = 1; axis <= 3; ++axis) {
        strati_->clear();
        strati_->addItems(choices(LQSGAxisEditorMngr::axis_text(axis)));
        width = std::max(width, strati_->sizeHint().width());
    }
    strati_->setMinimumWidth(width);
    strati_->clear();
    adopt(strati_);
    set_cell(table, row, StratigraphyColumn, strati_);

    thickness_ = new QLineEdit;
    thickness_->setObjectName("thickness_");
    thickness_->setAccessibleName(tr("Thickness"));
    thickness_->setValidator(new Lodex::CommandTextValidator(thickness_));
    thickness_->setMinimumWidth(thickness_->fontMetrics().horizontalAdvance(QStringLiteral("0.00000000")) + 16);
    adopt(thickness_);
    set_cell(table, row, ThicknessColumn, thickness_);
    build_row_buttons(table, row, AddColumn);

    connect(from_, &QSpinBox::valueChanged, this, &LQSGSectionSubdivideEditor::setSpinBoxMinMax1);
    connect(to_, &QSpinBox::valueChanged, this, &LQSGSectionSubdivideEditor::setSpinBoxMinMax2);
    for (const QSpinBox* box : {from_.data(), to_.data(), amount_.data()}) {
        connect(box, &QSpinBox::valueChanged, this, &LQSGSectionSubdivideEditor::paintSections);
        connect(box, &QSpinBox::valueChanged, this, &LQSGSectionSubdivideEditor::updateCells);
    }
    connect(strati_, &QComboBox::currentTextChanged, this, &LQSGSectionSubdivideEditor::on_strati_change);
    update_strati_cb();
}

void LQSGSectionSubdivideEditor::update_max(long n)
{
    if (n <= 0 || !from_ || !to_)
        return;
    // A box brings its value down to its maximum by itself: a run beyond the end becomes n to n.
    from_->setMaximum(static_cast<int>(n));
    to_->setMaximum(static_cast<int>(n));
    update_strati_cb();
}

void LQSGSectionSubdivideEditor::set_min(long n)
{
    if (n <= 0)
        return;
    LQSGSectionEditor::set_min(n);
    update_strati_cb();
}

void LQSGSectionSubdivideEditor::setSpinBoxMinMax1(int)
{
    if (to_->value() <= from_->value())
        to_->setValue(from_->value());
    update_strati_cb();
}

void LQSGSectionSubdivideEditor::setSpinBoxMinMax2(int)
{
    if (from_->value() >= to_->value())
        from_->setValue(to_->value());
    update_strati_cb();
}

QStringList LQSGSectionSubdivideEditor::choices(const QString& axis)
{
    if (axis == LQSGAxisEditorMngr::axis_text(1))
        return {tr("Proportional"), tr("Parallel to I-"), tr("Parallel to I+")};
    if (axis == LQSGAxisEditorMngr::axis_text(2))
        return {tr("Proportional"), tr("Parallel to J-"), tr("Parallel to J+")};
    return {tr("Proportional"), tr("Parallel to Base"), tr("Parallel to Top")};
}

const LayerInfo* LQSGSectionSubdivideEditor::layer() const
{
    return manager() ? subdivide_manager_->layer_of(from_section() - 1) : nullptr;
}

void LQSGSectionSubdivideEditor::update_strati_cb()
{
    if (!strati_ || !manager())
        return;
    {
        const QSignalBlocker quiet(strati_);
        const QStringList wanted = choices(subdivide_manager_->axis_name());
        QStringList present;
        for (int i = 0; i < strati_->count(); ++i)
            present.append(strati_->itemText(i));
        if (present != wanted) {
            strati_->clear();
            strati_->addItems(wanted);
        }
        if (const LayerInfo* unit = layer()) {
            for (std::size_t i = 0; i < layerings.size(); ++i) {
                if (layerings[i].second == unit->layering_style())
                    strati_->setCurrentIndex(static_cast<int>(i));
            }
            suggest_thickness(*unit);
        }
    }
    on_strati_change(strati_->currentText());
}

void LQSGSectionSubdivideEditor::suggest_thickness(const LayerInfo& layer)
{
    const double scale = Lodex::GeobaseLib::instance()->default_map_coordinate_system()->vertical_unit().scale();
    thickness_->setText(QString::number(layer.cell_thickness() / scale / amount_section(), 'g', 6));
}

void LQSGSectionSubdivideEditor::on_strati_change(const QString& choice)
{
    thickness_->setEnabled(choice != tr("Proportional"));
}

void LQSGSectionSubdivideEditor::updateCells(int value)
{
    if (const LayerInfo* unit = layer())
        suggest_thickness(*unit);
    LQSGSectionEditor::updateCells(value);
}

int LQSGSectionSubdivideEditor::amount_section() const
{
    return amount_ ? amount_->value() : smallest_amount;
}

QString LQSGSectionSubdivideEditor::thickness() const
{
    return thickness_ ? thickness_->text() : QString();
}

float LQSGSectionSubdivideEditor::thickness_value() const
{
    return thickness().toFloat();
}

const char* LQSGSectionSubdivideEditor::strati_type() const
{
    const int index = strati_ ? strati_->currentIndex() : 0;
    return layerings.at(static_cast<std::size_t>(index)).first;
}

LayerInfo::LayeringStyle LQSGSectionSubdivideEditor::strati_type_info() const
{
    const int index = strati_ ? strati_->currentIndex() : 0;
    return layerings.at(static_cast<std::size_t>(index)).second;
}

QList<QWidget*> LQSGSectionSubdivideEditor::tab_order() const
{
    QList<QWidget*> order = with_pick_buttons({from_, to_, amount_});
    order.append({strati_.data(), thickness_.data(), add_button_.data(), remove_button_.data()});
    return order;
}

void LQSGSectionSubdivideEditor::add_a_section()
{
    if (manager())
        subdivide_manager_->add_section(this);
}

void LQSGSectionSubdivideEditor::remove_a_section()
{
    if (manager())
        subdivide_manager_->remove_section(this);
}

} // namespace Kelvane

#include "flowunit/LQFlowUnitWidget.h"

#include "flowunit/LQFlowUnitPropertyPanel.h"
#include "flowunit/LQFlowUnitRatioPanel.h"
#include "flowunit/LQTable.h"
#include "flowunit/Question.h"

#include "frame/CommandText.h"
#include "frame/WidgetHelpers.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/CommandExecuter.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/utils/PluginManager.h>
#include <Lodex/volumes/RockFeature.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;
using Lodex::to_qstring;

namespace {

/// The plug-in of the host that can add stratigraphic units to a grid.
constexpr const char* layering_plugin = "Venlacore";

QString bold_blue(int number)
{
    return QStringLiteral("<b><font color=\"#0000ff\">%1</font></b>").arg(number);
}

} // namespace

LQFlowUnitWidget::LQFlowUnitWidget(QWidget* parent) : QWidget(parent) {}

LQFlowUnitWidget::~LQFlowUnitWidget()
{
    // The panels tell of changes while the last of this widget goes.
    for (LQFlowUnitPanel* panel : panels())
        QObject::disconnect(panel, nullptr, this, nullptr);
}

int LQFlowUnitWidget::numKLayers() const
{
    return table_ ? table_->rowCount() : 0;
}

int LQFlowUnitWidget::getUnit(int row) const
{
    return row >= 0 && row < numKLayers() ? table_->cellText(row, 0).toInt() : -1;
}

int LQFlowUnitWidget::numFlowUnits() const
{
    return getUnit(numKLayers() - 1);
}

int LQFlowUnitWidget::getFlowUnitPos(int unit) const
{
    for (int row = 0; row < numKLayers(); ++row) {
        if (getUnit(row) == unit)
            return row;
    }
    return -1;
}

int LQFlowUnitWidget::sizeFlowUnit(int unit) const
{
    const int count = numFlowUnits();
    if (unit < 1 || unit > count)
        return -1;
    const int end = unit < count ? getFlowUnitPos(unit + 1) : numKLayers();
    return end - getFlowUnitPos(unit);
}

Lodex::List<int> LQFlowUnitWidget::getFlowUnitsList() const
{
    Lodex::List<int> list;
    for (int row = 0; row < numKLayers(); ++row)
        list.append(getUnit(row));
    return list;
}

std::vector<LQFlowUnitWidget::Unit> LQFlowUnitWidget::units() const
{
    std::vector<Unit> found;
    int former = -1;
    for (int row = 0; row < numKLayers(); ++row) {
        const int unit = getUnit(row);
        if (found.empty() || unit != former)
            found.push_back({row, 0});
        ++found.back().size;
        former = unit;
    }
    return found;
}

std::vector<Lodex::LayerInfo*> LQFlowUnitWidget::getStratigraphicUnits(QStringList& names, QList<long>& sizes)
{
    names.clear();
    sizes.clear();
    stratigraphic_numbers_.clear();
    has_stratigraphic_units_ = false;
    if (!grid_)
        return {};

    const Lodex::SGridActivityModel* model = grid_->sgrid_activity_model();
    std::vector<Lodex::LayerInfo*> layers = model ? model->layers() : std::vector<Lodex::LayerInfo*>();
    if (layers.empty()) {
        if (!Lodex::PluginManager::instance()->is_loaded(layering_plugin)) {
            Logger::fatal(Format(to_cstring(tr("The grid does not have stratigraphic units, you should use the SGrid "
                                               "command Modify Layering (Edit menu) to add them.\n"))));
        } else if (ask(this, tr("The grid does not have stratigraphic units, do you want to add them?")) ==
                       Answer::Yes &&
                   grid_) { // it may have gone meanwhile
            std::ostringstream command = command_stream();
            command << "lodex SGrid " << grid_->name() << " sgrid_fill_layering_info " << '\0';
            Lodex::CommandLib::instance()->cmd_executer()->run_cmd(command, nullptr);
        }
        return {};
    }

    has_stratigraphic_units_ = true;
    for (const Lodex::LayerInfo* layer : layers) {
        const Lodex::RockFeature* feature = layer->rock_feature();
        names.append(feature ? to_qstring(feature->name()) : QString());
        sizes.append(layer->nb_k_cells());
        stratigraphic_numbers_.insert(stratigraphic_numbers_.end(), static_cast<std::size_t>(layer->nb_k_cells()),
                                      static_cast<int>(sizes.size()));
    }
    return layers;
}

void LQFlowUnitWidget::initTableLayers(bool rebuild)
{
    if (putOff([this, rebuild] { initTableLayers(rebuild); }))
        return;
    QStringList names;
    QList<long> sizes;
    getStratigraphicUnits(names, sizes);

    if (rebuild) {
        long layers = 0;
        for (const long size : sizes)
            layers += size;
        table_->setRowCount(0);
        for (LQFlowUnitPanel* panel : panels()) {
            for (int kind = 0; kind < LQFlowUnitPanel::kinds; ++kind)
                panel->shown(kind).clear();
        }
        table_->setRowCount(static_cast<int>(layers));
    }
    table_->beginUpdate();
    const int last_column = table_->columnCount() - 1;
    int row = 0;
    for (qsizetype unit = 0; unit < sizes.size(); ++unit) {
        for (long layer = 0; layer < sizes[unit] && row < numKLayers(); ++layer, ++row) {
            writeUnit(row, row + 1);
            table_->setCellText(row, last_column, names[unit]);
        }
    }
    table_->endUpdate();

    tableSelectionChanged(table_->currentRow(), 0);
    flowUnitsChanged();
    update_guess();
}

void LQFlowUnitWidget::update_guess()
{
    for (LQFlowUnitPanel* panel : panels())
        panel->setGuess(true);
}

void LQFlowUnitWidget::setNewGridName(const QString& name)
{
    QString unused;
    if (build_unused_name(to_cstring(name), unused) && newGridLineEdit_)
        newGridLineEdit_->setText(unused); // comes back here with a name that is free
    new_grid_name_ = unused;
}

void LQFlowUnitWidget::sgridSelectionChanged()
{
    auto* grid = static_cast<Lodex::SGrid*>(Lodex::GeobaseLib::instance()->find(
        to_cstring(selStraticomboBox_->currentText()), Lodex::SGrid::static_type_id_()));
    sgridSelectionChanged(grid); // a grid that only got another name keeps its flow units
}

void LQFlowUnitWidget::sgridSelectionChanged(const QString& name)
{
    chooseGrid(static_cast<Lodex::SGrid*>(
        Lodex::GeobaseLib::instance()->find(to_cstring(name), Lodex::SGrid::static_type_id_())));
}

void LQFlowUnitWidget::sgridSelectionChanged(Lodex::SGrid* grid)
{
    if (grid != grid_)
        chooseGrid(grid);
}

void LQFlowUnitWidget::chooseGrid(Lodex::SGrid* grid)
{
    if (!table_ ||
        putOff([this, name = grid ? to_qstring(grid->name()) : QString()] { sgridSelectionChanged(name); }))
        return;
    grid_ = grid;
    grid_observer_.observe(grid);
    for (LQFlowUnitRatioPanel* panel : ratio_panels_)
        panel->changeSGrid(grid);
    for (LQFlowUnitPropertyPanel* panel : property_panels_)
        panel->changeSGrid(grid);
    initTableLayers(true);
    updateNumLayers();
}

void LQFlowUnitWidget::gridGone()
{
    grid_ = nullptr;
    for (LQFlowUnitPanel* panel : panels())
        panel->changeSGrid(nullptr);
    chooseGrid(nullptr);
}

bool LQFlowUnitWidget::startsUnit(int row) const
{
    return getUnit(row) != getUnit(row - 1);
}

bool LQFlowUnitWidget::canInsert(int row) const
{
    return row > 0 && row < numKLayers() && !startsUnit(row);
}

bool LQFlowUnitWidget::canMerge(int row) const
{
    if (row <= 0 || row >= numKLayers() || !startsUnit(row))
        return false;
    const int last_column = table_->columnCount() - 1;
    return table_->cellText(row - 1, last_column) == table_->cellText(row, last_column);
}

void LQFlowUnitWidget::tableSelectionChanged(int row, int)
{
    addPushButton_->setEnabled(canInsert(row));
    mergePushButton_->setEnabled(canMerge(row));
}

void LQFlowUnitWidget::writeUnit(int row, int unit)
{
    table_->setCellText(row, 0, QString::number(unit));
}

void LQFlowUnitWidget::shiftUnits(int row, int change)
{
    table_->beginUpdate();
    for (int r = row; r < numKLayers(); ++r)
        writeUnit(r, getUnit(r) + change);
    table_->endUpdate();
    tableSelectionChanged(row, 0);
    flowUnitsChanged();
}

void LQFlowUnitWidget::addFlowUnit()
{
    const int row = table_ ? table_->currentRow() : -1;
    if (canInsert(row) && !putOff([this] { addFlowUnit(); }))
        shiftUnits(row, 1);
}

void LQFlowUnitWidget::mergeFlowUnit()
{
    const int row = table_ ? table_->currentRow() : -1;
    if (canMerge(row) && !putOff([this] { mergeFlowUnit(); }))
        shiftUnits(row, -1);
}

void LQFlowUnitWidget::setFlowUnit(const Lodex::List<int>& units)
{
    if (putOff([this, units] { setFlowUnit(units); }))
        return;
    Lodex::List<int> numbers = getFlowUnitsList();
    for (int row = 0; row < std::min(units.count(), numbers.count()); ++row)
        numbers[row] = units[row];
    for (int row = 0; row < numbers.count(); ++row) {
        const int above = row == 0 ? 0 : numbers[row - 1];
        if (numbers[row] != above + 1 && (row == 0 || numbers[row] != above))
            return;
    }

    table_->beginUpdate();
    for (int row = 0; row < numbers.count(); ++row)
        writeUnit(row, numbers[row]);
    table_->endUpdate();
    tableSelectionChanged(table_->currentRow(), 0);
    flowUnitsChanged();
}

void LQFlowUnitWidget::flowUnitsChanged()
{
    statisticsOutdated();
    updateStatistics();
}

void LQFlowUnitWidget::statisticsOutdated()
{
    must_update_ = true;
    updateStatsPushButton_->setEnabled(true);
}

void LQFlowUnitWidget::panelsUpdate()
{
    updateStatsPushButton_->setEnabled(true);
}

void LQFlowUnitWidget::resetFlowUnit()
{
    if (ask(this, tr("Are you sure you want to reset the flow unit definitions?")) == Answer::Yes)
        initTableLayers(false);
}

void LQFlowUnitWidget::guessFlowUnit(int panelNumber, bool isRatio)
{
    if (running_)
        return;
    const Answer answer = ask_or_cancel(this, tr("Do you want to reset the flow unit definitions before proceeding?\n "
                                                 "Otherwise, the calculation will start from the current flow units."));
    if (answer == Answer::Cancel)
        return;
    if (answer == Answer::Yes)
        initTableLayers(false);

    const auto find = [&] { return isRatio ? getRatioPanel(panelNumber) : getPropertyPanel(panelNumber); };
    LQFlowUnitPanel* panel = find();
    if (panel && (must_update_ || panel->mustBeUpdated())) {
        updateStatistics();
        panel = find(); // may have been taken away meanwhile
    }
    FlowUnitStatsManager* manager = panel ? panel->get_manager() : nullptr;
    if (!manager)
        return;

    const FlowUnitStatsManager::GuessMethod method = panel->getThresholdMethod();
    bool ok = false;
    const double value = panel->getThresholdValue(method, &ok);
    const bool wants_number = method == FlowUnitStatsManager::NumberOfFlowUnits;
    if (wants_number && numFlowUnits() <= value) {
        Logger::fatal(Format(to_cstring(tr("Specify a number that is less than the current number of units.\n"))));
        return;
    }
    if (!ok) {
        Logger::fatal(Format(to_cstring(
            wants_number ? tr("Cannot evaluate the number of units value. Please specify an integer.\n")
                         : tr("Cannot evaluate the threshold value.\n"))));
        return;
    }
    // Without statistics of the present table there is nothing to go by.
    if (panel->mustBeUpdated())
        return;
    Lodex::List<int> list;
    running_ = true;
    const bool made = manager->compute_units_from_threshold(value, method, list) && after_run_.empty();
    endRun();
    if (!made)
        return;
    setFlowUnit(list);
    panel = find();
    if (panel)
        panel->setGuess(false); // a reset has enabled it again
}

void LQFlowUnitWidget::updateNumFlowUnit()
{
    units_label_->setText(bold_blue(std::max(numFlowUnits(), 0)));
}

void LQFlowUnitWidget::updateNumLayers()
{
    layers_label_->setText(bold_blue(numKLayers()));
}

void LQFlowUnitWidget::tableVHeaderReleased(int row)
{
    if (row < 0 || row >= numKLayers())
        return;
    const int column = std::max(table_->currentColumn(), 0);
    table_->setCurrentCell(row, column, QItemSelectionModel::NoUpdate);
    table_->clearSelection();
    table_->setRangeSelected({row, 0, row, table_->columnCount() - 1}, true);
}

void LQFlowUnitWidget::keyPressed(QKeyEvent* event)
{
    const bool insert = event->key() == Qt::Key_Insert;
    const bool merge = event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace;
    if (!insert && !merge)
        return;
    event->accept();
    if (insert && addPushButton_->isEnabled())
        addFlowUnit();
    else if (merge && mergePushButton_->isEnabled())
        mergeFlowUnit();
}

void LQFlowUnitWidget::showTest() {}

} // namespace Kelvane

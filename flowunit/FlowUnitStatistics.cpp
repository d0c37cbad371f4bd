// The statistics of the flow unit table: from the panels' managers into its cells and colours.

#include "flowunit/LQFlowUnitPropertyPanel.h"
#include "flowunit/LQFlowUnitRatioPanel.h"
#include "flowunit/LQFlowUnitWidget.h"
#include "flowunit/LQTable.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>

#include <QPushButton>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

namespace {

constexpr int kinds = LQFlowUnitPanel::kinds;
constexpr int digits = 5;
constexpr float nothing = std::numeric_limits<float>::quiet_NaN();

/// Numbers of this magnitude and below are shown as 0; the means never are.
float near_zero(int kind)
{
    if (kind == FlowUnitStatsManager::Difference)
        return 0.01F;
    return kind == FlowUnitStatsManager::Heterogeneity ? 0.001F : 0.0F;
}

/// An undefined number is an empty cell.
QString text_of(float value, int kind)
{
    if (std::isnan(value))
        return {};
    if (std::abs(value) <= near_zero(kind))
        return QStringLiteral("0");
    return QString::number(static_cast<double>(value), 'g', digits);
}

bool same(float a, float b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

int position_of(const Lodex::SGrid* grid, const QString& property)
{
    return grid && !property.isEmpty() ? grid->property_db()->property_index(to_cstring(property)) : -1;
}

} // namespace

std::vector<LQFlowUnitPanel*> LQFlowUnitWidget::panels() const
{
    std::vector<LQFlowUnitPanel*> all(property_panels_.begin(), property_panels_.end());
    all.insert(all.end(), ratio_panels_.begin(), ratio_panels_.end());
    return all;
}

LQFlowUnitPanel* LQFlowUnitWidget::getPropertyPanel(int number) const
{
    return number >= 1 && number <= property_panels_.size() ? property_panels_[number - 1] : nullptr;
}

LQFlowUnitPanel* LQFlowUnitWidget::getRatioPanel(int number) const
{
    return number >= 1 && number <= ratio_panels_.size() ? ratio_panels_[number - 1] : nullptr;
}

LQFlowUnitPanel* LQFlowUnitWidget::getPanelFromColNumber(int column) const
{
    if (column < 1)
        return nullptr;
    const qsizetype block = (column - 1) / kinds;
    if (block < property_panels_.size())
        return property_panels_[block];
    const qsizetype ratio = block - property_panels_.size();
    return ratio < ratio_panels_.size() ? ratio_panels_[ratio] : nullptr;
}

int LQFlowUnitWidget::blockColumn(const LQFlowUnitPanel* panel) const
{
    const qsizetype before = panel->isRatio() ? property_panels_.size() : 0;
    return 1 + kinds * static_cast<int>(before + panel->getNum() - 1);
}

void LQFlowUnitWidget::updateStatistics()
{
    if (running_ || !table_)
        return;
    running_ = true;
    bool complete = true;
    table_->beginUpdate();
    for (LQFlowUnitPanel* panel : panels()) {
        if (!must_update_ && !panel->mustBeUpdated())
            continue;
        if (computePanel(panel))
            showPanel(panel);
        else if (panel->get_manager()->cancelled()) {
            // What the user did not want to wait for stays to be done, and so does the rest.
            complete = false;
            break;
        }
    }
    table_->endUpdate();
    if (!complete) {
        for (LQFlowUnitPanel* panel : panels())
            panel->mustBeUpdated(panel->mustBeUpdated() || must_update_);
    }
    must_update_ = false;
    updateStatsPushButton_->setEnabled(!complete);
    updateNumFlowUnit();
    endRun();
    emit statisticsUpdated();
}

bool LQFlowUnitWidget::putOff(std::function<void()> action)
{
    if (running_)
        after_run_.push_back(std::move(action));
    return running_;
}

void LQFlowUnitWidget::endRun()
{
    running_ = false;
    for (const std::function<void()>& action : std::exchange(after_run_, {}))
        action();
}

bool LQFlowUnitWidget::computePanel(LQFlowUnitPanel* panel)
{
    const auto* ratio = qobject_cast<LQFlowUnitRatioPanel*>(panel);
    const QString property_name = panel->getPropertyName();
    const int property = position_of(grid_, property_name);
    const int denominator = ratio ? position_of(grid_, ratio->getOverPropertyName()) : -1;
    const auto skip = [&] {
        panel->mustBeUpdated(true);
        clearPanel(panel);
        return false;
    };
    if (!panel->isPowervalueValid())
        return skip();
    if (property < 0)
        return skip();
    if (ratio && property_name == ratio->getOverPropertyName()) {
        Logger::fatal(
            Format(to_cstring(tr("In ratio panel %1, the two properties are identical\n"))).arg(panel->getNum()));
        return skip();
    }
    if ((ratio && denominator < 0) || numKLayers() == 0)
        return skip();

    FlowUnitStatsManager* manager = panel->get_manager();
    if (manager->execute(grid_, getFlowUnitsList(), property, to_cstring(panel->averagingMethod()),
                         to_cstring(panel->getRegionName()), panel->isVolWeightedChecked(),
                         static_cast<double>(panel->getPowerValue()), denominator)) {
        panel->mustBeUpdated(false);
        return true;
    }
    return manager->cancelled() ? false : skip();
}

void LQFlowUnitWidget::showPanel(LQFlowUnitPanel* panel)
{
    const FlowUnitStatsManager* manager = panel->get_manager();
    for (int kind = 0; kind < kinds; ++kind) {
        float min = 0, max = 0;
        manager->getMinMax(min, max, kind);
        panel->setMinMax(min, max, kind);
    }

    const auto rows = static_cast<std::size_t>(numKLayers());
    const int first_column = blockColumn(panel);
    const std::vector<float>* series[kinds] = {&manager->getUnitAvrgList(), &manager->getFlowAvrgList(),
                                               &manager->getDeltas(), &manager->getStatsLayers()};
    for (int kind = 0; kind < kinds; ++kind) {
        std::vector<float>& shown = panel->shown(kind);
        const bool all = shown.size() != rows;
        shown.resize(rows, nothing);
        for (std::size_t row = 0; row < rows; ++row) {
            const bool by_unit = kind == FlowUnitStatsManager::FlowUnitMean;
            const std::size_t at = by_unit ? static_cast<std::size_t>(getUnit(static_cast<int>(row)) - 1) : row;
            const float value = at < series[kind]->size() ? (*series[kind])[at] : nothing;
            if (!all && same(value, shown[row]))
                continue;
            shown[row] = value;
            table_->setCellText(static_cast<int>(row), first_column + kind, text_of(value, kind));
        }
    }
}

void LQFlowUnitWidget::clearPanel(LQFlowUnitPanel* panel)
{
    const int first_column = blockColumn(panel);
    for (int kind = 0; kind < kinds; ++kind) {
        if (panel->shown(kind).empty())
            continue;
        panel->shown(kind).clear();
        for (int row = 0; row < numKLayers(); ++row)
            table_->setCellText(row, first_column + kind, QString());
    }
}

QColor LQFlowUnitWidget::getCellColor(int row, int column) const
{
    const LQFlowUnitPanel* panel = getPanelFromColNumber(column);
    if (!panel || row < 0)
        return {};
    const int kind = (column - 1) % kinds;
    const std::vector<float>& shown = panel->shown(kind);
    if (static_cast<std::size_t>(row) >= shown.size() || std::isnan(shown[static_cast<std::size_t>(row)]))
        return {};
    const float value = shown[static_cast<std::size_t>(row)];
    if (kind == FlowUnitStatsManager::Difference)
        return getDeltaColor(*panel, value);
    float min = 0, max = 0;
    panel->getMinMax(min, max, kind);
    return panel->colorAt(max > min ? (static_cast<double>(value) - min) / (static_cast<double>(max) - min) : 0.5);
}

QColor LQFlowUnitWidget::getDeltaColor(const LQFlowUnitPanel& panel, float value)
{
    float min = 0, max = 0;
    panel.getMinMax(min, max, FlowUnitStatsManager::Difference);
    const double end = std::max(std::abs(static_cast<double>(min)), std::abs(static_cast<double>(max)));
    return panel.colorAt(end > 0 ? (value + end) / (2 * end) : 0.5);
}

void LQFlowUnitWidget::tableUpdate()
{
    table_->viewport()->update();
}

} // namespace Kelvane

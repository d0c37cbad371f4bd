// From flow units to the coarse grid: validation, the merge command, the record of the coarsening, the text file.

#include "flowunit/LQFlowUnitPropertyPanel.h"
#include "flowunit/LQFlowUnitRatioPanel.h"
#include "flowunit/LQFlowUnitWidget.h"
#include "flowunit/LQTable.h"

#include "frame/CommandText.h"

#include <Kelvane/upscaling/UpscalerTypes.h>
#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/CommandExecuter.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QSaveFile>
#include <QSignalBlocker>

#include <algorithm>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

namespace {

/// Whether both grids have this very activity.
bool is_recorded(const Lodex::SGrid& fine, const Lodex::SGrid& coarse, const Lodex::GridCoarseningData& coarsening)
{
    const auto activities_of = [](const Lodex::SGrid& grid) {
        const Lodex::SGridActivityModel* model = grid.sgrid_activity_model();
        return model ? model->activities() : std::vector<Lodex::SGridActivity*>();
    };
    const auto of_fine = activities_of(fine);
    return std::ranges::any_of(activities_of(coarse), [&](Lodex::SGridActivity* activity) {
        const auto* upgridding = dynamic_cast<const Lodex::SGridUpgriddingActivityData*>(activity);
        return upgridding && upgridding->coarsening_data().modifications() == coarsening.modifications() &&
               std::ranges::find(of_fine, activity) != of_fine.end();
    });
}

} // namespace

bool LQFlowUnitWidget::checkUpgridding()
{
    const auto fail = [](const Format& message) {
        Logger::fatal(message);
        return false;
    };
    if (!grid_)
        return fail(to_cstring(tr("No SGrid selected.\n")));
    if (new_grid_name_.isEmpty())
        return fail(to_cstring(tr("Please provide a new SGrid name.\n")));
    const int count = numFlowUnits();
    if (count < 2)
        return fail(to_cstring(tr("There are not enough sections to merge.\n")));

    QStringList names;
    QList<long> sizes;
    getStratigraphicUnits(names, sizes);
    // Equal numbers pass, whatever the words say.
    if (count < sizes.size())
        return fail(to_cstring(tr("There are not enough sections to merge: Same or less number of flow units as "
                                  "stratigraphic units \n")));
    if (!has_stratigraphic_units_)
        return false;

    const std::vector<Unit> all = units();
    Lodex::ProgressTracer tracer(to_cstring(tr("Checking Flow Units...")), static_cast<long>(all.size()));
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!tracer.next_step())
            break;
        const long first = all[i].first + 1, end = first + all[i].size; // layers, end not included
        long top = 1;
        for (qsizetype j = 0; j < sizes.size(); top += sizes[j], ++j) {
            if (first < top || first > top + sizes[j] - 1)
                continue;
            if (end > top + sizes[j])
                return fail(Format(to_cstring(tr("You are merging sections belonging to two or more stratigraphic "
                                                 "units.  Flow Unit %1: layer %2-> layer %3 overlap stratigraphic "
                                                 "units %4 and %5.\n")))
                                .arg(static_cast<long>(i) + 1)
                                .arg(first)
                                .arg(end - 1)
                                .arg(static_cast<long>(j) + 1)
                                .arg(static_cast<long>(j) + 2));
            break;
        }
    }
    return grid_ || fail(to_cstring(tr("No SGrid selected.\n"))); // the progress window lets events in
}

bool LQFlowUnitWidget::launchUpgriddingProcess(const Lodex::CString& tail)
{
    std::ostringstream command = command_stream();
    command << "lodex sgrid_merge_multiple_sections name " << to_cstring(new_grid_name_) << " sgrid "
            << (grid_ ? grid_->name() : Lodex::CString()) << " direction \"vertical\" sections ";
    {
        const std::vector<Unit> all = units();
        Lodex::ProgressTracer tracer(to_cstring(tr("Creating command...")), static_cast<long>(all.size()));
        for (std::size_t i = 0; i < all.size() && tracer.next_step(); ++i) {
            if (all[i].size < 2)
                continue;
            command << all[i].first << '+' << all[i].first + all[i].size - 1;
            if (i + 1 < all.size())
                command << '+';
        }
    }
    command << tail << '\n' << '\0';

    // The new grid comes into the selector's list while the command runs.
    const auto slot = qOverload<>(&LQFlowUnitWidget::sgridSelectionChanged);
    disconnect(selStraticomboBox_, &Lodex::LQMultiComboBox::selectionChanged, this, slot);
    Lodex::CommandLib::instance()->cmd_executer()->run_cmd(command, nullptr);
    connect(selStraticomboBox_, &Lodex::LQMultiComboBox::selectionChanged, this, slot);
    return true;
}

void LQFlowUnitWidget::addModifications(Lodex::GridCoarseningData& coarsening) const
{
    for (const Unit& unit : units()) {
        if (unit.size > 1)
            coarsening.add_modification(Lodex::UGridIndex3d::K, unit.first + 1, unit.first + unit.size, unit.size);
    }
}

bool LQFlowUnitWidget::mayComeFromUnits(const Lodex::SGrid& coarse) const
{
    const auto relation = coarse.relation_to(*grid_);
    return !relation || std::ranges::equal(relation->at(Lodex::UGridIndex3d::K), units(),
                                           [](const Lodex::IndexRange& range, const Unit& unit) {
                                               return range.first == unit.first && range.count() == unit.size;
                                           });
}

bool LQFlowUnitWidget::saveUpgridding(bool create)
{
    using Coarsening = Lodex::SGridGridCoarseningModificationActivityData;
    const QString name = new_grid_name_;
    bool exists = false;
    if (create) {
        auto coarsening = std::make_unique<Lodex::GridCoarseningData>();
        addModifications(*coarsening);
        auto* coarse = static_cast<Lodex::SGrid*>(
            Lodex::GeobaseLib::instance()->find(to_cstring(name), Lodex::SGrid::static_type_id_()));
        // After a command that failed this is an earlier grid of that name: it gets no false record, and none twice.
        if (grid_ && coarse)
            exists = is_recorded(*grid_, *coarse, *coarsening);
        if (!exists && !(grid_ && coarse && !mayComeFromUnits(*coarse)))
            exists = Lodex::SGridUpgriddingActivityData::create_upgridding_activity(grid_, coarse,
                                                                                    coarsening.release()) != nullptr;
    } else if (grid_) {
        const Lodex::CString activity_name =
            to_cstring(QStringLiteral("%1_%2_funits").arg(name, QString::number(numFlowUnits())));
        if (Coarsening* activity = Coarsening::get_coarsening_activity(grid_, activity_name)) {
            addModifications(*activity->grid_coarsening_data());
            exists = true;
        } else {
            auto coarsening = std::make_unique<Lodex::GridCoarseningData>();
            addModifications(*coarsening);
            exists = Coarsening::create_coarsening_activity(grid_, activity_name, coarsening.release()) != nullptr;
        }
    }

    // The name is taken by now: it must not be turned into a free one.
    const QSignalBlocker quiet(newGridLineEdit_);
    newGridLineEdit_->setText(name);
    new_grid_name_ = name;
    return exists;
}

QString LQFlowUnitWidget::upgriddingText() const
{
    // Other programs read this file: its words are the same in every language of the windows.
    const QString gap = QStringLiteral("\t \t \t \t");
    QString text;
    text += QStringLiteral("Flow Unit Analysis for grid ") +
            (grid_ ? Lodex::to_qstring(grid_->name()) : QString()) + u'\n';
    text += QStringLiteral("Original number of layers:\t") + QString::number(numKLayers()) + u'\n';
    text += QStringLiteral("Number of flow units:\t") + QString::number(numFlowUnits()) + QStringLiteral("\n\n");

    text += QStringLiteral("\tProperty:\t");
    for (const LQFlowUnitPropertyPanel* panel : property_panels_)
        text += panel->getPropertyName() + gap;
    for (const LQFlowUnitRatioPanel* panel : ratio_panels_)
        text += panel->getPropertyName() + QStringLiteral("\t \\ \t") + panel->getOverPropertyName() +
                QStringLiteral("\t \t");
    text += u'\n';

    text += QStringLiteral("\tRegion:\t");
    for (const LQFlowUnitPanel* panel : panels())
        text += panel->getRegionName() + gap;
    text += u'\n';

    text += QStringLiteral("\tMethod:\t");
    for (const LQFlowUnitPanel* panel : panels()) {
        const QString method = panel->averagingMethod();
        const bool power = to_cstring(method) == PowerUpscalerType::type();
        // A panel without a valid power writes nothing here, so that the columns of the next ones shift.
        if (power && !panel->isPowervalueValid())
            continue;
        text += method;
        if (power)
            text += u':' + QString::number(static_cast<double>(panel->getPowerValue()));
        text += u'\t';
        if (panel->isVolWeightedChecked())
            text += QStringLiteral("cell volume weighted");
        text += QStringLiteral("\t \t \t");
    }
    text += u'\n';

    text += QStringLiteral("Layer\tFlow Unit\t");
    for (std::size_t n = 0; n < panels().size(); ++n)
        text += QStringLiteral("Layer Mean\tFlow Unit mean\t% Difference\tHeterogeneity\t");
    text += QStringLiteral("Stratigraphic Unit") + u'\n';
    for (int row = 0; row < numKLayers(); ++row) {
        text += QString::number(row + 1) + u'\t';
        for (int column = 0; column < table_->columnCount(); ++column)
            text += table_->cellText(row, column) + u'\t';
        text += u'\n';
    }
    return text + u'\n';
}

void LQFlowUnitWidget::saveUpgridding2Txt()
{
    const QString proposed =
        QStringLiteral("flow_unit_analysis_%1.txt").arg(grid_ ? Lodex::to_qstring(grid_->name()) : QString());
    const QString path = QFileDialog::getSaveFileName(this, tr("Save as Text"), proposed, QStringLiteral("*.txt"));
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    const QByteArray bytes = upgriddingText().toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        Logger::fatal(Format(to_cstring(tr("Cannot write the file %1: %2\n")))
                          .arg(to_cstring(path))
                          .arg(to_cstring(file.errorString())));
}

} // namespace Kelvane

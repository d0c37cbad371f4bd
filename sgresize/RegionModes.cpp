#include "sgresize/RegionModes.h"

#include <Lodex/qtools/LQNumberEdits.h>

#include <QRadioButton>

namespace Kelvane {

namespace {

constexpr double default_percentile = 50.0;

} // namespace

RegionModes::RegionModes(QObject* parent) : QButtonGroup(parent) {}

QRadioButton* RegionModes::add_mode(Mode mode, QWidget* parent)
{
    const auto make = [&](const QString& text, const QString& tip) {
        auto* button = new QRadioButton(text, parent);
        button->setObjectName(QStringLiteral("region_mode_%1").arg(static_cast<int>(mode)));
        button->setToolTip(tip);
        addButton(button, mode);
        return button;
    };
    switch (mode) {
    case AnyCell:
        return make(tr("from all original cells"),
                    tr("If any of the original cells is in a region, then the upscaled cell is in that region."));
    case NumberPercentile:
        return make(tr("from original cell number percentile"),
                    tr("If the user defined percentile of the original cells is in a region, "
                       "then the upscaled cell is in that region."));
    case VolumePercentile:
        return make(tr("from original cell volume percentile"),
                    tr("If the user defined percentile of the original cell volume is in the region, "
                       "then the upscaled cell is in that region."));
    case MostProbable:
        return make(tr("from most probable cell region"),
                    tr("The upscaled cell is in the most probable region computed from the original cells. "
                       "If more than one region have the same frequency, upscaled cell belongs to all these regions"));
    }
    return nullptr;
}

Lodex::LQDoubleLineEdit* RegionModes::add_percentile(Mode mode, QWidget* parent)
{
    auto* field = new Lodex::LQDoubleLineEdit(default_percentile, parent);
    field->setObjectName(mode == NumberPercentile ? "number_percentile_" : "volume_percentile_");
    field->setToolTip(button(mode)->toolTip());
    field->setAccessibleName(button(mode)->text());
    field->setFixedWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("100.0000")) + 16);
    (mode == NumberPercentile ? number_percentile_ : volume_percentile_) = field;
    return field;
}

void RegionModes::select(Mode mode)
{
    button(mode)->setChecked(true);
    enable_percentile(mode);
}

void RegionModes::enable_percentile(int mode)
{
    number_percentile_->setEnabled(mode == NumberPercentile);
    volume_percentile_->setEnabled(mode == VolumePercentile);
}

void RegionModes::write(std::ostream& command) const
{
    const int mode = checkedId();
    command << " region_mode " << mode << " percentile ";
    if (mode == NumberPercentile)
        command << number_percentile_->value();
    else if (mode == VolumePercentile)
        command << volume_percentile_->value();
    else
        command << 0;
}

} // namespace Kelvane

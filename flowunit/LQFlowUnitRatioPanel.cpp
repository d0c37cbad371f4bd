#include "flowunit/LQFlowUnitRatioPanel.h"

#include <Lodex/volumes/SGrid.h>
#include <Lodex/xtools/LQObjectSelectors.h>

namespace Kelvane {

LQFlowUnitRatioPanel::LQFlowUnitRatioPanel(LQFlowUnitWidget* owner, int number, QWidget* parent)
    : LQFlowUnitPanel(owner, number, true, tr("Ratio %1").arg(number),
                      tr("Choose the numerator of the compositional property you want to analyze."), parent),
      over_property_(add_selector("overPropertyComboBox", "properties1d", tr("Over property"),
                                  tr("Choose the denominator of the compositional property you want to analyze.")))
{
    setObjectName(QStringLiteral("ratio_panel_%1").arg(number));
    connect(over_property_, &Lodex::LQMultiComboBox::selectionChanged, this,
            [this] { changeOverProperty(over_property_->currentText()); });
    build_settings();
}

QString LQFlowUnitRatioPanel::getOverPropertyName() const
{
    return over_property_->currentText();
}

void LQFlowUnitRatioPanel::changeSGrid(Lodex::SGrid* grid)
{
    const QString former = getOverPropertyName();
    over_property_->setObject(grid);
    LQFlowUnitPanel::changeSGrid(grid);
    // Where nothing was chosen that is still there, two different properties are a better start than twice the first.
    if (getOverPropertyName() != former && getOverPropertyName() == getPropertyName() && over_property_->count() > 1)
        over_property_->setSelectedItems({over_property_->items().at(1)});
}

void LQFlowUnitRatioPanel::changeOverProperty(const QString&)
{
    settings_changed();
    colormapUpdate();
}

} // namespace Kelvane

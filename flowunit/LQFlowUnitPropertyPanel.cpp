#include "flowunit/LQFlowUnitPropertyPanel.h"

namespace Kelvane {

LQFlowUnitPropertyPanel::LQFlowUnitPropertyPanel(LQFlowUnitWidget* owner, int number, QWidget* parent)
    : LQFlowUnitPanel(owner, number, false, tr("Property %1").arg(number),
                      tr("Enter the property that you want to analyze."), parent)
{
    setObjectName(QStringLiteral("property_panel_%1").arg(number));
    build_settings();
}

} // namespace Kelvane

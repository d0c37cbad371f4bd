#pragma once

#include "flowunit/LQFlowUnitPanel.h"

namespace Kelvane {

/// Analyses one property of the grid.
class LQFlowUnitPropertyPanel : public LQFlowUnitPanel {
    Q_OBJECT

public:
    LQFlowUnitPropertyPanel(LQFlowUnitWidget* owner, int number, QWidget* parent = nullptr);
};

} // namespace Kelvane

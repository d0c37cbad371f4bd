#pragma once

#include "flowunit/LQFlowUnitPanel.h"

namespace Kelvane {

/// Analyses the ratio of two properties of the grid, taken cell by cell.
class LQFlowUnitRatioPanel : public LQFlowUnitPanel {
    Q_OBJECT

public:
    LQFlowUnitRatioPanel(LQFlowUnitWidget* owner, int number, QWidget* parent = nullptr);

    /// The denominator; empty when none is chosen.
    [[nodiscard]] QString getOverPropertyName() const;

public slots:
    void changeSGrid(Lodex::SGrid* grid) override;
    void changeOverProperty(const QString& name);

private:
    Lodex::LQGObjContextSelector* over_property_;
};

} // namespace Kelvane

#pragma once

#include <Lodex/gviews/Picking.h>
#include <Lodex/utils/Value.h>

#include <QCoreApplication>

#include <array>

namespace Lodex {
class SGrid;
}

namespace Kelvane {

/// Camera tool that writes the number of the picked cell along one axis (1-based) into a value. A pick that gives no
/// cell is reported and leaves the tool active.
class LQSGridCellSectionSelectToolAction : public Lodex::CameraToolAction {
    Q_DECLARE_TR_FUNCTIONS(Kelvane::LQSGridCellSectionSelectToolAction)

public:
    /// Axis: I = 1, J = 2, K = 3. With one_shot, a successful pick brings the camera's default tool back.
    LQSGridCellSectionSelectToolAction(Lodex::IntValue* value, int axis, bool one_shot = true);

    void set_axis(int axis) { axis_ = axis; }
    [[nodiscard]] int axis() const { return axis_; }

    void on_pick() override;
    [[nodiscard]] Lodex::CString hint() const override;

private:
    /// 1-based numbers of the picked cell along I, J, K; false when the pick lies in no cell.
    [[nodiscard]] static bool picked_cell(const Lodex::SGridPickInfo& pick, const Lodex::SGrid& grid,
                                          std::array<long, 3>& numbers);

    Lodex::Ref<Lodex::IntValue> value_;
    int axis_;
    bool one_shot_;
};

} // namespace Kelvane

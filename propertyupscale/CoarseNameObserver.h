#pragma once

#include "frame/SGridObserver.h"

namespace Kelvane {

/// Offers the properties of the coarse grid in a list in which a new name may be typed. The name that stands in the
/// field stays, whether the grid has such a property or not.
class CoarseNameObserver : public SGridObserver {
public:
    /// The combo is editable and not owned.
    explicit CoarseNameObserver(Lodex::LQMultiComboBox* combo);

    void update(Lodex::Component* component) override;

private:
    QPointer<Lodex::LQMultiComboBox> combo_;
};

} // namespace Kelvane

#include "propertyupscale/CoarseNameObserver.h"

namespace Kelvane {

CoarseNameObserver::CoarseNameObserver(Lodex::LQMultiComboBox* combo)
    : SGridObserver(combo, "properties", "all_properties", false, true, false), combo_(combo)
{
}

void CoarseNameObserver::update(Lodex::Component* component)
{
    if (!combo_)
        return;
    combo_->beginRefill();
    const QString name = combo_->currentText();
    SGridObserver::update(component);
    combo_->setCurrentIndex(combo_->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive));
    combo_->setEditText(name);
    combo_->endRefill();
}

} // namespace Kelvane

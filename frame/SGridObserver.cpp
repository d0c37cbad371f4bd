#include "frame/SGridObserver.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/volumes/SGrid.h>

namespace Kelvane {

SGridObserver::SGridObserver(Lodex::LQMultiComboBox* combo, const Lodex::CString& list_key,
                             const Lodex::CString& extra_entry, bool add_extra_entry, bool extra_entry_first,
                             bool extra_entry_only)
    : combo_(combo), list_key_(list_key), add_extra_entry_(add_extra_entry), extra_entry_first_(extra_entry_first),
      extra_entry_(extra_entry), extra_entry_only_(extra_entry_only)
{
}

void SGridObserver::update(Lodex::Component*)
{
    if (!combo_)
        return;
    combo_->beginRefill();
    fill();
    combo_->endRefill();
}

void SGridObserver::fill()
{
    const QStringList selected = combo_->selectedItems();
    clear();
    if (!observed())
        return;
    if (extra_entry_only_) {
        insert_item(extra_entry_, true);
        combo_->setSelected(0, true);
        return;
    }

    Lodex::COSNameList names;
    observed()->name_list(list_key_, names);
    if (add_extra_entry_) {
        if (extra_entry_first_)
            names.unique_prepend(extra_entry_);
        else
            names.unique_append(extra_entry_);
    }
    bool found = false;
    for (const Lodex::CString& name : names) {
        insert_item(name, false);
        if (selected.contains(Lodex::to_qstring(name))) {
            combo_->setSelected(combo_->count() - 1, true);
            found = true;
        }
    }
    if (!found)
        combo_->setSelected(0, true);
}

void SGridObserver::disconnect(Lodex::Component* component)
{
    GObjObserver::disconnect(component);
    update(nullptr);
}

void SGridObserver::insert_item(const Lodex::CString& text, bool at_top)
{
    if (combo_)
        combo_->insertItem(Lodex::to_qstring(text), at_top ? 0 : -1);
}

void SGridObserver::insert_item(const char* text, bool at_top)
{
    insert_item(Lodex::CString(text), at_top);
}

void SGridObserver::clear()
{
    if (combo_)
        combo_->clear();
}

void SGridObserver::update_gobj(const Lodex::CString& grid_name)
{
    observe(Lodex::GeobaseLib::instance()->find(grid_name, Lodex::SGrid::static_type_id_()));
    update(observed());
}

} // namespace Kelvane

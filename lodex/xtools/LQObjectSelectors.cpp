#include <Lodex/xtools/LQObjectSelectors.h>

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/COSNameList.h>

namespace Lodex {

namespace {

QStringList to_list(const COSNameList& names)
{
    QStringList list;
    for (const CString& name : names)
        list.append(to_qstring(name));
    return list;
}

QStringList catalogue_names(const TypeId& type)
{
    COSNameList names;
    GeobaseLib::instance()->names(type, names);
    return to_list(names);
}

} // namespace

LQGObjSelector::LQGObjSelector(const TypeId& type, QWidget* parent) : LQMultiComboBox(parent), type_(type)
{
    GeobaseLib::instance()->attach(this);
    refill(catalogue_names(type_), {});
}

LQGObjSelector::~LQGObjSelector()
{
    GeobaseLib::instance()->detach(this);
}

void LQGObjSelector::object_added(GObj* object)
{
    if (object->type_id().is_a(type_))
        refill(catalogue_names(type_), selectedItems());
}

void LQGObjSelector::object_removed(GObj* object)
{
    if (!object->type_id().is_a(type_))
        return;
    QStringList names = catalogue_names(type_); // the object may still be among them
    names.removeAll(to_qstring(object->name()));
    refill(names, selectedItems());
}

void LQGObjSelector::object_renamed(GObj* object, const CString& former)
{
    if (!object->type_id().is_a(type_))
        return;
    QStringList selected = selectedItems();
    const auto at = selected.indexOf(to_qstring(former));
    if (at >= 0)
        selected[at] = to_qstring(object->name());
    refill(catalogue_names(type_), selected);
}

void LQGObjSelector::refill(const QStringList& names, const QStringList& selected)
{
    beginRefill();
    clear();
    for (const QString& name : names)
        insertItem(name);
    setSelectedItems(selected);
    endRefill();
}

LQGObjContextSelector::LQGObjContextSelector(const CString& context_key, QWidget* parent)
    : LQMultiComboBox(parent), key_(context_key)
{
}

void LQGObjContextSelector::setObject(GObj* object)
{
    observe(object);
    update(object);
}

void LQGObjContextSelector::update(Component*)
{
    const QStringList remembered = selectedItems();
    beginRefill();
    clear();
    if (observed()) {
        COSNameList names;
        observed()->name_list(key_, names);
        if (key_ == CString("regions_plus"))
            names.unique_prepend("everywhere");
        for (const CString& name : names)
            insertItem(to_qstring(name));
        setSelectedItems(remembered);
        if (selectedItems().isEmpty())
            setSelected(0, true);
    }
    endRefill();
}

void LQGObjContextSelector::disconnect(Component* component)
{
    GObjObserver::disconnect(component);
    update(nullptr);
}

} // namespace Lodex

#include "Lodex/xtools/moc_LQObjectSelectors.cpp"

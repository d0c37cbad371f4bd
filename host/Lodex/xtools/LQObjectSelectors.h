#pragma once

#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/qtools/LQMultiComboBox.h>

namespace Lodex {

/// Lists the catalogue's objects of one type and stays current: keeps its selection, and stays silent, when other names
/// come or go; when the selected object goes, it selects nothing; a renamed object stays selected under its new name.
class LQGObjSelector : public LQMultiComboBox, private CatalogueObserver {
    Q_OBJECT

public:
    explicit LQGObjSelector(const TypeId& type, QWidget* parent = nullptr);
    ~LQGObjSelector() override;

private:
    void object_added(GObj* object) override;
    void object_removed(GObj* object) override;
    void object_renamed(GObj* object, const CString& former) override;
    void refill(const QStringList& names, const QStringList& selected);

    const TypeId& type_;
};

/// Lists items of one object ("properties1d": its properties, "regions_plus": "everywhere" and its regions). Keeps the
/// names that are still there selected when the object changes.
class LQGObjContextSelector : public LQMultiComboBox, private GObjObserver {
    Q_OBJECT

public:
    explicit LQGObjContextSelector(const CString& context_key, QWidget* parent = nullptr);

    /// The object whose items are listed; null empties the list.
    void setObject(GObj* object);
    [[nodiscard]] GObj* object() const { return observed(); }
    [[nodiscard]] const CString& contextKey() const { return key_; }

private:
    void update(Component* component) override;
    void disconnect(Component* component) override;

    CString key_;
};

} // namespace Lodex

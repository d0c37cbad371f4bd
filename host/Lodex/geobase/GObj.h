#pragma once

#include <Lodex/geobase/Component.h>
#include <Lodex/geobase/TypeId.h>
#include <Lodex/utils/CString.h>

namespace Lodex {

class COSNameList;
class Style;

/// A named object of the catalogue.
class GObj : public Component {
public:
    /// Name; unique among all objects but styles.
    [[nodiscard]] const CString& name() const { return name_; }
    [[nodiscard]] virtual const TypeId& type_id() const = 0;
    /// Fills the list with the names of the object's items of one kind. The list is cleared first; an unknown key leaves
    /// it empty.
    virtual void name_list(const CString& key, COSNameList& names) const = 0;
    /// The style of the same name; null for objects that have none.
    [[nodiscard]] virtual Style* style() const = 0;

protected:
    explicit GObj(CString name) : name_(std::move(name)) {}

private:
    friend class GeobaseLib;
    CString name_;
};

} // namespace Lodex

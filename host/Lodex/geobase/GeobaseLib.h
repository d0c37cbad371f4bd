#pragma once

#include <Lodex/geobase/GObj.h>

#include <memory>
#include <vector>

namespace Lodex {

class COSNameList;
class MapCoordinateSystem;

/// Hears of objects that come and go.
class CatalogueObserver {
public:
    virtual ~CatalogueObserver() = default;
    virtual void object_added(GObj*) {}
    /// Called before the object is destroyed.
    virtual void object_removed(GObj*) {}
    virtual void object_renamed(GObj*, const CString& /*former*/) {}
};

/// The object catalogue of the project. Owns its objects. GUI thread only.
class GeobaseLib {
public:
    [[nodiscard]] static GeobaseLib* instance();

    GeobaseLib(const GeobaseLib&) = delete;
    GeobaseLib& operator=(const GeobaseLib&) = delete;

    /// The object of this name and type (or of a type derived from it); null when there is none.
    [[nodiscard]] GObj* find(const CString& name, const TypeId& type) const;
    /// True when any object bears the name. Styles do not count.
    [[nodiscard]] bool is_name_used(const CString& name) const;
    /// Names of the objects of a type in order of creation; the list is cleared first.
    void names(const TypeId& type, COSNameList& names) const;
    [[nodiscard]] std::vector<GObj*> objects(const TypeId& type) const;

    /// Takes the object in and tells the observers. Throws std::invalid_argument when the name is taken.
    GObj* add(std::unique_ptr<GObj> object);
    /// Destroys the object; it is told to its own observers and to the catalogue's before.
    void destroy(GObj* object);
    /// Gives the object (and its style) another, free name. Throws std::invalid_argument when the name is taken.
    void rename(GObj* object, const CString& name);
    /// Destroys everything.
    void clear();

    [[nodiscard]] MapCoordinateSystem* default_map_coordinate_system();

    void attach(CatalogueObserver* observer);
    void detach(CatalogueObserver* observer);

private:
    GeobaseLib();
    ~GeobaseLib();
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace Lodex

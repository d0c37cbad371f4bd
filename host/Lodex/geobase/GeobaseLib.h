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

/// The object catalogue of the project. Owns its objects. GUI thread only. Observers may attach, detach, add and destroy
/// while they are told. Every object but styles has a Style of its name, made, renamed and destroyed with it; observers
/// are not told of these.
class GeobaseLib {
public:
    [[nodiscard]] static GeobaseLib* instance();

    GeobaseLib(const GeobaseLib&) = delete;
    GeobaseLib& operator=(const GeobaseLib&) = delete;

    /// The object of this name and type (or of a type derived from it); null when there is none.
    [[nodiscard]] GObj* find(const CString& name, const TypeId& type) const;
    /// The same by the name of the type ("SGrid"); an empty type name finds any object but a style.
    [[nodiscard]] GObj* find(const CString& name, const CString& type_name) const;
    /// True when any object bears the name. Styles do not count.
    [[nodiscard]] bool is_name_used(const CString& name) const;
    /// Names of the objects of a type in order of creation; the list is cleared first.
    void names(const TypeId& type, COSNameList& names) const;
    [[nodiscard]] std::vector<GObj*> objects(const TypeId& type) const;

    /// Takes the object in and tells the observers. Throws std::invalid_argument when the name is taken or empty. Null when
    /// an observer destroyed the object at once.
    GObj* add(std::unique_ptr<GObj> object);
    /// Destroys the object. The catalogue's observers are told first, when the object is whole but no more to be found;
    /// then its own ones hear disconnect(). A style that belongs to an object cannot be destroyed or renamed by itself
    /// (std::invalid_argument).
    void destroy(GObj* object);
    /// Gives the object (and its style) another, free name. Throws std::invalid_argument when the name is taken or empty.
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

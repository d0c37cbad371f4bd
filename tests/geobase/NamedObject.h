#pragma once

#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/utils/COSNameList.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Types for tests: Shape, and Box derived from it.
inline const Lodex::TypeId& shape_type()
{
    static constexpr Lodex::TypeId type("Shape", nullptr);
    return type;
}
inline const Lodex::TypeId& box_type()
{
    static const Lodex::TypeId type("Box", &shape_type());
    return type;
}

/// A catalogue object whose style is the catalogue's, as a grid's is.
class NamedObject : public Lodex::GObj {
public:
    explicit NamedObject(const char* name, const Lodex::TypeId& type = box_type()) : GObj(name), type_(type) {}
    ~NamedObject() override
    {
        if (on_death)
            on_death();
    }

    [[nodiscard]] const Lodex::TypeId& type_id() const override { return type_; }
    void name_list(const Lodex::CString&, Lodex::COSNameList& names) const override { names.clear(); }
    [[nodiscard]] Lodex::Style* style() const override
    {
        return static_cast<Lodex::Style*>(
            Lodex::GeobaseLib::instance()->find(name(), Lodex::Style::static_type_id_()));
    }

    std::function<void()> on_death;

private:
    const Lodex::TypeId& type_;
};

/// Empties the catalogue before and after each test.
struct CleanCatalogue {
    CleanCatalogue() { lib->clear(); }
    ~CleanCatalogue() { lib->clear(); }
    CleanCatalogue(const CleanCatalogue&) = delete;
    CleanCatalogue& operator=(const CleanCatalogue&) = delete;

    Lodex::GObj* add(const char* name, const Lodex::TypeId& type = box_type()) const
    {
        return lib->add(std::make_unique<NamedObject>(name, type));
    }
    [[nodiscard]] Lodex::Style* style(const char* name) const
    {
        return static_cast<Lodex::Style*>(lib->find(name, Lodex::Style::static_type_id_()));
    }
    [[nodiscard]] std::vector<std::string> names(const Lodex::TypeId& type) const
    {
        Lodex::COSNameList list;
        list.append("stale");
        lib->names(type, list);
        std::vector<std::string> result;
        for (const Lodex::CString& name : list)
            result.push_back(name.str());
        return result;
    }

    Lodex::GeobaseLib* lib = Lodex::GeobaseLib::instance();
};

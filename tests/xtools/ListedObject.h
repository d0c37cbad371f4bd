#pragma once

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/utils/COSNameList.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// An object of the catalogue whose items are given as lists of names.
class ListedObject : public Lodex::GObj {
public:
    explicit ListedObject(const std::string& name, const Lodex::TypeId& type = type_of_tests())
        : GObj(name), type_(type)
    {
    }

    [[nodiscard]] static const Lodex::TypeId& type_of_tests()
    {
        static const Lodex::TypeId type("ListedObject", nullptr);
        return type;
    }
    [[nodiscard]] static const Lodex::TypeId& derived_type()
    {
        static const Lodex::TypeId type("DerivedListedObject", &type_of_tests());
        return type;
    }
    [[nodiscard]] static const Lodex::TypeId& other_type()
    {
        static const Lodex::TypeId type("OtherObject", nullptr);
        return type;
    }

    [[nodiscard]] const Lodex::TypeId& type_id() const override { return type_; }
    void name_list(const Lodex::CString& key, Lodex::COSNameList& names) const override
    {
        names.clear();
        const auto it = lists.find(key.str());
        if (it == lists.end())
            return;
        for (const std::string& name : it->second)
            names.append(name);
    }
    [[nodiscard]] Lodex::Style* style() const override { return nullptr; }

    std::map<std::string, std::vector<std::string>> lists;

private:
    const Lodex::TypeId& type_;
};

/// Adds objects to the catalogue and takes all of them out at the end.
struct Catalogue {
    ~Catalogue() { Lodex::GeobaseLib::instance()->clear(); }

    static ListedObject* add(const std::string& name, const Lodex::TypeId& type = ListedObject::type_of_tests())
    {
        return static_cast<ListedObject*>(
            Lodex::GeobaseLib::instance()->add(std::make_unique<ListedObject>(name, type)));
    }
};

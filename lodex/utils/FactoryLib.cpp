#include <Lodex/utils/FactoryLib.h>

#include <Lodex/utils/PathName.h>

#include <lodex/utils/Immortal.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace Lodex {

namespace {

class Factories : public FactoryLib {
public:
    void add(const CString& domain, std::unique_ptr<Factory> factory) override
    {
        if (!factory)
            return;
        auto& factories = domains_[domain.str()];
        const CString path = factory->path();
        const auto it = std::ranges::find_if(factories, [&path](const auto& f) { return f->path() == path; });
        if (it != factories.end())
            *it = std::move(factory);
        else
            factories.insert(std::ranges::upper_bound(factories, factory->rank(), {}, [](const auto& f) { return f->rank(); }),
                             std::move(factory));
    }

    [[nodiscard]] Factory* find(const CString& domain, const CString& name) const override
    {
        const auto it = domains_.find(domain.str());
        if (it == domains_.end() || name.empty())
            return nullptr;
        Factory* found = nullptr;
        const std::string ending = "/" + name.str();
        for (const auto& factory : it->second) {
            const CString path = factory->path();
            if (path == name)
                return factory.get();
            if (!found && path.str().ends_with(ending))
                found = factory.get();
        }
        return found;
    }

    void list(const CString& domain, const CString& family, COSNameList& paths) const override
    {
        paths.clear();
        const auto it = domains_.find(domain.str());
        if (it == domains_.end())
            return;
        std::string start = family.str();
        if (!start.empty() && !start.ends_with('/'))
            start += '/';
        for (const auto& factory : it->second) {
            if (CString path = factory->path(); path.str().starts_with(start))
                paths.append(std::move(path));
        }
    }

private:
    std::map<std::string, std::vector<std::unique_ptr<Factory>>> domains_;
};

class Naming : public NamingLib {
public:
    void set_display_name(const CString& path, const CString& name) override { names_[path.str()] = name; }

    [[nodiscard]] CString display_name(const CString& path) const override
    {
        const auto it = names_.find(path.str());
        return it == names_.end() ? PathName::basename(path) : it->second;
    }

private:
    std::map<std::string, CString> names_;
};

} // namespace

FactoryLib* FactoryLib::instance()
{
    static lodex::Immortal<Factories> lib;
    return &lib.get();
}

NamingLib* NamingLib::instance()
{
    static lodex::Immortal<Naming> lib;
    return &lib.get();
}

} // namespace Lodex

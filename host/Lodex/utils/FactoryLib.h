#pragma once

#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/Resource.h>

#include <memory>

namespace Lodex {

/// Makes objects of one kind. Derived factories add the operation that creates.
class Factory {
public:
    virtual ~Factory() = default;
    /// Registered path, "family/name".
    [[nodiscard]] virtual CString path() const = 0;
    /// Place among the others of the domain; those of equal rank stand in order of registration.
    [[nodiscard]] virtual int rank() const { return 0; }
};

/// Registry of factories by domain, in the order of their ranks, then of their registration.
class FactoryLib {
public:
    [[nodiscard]] static FactoryLib* instance();

    virtual ~FactoryLib() = default;
    /// The registry owns the factory; one of the same path in the domain is replaced.
    virtual void add(const CString& domain, std::unique_ptr<Factory> factory) = 0;
    /// The factory whose path is `name` or ends in "/name"; null when there is none. Owned by the registry.
    [[nodiscard]] virtual Factory* find(const CString& domain, const CString& name) const = 0;
    /// Paths registered in the domain under a family ("family/"); all of the domain when family is empty. The list is
    /// cleared first.
    virtual void list(const CString& domain, const CString& family, COSNameList& paths) const = 0;
};

/// Names shown for registered paths.
class NamingLib {
public:
    [[nodiscard]] static NamingLib* instance();

    virtual ~NamingLib() = default;
    virtual void set_display_name(const CString& path, const CString& name) = 0;
    /// The given display name, else the last component of the path.
    [[nodiscard]] virtual CString display_name(const CString& path) const = 0;
};

} // namespace Lodex

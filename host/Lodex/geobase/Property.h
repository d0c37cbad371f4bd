#pragma once

#include <Lodex/utils/CString.h>

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace Lodex {

class Style;

/// A property of a grid: one number per cell (or node), or one code per cell for a discrete one.
class Property {
public:
    /// Values in storage order, I fastest, then J, then K from the top; all cells, inactive ones included.
    using Values = std::variant<std::span<const float>, std::span<const double>, std::span<const std::int32_t>>;

    virtual ~Property() = default;
    [[nodiscard]] virtual const CString& name() const = 0;
    /// Unit as written in the file or set by the user; empty when unknown.
    [[nodiscard]] virtual const CString& unit() const = 0;
    /// How it is drawn: colour map, clips. Never null; owned by the property.
    [[nodiscard]] virtual Style* style() const = 0;
    [[nodiscard]] virtual Values values() const = 0;
    /// Value that means undefined, when there is one. A value that is not finite is undefined as well.
    [[nodiscard]] virtual std::optional<double> no_data() const = 0;
    [[nodiscard]] virtual bool discrete() const = 0;
    /// Names of the codes of a discrete property; codes without a name are absent.
    [[nodiscard]] virtual const std::map<std::int32_t, std::string>& code_names() const = 0;
};

/// The properties of one grid, in order of creation.
class PropertyDB {
public:
    virtual ~PropertyDB() = default;
    [[nodiscard]] virtual int nb_properties() const = 0;
    /// Name of the i-th property, 0-based; empty outside the range.
    [[nodiscard]] virtual CString property_name(int index) const = 0;
    /// Null outside the range, or when there is no such name.
    [[nodiscard]] virtual Property* property(int index) const = 0;
    [[nodiscard]] virtual Property* find(const CString& name) const = 0;
    /// Position of the property, -1 when there is none of that name.
    [[nodiscard]] virtual int property_index(const CString& name) const = 0;
};

} // namespace Lodex

#pragma once

#include <Lodex/geobase/GObj.h>

#include <functional>
#include <map>
#include <string>

namespace Lodex {

/// What changed in a style.
struct StyleInfo {
    /// Name of the attribute; empty when several may have changed.
    CString attribute;
};

/// Follows one or more styles. An observer must be detached before it dies.
class StyleObserver {
public:
    virtual ~StyleObserver() = default;
    virtual void update(StyleInfo* info) = 0;
    /// The style goes away.
    virtual void disconnect() {}
};

/// How an object or property is drawn: named attributes with text values. A grid's style bears the grid's name; the
/// style of a property is reached through the property.
class Style : public GObj {
public:
    explicit Style(CString name) : GObj(std::move(name)) {}
    ~Style() override;

    [[nodiscard]] static const TypeId& static_type_id_();
    [[nodiscard]] const TypeId& type_id() const override { return static_type_id_(); }
    void name_list(const CString& key, COSNameList& names) const override; ///< key "attributes"
    [[nodiscard]] Style* style() const override { return nullptr; }

    /// Value of an attribute; empty when it was never set.
    [[nodiscard]] CString attribute(const CString& name) const;
    /// Stores the value whole; observers hear of it at update().
    void set_attribute(const CString& name, const CString& value);
    [[nodiscard]] const std::map<std::string, std::string>& attributes() const { return attributes_; }
    /// Takes over every attribute of the other style but the painted sections ("*sections").
    void copy_attributes(const Style& other);
    /// Tells the observers what was set since the last update.
    void update();

    void attach_style(StyleObserver* observer);
    void detach_style(StyleObserver* observer);

private:
    std::map<std::string, std::string> attributes_;
    std::vector<StyleObserver*> observers_;
    std::vector<std::string> pending_;
};

} // namespace Lodex

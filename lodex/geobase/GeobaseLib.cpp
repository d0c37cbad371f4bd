#include <Lodex/geobase/GeobaseLib.h>

#include <Lodex/geobase/Style.h>
#include <Lodex/utils/COSNameList.h>

#include <lodex/geobase/Notification.h>
#include <lodex/geobase/ProjectUnits.h>

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace Lodex {

namespace {

bool is_style(const GObj& object)
{
    return object.type_id().is_a(Style::static_type_id_());
}

std::string quoted(const CString& name)
{
    return '"' + name.str() + '"';
}

} // namespace

struct GeobaseLib::Impl {
    /// An object and the style that goes with it. A style that somebody added by itself is an object without style.
    struct Entry {
        std::unique_ptr<GObj> object; ///< null while it is being destroyed
        std::unique_ptr<Style> style;
    };
    std::vector<std::unique_ptr<Entry>> entries; ///< in order of creation
    std::vector<std::unique_ptr<Entry>> going;   ///< being destroyed; only their styles can still be found
    std::vector<CatalogueObserver*> observers;

    [[nodiscard]] auto position(const GObj* object) const
    {
        return std::ranges::find_if(entries, [object](const auto& entry) { return entry->object.get() == object; });
    }
    [[nodiscard]] bool holds(const GObj* object) const { return object && position(object) != entries.end(); }
    [[nodiscard]] bool is_name_used(const CString& name) const
    {
        return std::ranges::any_of(entries, [&name](const auto& entry) {
            return entry->object->name() == name && !is_style(*entry->object);
        });
    }
    /// The style of that name, added by itself or made with an object; null when there is none.
    [[nodiscard]] Style* style(const CString& name) const
    {
        for (const auto* list : {&entries, &going}) {
            for (const auto& entry : *list) {
                if (entry->style && entry->style->name() == name)
                    return entry->style.get();
                if (entry->object && is_style(*entry->object) && entry->object->name() == name)
                    return static_cast<Style*>(entry->object.get());
            }
        }
        return nullptr;
    }
    /// Takes the style that somebody added under this name before there was an object; null when there is none.
    [[nodiscard]] std::unique_ptr<Style> take_free_style(const CString& name)
    {
        const auto it = std::ranges::find_if(entries, [&name](const auto& entry) {
            return is_style(*entry->object) && entry->object->name() == name;
        });
        if (it == entries.end())
            return nullptr;
        std::unique_ptr<Style> style(static_cast<Style*>((*it)->object.release()));
        entries.erase(it);
        return style;
    }
    void refuse_bound_style(const GObj* object) const
    {
        for (const auto& entry : entries) {
            if (entry->style && entry->style.get() == object) {
                throw std::invalid_argument("The style " + quoted(object->name()) +
                                            " goes with the object of its name");
            }
        }
    }
};

GeobaseLib::GeobaseLib() : impl_(std::make_unique<Impl>()) {}

GeobaseLib::~GeobaseLib() = default;

GeobaseLib* GeobaseLib::instance()
{
    // Never destroyed, so that statics of other libraries can still look things up at exit.
    static union Holder {
        Holder() : lib() {}
        ~Holder() {}
        GeobaseLib lib;
    } holder;
    return &holder.lib;
}

GObj* GeobaseLib::find(const CString& name, const TypeId& type) const
{
    for (const auto& entry : impl_->entries) {
        if (entry->object->name() == name && entry->object->type_id().is_a(type))
            return entry->object.get();
    }
    return Style::static_type_id_().is_a(type) ? impl_->style(name) : nullptr;
}

GObj* GeobaseLib::find(const CString& name, const CString& type_name) const
{
    for (const auto& entry : impl_->entries) {
        const bool fits = type_name.empty() ? !is_style(*entry->object) : entry->object->type_id().name() == type_name;
        if (fits && entry->object->name() == name)
            return entry->object.get();
    }
    return type_name == Style::static_type_id_().name() ? impl_->style(name) : nullptr;
}

bool GeobaseLib::is_name_used(const CString& name) const
{
    return impl_->is_name_used(name);
}

void GeobaseLib::names(const TypeId& type, COSNameList& names) const
{
    names.clear();
    for (const GObj* object : objects(type))
        names.append(object->name());
}

std::vector<GObj*> GeobaseLib::objects(const TypeId& type) const
{
    std::vector<GObj*> result;
    const bool styles = Style::static_type_id_().is_a(type);
    for (const auto& entry : impl_->entries) {
        if (entry->object->type_id().is_a(type))
            result.push_back(entry->object.get());
        if (styles && entry->style)
            result.push_back(entry->style.get());
    }
    return result;
}

GObj* GeobaseLib::add(std::unique_ptr<GObj> object)
{
    if (!object || object->name().empty())
        throw std::invalid_argument("An object of the catalogue needs a name");
    const CString name = object->name();
    const bool taken = is_style(*object) ? impl_->style(name) != nullptr : impl_->is_name_used(name);
    if (taken)
        throw std::invalid_argument("The name " + quoted(name) + " is taken");

    auto entry = std::make_unique<Impl::Entry>();
    if (!is_style(*object))
        entry->style = std::make_unique<Style>(name);
    // Room for it here and, so that destroying needs no memory, among those that go.
    impl_->entries.reserve(impl_->entries.size() + 1);
    impl_->going.reserve(impl_->going.size() + impl_->entries.size() + 1);
    if (!is_style(*object)) {
        if (auto style = impl_->take_free_style(name))
            entry->style = std::move(style);
    }
    GObj* const added = object.get();
    entry->object = std::move(object);
    impl_->entries.push_back(std::move(entry));

    try {
        lodex::Notification<GeobaseLib>(*this).tell(impl_->observers, [this, added](CatalogueObserver* observer) {
            if (impl_->holds(added)) // a former observer may have destroyed it
                observer->object_added(added);
        });
    } catch (const std::bad_alloc&) {
        // Not everybody was told: it was never there. Those who were told hear of its end where memory allows.
        try {
            destroy(added);
        } catch (const std::bad_alloc&) {
            // gone all the same
        }
        throw;
    }
    return impl_->holds(added) ? added : nullptr;
}

void GeobaseLib::destroy(GObj* object)
{
    if (!object)
        return;
    impl_->refuse_bound_style(object);
    const auto it = impl_->position(object);
    if (it == impl_->entries.end())
        return;
    // Out of the list first: an observer that lists the catalogue anew does not see the object, and one that destroys
    // it once more does no harm.
    Impl::Entry* const entry = it->get();
    impl_->going.push_back(std::move(impl_->entries[static_cast<std::size_t>(it - impl_->entries.begin())]));
    impl_->entries.erase(it);

    // Also when an observer throws, nothing stays behind.
    struct Disposal {
        ~Disposal()
        {
            entry->object.reset();
            const auto it = std::ranges::find_if(impl.going, [this](const auto& e) { return e.get() == entry; });
            const std::unique_ptr<Impl::Entry> last = std::move(*it); // dies when the list is in order again
            impl.going.erase(it);
        }
        Impl& impl;
        Impl::Entry* entry;
    };
    const Disposal disposal{*impl_, entry};
    lodex::Notification<GeobaseLib>(*this).tell(
        impl_->observers, [object](CatalogueObserver* observer) { observer->object_removed(object); });
}

void GeobaseLib::rename(GObj* object, const CString& name)
{
    if (!object)
        return;
    impl_->refuse_bound_style(object);
    if (!impl_->holds(object) || object->name() == name)
        return;
    if (name.empty())
        throw std::invalid_argument("An object of the catalogue needs a name");
    const bool taken = is_style(*object) ? impl_->style(name) != nullptr : impl_->is_name_used(name);
    if (taken)
        throw std::invalid_argument("The name " + quoted(name) + " is taken");

    const std::unique_ptr<Style> replaced = is_style(*object) ? nullptr : impl_->take_free_style(name);
    Style* const style = (*impl_->position(object))->style.get();
    CString new_name = name, style_name = name; // copied before anything changes
    const CString former = std::exchange(object->name_, std::move(new_name));
    if (style)
        static_cast<GObj*>(style)->name_ = std::move(style_name);

    lodex::Notification<GeobaseLib>(*this).tell(impl_->observers, [&, this](CatalogueObserver* observer) {
        if (impl_->holds(object))
            observer->object_renamed(object, former);
    });
    if (impl_->holds(object) && style)
        style->notify_renamed();
    if (impl_->holds(object))
        object->notify_renamed();
}

void GeobaseLib::clear()
{
    while (!impl_->entries.empty())
        destroy(impl_->entries.back()->object.get());
}

MapCoordinateSystem* GeobaseLib::default_map_coordinate_system()
{
    return &lodex::project_coordinate_system();
}

void GeobaseLib::attach(CatalogueObserver* observer)
{
    if (observer && std::ranges::find(impl_->observers, observer) == impl_->observers.end())
        impl_->observers.push_back(observer);
}

void GeobaseLib::detach(CatalogueObserver* observer)
{
    std::erase(impl_->observers, observer);
}

} // namespace Lodex

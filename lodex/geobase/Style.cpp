#include <Lodex/geobase/Style.h>

#include <Lodex/utils/COSNameList.h>

#include <lodex/geobase/Notification.h>

#include <utility>

namespace Lodex {

using lodex::Notification;

namespace {
constexpr const char* painted_sections = "*sections";
}

Style::~Style()
{
    Notification<Style>::subject_gone(*this);
    while (!observers_.empty()) {
        StyleObserver* const observer = observers_.front();
        observers_.erase(observers_.begin());
        observer->disconnect();
    }
}

const TypeId& Style::static_type_id_()
{
    static constexpr TypeId type("Style", nullptr);
    return type;
}

void Style::name_list(const CString& key, COSNameList& names) const
{
    names.clear();
    if (key != CString("attributes"))
        return;
    for (const auto& [name, value] : attributes_)
        names.append(name);
}

CString Style::attribute(const CString& name) const
{
    const auto it = attributes_.find(name.str());
    return it == attributes_.end() ? CString() : CString(it->second);
}

void Style::set_attribute(const CString& name, const CString& value)
{
    attributes_[name.str()] = value.str();
    if (std::ranges::find(pending_, name.str()) == pending_.end())
        pending_.push_back(name.str());
}

void Style::copy_attributes(const Style& other)
{
    if (&other == this)
        return;
    for (const auto& [name, value] : other.attributes_) {
        if (name != painted_sections)
            set_attribute(name, value);
    }
}

void Style::update()
{
    const auto set = std::exchange(pending_, {});
    if (set.empty())
        return;
    StyleInfo info;
    if (set.size() == 1)
        info.attribute = set.front();
    Notification<Style> round(*this);
    round.tell(observers_, [&info](StyleObserver* observer) { observer->update(&info); });
    if (round.alive())
        notify();
}

void Style::attach_style(StyleObserver* observer)
{
    if (observer && std::ranges::find(observers_, observer) == observers_.end())
        observers_.push_back(observer);
}

void Style::detach_style(StyleObserver* observer)
{
    std::erase(observers_, observer);
}

} // namespace Lodex

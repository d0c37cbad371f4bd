#include "propertyupscale/UpscaleCommand.h"

#include "frame/CommandText.h"

#include <Kelvane/upscaling/Upscaler.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/FactoryLib.h>

#include <QCoreApplication>

#include <algorithm>

namespace Kelvane {

using Lodex::to_cstring;

namespace {

/// The power that upscalers are asked about.
constexpr double domain_test_power = 1.0;

/// The texts of the refusals belong to the dialog.
struct Dialog {
    Q_DECLARE_TR_FUNCTIONS(Kelvane::LQSGPropertyUpscaleDialog)
};

/// Puts the pieces of the command one behind the other. A step returns false when its choice will not do.
class Composer {
public:
    Composer(const UpscaleChoices& choices, std::ostream& messages)
        : choices_(choices), kind_(choices.kind()), messages_(messages), command_(command_stream())
    {
    }

    [[nodiscard]] bool compose()
    {
        return grids() && fine_property() && coarse_property() && methods() && parameters() && replacements() &&
               options();
    }
    [[nodiscard]] std::string text() const { return command_.str(); }

private:
    [[nodiscard]] bool grids();
    [[nodiscard]] bool fine_property();
    [[nodiscard]] bool fine_permeability();
    [[nodiscard]] bool coarse_property();
    [[nodiscard]] bool methods();
    [[nodiscard]] bool parameters();
    [[nodiscard]] bool weights();
    [[nodiscard]] bool sampling();
    [[nodiscard]] bool replacements();
    [[nodiscard]] bool positive_replacement(const char* like_x, const char* value_keyword,
                                            const UpscaleChoices::Replacement& replacement, const QString& message);
    [[nodiscard]] bool no_data_replacement();
    [[nodiscard]] bool options();

    [[nodiscard]] bool refuse(const QString& message)
    {
        messages_ << to_cstring(message) << '\n';
        return false;
    }
    template <class Value> void keyword(const char* name, const Value& value)
    {
        command_ << ' ' << name << ' ' << value;
    }
    void keyword(const char* name, const QString& value) { keyword(name, to_cstring(value)); }
    void keyword(const char* name, bool on) { keyword(name, flag_text(on)); }
    void quoted(const char* name, const QString& value) { keyword(name, '"' + to_cstring(value).str() + '"'); }
    void along_axes(const std::array<const char*, 3>& names, const std::array<QString, 3>& values)
    {
        for (std::size_t axis = 0; axis < names.size(); ++axis)
            keyword(names[axis], values[axis]);
    }
    [[nodiscard]] static QString with_plus_signs(const QString& text);
    [[nodiscard]] static QString region_value(const UpscaleChoices::Regions& regions);
    [[nodiscard]] static std::array<QString, 3> three_times(const QString& name) { return {name, name, name}; }

    const UpscaleChoices& choices_;
    PropertyClass kind_;
    std::ostream& messages_;
    std::ostringstream command_;
};

QString Composer::with_plus_signs(const QString& text)
{
    Lodex::CopyCString copy(to_cstring(text));
    replace_characters(copy, ' ', '+');
    return Lodex::to_qstring(copy);
}

QString Composer::region_value(const UpscaleChoices::Regions& regions)
{
    return regions.on && !regions.names.isEmpty() ? with_plus_signs(regions.names) : QStringLiteral("everywhere");
}

bool Composer::grids()
{
    if (choices_.fine_grid.isEmpty())
        return refuse(Dialog::tr("Please choose a fine sgrid name"));
    if (choices_.coarse_grid.isEmpty())
        return refuse(Dialog::tr("Please choose a coarse sgrid name"));
    command_ << "lodex on SGrid " << to_cstring(choices_.fine_grid);
    return true;
}

bool Composer::fine_property()
{
    // The verb carries its blank and the next keyword its own, so two blanks stand between them.
    const QString region = region_value(choices_.fine_regions);
    switch (kind_) {
    case PropertyClass::Porosity:
        if (choices_.fine_property.isEmpty())
            return refuse(Dialog::tr("Please choose a fine porosity name"));
        command_ << " upscale_porosity ";
        keyword("fine_region_name", region);
        keyword("fine_porosity", with_plus_signs(choices_.fine_property));
        return true;
    case PropertyClass::Permeability:
        return fine_permeability();
    case PropertyClass::Indicator:
        if (choices_.fine_property.isEmpty())
            return refuse(Dialog::tr("Please choose a fine property name"));
        command_ << " upscale_indicator ";
        keyword("fine_region_name", region);
        keyword("fine_indicator", choices_.fine_property);
        return true;
    case PropertyClass::None:
        break;
    }
    return true;
}

bool Composer::fine_permeability()
{
    std::array<QString, 3> names = three_times(choices_.fine_property);
    if (takes_tensor(choices_.method)) {
        names = choices_.fine_permeability;
        if (names[0].isEmpty())
            return refuse(Dialog::tr("Please choose a fine permeability I name"));
        if (names[1].isEmpty())
            return refuse(Dialog::tr("Please choose a fine permeability J name"));
        if (names[2].isEmpty())
            return refuse(Dialog::tr("Please choose a fine permeability K name"));
    } else if (choices_.fine_property.isEmpty()) {
        return refuse(Dialog::tr("Please choose a fine permeability name"));
    }
    command_ << " upscale_permeability ";
    keyword("fine_region_name", region_value(choices_.fine_regions));
    along_axes({"fine_Perm_I", "fine_Perm_J", "fine_Perm_K"}, names);
    return true;
}

bool Composer::coarse_property()
{
    keyword("Coarse", choices_.coarse_grid);
    keyword("coarse_region_name", region_value(choices_.coarse_regions));
    switch (kind_) {
    case PropertyClass::Porosity:
        keyword("coarse_porosity", choices_.coarse_property);
        break;
    case PropertyClass::Permeability:
        along_axes({"coarse_Perm_I", "coarse_Perm_J", "coarse_Perm_K"},
                   gives_tensor(choices_.method) ? choices_.coarse_permeability
                                                 : three_times(choices_.coarse_property));
        break;
    case PropertyClass::Indicator:
        keyword("coarse_indicator", choices_.coarse_property);
        break;
    case PropertyClass::None:
        break;
    }
    return true;
}

bool Composer::methods()
{
    quoted("mapper", choices_.mapper);
    quoted("upscaler", choices_.method);
    return true;
}

bool Composer::parameters()
{
    switch (kind_) {
    case PropertyClass::Porosity:
        keyword("power", choices_.power);
        return weights();
    case PropertyClass::Permeability:
        keyword("power", choices_.power);
        return sampling();
    case PropertyClass::Indicator:
    case PropertyClass::None:
        break;
    }
    return true;
}

bool Composer::weights()
{
    keyword("weight_using_volume", choices_.weight_by_volume);
    keyword("weight_using_property", choices_.weight_by_property);
    if (!choices_.weight_by_property)
        return true;
    if (choices_.weight_property.isEmpty())
        return refuse(Dialog::tr("Please choose a property name for weight"));
    keyword("weight_property_name", with_plus_signs(choices_.weight_property));
    return true;
}

bool Composer::sampling()
{
    const auto& counts = choices_.sampling_counts;
    if (std::ranges::any_of(counts, [](int count) { return count <= 0; }))
        return refuse(Dialog::tr("Please enter strictly positive interger for the sampling"));
    keyword("n_I", counts[0]);
    keyword("n_J", counts[1]);
    keyword("n_K", counts[2]);
    keyword("manual_sampling", choices_.sampling);
    return true;
}

bool Composer::replacements()
{
    return positive_replacement("zero_like_x", "zero_value", choices_.zero,
                                Dialog::tr("Please enter strictly positive value for treatment of 0")) &&
           positive_replacement("neg_like_x", "neg_value", choices_.negative,
                                Dialog::tr("Please enter strictly positive value for treatment of negative values")) &&
           no_data_replacement();
}

bool Composer::positive_replacement(const char* like_x, const char* value_keyword,
                                    const UpscaleChoices::Replacement& replacement, const QString& message)
{
    keyword(like_x, replacement.on);
    if (!replacement.on)
        return true;
    if (!(replacement.value > 0))
        return refuse(message);
    keyword(value_keyword, replacement.value);
    return true;
}

bool Composer::no_data_replacement()
{
    const UpscaleChoices::Replacement& replacement = choices_.no_data;
    keyword("ndv_like_x", replacement.on);
    if (!replacement.on)
        return true;

    const auto* factory = dynamic_cast<const UpscalerFactory*>(Lodex::FactoryLib::instance()->find(
        KelvaneGridObjUpscalerFactoriesDomain(), to_cstring(choices_.method)));
    const std::unique_ptr<Upscaler> upscaler = factory ? factory->create() : nullptr;
    if (!upscaler)
        return false;
    const bool negative_refused = !upscaler->accepts_negative(domain_test_power) && replacement.value < 0;
    const bool zero_refused = !upscaler->accepts_zero(domain_test_power) && replacement.value == 0;
    if (negative_refused || zero_refused)
        return refuse(Dialog::tr("Please enter strictly positive value for treatment of NDV"));
    keyword("ndv_value", replacement.value);
    return true;
}

bool Composer::options()
{
    if (kind_ == PropertyClass::Permeability) {
        keyword("boundary", choices_.boundary == UpscaleChoices::Unconfined  ? "Unconfined"
                            : choices_.boundary == UpscaleChoices::KConfined ? "KConfined"
                                                                             : "Confined");
        if (takes_exact(choices_.method))
            keyword("exact", choices_.solver);
    }
    keyword("create_region_if_problems", choices_.problem_region);
    keyword("do_fault_management", choices_.fault_management);
    command_ << '\0';
    return true;
}

} // namespace

int replace_characters(Lodex::CopyCString& text, char from, char to)
{
    int count = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == from) {
            text[i] = to;
            ++count;
        }
    }
    return count;
}

bool compose_upscale_command(const UpscaleChoices& choices, std::ostream& messages, std::ostream& command)
{
    Composer composer(choices, messages);
    const bool complete = composer.compose();
    command << composer.text();
    return complete;
}

} // namespace Kelvane

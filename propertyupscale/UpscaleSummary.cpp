#include "propertyupscale/UpscaleSummary.h"

#include <QCoreApplication>

namespace Kelvane {

namespace {

/// The texts of this page belong to the dialog.
struct Dialog {
    Q_DECLARE_TR_FUNCTIONS(Kelvane::LQSGPropertyUpscaleDialog)
};

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

QString joined(const std::array<QString, 3>& names)
{
    return escaped(names[0]) + u';' + escaped(names[1]) + u';' + escaped(names[2]);
}

QString grids(const UpscaleChoices& choices)
{
    QString text = Dialog::tr("<b>Fine grid:</b> %1<br>").arg(escaped(choices.fine_grid));
    text += Dialog::tr("<b>Coarse grid:</b> %1<br>").arg(escaped(choices.coarse_grid));
    if (choices.fine_regions.on)
        text += Dialog::tr(" <b>Fine grid regions:</b> %1<br>").arg(escaped(choices.fine_regions.names));
    if (choices.coarse_regions.on)
        text += Dialog::tr(" <b>Coarse grid regions:</b> %1<br>").arg(escaped(choices.coarse_regions.names));
    return text + Dialog::tr("<br>");
}

QString properties(const UpscaleChoices& choices)
{
    const bool permeability = choices.kind() == PropertyClass::Permeability;
    QString text;
    if (permeability && summary_shows_fine_tensor(choices.method))
        text += Dialog::tr(" <b>Fine grid property:</b> ") + joined(choices.fine_permeability) + Dialog::tr("<br>");
    else if (permeability)
        text += Dialog::tr(" <b>Fine grid property:</b> %1<br>").arg(escaped(choices.fine_property));
    else
        text += Dialog::tr(" <b>Fine grid property:</b><br>"); // the name is not shown here
    if (permeability && summary_shows_coarse_tensor(choices.method))
        text += Dialog::tr(" <b>Coarse grid property:</b> ") + joined(choices.coarse_permeability) + Dialog::tr("<br>");
    else
        text += Dialog::tr(" <b>Coarse grid property:</b> %1<br>").arg(escaped(choices.coarse_property));
    return text + Dialog::tr("<br>");
}

QString mapping(const UpscaleChoices& choices)
{
    return Dialog::tr(" <b>Mapper:</b> %1<br>").arg(escaped(choices.mapper)) +
           Dialog::tr(" <b> Take faults into account:</b>") +
           (choices.fault_management ? Dialog::tr("On <br>") : Dialog::tr("Off <br>"));
}

QString permeability_parameters(const UpscaleChoices& choices)
{
    QString text = Dialog::tr(" <b>Adaptive sampling:</b> ") +
                   (choices.sampling == UpscaleChoices::Adaptive ? Dialog::tr("On") : Dialog::tr("Off")) +
                   Dialog::tr("<br>");
    text += Dialog::tr(" I:%1  J:%2 K:%3 <br>")
                .arg(escaped(choices.sampling_texts[0]), escaped(choices.sampling_texts[1]),
                     escaped(choices.sampling_texts[2]));
    if (summary_shows_boundary(choices.method))
        text += Dialog::tr(" <b>Boundary Conditions:</b> ") +
                (choices.boundary == UpscaleChoices::Unconfined  ? Dialog::tr("Unconfined")
                 : choices.boundary == UpscaleChoices::KConfined ? Dialog::tr("K-Confined")
                                                                 : Dialog::tr("Confined")) +
                Dialog::tr("<br>");
    if (summary_shows_solver(choices.method))
        text += Dialog::tr(" <b>Solver method:</b> ") +
                (choices.solver != UpscaleChoices::Approximate ? Dialog::tr("Exact") : Dialog::tr("Approximate")) +
                Dialog::tr("<br>");
    return text;
}

QString method(const UpscaleChoices& choices)
{
    QString text = Dialog::tr(" <b>Property type:</b> ") + escaped(choices.property_class) + Dialog::tr("<br>");
    text += Dialog::tr(" <b>Method:</b> ") + escaped(choices.method) + Dialog::tr("<br>");
    const PropertyClass kind = choices.kind();
    if (kind == PropertyClass::Porosity && choices.weight_by_volume)
        text += Dialog::tr(" <b>Weight by cell volume:</b> On <br>");
    if (kind == PropertyClass::Porosity && choices.weight_by_property)
        text += Dialog::tr(" <b>Weight by product of properties:</b> %1<br>").arg(escaped(choices.weight_property));
    if (kind == PropertyClass::Permeability)
        text += permeability_parameters(choices);
    return text + Dialog::tr("<br>");
}

QString replacement(const UpscaleChoices::Replacement& chosen)
{
    return chosen.on ? escaped(chosen.text) + Dialog::tr("<br>") : Dialog::tr("Off<br>");
}

QString processing(const UpscaleChoices& choices)
{
    return Dialog::tr(" <b>Pre-processing Options:</b> <br>") + //
           Dialog::tr(" <b>Set 0 to:</b> ") + replacement(choices.zero) +
           Dialog::tr(" <b>Set negative values to:</b> ") + replacement(choices.negative) +
           Dialog::tr(" <b>Set no-data values to:</b> ") + replacement(choices.no_data) + //
           Dialog::tr(" <br>") + Dialog::tr(" <b>Post-processing Options:</b>") +
           (choices.problem_region ? Dialog::tr(" Create regions<br>") : Dialog::tr(" Off<br>")) + Dialog::tr(" <br>");
}

} // namespace

QString upscale_summary(const UpscaleChoices& choices)
{
    return grids(choices) + properties(choices) + mapping(choices) + method(choices) + processing(choices);
}

QString summary_error_block(const QString& message)
{
    return Dialog::tr("<b><font color=\"#ff0000\"> ") + escaped(message) + Dialog::tr("</font></b>") +
           Dialog::tr("<br>") + Dialog::tr("<br>");
}

} // namespace Kelvane

#include "propertyupscale/LQSGPropertyUpscaleDialog.h"

#include "frame/CommandText.h"
#include "frame/Help.h"
#include "propertyupscale/UpscaleCommand.h"
#include "propertyupscale/UpscaleSummary.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/CommandExecuter.h>
#include <Lodex/interpreter/ICommandStub.h>
#include <Lodex/qtools/LQDialogTools.h>
#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/COSUri.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/GridObjCellMapper.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QSignalBlocker>
#include <QTextEdit>

#include <algorithm>
#include <utility>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;
using Lodex::to_qstring;

namespace {

constexpr const char* source_unit = "xmpropertyupscale";

/// Topic of the wizard as a whole; the first page has no other.
constexpr const char* general_topic = "dox_SGridUpscalePropertyDialog";
constexpr std::array<const char*, 6> page_topics = {general_topic,
                                                    "dox_SGridUpscalePropMappingMethod",
                                                    "dox_SGridUpscalePropUpscalingMethod",
                                                    "dox_SGridUpscalePropertyDefinitions",
                                                    "dox_SGridUpscalePropPreprocessing",
                                                    "dox_SGridUpscalePropPostProcessing"};

[[nodiscard]] QString first_line(const std::ostringstream& messages)
{
    const std::string text = messages.str();
    return QString::fromStdString(text.substr(0, text.find('\n')));
}

/// The field of a page that Tab comes to first; null when there is none.
[[nodiscard]] QWidget* first_field(QWidget* page)
{
    QWidget* window = page->window();
    for (QWidget* field = window->nextInFocusChain(); field != window; field = field->nextInFocusChain()) {
        if (page->isAncestorOf(field) && field->isVisibleTo(page) && field->isEnabled() &&
            (field->focusPolicy() & Qt::TabFocus))
            return field;
    }
    return nullptr;
}

[[nodiscard]] QStringList mappers_of(const Lodex::CString& family)
{
    Lodex::COSNameList paths;
    Lodex::GridObjCellMapper::mapper_list_names(paths, family);
    QStringList names;
    for (const Lodex::CString& path : paths)
        names.append(shown_name(path));
    return names;
}

} // namespace

LQSGPropertyUpscaleDialog::LQSGPropertyUpscaleDialog()
    : QWizard(Lodex::LQDialogTools::active_top_widget()), help_topic_(general_topic)
{
}

LQSGPropertyUpscaleDialog::~LQSGPropertyUpscaleDialog() = default;

void LQSGPropertyUpscaleDialog::init(Lodex::ICommandStub* stub)
{
    const std::array<std::pair<const char*, Lodex::LQMultiComboBox*>, 5> needed = {{
        {"fine_gridSelector_", fine_gridSelector_},
        {"fine_prop_cb_", fine_prop_cb_},
        {"fine_prop_i_cb_", fine_prop_i_cb_},
        {"fine_prop_j_cb_", fine_prop_j_cb_},
        {"fine_prop_k_cb_", fine_prop_k_cb_},
    }};
    for (const auto& [name, widget] : needed) {
        if (!widget) {
            Lodex::Lodex_assert_internal_error(source_unit, __LINE__,
                                               Format(to_cstring(tr("Pointer is nil: %1\n"))).arg(name));
            return;
        }
    }
    if (!stub)
        return;
    Lodex::CopyCString value;
    if (stub->get("sgrid", value) && update_sgrid(to_qstring(value)))
        fine_gridSelector_->setSelectedItems({to_qstring(value)});
    if (stub->get("property", value)) {
        const QString property = to_qstring(Lodex::COSUri(value).name());
        for (Lodex::LQMultiComboBox* selector :
             {fine_prop_cb_.data(), fine_prop_i_cb_.data(), fine_prop_j_cb_.data(), fine_prop_k_cb_.data()}) {
            if (selector->items().contains(property))
                selector->setSelectedItems({property});
        }
    }
}

Lodex::SGrid* LQSGPropertyUpscaleDialog::update_sgrid(const QString& name)
{
    return static_cast<Lodex::SGrid*>(
        Lodex::GeobaseLib::instance()->find(to_cstring(name), Lodex::SGrid::static_type_id_()));
}

int LQSGPropertyUpscaleDialog::replace(Lodex::CopyCString& text, char from, char to)
{
    return replace_characters(text, from, to);
}

void LQSGPropertyUpscaleDialog::on_fine_sgrid_name_change()
{
    const Lodex::CString name = to_cstring(fine_gridSelector_->currentText());
    fine_regions_.observer->update_gobj(name);
    for (const auto& observer : fine_properties_)
        observer->update_gobj(name);
    weight_property_->setObject(update_sgrid(fine_gridSelector_->currentText()));
    update_mappers();
}

void LQSGPropertyUpscaleDialog::on_coarse_sgrid_name_change()
{
    const Lodex::CString name = to_cstring(coarse_gridSelector_->currentText());
    coarse_regions_.observer->update_gobj(name);
    for (const auto& observer : coarse_properties_)
        observer->update_gobj(name);
    update_mappers();
}

void LQSGPropertyUpscaleDialog::update_mappers()
{
    const Lodex::SGrid* fine = update_sgrid(fine_gridSelector_->currentText());
    const Lodex::SGrid* coarse = update_sgrid(coarse_gridSelector_->currentText());
    if (!fine || !coarse)
        return;
    QStringList names = mappers_of(Lodex::GeoSGridCellMapper::type());
    if (fine->sgrid_activity_model() && coarse->sgrid_activity_model())
        names += mappers_of(Lodex::MetaSGridCellMapper::type());
    const QString chosen = mapper_->currentText();
    mapper_->clear();
    mapper_->addItems(names);
    mapper_->setCurrentIndex(names.isEmpty() ? -1 : std::max<int>(0, static_cast<int>(names.indexOf(chosen))));
}

PropertyClass LQSGPropertyUpscaleDialog::property_class() const
{
    return property_class_of(property_class_->currentText());
}

void LQSGPropertyUpscaleDialog::on_property_class_change(const QString& property_class)
{
    const QStringList methods = method_names(property_class_of(property_class));
    {
        const QSignalBlocker blocker(method_);
        method_->clear();
        method_->addItems(methods);
    }
    if (methods.isEmpty())
        Logger::error(Format(to_cstring(tr("No method associated to the property class\n"))));
    on_method_change(method_->currentText());
}

void LQSGPropertyUpscaleDialog::on_method_change(const QString&)
{
    update_method_frame();
    update_fine_property_frame();
    update_coarse_property_frame();
}

void LQSGPropertyUpscaleDialog::update_method_frame()
{
    const QString method = method_->currentText();
    const bool porosity = property_class() == PropertyClass::Porosity;
    const bool weights = porosity && takes_weights(method);
    power_frame_->setVisible(takes_power(method));
    weight_volume_frame_->setVisible(weights);
    weight_property_frame_->setVisible(weights);
    if (porosity && !weights) {
        weight_volume_->setChecked(false);
        weight_property_switch_->setChecked(false);
    }
    sampling_frame_->setVisible(property_class() == PropertyClass::Permeability);
    boundary_frame_->setVisible(takes_boundary(method));
    exact_frame_->setVisible(takes_exact(method));
}

void LQSGPropertyUpscaleDialog::show_tensor(QWidget* scalar, QWidget* tensor, bool on)
{
    scalar->setVisible(!on);
    tensor->setVisible(on);
}

void LQSGPropertyUpscaleDialog::update_fine_property_frame()
{
    const bool tensor = property_class() == PropertyClass::Permeability && takes_tensor(method_->currentText());
    show_tensor(fine_scalar_frame_, fine_tensor_frame_, tensor);
    const Lodex::CString name = to_cstring(fine_gridSelector_->currentText());
    for (std::size_t i = tensor ? 1 : 0; i < (tensor ? fine_properties_.size() : 1); ++i)
        fine_properties_[i]->update_gobj(name);
}

void LQSGPropertyUpscaleDialog::update_coarse_property_frame()
{
    const bool tensor = property_class() == PropertyClass::Permeability && gives_tensor(method_->currentText());
    show_tensor(coarse_scalar_frame_, coarse_tensor_frame_, tensor);
    const Lodex::CString name = to_cstring(coarse_gridSelector_->currentText());
    for (std::size_t i = tensor ? 1 : 0; i < (tensor ? coarse_properties_.size() : 1); ++i)
        coarse_properties_[i]->update_gobj(name);
}

UpscaleChoices LQSGPropertyUpscaleDialog::choices() const
{
    const auto regions = [](const RegionChoice& choice) {
        return UpscaleChoices::Regions{choice.on->isChecked(), choice.names->currentText()};
    };
    const auto replacement = [](const ReplacementChoice& choice) {
        return UpscaleChoices::Replacement{choice.on->isChecked(), choice.value->text(), choice.value->value()};
    };
    UpscaleChoices chosen;
    chosen.fine_grid = fine_gridSelector_->currentText();
    chosen.coarse_grid = coarse_gridSelector_->currentText();
    chosen.fine_regions = regions(fine_regions_);
    chosen.coarse_regions = regions(coarse_regions_);
    chosen.mapper = mapper_->currentText();
    chosen.fault_management = fault_management_->isChecked();
    chosen.property_class = property_class_->currentText();
    chosen.method = method_->currentText();
    chosen.power = power_->text();
    chosen.weight_by_volume = weight_volume_->isChecked();
    chosen.weight_by_property = weight_property_switch_->isChecked();
    chosen.weight_property = weight_property_->currentText();
    chosen.sampling = sampling_->checkedId();
    chosen.boundary = boundary_->checkedId();
    chosen.solver = exact_->checkedId();
    for (std::size_t axis = 0; axis < 3; ++axis) {
        chosen.sampling_texts[axis] = sampling_counts_[axis]->text();
        chosen.sampling_counts[axis] = sampling_counts_[axis]->value();
        chosen.coarse_permeability[axis] = coarse_tensor_[axis]->currentText();
    }
    chosen.fine_property = fine_prop_cb_->currentText();
    chosen.fine_permeability = {fine_prop_i_cb_->currentText(), fine_prop_j_cb_->currentText(),
                                fine_prop_k_cb_->currentText()};
    chosen.coarse_property = coarse_prop_cb_->currentText();
    chosen.zero = replacement(zero_);
    chosen.negative = replacement(negative_);
    chosen.no_data = replacement(no_data_);
    chosen.problem_region = problem_region_->isChecked();
    return chosen;
}

bool LQSGPropertyUpscaleDialog::check(std::ostream& messages, std::ostream& command) const
{
    return compose_upscale_command(choices(), messages, command);
}

void LQSGPropertyUpscaleDialog::update_summary(QTextEdit* box)
{
    summary_text_ = upscale_summary(choices());
    std::ostringstream messages, command;
    if (!check(messages, command))
        summary_text_.prepend(summary_error_block(first_line(messages)));
    box->setHtml(summary_text_);
}

bool LQSGPropertyUpscaleDialog::process()
{
    if (executing_)
        return false;
    std::ostringstream messages;
    std::ostringstream command = command_stream();
    if (!check(messages, command)) {
        // A method without a factory is refused without a word.
        if (const QString message = first_line(messages); !message.isEmpty())
            Logger::fatal(Format("%1\n").arg(to_cstring(message)));
        return false;
    }
    executing_ = true;
    Lodex::CommandExecuterAction::execute(command);
    executing_ = false;
    return true;
}

void LQSGPropertyUpscaleDialog::on_ok()
{
    if (process())
        QDialog::accept();
}

void LQSGPropertyUpscaleDialog::accept()
{
    process();
}

void LQSGPropertyUpscaleDialog::done(int result)
{
    if (!executing_)
        QWizard::done(result);
}

void LQSGPropertyUpscaleDialog::on_help()
{
    show_help(help_topic_key(help_topic_));
}

void LQSGPropertyUpscaleDialog::showPage(QWidget* page)
{
    const QList<int> ids = pageIds();
    const auto at = std::ranges::find_if(ids, [&](int id) { return page && this->page(id) == page; });
    if (at == ids.end())
        return; // between two starts there is no page
    const auto index = static_cast<std::size_t>(at - ids.begin());
    if (page == currentPage()) {
        if (QWidget* field = first_field(page))
            field->setFocus();
    }
    QAbstractButton* button = this->button(QWizard::HelpButton);
    disconnect(button, &QAbstractButton::clicked, this, &LQSGPropertyUpscaleDialog::on_ok);
    disconnect(button, &QAbstractButton::clicked, this, &LQSGPropertyUpscaleDialog::on_help);
    if (index == Summary) {
        update_summary(summary_);
        setButtonText(QWizard::HelpButton, tr("OK"));
        button->setToolTip(tr("Apply (close window)"));
        connect(button, &QAbstractButton::clicked, this, &LQSGPropertyUpscaleDialog::on_ok);
        return;
    }
    setButtonText(QWizard::HelpButton, tr("Help"));
    button->setToolTip(tr("Launch help"));
    connect(button, &QAbstractButton::clicked, this, &LQSGPropertyUpscaleDialog::on_help);
    help_topic_ = index < page_topics.size() ? page_topics[index] : general_topic;
    if (index == Mapping)
        update_mappers(); // a grid may have got its layers or its history meanwhile
}

} // namespace Kelvane

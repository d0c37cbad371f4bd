#include "flowunit/LQFlowUnitDialog.h"

#include "flowunit/LQFlowUnitWidget.h"

#include "frame/CommandText.h"
#include "frame/DeleteAction.h"
#include "frame/Help.h"
#include "frame/LQDialogFrame.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/ICommandStub.h>
#include <Lodex/qtools/LQDialogTools.h>
#include <Lodex/qtools/LQMultiComboBox.h>
#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/xtools/LQObjectSelectors.h>
#include <Lodex/xtools/XMQShell.h>

#include <QButtonGroup>
#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;
using Lodex::to_qstring;

namespace {

constexpr const char* source_unit = "xmflowunit";
constexpr double default_percentage = 50.0;

/// Buttons of the region group, from the top.
enum RegionButton { AllCells, CellShare, MostProbable, VolumeShare };

} // namespace

LQFlowUnitDialog::LQFlowUnitDialog() = default;

LQFlowUnitDialog::~LQFlowUnitDialog() = default;

Lodex::XMShell* LQFlowUnitDialog::build_shell()
{
    auto* body = new LQDialogFrame(Lodex::LQDialogTools::active_top_widget());
    flow_unit_panel_ = new LQFlowUnitWidget(body);
    flow_unit_panel_->setObjectName("flow_unit_panel_");
    body->add_banner(QString());
    body->box()->addWidget(flow_unit_panel_, 1);
    build_extension(body);
    body->box()->addWidget(advanced_frame_);
    body->box()->addWidget(extension_);
    build_buttons(body, body->box());
    connect(body, &LQDialogFrame::cancelled, this, &LQFlowUnitDialog::cancel);

    shell_ = new Lodex::XMQShell(body, "SGridFlowUnitShell", tr("Flow Unit Analysis"));
    shell_->set_delete_action(new DeleteAction<LQFlowUnitDialog>(this));
    // The window may also go with its parent.
    connect(body, &QObject::destroyed, this, &QObject::deleteLater);
    return shell_;
}

void LQFlowUnitDialog::build_buttons(QWidget* parent, QVBoxLayout* box)
{
    auto* row = new QHBoxLayout;
    const auto add = [&](const char* name, const QString& text, const QString& tip) {
        auto* button = new QPushButton(text, parent);
        button->setObjectName(name);
        button->setToolTip(tip);
        button->setAutoDefault(false);
        row->addWidget(button);
        return button;
    };
    advanced_button_ = add("advanced_button_", tr("Advanced"), tr("Click here to display the advanced parameters"));
    advanced_button_->setFlat(true);
    advanced_button_->setCheckable(true);
    connect(advanced_button_, &QPushButton::toggled, this, &LQFlowUnitDialog::show_extension);
    auto* save_text = add("save_text_button", tr("Save as Text..."),
                          tr("Save in file using text format (tab separated, Excel compatible)."));
    save_text->setIcon(Lodex::LQPixmapLib::icon("filesave"));
    connect(save_text, &QPushButton::clicked, this, &LQFlowUnitDialog::on_save_text);
    row->addStretch(1);
    connect(add("ok_button", tr("OK"), tr("Launch upgridding process (close window)")), &QPushButton::clicked, this,
            &LQFlowUnitDialog::on_ok);
    connect(add("apply_button", tr("Apply"), tr("Launch upgridding process (leave window open)")),
            &QPushButton::clicked, this, &LQFlowUnitDialog::apply);
    connect(add("cancel_button", tr("Cancel"), tr("Cancel (close window)")), &QPushButton::clicked, this,
            &LQFlowUnitDialog::cancel);
    connect(add("help_button", tr("Help"), tr("Launch help")), &QPushButton::clicked, this, &LQFlowUnitDialog::on_help);
    box->addLayout(row);
}

void LQFlowUnitDialog::build_extension(QWidget* parent)
{
    advanced_frame_ = new QFrame(parent);
    advanced_frame_->setObjectName("advanced_frame_");
    advanced_frame_->setFrameStyle(QFrame::HLine | QFrame::Sunken);

    extension_ = new QWidget(parent);
    extension_->setObjectName("extension_");
    auto* columns = new QGridLayout(extension_);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setColumnStretch(2, 1);
    const auto new_check_box = [&](const char* name, const QString& text, const QString& tip, bool on) {
        auto* check_box = new QCheckBox(text, extension_);
        check_box->setObjectName(name);
        check_box->setToolTip(tip);
        check_box->setChecked(on);
        return check_box;
    };
    copy_fb_regions_ = new_check_box("copy_fb_regions_", tr("Create fault block regions"), QString(), true);
    copy_regions_ = new_check_box("copy_regions_", tr("Copy regions"),
                                  tr("Copy regions to the new grid. Model regions and layers are always preserved."),
                                  true);
    model_info_ = new_check_box("model_info_", tr("Build grid from stratigraphic model"),
                                tr("Use the stratigraphic model information to rebuild the grid."), false);
    region_list_ = new Lodex::LQMultiComboBox(extension_);
    region_list_->setObjectName("region_list_");
    region_list_->setMultiSelection(true);
    region_list_->setToolTip(tr("Select regions to copy."));
    region_list_->setMinimumContentsLength(20);
    region_observer_ = std::make_unique<SGridObserver>(region_list_, "regions_plus", "region_0", false, true, false);

    auto* regions = new QHBoxLayout;
    regions->addWidget(copy_regions_);
    regions->addWidget(region_list_, 1);
    columns->addWidget(copy_fb_regions_, 0, 0);
    columns->addLayout(regions, 1, 0);
    columns->addWidget(model_info_, 2, 0);
    columns->setRowStretch(3, 1);
    columns->addWidget(build_region_modes(extension_), 0, 1, 4, 1);

    connect(copy_regions_, &QCheckBox::toggled, this, &LQFlowUnitDialog::set_region);
    set_region(copy_regions_->isChecked());
    extension_->hide();
}

QGroupBox* LQFlowUnitDialog::build_region_modes(QWidget* parent)
{
    region_mode_group_ = new QGroupBox(tr("Copy regions from:"), parent);
    region_mode_group_->setObjectName("region_mode_group_");
    auto* rows = new QGridLayout(region_mode_group_);
    region_modes_ = new QButtonGroup(region_mode_group_);
    const auto add_mode = [&](RegionButton id, const QString& text, const QString& tip) {
        auto* button = new QRadioButton(text, region_mode_group_);
        button->setObjectName(QStringLiteral("region_mode_%1").arg(static_cast<int>(id)));
        button->setToolTip(tip);
        region_modes_->addButton(button, id);
        rows->addWidget(button, id, 0);
        return button;
    };
    const auto add_field = [&](const char* name, QRadioButton* button) {
        auto* field = new Lodex::LQDoubleLineEdit(default_percentage, region_mode_group_);
        field->setObjectName(name);
        field->setToolTip(button->toolTip());
        field->setAccessibleName(button->text());
        field->setFixedWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("100.0000")) + 16);
        rows->addWidget(field, region_modes_->id(button), 1);
        return field;
    };
    add_mode(AllCells, tr("All original cells"),
             tr("If any of the original cells is in a region, then the upscaled cell is in that region."))
        ->setChecked(true);
    number_percentile_ =
        add_field("number_percentile_", add_mode(CellShare, tr("Percentage of fine cells"),
                                                 tr("If the user defined percentage of the fine cells is in a region, "
                                                    "then the upscaled cell is in that region.")));
    add_mode(MostProbable, tr("Most probable cell regions"),
             tr("The upscaled cell is in the most probable region computed from the original cells. If more than one "
                "region have the same frequency, upscaled cell belongs to all these regions"));
    volume_percentile_ =
        add_field("volume_percentile_", add_mode(VolumeShare, tr("Percentage of fine cell volume"),
                                                 tr("If the user defined percentage of the fine cell volume is in the "
                                                    "region, then the upscaled cell is in that region.")));
    connect(region_modes_, &QButtonGroup::idReleased, this, &LQFlowUnitDialog::set_region_mode);
    set_region_mode(region_modes_->checkedId());
    return region_mode_group_;
}

void LQFlowUnitDialog::init(Lodex::ICommandStub* stub)
{
    if (!flow_unit_panel_) {
        Lodex::Lodex_assert_internal_error(source_unit, __LINE__,
                                           Format(to_cstring(tr("Pointer is nil: %1\n"))).arg("flow_unit_panel_"));
        return;
    }
    const auto parameter = [stub](const char* key, Lodex::CopyCString& value) { return stub && stub->get(key, value); };

    Lodex::CopyCString mode;
    if (parameter("mode", mode) && mode == Lodex::CString("edit"))
        create_mode_ = false;
    flow_unit_panel_->init(create_mode_);
    Lodex::LQGObjSelector* selector = flow_unit_panel_->gridSelector();
    connect(selector, &Lodex::LQMultiComboBox::selectionChanged, this, &LQFlowUnitDialog::update_region_selector,
            Qt::UniqueConnection);

    Lodex::CopyCString grid_name;
    Lodex::SGrid* grid = nullptr;
    if (parameter("sgrid", grid_name))
        grid = static_cast<Lodex::SGrid*>(
            Lodex::GeobaseLib::instance()->find(grid_name, Lodex::SGrid::static_type_id_()));
    if (grid)
        selector->setSelectedItems({to_qstring(grid->name())});
    // The host shows the window right after this: its first size must know of the controls made here.
    for (QWidget* part = flow_unit_panel_; part; part = part->parentWidget())
        part->updateGeometry();
    Lodex::CopyCString new_name;
    if (parameter("for_sgrid", new_name))
        flow_unit_panel_->newGridField()->setText(to_qstring(new_name));
    if (create_mode_)
        return;

    flow_unit_panel_->sgridSelectionChanged(grid);
    advanced_button_->hide();
    advanced_frame_->hide();
    extension_->hide();
}

void LQFlowUnitDialog::setNewGridName(const QString& name)
{
    if (flow_unit_panel_ && flow_unit_panel_->newGridField())
        flow_unit_panel_->newGridField()->setText(name);
}

void LQFlowUnitDialog::update_region_selector()
{
    region_observer_->update_gobj(to_cstring(flow_unit_panel_->gridSelector()->currentText()));
}

void LQFlowUnitDialog::set_region(bool on)
{
    region_mode_group_->setEnabled(on);
    region_list_->setEnabled(on);
}

void LQFlowUnitDialog::set_region_mode(int id)
{
    number_percentile_->setEnabled(id == CellShare);
    volume_percentile_->setEnabled(id == VolumeShare);
}

void LQFlowUnitDialog::add_widget_to_extension(QWidget* widget)
{
    auto* rows = extension_ ? qobject_cast<QGridLayout*>(extension_->layout()) : nullptr;
    if (rows && widget)
        rows->addWidget(widget, rows->rowCount(), 0, 1, -1);
}

void LQFlowUnitDialog::show_extension(bool on)
{
    if (!extension_ || on != extension_->isHidden())
        return;
    QWidget* window = extension_->window();
    const int height = window->height();
    extension_->setVisible(on);
    // From the inside out, else the window keeps the least height that it had before.
    extension_->parentWidget()->layout()->activate();
    window->layout()->activate();
    if (on) {
        window->resize(window->width(), height + extension_->sizeHint().height() +
                                            extension_->parentWidget()->layout()->spacing());
        grown_by_ = window->height() - height;
    } else {
        window->resize(window->width(), height - grown_by_);
    }
    advanced_button_->setChecked(on);
}

bool LQFlowUnitDialog::check()
{
    return flow_unit_panel_->checkUpgridding();
}

bool LQFlowUnitDialog::save(bool create)
{
    return flow_unit_panel_->saveUpgridding(create);
}

bool LQFlowUnitDialog::launch()
{
    std::ostringstream tail = command_stream();
    tail << " copy_properties 0 property_sections -1 "
         << " copy_fb_regions " << flag_text(copy_fb_regions_->isChecked()) << " copy_regions "
         << flag_text(copy_regions_->isChecked());
    if (copy_regions_->isChecked()) {
        int mode = region_modes_->checkedId();
        if (mode == MostProbable)
            mode = VolumeShare;
        else if (mode == VolumeShare)
            mode = MostProbable;
        // The field goes by the mode that is sent, not by the button.
        tail << " regions " << to_cstring(region_list_->currentText()) << " region_mode " << mode << " percentile ";
        if (mode == CellShare)
            tail << number_percentile_->value();
        else if (mode == VolumeShare)
            tail << volume_percentile_->value();
        else
            tail << 0;
    }
    tail << " copy_style 1 model_info " << flag_text(model_info_->isChecked());
    return flow_unit_panel_->launchUpgriddingProcess(tail.str());
}

bool LQFlowUnitDialog::apply()
{
    if (applying_ || closed_ || !flow_unit_panel_)
        return false;
    applying_ = true;
    bool done = check() && (!create_mode_ || launch());
    if (done && !save(create_mode_)) {
        Logger::error(Format(to_cstring(tr("Could not create the upgridding activity.\n"))));
        done = false;
    }
    applying_ = false;
    return done;
}

void LQFlowUnitDialog::on_ok()
{
    if (applying_ || closed_ || !apply())
        return;
    closed_ = true;
    if (shell_)
        shell_->close();
}

void LQFlowUnitDialog::cancel()
{
    if (applying_ || closed_)
        return;
    closed_ = true;
    if (shell_)
        shell_->close();
}

void LQFlowUnitDialog::on_help()
{
    show_help(help_topic_key("dox_FlowUnitAnalysis"));
}

void LQFlowUnitDialog::on_save_text()
{
    if (flow_unit_panel_)
        flow_unit_panel_->saveUpgridding2Txt();
}

} // namespace Kelvane

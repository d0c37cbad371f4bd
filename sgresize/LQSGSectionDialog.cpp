#include "sgresize/LQSGSectionDialog.h"

#include "frame/CommandText.h"
#include "frame/LQDialogFrame.h"
#include "frame/WidgetHelpers.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/interpreter/ICommandStub.h>
#include <Lodex/qtools/CommandTextValidator.h>
#include <Lodex/qtools/LQDialogTools.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/xtools/LQObjectSelectors.h>
#include <Lodex/xtools/XMQShell.h>

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

namespace {

constexpr const char* source_unit = "xmsgresize";
/// The line under which a missing grid selector is reported: fixed, so that reports of several versions can be
/// compared.
constexpr int missing_selector_line = 624;

} // namespace

LQSGSectionDialog::LQSGSectionDialog(bool builds_extension) : builds_extension_(builds_extension) {}

LQSGSectionDialog::~LQSGSectionDialog() = default;

Lodex::XMShell* LQSGSectionDialog::open_shell(const Lodex::CString& name, const QString& title, const QString& banner,
                                              Lodex::Action* delete_action)
{
    auto* body = new LQDialogFrame(Lodex::LQDialogTools::active_top_widget());
    body->add_banner(banner);
    build_box(body, body->box());
    build_extension(body, body->box());
    body->add_button_row(this);
    on_sgrid_name_changed();

    shell_ = new Lodex::XMQShell(body, name, title);
    shell_->set_delete_action(delete_action);
    // The window may also go with its parent.
    connect(body, &QObject::destroyed, this, &QObject::deleteLater);
    return shell_;
}

QGroupBox* LQSGSectionDialog::build_definition(QWidget* parent)
{
    auto* group = new QGroupBox(tr("Stratigraphic Grid Definition"), parent);
    auto* layout = new QVBoxLayout(group);

    auto* row = new QHBoxLayout;
    auto* label = new QLabel(tr("Name"), group);
    row->addWidget(label);
    new_grid_name_ = new QLineEdit(group);
    new_grid_name_->setObjectName("new_grid_name_");
    new_grid_name_->setToolTip(tr("Type the new name of the SGrid"));
    new_grid_name_->setValidator(new Lodex::CommandTextValidator(new_grid_name_));
    label->setToolTip(new_grid_name_->toolTip());
    label->setBuddy(new_grid_name_);
    row->addWidget(new_grid_name_, 1);
    layout->addLayout(row);

    QWidget* selector = build_selector(group);
    layout->addWidget(selector);
    const auto* selector_label = selector->findChild<QLabel*>();
    label->setMinimumWidth(selector_label->sizeHint().width());
    return group;
}

QWidget* LQSGSectionDialog::build_selector(QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(tr("Based on Stratigraphic Grid"), row);
    layout->addWidget(label);
    gridSelector_ = new Lodex::LQGObjSelector(Lodex::SGrid::static_type_id_(), row);
    gridSelector_->setObjectName("gridSelector_");
    gridSelector_->setToolTip(tr("Select the stratigraphic grid you want to work on."));
    label->setToolTip(gridSelector_->toolTip());
    label->setBuddy(gridSelector_);
    layout->addWidget(gridSelector_, 1);
    connect(gridSelector_, &Lodex::LQMultiComboBox::selectionChanged, this, &LQSGSectionDialog::on_sgrid_name_changed);
    return row;
}

QGroupBox* LQSGSectionDialog::build_graphic_attributes(QWidget* parent)
{
    auto* group = new QGroupBox(tr("Graphic Attributes"), parent);
    auto* layout = new QVBoxLayout(group);
    paint_check_box_ = new QCheckBox(tr("Show selected sections"), group);
    paint_check_box_->setObjectName("paint_check_box_");
    paint_check_box_->setToolTip(tr("toggle on if you want the selected cell sections beeing painted on the grid"));
    layout->addWidget(paint_check_box_);
    connect(paint_check_box_, &QCheckBox::toggled, this, &LQSGSectionDialog::set_paint);
    return group;
}

void LQSGSectionDialog::build_extension(QWidget* parent, QVBoxLayout* layout)
{
    if (!builds_extension_ || extension_built_)
        return;
    extension_ = new QWidget(parent);
    extension_->setObjectName("extension_");
    auto* box = new QVBoxLayout(extension_);
    box->setContentsMargins(0, 0, 0, 0);
    auto* lists = new QFormLayout;
    lists->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    box->addLayout(lists);

    const auto build_list = [&](const char* name, const QString& text, const QString& tip) {
        auto* list = new Lodex::LQMultiComboBox(extension_);
        list->setObjectName(name);
        list->setToolTip(tip);
        list->setMultiSelection(true);
        lists->addRow(text, list);
        return list;
    };
    property_list_ = build_list("property_list_", tr("Properties"), tr("Select properties that will be copied"));
    property_observer_ =
        std::make_unique<SGridObserver>(property_list_, "properties", "all_properties", true, true, false);
    region_list_ = build_list("region_list_", tr("Regions"), tr("Select regions that will be copied"));
    region_observer_ = std::make_unique<SGridObserver>(region_list_, "regions_plus", "region_0", false, true, false);

    extension_->hide();
    layout->addWidget(extension_);
    extension_built_ = true;
}

void LQSGSectionDialog::add_widget_to_extension(QWidget* widget)
{
    if (extension_)
        extension_->layout()->addWidget(widget);
}

void LQSGSectionDialog::show_extension(bool on)
{
    if (!extension_ || on != extension_->isHidden())
        return;
    QWidget* window = extension_->window();
    if (on) {
        geometry_before_ = window->isVisible() ? window->geometry() : QRect();
        minimum_before_ = window->minimumSize();
        maximum_before_ = window->maximumSize();
        window->setMaximumHeight(QWIDGETSIZE_MAX);
        extension_->show();
        if (geometry_before_.isValid())
            window->resize(window->width(), geometry_before_.height() + extension_->sizeHint().height());
    } else {
        extension_->hide();
        window->layout()->activate(); // else the window keeps the least height that the panel needed
        window->setMinimumSize(minimum_before_);
        window->setMaximumSize(maximum_before_);
        if (geometry_before_.isValid())
            window->setGeometry(geometry_before_);
    }
}

void LQSGSectionDialog::init(Lodex::ICommandStub* stub)
{
    if (!gridSelector_) {
        Lodex::Lodex_assert_internal_error(source_unit, missing_selector_line,
                                           Format(to_cstring(tr("Pointer is nil: %1\n"))).arg("gridSelector_"));
        return;
    }
    Lodex::CopyCString name;
    if (!stub || !stub->get("sgrid", name))
        return;
    if (find_sgrid(Lodex::to_qstring(name)))
        gridSelector_->setSelectedItems({Lodex::to_qstring(name)});
}

QString LQSGSectionDialog::sgrid_name() const
{
    return gridSelector_ ? gridSelector_->currentText() : QString();
}

QString LQSGSectionDialog::new_grid_name() const
{
    return new_grid_name_ ? new_grid_name_->text() : QString();
}

void LQSGSectionDialog::setNewGridName(const QString& name)
{
    QString unused;
    build_unused_name(to_cstring(name), unused);
    if (new_grid_name_)
        new_grid_name_->setText(unused);
}

Lodex::SGrid* LQSGSectionDialog::find_sgrid(const QString& name)
{
    return static_cast<Lodex::SGrid*>(
        Lodex::GeobaseLib::instance()->find(to_cstring(name), Lodex::SGrid::static_type_id_()));
}

void LQSGSectionDialog::update_sgrid()
{
    sgrid_ = find_sgrid(sgrid_name());
}

bool LQSGSectionDialog::check()
{
    if (new_grid_name().isEmpty()) {
        Logger::fatal(Format(to_cstring(tr("Please provide a new sgrid name\n"))));
        return false;
    }
    if (sgrid_name().isEmpty()) {
        Logger::fatal(Format(to_cstring(tr("Please provide a sgrid to based the computation on\n"))));
        return false;
    }
    update_sgrid();
    if (!sgrid_) {
        Logger::fatal(Format(to_cstring(tr("Please provide a sgrid to based the computation on (No grid found)\n"))));
        return false;
    }
    return true;
}

void LQSGSectionDialog::on_sgrid_name_changed()
{
    // The selector shows the new grid already: that one is unpainted, the former grid keeps what is painted on it.
    if (paint_on_)
        unPaintSections();
    update_sgrid();
    update_axis_edt();
    updateCells();
    const Lodex::CString name = to_cstring(sgrid_name());
    if (property_observer_)
        property_observer_->update_gobj(name);
    if (region_observer_)
        region_observer_->update_gobj(name);
}

void LQSGSectionDialog::set_properties(bool on)
{
    if (extension_built_ && property_list_)
        property_list_->setEnabled(on);
}

void LQSGSectionDialog::set_region(bool on)
{
    if (extension_built_ && region_list_)
        region_list_->setEnabled(on);
}

void LQSGSectionDialog::on_ok()
{
    if (executing_ || closed_)
        return;
    if (process())
        close_shell();
}

void LQSGSectionDialog::cancel()
{
    if (executing_ || closed_)
        return;
    close_shell();
}

void LQSGSectionDialog::close_shell()
{
    if (paint_on_)
        unPaintSections();
    closed_ = true;
    if (shell_)
        shell_->close();
}

void LQSGSectionDialog::set_paint(bool on)
{
    paint_on_ = on;
    if (on)
        updatePaintedSections();
    else
        unPaintSections();
}

void LQSGSectionDialog::unPaintSections()
{
    if (!sgrid_name().isEmpty())
        send_sections("\" 3 1 0 0 2 0 0 3 0 0\";");
}

bool LQSGSectionDialog::can_paint() const
{
    if (!paint_on_)
        return false;
    if (sgrid_name().isEmpty()) {
        warn_no_grid();
        return false;
    }
    return true;
}

void LQSGSectionDialog::warn_no_grid() const
{
    Logger::warning(Format(to_cstring(tr("Please provide a sgrid for painting the sections on\n"))));
}

void LQSGSectionDialog::paint_sections(int axis, const std::string& triples, long count)
{
    std::ostringstream quoted = command_stream();
    quoted << "\" " << count + 2 << triples << (axis == 1 ? " 2 0 0" : " 1 0 0")
           << (axis == 1 || axis == 2 ? " 3 0 0" : " 2 0 0") << "\" ;";
    send_sections(quoted.str());
}

void LQSGSectionDialog::send_sections(const std::string& quoted)
{
    const Lodex::CString name = to_cstring(sgrid_name());
    std::ostringstream command = command_stream();
    command << "lodex on Style " << name << " set attribute *sections value " << quoted << "lodex on Style " << name
            << " update ;"
            << "lodex update all cameras";
    execute(command);
}

void LQSGSectionDialog::execute(std::ostringstream& command)
{
    const auto held = hold();
    submit_command(command);
}

} // namespace Kelvane

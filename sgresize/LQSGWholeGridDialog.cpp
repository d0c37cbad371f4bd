#include "sgresize/LQSGWholeGridDialog.h"

#include "sgresize/ChainProgress.h"
#include "sgresize/LQSGManualAxisEditorMngr.h"

#include "frame/CommandText.h"

#include <Lodex/qtools/LQMultiComboBox.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridCube.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

namespace {

[[nodiscard]] std::array<long, 3> nodes_of(const Lodex::SGrid& grid)
{
    const Lodex::SGridCube& cube = *grid.cube();
    return {cube.nu(), cube.nv(), cube.nw()};
}

} // namespace

LQSGWholeGridDialog::LQSGWholeGridDialog() : LQSGSectionDialog(true) {}

bool LQSGWholeGridDialog::build_box(QWidget* parent, QVBoxLayout* layout)
{
    layout->addWidget(build_definition(parent));
    auto* columns = new QHBoxLayout;
    layout->addLayout(columns, 1);

    auto* left = new QVBoxLayout;
    columns->addLayout(left, 1);
    left->addWidget(build_tabs(parent), 1);
    left->addWidget(build_counts(parent));

    auto* right = new QVBoxLayout;
    columns->addLayout(right);
    build_options(parent, right);
    right->addStretch(1);
    right->addWidget(build_graphic_attributes(parent));
    auto* build_attributes = new QGroupBox(tr("Build Attributes"), parent);
    auto* box = new QVBoxLayout(build_attributes);
    model_information_ = new QCheckBox(tr("Use stratigraphic model information to build the grid"), build_attributes);
    model_information_->setObjectName("model_information_");
    model_information_->setToolTip(
        tr("toggle on if you want to use the stratigraphic model information for rebuilding the grid"));
    box->addWidget(model_information_);
    right->addWidget(build_attributes);

    set_properties(copy_properties_->isChecked());
    set_region(copy_regions_->isChecked());
    return true;
}

QWidget* LQSGWholeGridDialog::build_tabs(QWidget* parent)
{
    static constexpr std::array<const char*, axes> pages{"axis_i_page", "axis_j_page", "axis_k_page"};
    auto* tabs = new QTabWidget(parent);
    tabs->setObjectName("axis_tabs_");
    for (int axis = 0; axis < axes; ++axis) {
        auto* page = new QWidget(tabs);
        page->setObjectName(pages[static_cast<std::size_t>(axis)]);
        const QString name = LQSGAxisEditorMngr::axis_text(axis + 1);
        build_axis(name, page, new QVBoxLayout(page));
        tabs->addTab(page, name);
    }
    return tabs;
}

QWidget* LQSGWholeGridDialog::build_counts(QWidget* parent)
{
    auto* counts = new QWidget(parent);
    auto* grid = new QGridLayout(counts);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(4);
    const QStringList titles{tr("I"), tr("J"), tr("K"), tr("Total")};
    for (int column = 0; column <= axes; ++column)
        grid->addWidget(new QLabel(titles[column], counts), 0, column + 1, Qt::AlignRight);
    const auto add_row = [&](int row, const QString& heading, const QString& prefix, CountLabels& labels) {
        grid->addWidget(new QLabel(heading, counts), row, 0);
        static constexpr std::array<const char*, axes + 1> names{"i", "j", "k", "total"};
        for (std::size_t column = 0; column < labels.size(); ++column) {
            auto* label = new QLabel(counts);
            label->setObjectName(prefix + names[column]);
            label->setTextFormat(Qt::RichText);
            label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            // The numbers are blue, which asks for a light ground whatever the theme.
            label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
            label->setAutoFillBackground(true);
            QPalette palette = label->palette();
            palette.setColor(QPalette::Window, Qt::white);
            label->setPalette(palette);
            label->setMargin(2);
            // The total is the product of the others.
            const auto widest = column < axes ? QStringLiteral("00000000") : QStringLiteral("000 000 000 000");
            label->setMinimumWidth(label->fontMetrics().horizontalAdvance(widest));
            grid->addWidget(label, row, static_cast<int>(column) + 1);
            labels[column] = label;
        }
    };
    add_row(1, tr("Number of cells:"), "cells_", cells_);
    add_row(2, tr("New number of cells:"), "new_cells_", new_cells_);
    grid->setColumnStretch(axes + 2, 1); // beside the numbers
    return counts;
}

void LQSGWholeGridDialog::build_options(QWidget* parent, QVBoxLayout* layout)
{
    const Wording words = wording();
    const auto add_box = [&](const char* name, const QString& text, const QString& tip, bool on) {
        auto* box = new QCheckBox(text, parent);
        box->setObjectName(name);
        box->setToolTip(tip);
        box->setChecked(on);
        layout->addWidget(box);
        return box;
    };
    copy_properties_ =
        add_box("copy_properties_", tr("Copy properties"), words.copy_properties_tip, words.copies_properties);
    connect(copy_properties_, &QCheckBox::toggled, this, &LQSGWholeGridDialog::set_properties);
    copy_regions_ = add_box("copy_regions_", tr("Copy regions"), words.copy_regions_tip, true);
    connect(copy_regions_, &QCheckBox::toggled, this, &LQSGWholeGridDialog::set_region);
    fault_blocks_ = add_box("fault_blocks_", tr("Create fault block regions"),
                            tr("toggle on if you want to create fault block regions"), true);

    build_extension(parent, layout);
    build_more_options(parent);
    show_extension(true);
}

bool LQSGWholeGridDialog::update_axis_edt()
{
    if (!get_sgrid())
        return false;
    const std::array<long, axes> nodes = nodes_of(*get_sgrid());
    for (int axis = 0; axis < axes; ++axis)
        editor(axis).update_manual_frame(nodes[static_cast<std::size_t>(axis)]);
    return true;
}

void LQSGWholeGridDialog::updateCells()
{
    if (sgrid_name().isEmpty() || !get_sgrid())
        return;
    std::array<long, axes> before = nodes_of(*get_sgrid());
    for (long& count : before)
        --count;
    std::array<long, axes> after = before;
    for (int axis = 0; axis < axes; ++axis) {
        if (is_axis_enabled(axis))
            after[static_cast<std::size_t>(axis)] = new_cells(axis, before[static_cast<std::size_t>(axis)]);
    }
    show_counts(cells_, before);
    show_counts(new_cells_, after);
}

void LQSGWholeGridDialog::show_counts(const CountLabels& labels, const std::array<long, axes>& cells)
{
    const auto show = [](QLabel* label, long long number) {
        label->setText(QStringLiteral("<b><font color=\"#0000ff\">%1</font></b>").arg(QString::number(number)));
    };
    long long total = 1;
    for (std::size_t axis = 0; axis < cells.size(); ++axis) {
        show(labels[axis], cells[axis]);
        total *= cells[axis];
    }
    show(labels.back(), total);
}

void LQSGWholeGridDialog::updatePaintedSections()
{
    if (!is_painting())
        return;
    if (sgrid_name().isEmpty() || !get_sgrid()) {
        warn_no_grid();
        return;
    }
    std::ostringstream triples = command_stream();
    long count = 0;
    for (int axis = 0; axis < axes; ++axis) {
        if (is_axis_enabled(axis)) {
            count += write_painted_axis(axis, triples);
        } else {
            triples << ' ' << editor(axis).axis() << " 0 0";
            ++count;
        }
    }
    std::ostringstream quoted = command_stream();
    quoted << '"' << count << triples.str() << "\";";
    send_sections(quoted.str());
}

bool LQSGWholeGridDialog::copies_properties() const
{
    return copy_properties_->isChecked();
}

QString LQSGWholeGridDialog::chosen_properties() const
{
    return property_list()->currentText();
}

bool LQSGWholeGridDialog::uses_model() const
{
    return model_information_->isChecked();
}

void LQSGWholeGridDialog::write_region_options(std::ostream& options) const
{
    options << " copy_fb_regions " << flag_text(fault_blocks_->isChecked()) << " copy_regions "
            << flag_text(copy_regions_->isChecked());
    if (copy_regions_->isChecked()) {
        options << " regions " << to_cstring(region_list()->currentText());
        write_region_mode(options);
    }
    options << " copy_style " << 1;
}

Lodex::List<QString> LQSGWholeGridDialog::chain_names(int commands) const
{
    Lodex::List<QString> names{sgrid_name()};
    const QString temporary =
        QStringLiteral("_tmpobj_") + new_grid_name() + QString::fromStdString(wording().temporary_suffix);
    for (int command = 1; command < commands; ++command)
        names.append(temporary + QString::number(command));
    names.append(new_grid_name());
    return names;
}

bool LQSGWholeGridDialog::any_taken(const Lodex::List<QString>& names)
{
    for (int i = 1; i < names.count(); ++i) {
        if (find_sgrid(names[i]))
            return true;
    }
    return false;
}

bool LQSGWholeGridDialog::run_chain(const std::vector<int>& enabled, const Lodex::List<QString>& names)
{
    std::ostringstream options = command_stream();
    write_options(options);
    ChainProgress progress(to_cstring(tr("Creating SGrid %1").arg(new_grid_name())), static_cast<long>(enabled.size()));
    int step = 0;
    for (const int axis : enabled) {
        if (!checks_rows_first() && !editor(axis).check_intersections())
            return false;
        std::ostringstream command = command_stream();
        write_command(axis, to_cstring(names[step]), to_cstring(names[step + 1]), options.str(), command);
        execute(command);
        progress.next_command();
        ++step;
    }
    return true;
}

bool LQSGWholeGridDialog::process()
{
    if (is_executing())
        return false;
    std::vector<int> enabled;
    for (int axis = 0; axis < axes; ++axis) {
        editor(axis).commit();
        if (is_axis_enabled(axis))
            enabled.push_back(axis);
    }
    if (!check())
        return false;
    if (checks_rows_first()) {
        for (const int axis : enabled) {
            if (!editor(axis).check_intersections())
                return false;
        }
    }
    if (enabled.empty()) {
        Logger::fatal(Format(to_cstring(tr("Please specify at least one axis!\n"))));
        return false;
    }

    const auto held = hold();
    const QString name = new_grid_name();
    const Lodex::List<QString> names = chain_names(static_cast<int>(enabled.size()));
    const bool taken = any_taken(names);
    const bool complete = run_chain(enabled, names);
    clean(names);
    if (!complete)
        return false;

    // The host makes no grid under a taken name: what bears it, or was made from it, did not come from these commands
    // alone, and nothing may be recorded of it.
    Lodex::SGrid* made = find_sgrid(name);
    if (made && !taken && register_activity(made)) {
        setNewGridName(name);
        return true;
    }
    Logger::error(Format(to_cstring(wording().no_activity)));
    return false;
}

void LQSGWholeGridDialog::clean(Lodex::List<QString> names)
{
    for (int i = 1; i + 1 < names.count(); ++i) {
        std::ostringstream command = command_stream();
        command << "lodex destroy objects " << to_cstring(names[i]);
        execute(command);
    }
}

} // namespace Kelvane

#include "DisplayPanel.h"

#include "Named.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDoubleValidator>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPalette>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QSlider>
#include <QSpinBox>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace lodex {

namespace {

constexpr std::size_t most_codes = 200;

/// Least and greatest coordinates of a grid's pillars.
struct Box {
    std::array<double, 3> least, greatest;
};

Box box_of(const CornerPointGrid& grid)
{
    Box box;
    box.least.fill(std::numeric_limits<double>::infinity());
    box.greatest.fill(-std::numeric_limits<double>::infinity());
    grid.pillars().visit([&](const auto coordinates) {
        for (std::size_t n = 0; n < coordinates.size(); ++n) {
            const auto value = static_cast<double>(coordinates[n]);
            if (std::isfinite(value)) {
                box.least[n % 3] = std::min(box.least[n % 3], value);
                box.greatest[n % 3] = std::max(box.greatest[n % 3], value);
            }
        }
    });
    return box;
}

bool apart(const Box& a, const Box& b)
{
    for (std::size_t n = 0; n < 2; ++n) {
        if (a.greatest[n] < b.least[n] || b.greatest[n] < a.least[n])
            return true;
    }
    return false;
}

std::optional<double> number_in(const QLineEdit& field)
{
    bool ok = false;
    const double value = QLocale::c().toDouble(field.text().trimmed(), &ok);
    return ok && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

QString number_text(const std::optional<double>& number)
{
    return number ? QString::fromStdString(format_shortest(*number)) : QString();
}

} // namespace

DisplayPanel::DisplayPanel(CameraView& camera, QWidget* parent) : QWidget(parent), camera_(camera)
{
    setObjectName("displayPanel");
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(6, 6, 6, 6);
    for (QWidget* part : {build_colours(), build_slices(), build_threshold(), build_cells(), build_view()})
        column->addWidget(part);
    column->addStretch(1);
    column->setSpacing(4);
    for (QGroupBox* group : findChildren<QGroupBox*>()) {
        group->layout()->setContentsMargins(8, 4, 8, 6);
        if (auto* grid = qobject_cast<QGridLayout*>(group->layout()))
            grid->setVerticalSpacing(3);
    }
    watch_.changed = [this] {
        fill_lists();
        if (CornerPointGrid* one = grid())
            read_display(camera_.display(one));
    };
    watch_.gone = [this] { set_grid(nullptr); };
    connect_controls();
    set_grid(nullptr);
}

QWidget* DisplayPanel::build_colours()
{
    auto* group = new QGroupBox(tr("Colours"), this);
    colour_ = named(new QComboBox(group), "displayColour", tr("What the cells are coloured by"));
    colour_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    colour_->setMinimumContentsLength(10);
    legend_ = named(new QPushButton(tr("&Legend..."), group), "displayLegend",
                    tr("Range, clipping, logarithm and colour map of the property"));
    legend_->setAutoDefault(false);
    show_legend_ = named(new QCheckBox(tr("Show legend"), group), "displayShowLegend",
                         tr("Whether the colours are explained in the view"));
    auto* row = new QHBoxLayout;
    row->addWidget(colour_, 1);
    row->addWidget(legend_);
    auto* column = new QVBoxLayout(group);
    column->addLayout(row);
    column->addWidget(show_legend_);
    return group;
}

QWidget* DisplayPanel::build_slices()
{
    auto* group = new QGroupBox(tr("Slices"), this);
    auto* table = new QGridLayout(group);
    table->addWidget(new QLabel(tr("from"), group), 0, 1);
    table->addWidget(new QLabel(tr("to"), group), 0, 2);
    const char* const axes = "IJK";
    for (int axis = 0; axis < 3; ++axis) {
        Slice& slice = slices_[static_cast<std::size_t>(axis)];
        const QString letter = QString(QLatin1Char(axes[axis]));
        const auto name = [&](const char* part) {
            return QStringLiteral("slice%1%2").arg(letter, QLatin1String(part));
        };
        slice.on = named(new QCheckBox(letter, group), "", tr("Shows only some cells along %1").arg(letter));
        slice.on->setObjectName(name("On"));
        slice.from = named(new QSpinBox(group), "", tr("First cell along %1 that is shown, from 1").arg(letter));
        slice.from->setObjectName(name("From"));
        slice.to = named(new QSpinBox(group), "", tr("Last cell along %1 that is shown").arg(letter));
        slice.to->setObjectName(name("To"));
        slice.slider = named(new QSlider(Qt::Horizontal, group), "", tr("Moves the slice along %1").arg(letter));
        slice.slider->setObjectName(name("Slider"));
        for (QSpinBox* spin : {slice.from, slice.to})
            spin->setKeyboardTracking(false);
        table->addWidget(slice.on, 2 * axis + 1, 0);
        table->addWidget(slice.from, 2 * axis + 1, 1);
        table->addWidget(slice.to, 2 * axis + 1, 2);
        table->addWidget(slice.slider, 2 * axis + 2, 1, 1, 2);
    }
    table->setColumnStretch(1, 1);
    table->setColumnStretch(2, 1);
    box_ = named(new QRadioButton(tr("in all of them"), group), "slicesBox",
                 tr("Shows the cells that lie in every slice"));
    fence_ = named(new QRadioButton(tr("in any of them"), group), "slicesFence",
                   tr("Shows the cells that lie in at least one slice: a fence"));
    auto* row = new QHBoxLayout;
    row->addWidget(box_);
    row->addWidget(fence_);
    row->addStretch(1);
    table->addLayout(row, 7, 0, 1, 3);
    return group;
}

QWidget* DisplayPanel::build_threshold()
{
    threshold_ = named(new QGroupBox(tr("Threshold"), this), "displayThreshold",
                       tr("Shows only cells by the value of a property"));
    threshold_->setCheckable(true);
    threshold_->setChecked(false);
    threshold_property_ = named(new QComboBox(threshold_), "thresholdProperty", tr("The property that decides"));
    threshold_property_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    threshold_property_->setMinimumContentsLength(10);
    min_ = named(new QLineEdit(threshold_), "thresholdMin", tr("Least value that is shown; empty: any"));
    max_ = named(new QLineEdit(threshold_), "thresholdMax", tr("Greatest value that is shown; empty: any"));
    for (QLineEdit* field : {min_, max_}) {
        auto* validator = new QDoubleValidator(field);
        validator->setLocale(QLocale::c());
        field->setValidator(validator);
        field->setPlaceholderText(tr("any"));
    }
    codes_ = named(new QListWidget(threshold_), "thresholdCodes", tr("Codes that are shown"));
    codes_->setMaximumHeight(110);
    auto* form = new QGridLayout(threshold_);
    form->addWidget(threshold_property_, 0, 0, 1, 3);
    form->addWidget(min_, 1, 0);
    between_ = new QLabel(tr("to"), threshold_);
    form->addWidget(between_, 1, 1);
    form->addWidget(max_, 1, 2);
    form->addWidget(codes_, 2, 0, 1, 3);
    return threshold_;
}

QWidget* DisplayPanel::build_cells()
{
    auto* group = new QGroupBox(tr("Cells"), this);
    region_ = named(new QComboBox(group), "displayRegion", tr("Shows only the cells of a region"));
    region_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    region_->setMinimumContentsLength(10);
    inactive_ =
        named(new QCheckBox(tr("Inactive cells"), group), "displayInactive", tr("Shows inactive cells as well"));
    edges_ = named(new QCheckBox(tr("Cell edges"), group), "displayEdges",
                   tr("Lines along the edges of the cells; left out where there are very many"));
    outline_ = named(new QCheckBox(tr("Outline"), group), "displayOutline", tr("Lines round the whole grid"));
    painted_ = named(new QCheckBox(tr("Painted sections"), group), "displayPainted",
                     tr("Lets sections that a dialog paints stand out"));
    auto* form = new QGridLayout(group);
    auto* label = new QLabel(tr("&Region"), group);
    label->setBuddy(region_);
    form->addWidget(label, 0, 0);
    form->addWidget(region_, 0, 1);
    form->addWidget(edges_, 1, 0);
    form->addWidget(outline_, 1, 1);
    form->addWidget(inactive_, 2, 0);
    form->addWidget(painted_, 2, 1);
    form->setColumnStretch(1, 1);
    return group;
}

QWidget* DisplayPanel::build_view()
{
    auto* group = new QGroupBox(tr("View"), this);
    exaggeration_ = named(new QDoubleSpinBox(group), "displayExaggeration", tr("How much depths are stretched"));
    exaggeration_->setRange(0.1, 200);
    exaggeration_->setDecimals(1);
    exaggeration_->setSingleStep(1);
    exaggeration_->setPrefix(QStringLiteral("× "));
    exaggeration_->setKeyboardTracking(false);
    exaggeration_->setValue(camera_.vertical_exaggeration());
    standard_ = named(new QComboBox(group), "displayStandardView", tr("Where the eye is"));
    const std::array<std::pair<QString, CameraView::StandardView>, 7> views{{
        {tr("Oblique"), CameraView::StandardView::Oblique}, {tr("Top"), CameraView::StandardView::Top},
        {tr("Bottom"), CameraView::StandardView::Bottom},   {tr("North"), CameraView::StandardView::North},
        {tr("South"), CameraView::StandardView::South},     {tr("East"), CameraView::StandardView::East},
        {tr("West"), CameraView::StandardView::West},
    }};
    for (const auto& [text, view] : views)
        standard_->addItem(text, QVariant::fromValue(view));
    orthographic_ =
        named(new QCheckBox(tr("Orthographic"), group), "displayOrthographic", tr("Parallel lines stay parallel"));
    axes_ = named(new QCheckBox(tr("Axes"), group), "displayAxes", tr("Shows coordinates and the north arrow"));
    auto* fit = named(new QPushButton(tr("&Fit"), group), "displayFit", tr("Brings the whole grid into view"));
    auto* picture =
        named(new QPushButton(tr("Save p&icture..."), group), "displayPicture", tr("Saves the view as a picture"));
    auto* all =
        named(new QPushButton(tr("&All cells"), group), "displayAllCells", tr("No slices, no threshold, no region"));
    for (QPushButton* button : {fit, picture, all})
        button->setAutoDefault(false);
    auto* form = new QGridLayout(group);
    const auto add_row = [&](int row, const QString& text, QWidget* widget) {
        auto* label = new QLabel(text, group);
        label->setBuddy(widget);
        form->addWidget(label, row, 0);
        form->addWidget(widget, row, 1);
    };
    add_row(0, tr("&Vertical"), exaggeration_);
    add_row(1, tr("From"), standard_);
    form->addWidget(orthographic_, 2, 0);
    form->addWidget(axes_, 2, 1);
    form->addWidget(fit, 3, 0);
    form->addWidget(all, 3, 1);
    form->addWidget(picture, 4, 0, 1, 2);
    form->setColumnStretch(1, 1);
    connect(fit, &QPushButton::clicked, &camera_, &CameraView::fit);
    connect(all, &QPushButton::clicked, this, &DisplayPanel::show_all_cells);
    connect(picture, &QPushButton::clicked, this, &DisplayPanel::save_picture);
    return group;
}

void DisplayPanel::connect_controls()
{
    const auto changed = [this] { apply(); };
    connect(colour_, &QComboBox::currentIndexChanged, this, [this] {
        if (!reading_) {
            wanted_ = colour_->currentData().value<ColourBy>();
            wanted_set_ = true;
        }
        apply();
    });
    connect(legend_, &QPushButton::clicked, this, &DisplayPanel::edit_legend);
    for (QCheckBox* box : {show_legend_, inactive_, outline_, edges_, painted_})
        connect(box, &QCheckBox::toggled, this, changed);
    for (Slice& slice : slices_) {
        connect(slice.on, &QCheckBox::toggled, this, changed);
        connect(slice.from, &QSpinBox::valueChanged, this, [this, &slice](int value) {
            if (!reading_ && slice.to->value() < value)
                slice.to->setValue(value);
            apply();
        });
        connect(slice.to, &QSpinBox::valueChanged, this, [this, &slice](int value) {
            if (!reading_ && slice.from->value() > value)
                slice.from->setValue(value);
            apply();
        });
        connect(slice.slider, &QSlider::valueChanged, this, [this, &slice](int value) {
            if (!reading_)
                move_slice(slice, value);
        });
    }
    connect(box_, &QRadioButton::toggled, this, changed);
    connect(threshold_, &QGroupBox::toggled, this, [this] {
        fill_codes();
        apply();
    });
    connect(threshold_property_, &QComboBox::currentIndexChanged, this, [this] {
        if (reading_)
            return;
        {
            const QScopedValueRollback quiet(reading_, true);
            min_->clear();
            max_->clear();
            fill_codes();
        }
        apply();
    });
    connect(min_, &QLineEdit::editingFinished, this, changed);
    connect(max_, &QLineEdit::editingFinished, this, changed);
    connect(codes_, &QListWidget::itemChanged, this, changed);
    connect(region_, &QComboBox::currentIndexChanged, this, changed);
    connect(exaggeration_, &QDoubleSpinBox::valueChanged, this,
            [this](double factor) { camera_.set_vertical_exaggeration(factor); });
    connect(standard_, &QComboBox::activated, this,
            [this] { camera_.set_standard_view(standard_->currentData().value<CameraView::StandardView>()); });
    orthographic_->setChecked(camera_.orthographic());
    axes_->setChecked(camera_.axes_shown());
    connect(orthographic_, &QCheckBox::toggled, &camera_, &CameraView::set_orthographic);
    connect(axes_, &QCheckBox::toggled, &camera_, &CameraView::set_axes_shown);
}

CornerPointGrid* DisplayPanel::grid() const
{
    return static_cast<CornerPointGrid*>(watch_.observed());
}

void DisplayPanel::set_grid(CornerPointGrid* grid)
{
    const std::vector<CornerPointGrid*> before = camera_.grids();
    watch_.observe(grid);
    fill_lists();
    if (!grid) {
        camera_.remove_all();
    } else {
        const auto kept = displays_.find(grid->header().id);
        GridDisplay display = kept == displays_.end() ? GridDisplay{} : kept->second;
        if (wanted_set_ || kept == displays_.end())
            display.colour = colour_->currentData().value<ColourBy>();
        const bool elsewhere =
            !before.empty() && before.front() != grid && apart(box_of(*before.front()), box_of(*grid));
        if (camera_.shows(grid))
            camera_.set_display(grid, display);
        else
            camera_.add_grid(grid, display);
        for (CornerPointGrid* other : before) {
            if (other != grid)
                camera_.remove_grid(other);
        }
        if (elsewhere)
            camera_.fit();
        read_display(camera_.display(grid));
    }
    update_enabled();
}

/// The lists follow the grid; what was chosen stays as far as the grid has it.
void DisplayPanel::fill_lists()
{
    const QScopedValueRollback quiet(reading_, true);
    colour_->clear();
    const QString threshold = threshold_property_->currentText(), region = region_->currentText();
    threshold_property_->clear();
    region_->clear();
    region_->addItem(tr("everywhere"));
    const CornerPointGrid* const grid = this->grid();
    if (!grid) {
        codes_->clear();
        show_threshold(false);
        return;
    }
    int first_continuous = -1, wanted = -1;
    const auto add = [this](const QString& text, const ColourBy& colour) {
        colour_->addItem(text, QVariant::fromValue(colour));
    };
    for (const PropertyData& property : grid->header().properties) {
        if (property.on_points)
            continue;
        if (!property.discrete() && first_continuous < 0)
            first_continuous = colour_->count();
        add(QString::fromStdString(property.name), ColourBy::of_property(property.name));
        threshold_property_->addItem(QString::fromStdString(property.name));
    }
    if (!grid->header().layers.empty())
        add(tr("unit"), {ColourBy::Kind::Unit, {}});
    add(tr("depth"), {ColourBy::Kind::Depth, {}});
    add(tr("one colour"), {});
    for (int n = 0; wanted_set_ && n < colour_->count() && wanted < 0; ++n) {
        if (colour_->itemData(n).value<ColourBy>() == wanted_)
            wanted = n;
    }
    colour_->setCurrentIndex(wanted >= 0 ? wanted : std::max(first_continuous, 0));
    for (const RegionData& one : grid->header().regions)
        region_->addItem(QString::fromStdString(one.name));
    int decides = threshold_property_->findText(threshold);
    if (decides < 0)
        decides = threshold_property_->findText(colour_->currentText());
    threshold_property_->setCurrentIndex(decides >= 0 ? decides : std::max(first_continuous, 0));
    region_->setCurrentIndex(std::max(0, region_->findText(region)));
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const auto count = static_cast<int>(grid->header().size[axis]);
        for (QSpinBox* spin : {slices_[axis].from, slices_[axis].to})
            spin->setRange(1, count);
        slices_[axis].slider->setRange(1, count);
        slices_[axis].slider->setPageStep(std::max(1, count / 10));
    }
    fill_codes();
}

void DisplayPanel::fill_codes()
{
    const QScopedValueRollback quiet(reading_, true);
    codes_->clear();
    const CornerPointGrid* const grid = this->grid();
    const PropertyData* const property =
        grid ? grid->header().find_property(threshold_property_->currentText().toStdString()) : nullptr;
    const bool discrete = property && property->discrete();
    show_threshold(discrete);
    if (!discrete || !threshold_->isChecked())
        return; // looking for the codes of a large grid takes a moment
    (void)grid->with({GridArray::PropertyValues, static_cast<std::size_t>(property - grid->header().properties.data())});
    std::set<std::int32_t> found;
    const auto& values = std::get<std::vector<std::int32_t>>(property->values);
    for (std::size_t cell = 0; cell < values.size() && found.size() < most_codes; ++cell) {
        if (is_defined(*property, cell))
            found.insert(values[cell]);
    }
    for (const std::int32_t code : found) {
        const auto name = property->code_names.find(code);
        auto* entry = new QListWidgetItem(
            name == property->code_names.end() ? QString::number(code) : QString::fromStdString(name->second), codes_);
        entry->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        entry->setData(Qt::UserRole, code);
        entry->setCheckState(Qt::Checked);
    }
}

/// The group is no larger than it must be.
void DisplayPanel::show_threshold(bool discrete)
{
    const bool on = threshold_->isChecked();
    threshold_->setFlat(!on);
    // Off, nothing but the title is left, no empty frame.
    const int title = std::max(fontMetrics().height(), style()->pixelMetric(QStyle::PM_IndicatorHeight)) + 2;
    threshold_->setMaximumHeight(on ? QWIDGETSIZE_MAX : title);
    threshold_property_->setVisible(on);
    codes_->setVisible(on && discrete);
    for (QWidget* part : {static_cast<QWidget*>(min_), static_cast<QWidget*>(max_), between_})
        part->setVisible(on && !discrete);
}

void DisplayPanel::read_display(const GridDisplay& display)
{
    const QScopedValueRollback quiet(reading_, true);
    const CornerPointGrid* const grid = this->grid();
    for (int n = 0; n < colour_->count(); ++n) {
        if (colour_->itemData(n).value<ColourBy>() == display.colour)
            colour_->setCurrentIndex(n);
    }
    show_legend_->setChecked(display.legend);
    for (std::size_t axis = 0; grid && axis < 3; ++axis) {
        Slice& slice = slices_[axis];
        const auto& ranges = display.filter.ranges[axis];
        const auto count = static_cast<int>(grid->header().size[axis]);
        slice.on->setChecked(!ranges.empty());
        const int first = ranges.empty() ? (count + 1) / 2 : static_cast<int>(ranges.front().first) + 1;
        slice.from->setValue(first);
        slice.to->setValue(ranges.empty() ? first : static_cast<int>(ranges.front().last) + 1);
        slice.slider->setValue(first);
    }
    (display.filter.slices == CellFilter::Slices::Fence ? fence_ : box_)->setChecked(true);
    threshold_->setChecked(display.filter.threshold.has_value());
    if (display.filter.threshold) {
        const CellThreshold& threshold = *display.filter.threshold;
        threshold_property_->setCurrentIndex(
            std::max(0, threshold_property_->findText(QString::fromStdString(threshold.property))));
        fill_codes();
        min_->setText(number_text(threshold.min));
        max_->setText(number_text(threshold.max));
        for (int row = 0; row < codes_->count(); ++row) {
            const bool on =
                threshold.codes.empty() || threshold.codes.contains(codes_->item(row)->data(Qt::UserRole).toInt());
            codes_->item(row)->setCheckState(on ? Qt::Checked : Qt::Unchecked);
        }
    }
    region_->setCurrentIndex(std::max(0, region_->findText(QString::fromStdString(display.filter.region))));
    inactive_->setChecked(!display.filter.active_only);
    outline_->setChecked(display.outline);
    edges_->setChecked(display.cell_edges);
    painted_->setChecked(display.painted_sections);
    update_enabled();
}

GridDisplay DisplayPanel::chosen_display() const
{
    GridDisplay display = camera_.display(grid());
    display.colour = colour_->currentData().value<ColourBy>();
    display.legend = show_legend_->isChecked();
    CellFilter filter;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const Slice& slice = slices_[axis];
        if (slice.on->isChecked())
            filter.ranges[axis] = {IndexRange{slice.from->value() - 1, slice.to->value() - 1}};
    }
    filter.slices = fence_->isChecked() ? CellFilter::Slices::Fence : CellFilter::Slices::Box;
    if (threshold_->isChecked() && threshold_property_->currentIndex() >= 0) {
        CellThreshold threshold{.property = threshold_property_->currentText().toStdString()};
        if (codes_->count() == 0) {
            threshold.min = number_in(*min_);
            threshold.max = number_in(*max_);
        } else {
            for (int row = 0; row < codes_->count(); ++row) {
                if (codes_->item(row)->checkState() == Qt::Checked)
                    threshold.codes.insert(codes_->item(row)->data(Qt::UserRole).toInt());
            }
            // No code chosen shows nothing: a range that holds no number.
            if (threshold.codes.empty()) {
                threshold.min = std::numeric_limits<double>::max();
                threshold.max = std::numeric_limits<double>::lowest();
            }
        }
        filter.threshold = std::move(threshold);
    }
    if (region_->currentIndex() > 0)
        filter.region = region_->currentText().toStdString();
    filter.active_only = !inactive_->isChecked();
    display.filter = std::move(filter);
    display.outline = outline_->isChecked();
    display.cell_edges = edges_->isChecked();
    display.painted_sections = painted_->isChecked();
    return display;
}

void DisplayPanel::apply()
{
    update_enabled();
    CornerPointGrid* const grid = this->grid();
    if (reading_ || !grid || !camera_.shows(grid))
        return;
    const GridDisplay display = chosen_display();
    displays_[grid->header().id] = display;
    camera_.set_display(grid, display);
    const QScopedValueRollback quiet(reading_, true);
    for (Slice& slice : slices_)
        slice.slider->setValue(slice.from->value());
}

void DisplayPanel::move_slice(Slice& slice, int first)
{
    {
        const QScopedValueRollback quiet(reading_, true);
        const int wide = slice.to->value() - slice.from->value();
        first = std::min(first, slice.slider->maximum() - wide);
        slice.from->setValue(first);
        slice.to->setValue(first + wide);
        slice.on->setChecked(true);
    }
    apply();
}

void DisplayPanel::update_enabled()
{
    const bool any = grid() != nullptr;
    for (QWidget* widget : std::initializer_list<QWidget*>{colour_, show_legend_, threshold_, region_, inactive_,
                                                           outline_, edges_, painted_})
        widget->setEnabled(any);
    legend_->setEnabled(any && colour_->currentData().value<ColourBy>().kind == ColourBy::Kind::Property);
    int on = 0;
    for (Slice& slice : slices_) {
        slice.on->setEnabled(any);
        slice.slider->setEnabled(any); // moving it switches the slice on
        QPalette faded;
        if (!slice.on->isChecked())
            faded.setColor(QPalette::Highlight, palette().color(QPalette::Mid));
        slice.slider->setPalette(faded);
        slice.from->setEnabled(any && slice.on->isChecked());
        slice.to->setEnabled(any && slice.on->isChecked());
        on += slice.on->isChecked() ? 1 : 0;
    }
    box_->setEnabled(any && on > 1);
    fence_->setEnabled(any && on > 1);
}

void DisplayPanel::colour_by(const ColourBy& colour)
{
    for (int n = 0; n < colour_->count(); ++n) {
        if (colour_->itemData(n).value<ColourBy>() == colour)
            colour_->setCurrentIndex(n);
    }
}

void DisplayPanel::show_region(const QString& region)
{
    region_->setCurrentIndex(std::max(0, region.isEmpty() ? 0 : region_->findText(region)));
}

void DisplayPanel::show_layers(IndexRange layers)
{
    {
        const QScopedValueRollback quiet(reading_, true);
        slices_[2].on->setChecked(true);
        slices_[2].from->setValue(static_cast<int>(layers.first) + 1);
        slices_[2].to->setValue(static_cast<int>(layers.last) + 1);
    }
    apply();
}

void DisplayPanel::show_all_cells()
{
    {
        const QScopedValueRollback quiet(reading_, true);
        for (Slice& slice : slices_)
            slice.on->setChecked(false);
        threshold_->setChecked(false);
        region_->setCurrentIndex(0);
        inactive_->setChecked(false);
    }
    apply();
}

std::map<std::string, GridDisplay> DisplayPanel::displays() const
{
    std::map<std::string, GridDisplay> result;
    for (const Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_())) {
        const CornerPointGrid* const one = find_grid(object->name().str());
        const auto kept = one ? displays_.find(one->header().id) : displays_.end();
        if (one && camera_.shows(one))
            result[one->name().str()] = camera_.display(one);
        else if (kept != displays_.end())
            result[one->name().str()] = kept->second;
    }
    return result;
}

void DisplayPanel::set_displays(const std::map<std::string, GridDisplay>& displays)
{
    wanted_set_ = false; // each grid is coloured as it was, not as the one before it
    for (const auto& [name, display] : displays) {
        CornerPointGrid* const one = find_grid(name);
        if (!one)
            continue;
        displays_[one->header().id] = display;
        if (one != grid() || !camera_.shows(one))
            continue;
        camera_.set_display(one, display);
        read_display(camera_.display(one));
    }
}

void DisplayPanel::set_view(double exaggeration, bool orthographic, bool axes)
{
    exaggeration_->setValue(exaggeration);
    orthographic_->setChecked(orthographic);
    axes_->setChecked(axes);
}

void DisplayPanel::edit_legend()
{
    CornerPointGrid* const one = grid();
    if (one && !camera_.edit_legend(one))
        emit told(tr("Only the colours of a property can be edited: choose one to colour by."));
}

void DisplayPanel::save_picture()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save the picture"), QString(),
                                                      tr("Pictures (*.png *.jpg);;All files (*)"));
    if (path.isEmpty())
        return;
    QString reason;
    if (camera_.save_picture(path, 2 * camera_.size(), &reason))
        emit told(tr("The picture was saved to %1.").arg(path));
    else
        Lodex::Logger::log(Lodex::LogLevel::Fatal, Lodex::to_cstring(reason));
}

} // namespace lodex

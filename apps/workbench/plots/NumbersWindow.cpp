#include "NumbersWindow.h"

#include "apps/workbench/Named.h"
#include "Plots.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/PropertyComparison.h"
#include "lodex/volumes/model/PropertyTools.h"
#include "lodex/xtools/HelpKey.h"

#include <Lodex/qtools/QtText.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QSplitter>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

constexpr std::size_t most_dots = 20000;

/// As shown, with fewer digits than the tables that are copied.
QString number_text(double value)
{
    return std::isfinite(value) ? QString::fromStdString(format_general(value, 6)) : QString();
}

/// The list with these entries and its former choice, without a signal.
void set_entries(QComboBox* list, const QStringList& entries)
{
    const QSignalBlocker silent(list);
    const QString former = list->currentText();
    list->clear();
    list->addItems(entries);
    list->setCurrentIndex(std::max(0, list->findText(former, Qt::MatchExactly | Qt::MatchCaseSensitive)));
}

} // namespace

NumbersWindow::NumbersWindow(CornerPointGrid& grid, const QString& property, QWidget* parent)
    : QDialog(parent), grid_(&grid)
{
    setObjectName("numbersWindow");
    set_help_page(*this, "user-doc/numbers.html");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    setWindowTitle(tr("Numbers of %1").arg(Lodex::to_qstring(grid.name())));
    build_controls();
    build_pages();

    auto* choices = new QHBoxLayout;
    const auto add_choice = [&](const QString& text, QComboBox* list) {
        auto* label = new QLabel(text, this);
        label->setBuddy(list);
        choices->addWidget(label);
        choices->addWidget(list, 1);
    };
    add_choice(tr("&Property"), property_);
    add_choice(tr("&Region"), region_);
    choices->addWidget(by_volume_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(choices);
    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(pages_);
    split->addWidget(statistics_);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 0);
    split->setChildrenCollapsible(false);
    split->setSizes({650, 260});
    layout->addWidget(split, 1);
    build_buttons();
    resize(920, 560);

    refill();
    const QString chosen = property_->findText(property) >= 0 ? property : first_property(grid);
    property_->setCurrentIndex(std::max(0, property_->findText(chosen)));
    other_->setCurrentIndex(std::max(0, other_->findText(first_property(grid, chosen))));
    follow_property();
    const auto again = [this] { refresh(); };
    connect(property_, &QComboBox::currentIndexChanged, this, [this] {
        follow_property();
        refresh();
    });
    connect(region_, &QComboBox::currentIndexChanged, this, again);
    connect(by_volume_, &QCheckBox::toggled, this, again);
    connect(bins_, &QSpinBox::valueChanged, this, again);
    connect(log_bins_, &QCheckBox::toggled, this, again);
    connect(profile_list_, &QListWidget::itemChanged, this, again);
    connect(own_ranges_, &QCheckBox::toggled, this, again);
    connect(other_, &QComboBox::currentIndexChanged, this, again);
    connect(log_x_, &QCheckBox::toggled, this, again);
    connect(log_y_, &QCheckBox::toggled, this, again);
    connect(pages_, &QTabWidget::currentChanged, this, again);
    watch_.changed = [this] {
        refill();
        refresh();
    };
    watch_.gone = [this] {
        grid_ = nullptr;
        close();
    };
    watch_.observe(grid_);
    refresh();
}

void NumbersWindow::choose_region(const QString& region)
{
    if (const int at = region_->findText(region, Qt::MatchExactly | Qt::MatchCaseSensitive); at > 0)
        region_->setCurrentIndex(at);
}

void NumbersWindow::build_controls()
{
    property_ = named(new QComboBox(this), "numbersProperty", tr("The property to look at"));
    region_ = named(new QComboBox(this), "numbersRegion", tr("Cells that count; inactive cells never do"));
    by_volume_ = named(new QCheckBox(tr("By &volume"), this), "numbersByVolume",
                       tr("Cells weigh by their bulk volume instead of being counted"));
    bins_ = named(new QSpinBox(this), "numbersBins", tr("Number of bars of a continuous property"));
    bins_->setRange(1, 500);
    bins_->setValue(40);
    bins_->setKeyboardTracking(false);
    log_bins_ = named(new QCheckBox(tr("&Logarithmic"), this), "numbersLogBins",
                      tr("Bars of even width in the logarithm; values of 0 or less are left out"));
    profile_list_ =
        named(new QListWidget(this), "numbersProfileList", tr("Properties whose means per K layer are drawn"));
    own_ranges_ = named(new QCheckBox(tr("Each on its &own range"), this), "numbersOwnRanges",
                        tr("Every line fills the width, so that shapes can be compared"));
    own_ranges_->setChecked(true);
    other_ = named(new QComboBox(this), "numbersOther", tr("The property on the vertical axis"));
    log_x_ = named(new QCheckBox(tr("Log, &horizontal"), this), "numbersLogX", tr("Logarithmic horizontal axis"));
    log_y_ = named(new QCheckBox(tr("Log, v&ertical"), this), "numbersLogY", tr("Logarithmic vertical axis"));
    statistics_ = named(new QTableWidget(0, 2, this), "numbersStatistics",
                        tr("Statistics of the property over the chosen cells"));
    statistics_->setHorizontalHeaderLabels({tr("What"), tr("Value")});
    statistics_->verticalHeader()->hide();
    statistics_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    statistics_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    statistics_->horizontalHeader()->setStretchLastSection(true);
    statistics_->verticalHeader()->setDefaultSectionSize(statistics_->fontMetrics().height() + 8);
    statistics_->setWordWrap(false);
    statistics_->setMinimumWidth(240);
}

void NumbersWindow::build_pages()
{
    pages_ = named(new QTabWidget(this), "numbersPages", {});
    histogram_ = named(new HistogramPlot(this), "numbersHistogram", {});
    profile_ = named(new ProfilePlot(this), "numbersProfile", {});
    cross_ = named(new CrossPlot(this), "numbersCross", {});
    const auto page = [&](const QString& title, const QList<QWidget*>& controls, QWidget* plot) {
        auto* widget = new QWidget(pages_);
        auto* row = new QHBoxLayout;
        for (QWidget* control : controls)
            row->addWidget(control);
        row->addStretch(1);
        auto* layout = new QVBoxLayout(widget);
        layout->addLayout(row);
        layout->addWidget(plot, 1);
        pages_->addTab(widget, title);
    };
    auto* bins_label = new QLabel(tr("&Bars"), this);
    bins_label->setBuddy(bins_);
    page(tr("Histogram"), {bins_label, bins_, log_bins_}, histogram_);

    auto* profile_page = new QWidget(pages_);
    auto* side = new QVBoxLayout;
    side->addWidget(profile_list_, 1);
    side->addWidget(own_ranges_);
    profile_list_->setMaximumWidth(180);
    own_ranges_->setMaximumWidth(180);
    auto* layout = new QHBoxLayout(profile_page);
    layout->addLayout(side);
    layout->addWidget(profile_, 1);
    pages_->addTab(profile_page, tr("K profile"));

    auto* other_label = new QLabel(tr("A&gainst"), this);
    other_label->setBuddy(other_);
    page(tr("Cross plot"), {other_label, other_, log_x_, log_y_}, cross_);
}

void NumbersWindow::build_buttons()
{
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    const auto add = [&](const char* name, const QString& text, const QString& tip, auto&& act) {
        QPushButton* button = named(buttons->addButton(text, QDialogButtonBox::ActionRole), name, tip);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, act);
    };
    add("numbersCopy", tr("&Copy table"), tr("Copies the numbers of this page for a spreadsheet"),
        [this] { copy_table(table()); });
    add("numbersSave", tr("&Save table..."), tr("Saves the numbers of this page as comma-separated values"),
        [this] { save_table(table(), this); });
    add("numbersPicture", tr("Save p&icture..."), tr("Saves the plot as a picture"), [this] {
        QWidget* plots[] = {histogram_, profile_, cross_};
        save_picture(*plots[pages_->currentIndex()], this);
    });
    buttons->button(QDialogButtonBox::Close)->setObjectName("numbersClose");
    buttons->button(QDialogButtonBox::Close)->setToolTip(tr("Closes this window"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout()->addWidget(buttons);
}

void NumbersWindow::refill()
{
    if (!grid_)
        return;
    QStringList properties, regions{tr("everywhere")};
    for (const PropertyData& property : grid_->header().properties)
        if (!property.on_points)
            properties.append(QString::fromStdString(property.name));
    for (const RegionData& region : grid_->header().regions)
        regions.append(QString::fromStdString(region.name));
    set_entries(property_, properties);
    set_entries(other_, properties);
    set_entries(region_, regions);
    const QSignalBlocker silent(profile_list_);
    QStringList checked;
    for (int row = 0; row < profile_list_->count(); ++row)
        if (profile_list_->item(row)->checkState() == Qt::Checked)
            checked.append(profile_list_->item(row)->text());
    profile_list_->clear();
    for (const QString& name : properties) {
        auto* item = new QListWidgetItem(name, profile_list_);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(
            checked.contains(name) || (checked.isEmpty() && name == properties.front()) ? Qt::Checked : Qt::Unchecked);
    }
}

/// A profile of one property is that of the chosen one; several stay as they were checked.
void NumbersWindow::follow_property()
{
    const QSignalBlocker silent(profile_list_);
    int checked = 0;
    for (int row = 0; row < profile_list_->count(); ++row)
        checked += profile_list_->item(row)->checkState() == Qt::Checked ? 1 : 0;
    if (checked > 1)
        return;
    for (int row = 0; row < profile_list_->count(); ++row) {
        QListWidgetItem* const item = profile_list_->item(row);
        item->setCheckState(item->text() == property_->currentText() ? Qt::Checked : Qt::Unchecked);
    }
}

PlotCells NumbersWindow::cells() const
{
    return {.grid = grid_,
            .region = region_->currentIndex() > 0 ? region_->currentText().toStdString() : std::string(),
            .by_volume = by_volume_->isChecked()};
}

const PropertyData* NumbersWindow::property(const QComboBox* list) const
{
    return grid_ ? grid_->model().find_property(list->currentText().toStdString()) : nullptr;
}

void NumbersWindow::refresh()
{
    const PropertyData* const chosen = property(property_);
    if (!chosen) {
        histogram_->show_histogram({}, {}, {});
        profile_->show_profiles({}, false);
        cross_->show_pairs({}, {}, {}, false, false);
        statistics_->setRowCount(0);
        return;
    }
    const PlotCells from = cells();
    const QString name = property_->currentText();
    bins_->setEnabled(!chosen->discrete());
    log_bins_->setEnabled(!chosen->discrete());
    switch (pages_->currentIndex()) {
    case 0:
        histogram_->show_histogram(histogram(from, *chosen, bins_->value(), log_bins_->isChecked()), name,
                                   from.by_volume ? tr("Bulk volume") : tr("Cells"));
        break;
    case 1: {
        std::vector<Profile> profiles;
        for (int row = 0; row < profile_list_->count(); ++row)
            if (profile_list_->item(row)->checkState() == Qt::Checked)
                if (const PropertyData* one =
                        grid_->model().find_property(profile_list_->item(row)->text().toStdString()))
                    profiles.push_back(k_profile(from, *one));
        const bool own = own_ranges_->isChecked() && profiles.size() > 1; // one line needs its numbers
        own_ranges_->setEnabled(profiles.size() > 1);
        profile_->show_profiles(std::move(profiles), own);
        break;
    }
    default:
        if (const PropertyData* other = property(other_))
            cross_->show_pairs(cross_pairs(from, *chosen, *other, most_dots), name, other_->currentText(),
                               log_x_->isChecked(), log_y_->isChecked());
        break;
    }
    show_statistics(from, *chosen);
}

void NumbersWindow::show_statistics(const PlotCells& from, const PropertyData& property)
{
    const GridModel& model = grid_->model();
    const RegionData* region = from.region.empty() ? nullptr : model.find_region(from.region);
    std::vector<double> values, volumes;
    const std::span<const double> bulk = grid_->bulk_volumes();
    std::int64_t undefined = 0;
    for (std::size_t cell = 0; cell < model.active.size(); ++cell) {
        if (!model.active[cell] || (region && !region->flags[cell]))
            continue;
        values.push_back(value_or_nan(property, cell));
        volumes.push_back(from.by_volume ? bulk[cell] : 1);
        undefined += std::isnan(values.back());
    }
    const WeightedStatistics s = weighted_statistics(std::move(values), std::move(volumes));
    const std::vector<std::pair<QString, QString>> rows{
        {tr("Defined cells"), QString::number(s.count)},
        {tr("Undefined cells"), QString::number(undefined)},
        {tr("Minimum"), number_text(s.min)},
        {tr("P10"), number_text(s.p10)},
        {tr("P50"), number_text(s.p50)},
        {tr("P90"), number_text(s.p90)},
        {tr("Maximum"), number_text(s.max)},
        {tr("Mean"), number_text(s.mean)},
        {tr("Standard deviation"), number_text(s.deviation)},
        {from.by_volume ? tr("Sum of value × volume") : tr("Sum"), number_text(s.total)}};
    statistics_->setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < statistics_->rowCount(); ++row) {
        const auto& [what, value] = rows[static_cast<std::size_t>(row)];
        statistics_->setItem(row, 0, new QTableWidgetItem(what));
        auto* item = new QTableWidgetItem(value);
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        statistics_->setItem(row, 1, item);
    }
    if (pages_->currentIndex() == 2) {
        const int row = statistics_->rowCount();
        statistics_->setRowCount(row + 1);
        statistics_->setItem(row, 0, new QTableWidgetItem(tr("Correlation")));
        auto* item = new QTableWidgetItem(number_text(cross_->pairs().correlation));
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        statistics_->setItem(row, 1, item);
    }
}

DataTable NumbersWindow::table() const
{
    DataTable result;
    switch (pages_->currentIndex()) {
    case 0: {
        const Histogram& bars = histogram_->data();
        result.heading = {tr("from"), tr("to"), cells().by_volume ? tr("bulk volume") : tr("cells"),
                          tr("cumulative part")};
        for (std::size_t n = 0; n < bars.heights.size(); ++n) {
            const QString first = bars.discrete ? QString::fromStdString(bars.labels[n]) : table_number(bars.edges[n]);
            result.rows.push_back({first, bars.discrete ? first : table_number(bars.edges[n + 1]),
                                   table_number(bars.heights[n]), table_number(bars.cumulative[n])});
        }
        break;
    }
    case 1: {
        result.heading = {tr("K layer")};
        std::size_t layers = 0;
        for (const Profile& profile : profile_->profiles()) {
            result.heading.append(QString::fromStdString(profile.name));
            layers = std::max(layers, profile.means.size());
        }
        for (std::size_t k = 0; k < layers; ++k) {
            QStringList row{QString::number(k + 1)};
            for (const Profile& profile : profile_->profiles())
                row.append(table_number(profile.means[k]));
            result.rows.push_back(row);
        }
        break;
    }
    default: {
        result.heading = {property_->currentText(), other_->currentText()};
        const CrossPairs& pairs = cross_->pairs();
        for (std::size_t n = 0; n < pairs.x.size(); ++n)
            result.rows.push_back({table_number(pairs.x[n]), table_number(pairs.y[n])});
        break;
    }
    }
    return result;
}

} // namespace lodex

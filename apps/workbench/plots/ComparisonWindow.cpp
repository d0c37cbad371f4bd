#include "ComparisonWindow.h"

#include "Plots.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/PropertyTools.h"
#include "lodex/xtools/HelpKey.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/utils/PathName.h>
#include <Lodex/utils/ProgressTracer.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

constexpr std::size_t most_dots = 20000;

void set_entries(QComboBox* list, const QStringList& entries)
{
    const QSignalBlocker silent(list);
    const QString former = list->currentText();
    list->clear();
    list->addItems(entries);
    list->setCurrentIndex(list->findText(former, Qt::MatchExactly | Qt::MatchCaseSensitive));
    if (list->currentIndex() < 0 && list->count() > 0)
        list->setCurrentIndex(0);
}

void choose_entry(QComboBox* list, const QString& entry)
{
    if (const int at = list->findText(entry, Qt::MatchExactly | Qt::MatchCaseSensitive); at >= 0)
        list->setCurrentIndex(at);
}

/// Positive numbers that a logarithmic axis shows better.
bool spans_decades(const std::vector<double>& numbers)
{
    if (numbers.empty())
        return false;
    const auto [least, greatest] = std::ranges::minmax(numbers);
    return least > 0 && greatest > 1000 * least;
}

} // namespace

ComparisonWindow::ComparisonWindow(QWidget* parent) : QDialog(parent)
{
    setObjectName("comparisonWindow");
    set_help_page(*this, "user-doc/comparison.html");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    setWindowTitle(tr("Compare fine with coarse"));
    const auto list = [this](const char* name, const QString& tip) {
        auto* box = new QComboBox(this);
        box->setObjectName(name);
        box->setToolTip(tip);
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(12);
        return box;
    };
    fine_ = list("comparisonFine", tr("The fine grid"));
    fine_property_ = list("comparisonFineProperty", tr("The property of the fine grid"));
    coarse_ = list("comparisonCoarse", tr("The coarse grid"));
    coarse_property_ = list("comparisonCoarseProperty", tr("The property of the coarse grid"));
    mapper_ = list("comparisonMapper", tr("How fine cells are matched to coarse cells"));
    for (const Lodex::CString& type : {Lodex::GeoSGridCellMapper::type(), Lodex::MetaSGridCellMapper::type()}) {
        Lodex::COSNameList paths;
        Lodex::GridObjCellMapper::mapper_list_names(paths, type);
        for (const Lodex::CString& path : paths)
            mapper_->addItem(Lodex::to_qstring(Lodex::PathName::basename(path)));
    }
    auto* choices = new QGridLayout;
    const auto row = [&](int at, const QString& text, QComboBox* first, QComboBox* second) {
        auto* label = new QLabel(text, this);
        label->setBuddy(first);
        choices->addWidget(label, at, 0);
        choices->addWidget(first, at, 1);
        if (second)
            choices->addWidget(second, at, 2);
    };
    row(0, tr("&Fine grid, property"), fine_, fine_property_);
    row(1, tr("&Coarse grid, property"), coarse_, coarse_property_);
    row(2, tr("&Mapper"), mapper_, nullptr);
    compare_ = new QPushButton(tr("Com&pare"), this);
    compare_->setObjectName("comparisonCompare");
    compare_->setToolTip(tr("Works out totals, statistics and differences"));
    choices->addWidget(compare_, 2, 2);
    choices->setColumnStretch(1, 1);
    choices->setColumnStretch(2, 1);

    verdict_ = new QLabel(this);
    verdict_->setObjectName("comparisonVerdict");
    verdict_->setWordWrap(true);
    verdict_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    table_ = new QTableWidget(0, 4, this);
    table_->setObjectName("comparisonTable");
    table_->setHorizontalHeaderLabels({tr("What"), tr("Fine"), tr("Coarse"), tr("Change")});
    table_->verticalHeader()->hide();
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setWordWrap(false);
    table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + 8);
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setToolTip(tr("The fine cells that belong to a coarse cell beside the coarse cells that have fine ones"));
    plot_ = new CrossPlot(this);
    plot_->setObjectName("comparisonPlot");
    plot_->set_diagonal(true);
    plot_->set_empty_text(tr("Choose two grids and their properties, then press Compare"));

    auto* split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(table_);
    split->addWidget(plot_);
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    split->setChildrenCollapsible(false);
    split->setSizes({500, 500});
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setObjectName("comparisonClose");
    buttons->button(QDialogButtonBox::Close)->setToolTip(tr("Closes this window"));
    const auto add = [&](const char* name, const QString& text, const QString& tip, auto&& act) {
        QPushButton* button = buttons->addButton(text, QDialogButtonBox::ActionRole);
        button->setObjectName(name);
        button->setToolTip(tip);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, act);
        return button;
    };
    difference_ =
        add("comparisonDifference", tr("Show the &difference"),
            tr("Makes the difference a property of the coarse grid and shows it"), [this] { show_difference(); });
    add("comparisonCopy", tr("Copy &table"), tr("Copies the table for a spreadsheet"), [this] { copy_table(table()); });
    add("comparisonSave", tr("&Save table..."), tr("Saves the table as comma-separated values"),
        [this] { save_table(table(), this); });
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(choices);
    layout->addWidget(verdict_);
    layout->addWidget(split, 1);
    layout->addWidget(buttons);
    resize(1040, 560);

    refill();
    for (QComboBox* box : {fine_, coarse_})
        connect(box, &QComboBox::currentIndexChanged, this, [this] {
            refill_properties();
            forget_result();
        });
    for (QComboBox* box : {fine_property_, coarse_property_, mapper_})
        connect(box, &QComboBox::currentIndexChanged, this, &ComparisonWindow::forget_result);
    connect(compare_, &QPushButton::clicked, this, &ComparisonWindow::compare);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    Lodex::GeobaseLib::instance()->attach(this);
    forget_result();
}

ComparisonWindow::~ComparisonWindow()
{
    Lodex::GeobaseLib::instance()->detach(this);
}

void ComparisonWindow::choose(const QString& fine, const QString& fine_property, const QString& coarse,
                              const QString& coarse_property, const QString& mapper)
{
    choose_entry(fine_, fine);
    choose_entry(coarse_, coarse);
    choose_entry(fine_property_, fine_property);
    choose_entry(coarse_property_, coarse_property);
    choose_entry(mapper_, mapper);
}

void ComparisonWindow::refill_later()
{
    // Objects are told of before they are gone.
    QMetaObject::invokeMethod(this, &ComparisonWindow::refill, Qt::QueuedConnection);
}

void ComparisonWindow::refill()
{
    QStringList grids;
    for (const Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()))
        grids.append(Lodex::to_qstring(object->name()));
    const QString fine = fine_->currentText(), coarse = coarse_->currentText();
    set_entries(fine_, grids);
    set_entries(coarse_, grids);
    if (coarse.isEmpty() && coarse_->count() > 1)
        coarse_->setCurrentIndex(coarse_->count() - 1);
    if (fine_->currentText() != fine || coarse_->currentText() != coarse)
        forget_result();
    refill_properties();
}

void ComparisonWindow::refill_properties()
{
    const auto fill = [this](const QComboBox* grids, QComboBox* properties) {
        const CornerPointGrid* const one = grid(grids);
        QStringList names;
        if (one)
            for (const PropertyData& property : one->header().properties)
                if (!property.on_points)
                    names.append(QString::fromStdString(property.name));
        const QString former = properties->currentText();
        set_entries(properties, names);
        if (one && !names.contains(former)) {
            const QSignalBlocker silent(properties);
            choose_entry(properties, first_property(*one));
        }
    };
    fill(fine_, fine_property_);
    fill(coarse_, coarse_property_);
}

CornerPointGrid* ComparisonWindow::grid(const QComboBox* list) const
{
    return find_grid(list->currentText().toStdString());
}

void ComparisonWindow::forget_result()
{
    table_->setRowCount(0);
    plot_->show_pairs({}, {}, {}, false, false);
    verdict_->clear();
    difference_->setEnabled(false);
    compare_->setEnabled(grid(fine_) && grid(coarse_) && grid(fine_) != grid(coarse_));
}

void ComparisonWindow::compare()
{
    forget_result();
    CornerPointGrid *const fine = grid(fine_), *const coarse = grid(coarse_);
    if (!fine || !coarse || fine == coarse) {
        verdict_->setText(tr("Choose two different grids."));
        return;
    }
    const PropertyData* const before = fine->model().find_property(fine_property_->currentText().toStdString());
    const PropertyData* const after = coarse->model().find_property(coarse_property_->currentText().toStdString());
    const auto* factory = dynamic_cast<const Lodex::CellMapperFactory*>(Lodex::FactoryLib::instance()->find(
        Lodex::GridObjCellMapperFactoriesDomain(), Lodex::to_cstring(mapper_->currentText())));
    if (!before || !after || !factory) {
        verdict_->setText(tr("Choose a property of each grid."));
        return;
    }
    PropertyComparison result;
    try {
        Lodex::ProgressTracer tracer(Lodex::to_cstring(tr("Comparing")));
        const auto part = [&tracer](double from, double to) -> ProgressCheck {
            return [&tracer, from, to](double done) { return tracer.set_done(from + (to - from) * done); };
        };
        const auto matched = factory->create()->match({.fine = fine,
                                                       .coarse = coarse,
                                                       .fine_cells = fine->active_flags(),
                                                       .coarse_cells = coarse->active_flags()},
                                                      part(0, 0.4));
        result = compare_properties(*fine, *before, *coarse, *after, matched->mapping(), part(0.4, 1));
    } catch (const Cancelled&) {
        verdict_->setText(tr("Cancelled."));
        return;
    } catch (const std::runtime_error& error) {
        verdict_->setText(QString::fromUtf8(error.what()));
        return;
    }
    struct Row {
        QString what;
        double fine, coarse;
    };
    const auto count = [](std::int64_t number) { return static_cast<double>(number); };
    const std::vector<Row> rows{{tr("Cells"), count(result.fine.count), count(result.coarse.count)},
                                {tr("Bulk volume"), result.fine.bulk_volume, result.coarse.bulk_volume},
                                {tr("Sum of value × volume"), result.fine.total, result.coarse.total},
                                {tr("Mean by volume"), result.fine.mean, result.coarse.mean},
                                {tr("Standard deviation"), result.fine.deviation, result.coarse.deviation},
                                {tr("Minimum"), result.fine.min, result.coarse.min},
                                {tr("P10"), result.fine.p10, result.coarse.p10},
                                {tr("P50"), result.fine.p50, result.coarse.p50},
                                {tr("P90"), result.fine.p90, result.coarse.p90},
                                {tr("Maximum"), result.fine.max, result.coarse.max}};
    table_->setRowCount(static_cast<int>(rows.size()));
    for (int at = 0; at < table_->rowCount(); ++at) {
        const Row& row = rows[static_cast<std::size_t>(at)];
        const double change = row.fine != 0 ? 100 * (row.coarse / row.fine - 1) : std::nan("");
        const QStringList texts{row.what, table_number(row.fine), table_number(row.coarse),
                                std::isfinite(change)
                                    ? QString::fromStdString(format_general(change, 4)) + QStringLiteral(" %")
                                    : QString()};
        for (int column = 0; column < 4; ++column) {
            auto* item = new QTableWidgetItem(texts[column]);
            if (column > 0)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            table_->setItem(at, column, item);
        }
    }
    CrossPairs pairs;
    const std::size_t step = std::max<std::size_t>(1, static_cast<std::size_t>(result.compared) / most_dots);
    std::size_t place = 0;
    for (std::size_t cell = 0; cell < result.difference.size(); ++cell) {
        if (!std::isfinite(result.difference[cell]) || place++ % step != 0)
            continue;
        const double value = value_or_nan(*after, cell);
        pairs.x.push_back(value - result.difference[cell]);
        pairs.y.push_back(value);
    }
    const bool logarithmic = spans_decades(pairs.x) && spans_decades(pairs.y);
    plot_->show_pairs(std::move(pairs), tr("Mean of the fine cells"), tr("Coarse value"), logarithmic, logarithmic);
    const GridSize& size = coarse->header().size;
    const std::int64_t at = result.largest_cell;
    verdict_->setText(result.compared == 0
                          ? tr("No coarse cell has fine cells with values.")
                          : tr("%1 coarse cells compared. Mean difference %2, mean absolute difference %3, largest %4 "
                               "at cell (%5, %6, %7).")
                                .arg(QString::number(result.compared), table_number(result.mean_difference),
                                     table_number(result.mean_absolute), table_number(result.largest_absolute),
                                     QString::number(at % size[0] + 1), QString::number(at / size[0] % size[1] + 1),
                                     QString::number(at / (size[0] * size[1]) + 1)));
    difference_->setEnabled(result.compared > 0);
}

void ComparisonWindow::show_difference()
{
    const QString name = coarse_property_->currentText() + QStringLiteral("_difference");
    const auto word = [](const QString& text) { return QString::fromStdString(lodex::quoted(text.toStdString())); };
    emit difference_requested(
        QStringLiteral("lodex on SGrid %1 compare_property %2 Coarse %3 coarse_property %4 mapper %5 difference %6")
            .arg(word(fine_->currentText()), word(fine_property_->currentText()), word(coarse_->currentText()),
                 word(coarse_property_->currentText()), word(mapper_->currentText()), word(name)),
        coarse_->currentText(), name);
}

DataTable ComparisonWindow::table() const
{
    DataTable result{.heading = {tr("What"), tr("Fine"), tr("Coarse"), tr("Change")}, .rows = {}};
    for (int row = 0; row < table_->rowCount(); ++row) {
        QStringList texts;
        for (int column = 0; column < table_->columnCount(); ++column)
            texts.append(table_->item(row, column)->text());
        result.rows.push_back(texts);
    }
    return result;
}

} // namespace lodex

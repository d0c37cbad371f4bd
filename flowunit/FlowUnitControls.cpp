// The controls of the flow unit widget and the place of the panels above the table's columns.

#include "flowunit/LQFlowUnitPropertyPanel.h"
#include "flowunit/LQFlowUnitRatioPanel.h"
#include "flowunit/LQFlowUnitWidget.h"
#include "flowunit/LQTable.h"

#include <Lodex/qtools/CommandTextValidator.h>
#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QStyle>

#include <algorithm>

namespace Kelvane {

namespace {

constexpr int kinds = LQFlowUnitPanel::kinds;
constexpr int most_panels = 20;
/// Width in pixels that the window asks for at most.
constexpr int widest = 1000;

QLabel* add_labelled(QHBoxLayout* row, const QString& text, QWidget* field, int stretch = 0)
{
    auto* label = new QLabel(text, field->parentWidget());
    label->setToolTip(field->toolTip());
    label->setBuddy(field);
    row->addWidget(label);
    row->addWidget(field, stretch);
    return label;
}

} // namespace

void LQFlowUnitWidget::init(bool createMode)
{
    if (table_)
        return;
    auto* box = new QVBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    buildGridGroup(box);
    selStraticomboBox_->setEnabled(createMode);
    newGridLineEdit_->setEnabled(createMode);
    buildNumberRow(box);
    buildTable(box);
    buildTableRow(box);
    connectControls();
    resizeTable(numPropSpinBox_->value(), numRatiosSpinBox_->value());
    tableSelectionChanged(-1, 0);
    updateNumLayers();
    updateNumFlowUnit();
    keepNumbersLegible();
}

void LQFlowUnitWidget::buildGridGroup(QVBoxLayout* box)
{
    auto* group = new QGroupBox(tr("Select a grid to analyze and name the new grid"), this);
    auto* row = new QHBoxLayout(group);
    selStraticomboBox_ = new Lodex::LQGObjSelector(Lodex::SGrid::static_type_id_(), group);
    selStraticomboBox_->setObjectName("selStraticomboBox");
    selStraticomboBox_->setToolTip(tr("Specifies the grid that contains the properties to analyze."));
    add_labelled(row, tr("Stratigraphic grid"), selStraticomboBox_, 1);
    row->addSpacing(16);
    newGridLineEdit_ = new QLineEdit(group);
    newGridLineEdit_->setObjectName("newGridLineEdit");
    newGridLineEdit_->setToolTip(tr("Specifies the name of a new grid that will contain the merged K-layers."));
    newGridLineEdit_->setValidator(new Lodex::CommandTextValidator(newGridLineEdit_));
    add_labelled(row, tr("New grid"), newGridLineEdit_, 1);
    box->addWidget(group);
}

void LQFlowUnitWidget::buildNumberRow(QVBoxLayout* box)
{
    auto* group = new QGroupBox(tr("Select one or more properties and update the table."), this);
    auto* column = new QVBoxLayout(group);
    auto* row = new QHBoxLayout;
    column->addLayout(row);
    row->addWidget(new QLabel(tr("Specify the number of properties and ratios to analyze."), group));
    row->addSpacing(16);
    const auto new_spin_box = [&](const char* name, int value, const QString& tip) {
        auto* spin_box = new QSpinBox(group);
        spin_box->setObjectName(name);
        spin_box->setToolTip(tip);
        spin_box->setRange(0, most_panels);
        spin_box->setValue(value);
        spin_box->setKeyboardTracking(false);
        return spin_box;
    };
    numPropSpinBox_ = new_spin_box("numPropSpinBox", 1, tr("Enter the number of properties to analyze."));
    add_labelled(row, tr("Properties"), numPropSpinBox_);
    row->addSpacing(8);
    numRatiosSpinBox_ = new_spin_box("numRatiosSpinBox", 0, tr("Enter the number of property ratios to analyze."));
    add_labelled(row, tr("Ratios"), numRatiosSpinBox_);
    row->addStretch(1);

    auto* hint = new QLabel(tr("Specify at least one property to analyze, and then update the table with the "
                               "calculated values for each layer.\n") +
                                tr("You can then create flow units and insert or merge layers."),
                            group);
    hint->setObjectName("hintLabel");
    column->addWidget(hint);
    box->addWidget(group);
}

QPushButton* LQFlowUnitWidget::newButton(const char* name, const QString& text, const char* icon, const QString& tip)
{
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setAutoDefault(false);
    if (icon)
        button->setIcon(Lodex::LQPixmapLib::icon(icon));
    return button;
}

void LQFlowUnitWidget::buildTableRow(QVBoxLayout* box)
{
    updateStatsPushButton_ =
        newButton("updateStatsPushButton", tr("Update"), nullptr,
                  tr("Calculates statistics for each property or ratio and fills the values in the table."));
    resetPushButton_ = newButton("resetPushButton", tr("Reset"), nullptr, tr("Reset flow unit definitions"));
    addPushButton_ = newButton("addPushButton", tr("Insert"), "table_insert_row_above", tr("Insert Flow Unit"));
    mergePushButton_ = newButton("mergePushButton", tr("Merge"), "table_merge_rows", tr("Merge with Flow Unit Above"));
    auto* row = new QHBoxLayout;
    row->addWidget(updateStatsPushButton_);
    row->addSpacing(16);
    row->addWidget(addPushButton_);
    row->addWidget(mergePushButton_);
    row->addWidget(resetPushButton_);
    row->addStretch(1);
    const auto add_number = [&](const QString& text, const char* name) {
        auto* number = new QLabel(this);
        number->setObjectName(name);
        number->setTextFormat(Qt::RichText);
        row->addWidget(new QLabel(text, this));
        row->addWidget(number);
        return number;
    };
    layers_label_ = add_number(tr("Total layers:"), "totalLayersLabel");
    row->addSpacing(16);
    units_label_ = add_number(tr("Total flow units:"), "totalFlowUnitsLabel");
    box->addLayout(row);
}

void LQFlowUnitWidget::buildTable(QVBoxLayout* box)
{
    // The panels stand in a strip that scrolls with the table, each over its four columns.
    panel_margins_ = new QHBoxLayout;
    panel_margins_->setContentsMargins(0, 0, 0, 0);
    panel_area_ = new QScrollArea(this);
    panel_area_->setObjectName("panelArea");
    panel_area_->setFrameShape(QFrame::NoFrame);
    panel_area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    panel_area_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    panel_area_->setFocusPolicy(Qt::NoFocus);
    panel_strip_ = new QWidget;
    panel_area_->setWidget(panel_strip_);
    panel_margins_->addWidget(panel_area_);
    box->addLayout(panel_margins_);

    table_ = new LQTable(this, this);
    table_->setObjectName("table");
    table_->setColumnCount(2);
    table_->setToolTip(
        tr("Table Statistics:\n") +
        tr("Flow Unit: A group of n layers with the same fluid-flow feature (generally smaller than a stratigraphic "
           "unit).\n") +
        tr("Layer Mean: The mean (average) of the property values in one layer.\n") +
        tr("Flow-Unit Mean: The mean (average) of the property values in one flow unit.\n") +
        tr("% Difference: The difference between the Layer Mean and the Flow-Unit Mean: ([Layer Mean - Flow-Unit "
           "Mean]/Flow Unit Mean) %.\n") +
        tr("Heterogeneity: The Dykstra-Parsons coefficient for one layer: VDP=(P50-P84.1)/P50 where P84.1=k is such "
           "that Prob(K<k)=.841 and P50 is the median.\n") +
        tr("Stratigraphic Unit: A group of n layers representing the same geologic feature (generally larger than a "
           "flow unit).\n"));
    table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + 6);
    table_->horizontalHeader()->setHighlightSections(false);
    table_->setMinimumHeight(table_->verticalHeader()->defaultSectionSize() * 8);
    table_->viewport()->installEventFilter(this);
    box->addWidget(table_, 1);
}

void LQFlowUnitWidget::connectControls()
{
    connect(selStraticomboBox_, &Lodex::LQMultiComboBox::selectionChanged, this,
            qOverload<>(&LQFlowUnitWidget::sgridSelectionChanged));
    connect(newGridLineEdit_, &QLineEdit::textChanged, this, &LQFlowUnitWidget::setNewGridName);
    connect(numPropSpinBox_, &QSpinBox::valueChanged, this, &LQFlowUnitWidget::numPropertyPanelChanged);
    connect(numRatiosSpinBox_, &QSpinBox::valueChanged, this, &LQFlowUnitWidget::numRatioPanelChanged);
    connect(table_, &QTableWidget::currentCellChanged, this, &LQFlowUnitWidget::tableSelectionChanged);
    // A click on a row number keeps the current column, which the view's own handling would not.
    disconnect(table_->verticalHeader(), &QHeaderView::sectionPressed, table_, nullptr);
    disconnect(table_->verticalHeader(), &QHeaderView::sectionEntered, table_, nullptr);
    connect(table_->verticalHeader(), &QHeaderView::sectionClicked, this, &LQFlowUnitWidget::tableVHeaderReleased);
    connect(updateStatsPushButton_, &QPushButton::clicked, this, &LQFlowUnitWidget::updateStatistics);
    connect(addPushButton_, &QPushButton::clicked, this, &LQFlowUnitWidget::addFlowUnit);
    connect(mergePushButton_, &QPushButton::clicked, this, &LQFlowUnitWidget::mergeFlowUnit);
    connect(resetPushButton_, &QPushButton::clicked, this, &LQFlowUnitWidget::resetFlowUnit);
    connect(table_->horizontalHeader(), &QHeaderView::sectionResized, this, &LQFlowUnitWidget::resizeLQFlowUnitPanel);
    connect(table_->horizontalHeader(), &QHeaderView::sectionHandleDoubleClicked, this,
            &LQFlowUnitWidget::resizeAllLQFlowUnitPanel);
    connect(table_->horizontalScrollBar(), &QScrollBar::valueChanged, panel_area_->horizontalScrollBar(),
            &QScrollBar::setValue);
}

void LQFlowUnitWidget::connectPanel(LQFlowUnitPanel* panel)
{
    connect(panel, &LQFlowUnitPanel::mustBeUpdatedSignal, this, &LQFlowUnitWidget::panelsUpdate);
    connect(panel, &LQFlowUnitPanel::colormapUpdateSignal, this, &LQFlowUnitWidget::tableUpdate);
    connect(panel, &LQFlowUnitPanel::guessFlowUnitSignal, this, &LQFlowUnitWidget::guessFlowUnit);
    panel->installEventFilter(this);
    panel->changeSGrid(grid_);
}

void LQFlowUnitWidget::numPropertyPanelChanged(int number)
{
    if (!putOff([this, number] { numPropertyPanelChanged(number); }))
        resizeTable(number, static_cast<int>(ratio_panels_.size()));
}

void LQFlowUnitWidget::numRatioPanelChanged(int number)
{
    if (!putOff([this, number] { numRatioPanelChanged(number); }))
        resizeTable(static_cast<int>(property_panels_.size()), number);
}

void LQFlowUnitWidget::resizeTable(int property_panels, int ratio_panels)
{
    const auto fit = [&]<class Panel>(QList<Panel*>& list, qsizetype wanted) {
        while (list.size() > std::max<qsizetype>(wanted, 0)) {
            Panel* panel = list.last();
            const int column = blockColumn(panel);
            list.removeLast();
            for (int kind = 0; kind < kinds; ++kind)
                table_->removeColumn(column);
            delete panel;
        }
        while (list.size() < wanted) {
            auto* panel = new Panel(this, static_cast<int>(list.size()) + 1, panel_strip_);
            list.append(panel);
            insertBlock(blockColumn(panel));
            connectPanel(panel);
            panel->show();
            panelsUpdate();
        }
    };
    fit(property_panels_, property_panels);
    fit(ratio_panels_, ratio_panels);
    updateHeader();
    alignPanels();
}

void LQFlowUnitWidget::insertBlock(int column)
{
    for (int kind = 0; kind < kinds; ++kind)
        table_->insertColumn(column);
}

void LQFlowUnitWidget::updateHeader()
{
    static const char* const block[kinds] = {QT_TR_NOOP("Layer Mean"), QT_TR_NOOP("Flow Unit Mean"),
                                             QT_TR_NOOP("% Difference"), QT_TR_NOOP("Heterogeneity")};
    QStringList labels{tr("Flow Unit")};
    int panel_width = 0;
    for (const LQFlowUnitPanel* panel : panels()) {
        for (const char* label : block)
            labels.append(tr(label));
        panel_width = std::max(panel_width, panel->minimumSizeHint().width());
    }
    labels.append(tr("Stratigraphic Unit"));
    table_->setHorizontalHeaderLabels(labels);

    // No column so narrow that its panel would not fit over the four of them.
    QHeaderView* header = table_->horizontalHeader();
    const int least = (panel_width + kinds - 1) / kinds;
    header->setMinimumSectionSize(std::max(least, header->fontMetrics().horizontalAdvance(tr(block[1])) + 16));
    header->setDefaultSectionSize(header->minimumSectionSize());
    const int last = table_->columnCount() - 1;
    table_->setColumnWidth(last, std::max(table_->columnWidth(last),
                                          header->fontMetrics().horizontalAdvance(labels.last()) + 24));
}

void LQFlowUnitWidget::alignPanels()
{
    // The area covers exactly the table's columns: neither its row numbers nor its scroll bar.
    const QRect inner = table_->viewport()->geometry();
    const QMargins margins(inner.left(), 0, std::max(table_->width() - inner.right() - 1, 0), 0);
    if (panel_margins_->contentsMargins() != margins)
        panel_margins_->setContentsMargins(margins);

    const QHeaderView* header = table_->horizontalHeader();
    int height = 0;
    for (const LQFlowUnitPanel* panel : panels())
        height = std::max(height, panel->sizeHint().height());
    for (LQFlowUnitPanel* panel : panels()) {
        const int first = blockColumn(panel);
        int width = 0;
        for (int kind = 0; kind < kinds; ++kind)
            width += header->sectionSize(first + kind);
        panel->setGeometry(header->sectionPosition(first), 0, width, height);
    }
    panel_strip_->setFixedSize(std::max(header->length(), 1), std::max(height, 1));
    panel_area_->setFixedHeight(height);
    panel_area_->setVisible(height > 0);
    panel_area_->horizontalScrollBar()->setValue(table_->horizontalScrollBar()->value());
}

void LQFlowUnitWidget::resizeLQFlowUnitPanel(int)
{
    alignPanels(); // the panels to the right move as well
}

void LQFlowUnitWidget::resizeAllLQFlowUnitPanel(int section)
{
    if (section >= 0 && section < table_->columnCount())
        table_->resizeColumnToContents(section);
    alignPanels();
}

bool LQFlowUnitWidget::eventFilter(QObject* watched, QEvent* event)
{
    const bool of_table = watched == table_->viewport();
    if (of_table ? event->type() == QEvent::Resize || event->type() == QEvent::Move
                 : event->type() == QEvent::LayoutRequest)
        alignPanels();
    return QWidget::eventFilter(watched, event);
}

QSize LQFlowUnitWidget::sizeHint() const
{
    const QSize hint = QWidget::sizeHint();
    if (!table_)
        return hint;
    // Wide enough for all columns of the first panels.
    const int columns = table_->horizontalHeader()->length() + 2 * table_->frameWidth() +
                        std::max(table_->verticalHeader()->sizeHint().width(), 32) +
                        style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    return {std::max(hint.width(), std::min(columns, widest)), hint.height()};
}

void LQFlowUnitWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && units_label_)
        keepNumbersLegible();
}

void LQFlowUnitWidget::keepNumbersLegible()
{
    // The numbers are blue whatever the palette: on a dark window they get a light ground.
    const bool dark = palette().color(QPalette::Window).lightness() < 128;
    for (QLabel* number : {layers_label_, units_label_}) {
        QPalette ground = palette();
        if (dark)
            ground.setColor(QPalette::Window, QColor(225, 225, 225));
        number->setPalette(ground);
        number->setAutoFillBackground(dark);
        number->setMargin(dark ? 2 : 0);
    }
}

} // namespace Kelvane

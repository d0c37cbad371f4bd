#pragma once

#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/utils/CString.h>
#include <Lodex/utils/List.h>
#include <Lodex/volumes/GridModificationData.h>

#include <QColor>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

class QGroupBox;
class QHBoxLayout;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;
class QSpinBox;
class QVBoxLayout;

namespace Lodex {
class LayerInfo;
class LQGObjSelector;
class SGrid;
} // namespace Lodex

namespace Kelvane {

class LQFlowUnitPanel;
class LQFlowUnitPropertyPanel;
class LQFlowUnitRatioPanel;
class LQTable;

/// Working area of the flow unit analysis: one table row per K layer of a grid, its flow unit in the first column, then
/// four columns of statistics per panel (property panels first, then ratio panels), the stratigraphic unit in the last.
///
/// The first column is the model. Its numbers start at 1 in the first row, never decrease and leave none out; every
/// operation keeps that. Rows are 0-based, flow units and layers 1-based.
class LQFlowUnitWidget : public QWidget {
    Q_OBJECT

public:
    explicit LQFlowUnitWidget(QWidget* parent = nullptr);
    ~LQFlowUnitWidget() override;

    /// Builds the controls; a second call does nothing. Only in create mode, where a new grid is made, can the user
    /// choose the grid and name the new one; else a coarsening of the given grid is recorded.
    void init(bool createMode);

    [[nodiscard]] Lodex::LQGObjSelector* gridSelector() const { return selStraticomboBox_; }
    [[nodiscard]] QLineEdit* newGridField() const { return newGridLineEdit_; }
    [[nodiscard]] Lodex::SGrid* getSGrid() const { return grid_; }

    /// Flow unit of a row, -1 outside the table.
    [[nodiscard]] int getUnit(int row) const;
    /// -1 for an empty table.
    [[nodiscard]] int numFlowUnits() const;
    /// First row of a flow unit, -1 when there is no such unit.
    [[nodiscard]] int getFlowUnitPos(int unit) const;
    /// Number of rows of a flow unit, -1 when there is no such unit.
    [[nodiscard]] int sizeFlowUnit(int unit) const;
    [[nodiscard]] Lodex::List<int> getFlowUnitsList() const;
    [[nodiscard]] int numKLayers() const;

    /// The grid's stratigraphic units from the top: names and numbers of K layers. Without any, the user is asked or
    /// told, and the result is empty.
    std::vector<Lodex::LayerInfo*> getStratigraphicUnits(QStringList& names, QList<long>& sizes);
    /// 1-based number of the stratigraphic unit of each K layer, as read last.
    [[nodiscard]] const std::vector<int>& stratigraphicUnitNumbers() const { return stratigraphic_numbers_; }

    [[nodiscard]] LQFlowUnitPanel* getPropertyPanel(int number) const;
    [[nodiscard]] LQFlowUnitPanel* getRatioPanel(int number) const;
    /// Null for the first and the last column.
    [[nodiscard]] LQFlowUnitPanel* getPanelFromColNumber(int column) const;
    /// Background of a table cell; invalid for a plainly painted one.
    [[nodiscard]] QColor getCellColor(int row, int column) const;

    /// The analysis as tab-separated text, the same in every language.
    [[nodiscard]] QString upgriddingText() const;
    [[nodiscard]] QSize sizeHint() const override;

public slots:
    void numPropertyPanelChanged(int number);
    void numRatioPanelChanged(int number);
    void sgridSelectionChanged();
    void sgridSelectionChanged(const QString& name);
    void sgridSelectionChanged(Lodex::SGrid* grid);
    void setNewGridName(const QString& name);

    void resetFlowUnit();
    void addFlowUnit();
    void mergeFlowUnit();
    /// Numbers that would break the rules of the first column are not taken.
    void setFlowUnit(const Lodex::List<int>& units);
    void guessFlowUnit(int panelNumber, bool isRatio);
    void update_guess();

    void updateStatistics();
    void panelsUpdate();
    void updateNumFlowUnit();
    void updateNumLayers();

    void tableSelectionChanged(int row, int column);
    void tableUpdate();
    void tableVHeaderReleased(int row);
    void keyPressed(QKeyEvent* event);
    void resizeLQFlowUnitPanel(int section);
    void resizeAllLQFlowUnitPanel(int section);

    /// Sends the merge command that ends with `tail`. True once it is sent, whatever the host makes of it.
    bool launchUpgriddingProcess(const Lodex::CString& tail);
    /// Records how the coarse layers come from the fine ones. False when there is no record in the end.
    bool saveUpgridding(bool create);
    void saveUpgridding2Txt();
    /// Whether the flow units can be made into a grid; the first thing that stands against it is reported.
    bool checkUpgridding();
    void showTest();

signals:
    /// The table shows other numbers or other flow units.
    void statisticsUpdated();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    /// A run of rows with the same number.
    struct Unit {
        int first; ///< row
        int size;
    };
    /// Marks the statistics as outdated when the grid changes and lets go of a grid that goes.
    class GridObserver : public Lodex::GObjObserver {
    public:
        explicit GridObserver(LQFlowUnitWidget* widget) : widget_(widget) {}
        void update(Lodex::Component*) override { widget_->statisticsOutdated(); }
        void disconnect(Lodex::Component* component) override
        {
            GObjObserver::disconnect(component);
            widget_->gridGone();
        }

    private:
        LQFlowUnitWidget* widget_;
    };

    // controls
    void buildGridGroup(QVBoxLayout* box);
    void buildNumberRow(QVBoxLayout* box);
    void buildTableRow(QVBoxLayout* box);
    void buildTable(QVBoxLayout* box);
    void connectControls();
    QPushButton* newButton(const char* name, const QString& text, const char* icon, const QString& tip);
    void connectPanel(LQFlowUnitPanel* panel);
    void insertBlock(int column);
    void resizeTable(int property_panels, int ratio_panels);
    void updateHeader();
    void alignPanels();
    void keepNumbersLegible();

    void chooseGrid(Lodex::SGrid* grid);
    void gridGone();
    void initTableLayers(bool rebuild);
    [[nodiscard]] std::vector<Unit> units() const;
    [[nodiscard]] bool startsUnit(int row) const;
    [[nodiscard]] bool canInsert(int row) const;
    [[nodiscard]] bool canMerge(int row) const;
    void shiftUnits(int row, int change);
    void writeUnit(int row, int unit);
    void statisticsOutdated();
    void flowUnitsChanged();

    // A run lets events in; what would take its table or its panels away waits for its end.
    [[nodiscard]] bool putOff(std::function<void()> action);
    void endRun();

    // statistics
    [[nodiscard]] std::vector<LQFlowUnitPanel*> panels() const;
    [[nodiscard]] int blockColumn(const LQFlowUnitPanel* panel) const;
    [[nodiscard]] bool computePanel(LQFlowUnitPanel* panel);
    void showPanel(LQFlowUnitPanel* panel);
    void clearPanel(LQFlowUnitPanel* panel);
    [[nodiscard]] static QColor getDeltaColor(const LQFlowUnitPanel& panel, float value);

    void addModifications(Lodex::GridCoarseningData& coarsening) const;
    /// False when the K layers of `coarse` are known to come from others than the rows of the flow units.
    [[nodiscard]] bool mayComeFromUnits(const Lodex::SGrid& coarse) const;

    Lodex::SGrid* grid_ = nullptr;
    GridObserver grid_observer_{this};
    QString new_grid_name_;
    bool must_update_ = true; ///< the statistics of all panels are outdated
    bool has_stratigraphic_units_ = false;
    std::vector<int> stratigraphic_numbers_;
    QList<LQFlowUnitPropertyPanel*> property_panels_;
    QList<LQFlowUnitRatioPanel*> ratio_panels_;
    bool running_ = false; ///< statistics or flow units are being worked out
    std::vector<std::function<void()>> after_run_;

    Lodex::LQGObjSelector* selStraticomboBox_ = nullptr;
    QLineEdit* newGridLineEdit_ = nullptr;
    QSpinBox* numPropSpinBox_ = nullptr;
    QSpinBox* numRatiosSpinBox_ = nullptr;
    QPushButton* updateStatsPushButton_ = nullptr;
    QPushButton* resetPushButton_ = nullptr;
    QPushButton* addPushButton_ = nullptr;
    QPushButton* mergePushButton_ = nullptr;
    QLabel* layers_label_ = nullptr;
    QLabel* units_label_ = nullptr;
    LQTable* table_ = nullptr;
    QHBoxLayout* panel_margins_ = nullptr; ///< holds the panels' area in line with the table's columns
    QScrollArea* panel_area_ = nullptr;
    QWidget* panel_strip_ = nullptr;
};

} // namespace Kelvane

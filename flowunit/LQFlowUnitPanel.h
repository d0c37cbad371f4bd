#pragma once

#include <Kelvane/upscaling/FlowUnitStatsManager.h>
#include <Lodex/gtools/Colormap.h>

#include <QColor>
#include <QWidget>

#include <array>
#include <memory>
#include <vector>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace Lodex {
class LQGObjContextSelector;
class Property;
class SGrid;
} // namespace Lodex

namespace Kelvane {

class LQColormapPropertyObserver;
class LQFlowUnitWidget;

/// Settings of one analysed quantity: what is averaged and how, in which region, in which colours its four table
/// columns are painted, and how flow units are made from it.
class LQFlowUnitPanel : public QWidget {
    Q_OBJECT

public:
    using GuessMethod = FlowUnitStatsManager::GuessMethod;
    /// Columns of a panel's block in the table; the kinds of the statistics manager.
    static constexpr int kinds = 4;

    ~LQFlowUnitPanel() override;

    [[nodiscard]] LQFlowUnitWidget* owner() const { return owner_; }
    /// Number within its kind, from 1.
    [[nodiscard]] int getNum() const { return number_; }
    [[nodiscard]] bool isRatio() const { return is_ratio_; }
    [[nodiscard]] Lodex::SGrid* getSGrid() const { return grid_; }

    /// Empty when none is chosen.
    [[nodiscard]] QString getPropertyName() const;
    [[nodiscard]] QString getRegionName() const;
    [[nodiscard]] QString averagingMethod() const;
    /// 0, and *ok false, when the text does not read as a number.
    [[nodiscard]] float getPowerValue(bool* ok = nullptr) const;
    /// Always true for methods that have no power. What is wrong is reported to the user.
    [[nodiscard]] bool isPowervalueValid() const;
    /// False for methods that take no weights, whatever the check box shows.
    [[nodiscard]] bool isVolWeightedChecked() const;

    [[nodiscard]] GuessMethod getThresholdMethod() const;
    /// 0, and *ok false, when the text does not read as the kind of number that the method wants.
    [[nodiscard]] double getThresholdValue(GuessMethod method, bool* ok) const;
    /// Enables or disables the button that creates flow units.
    void setGuess(bool on);

    /// Whether the statistics shown are older than the settings.
    [[nodiscard]] bool mustBeUpdated() const { return must_be_updated_; }
    void mustBeUpdated(bool on) { must_be_updated_ = on; }
    [[nodiscard]] FlowUnitStatsManager* get_manager() const { return manager_.get(); }

    /// Range of the numbers of one kind of column, for the colours.
    void setMinMax(float min, float max, int kind);
    void getMinMax(float& min, float& max, int kind) const;
    /// The numbers that the table shows, one per row; empty when it shows none.
    [[nodiscard]] std::vector<float>& shown(int kind) { return shown_.at(static_cast<std::size_t>(kind)); }
    [[nodiscard]] const std::vector<float>& shown(int kind) const { return shown_.at(static_cast<std::size_t>(kind)); }

    /// That of the property chosen last; null as long as none has been.
    [[nodiscard]] const Lodex::Colormap* getColormap() const { return colormap_.get(); }
    [[nodiscard]] double getLowclipValue() const { return low_clip_; }
    [[nodiscard]] double getHighclipValue() const { return high_clip_; }
    /// Colour at a place between the ends of the colour map, 0 to 1; invalid without a colour map.
    [[nodiscard]] QColor colorAt(double place) const;
    /// A new colour map from the style of the grid's property of this name, whose clips the panel takes over; null when
    /// there is no such property.
    [[nodiscard]] std::unique_ptr<Lodex::Colormap> getColormap(const QString& property_name);
    /// Reloads the colour map of the chosen property.
    void colormapUpdate();

public slots:
    virtual void changeSGrid(Lodex::SGrid* grid);
    void averagingClicked(const QString& method);
    void changeProperty(const QString& name);
    void changeRegion(const QString& name);
    void volWeightedChecked();
    void powerValueHasChanged(const QString& text);
    void guessFlowUnit();
    void guessChanged(const QString& method);

signals:
    void colormapUpdateSignal();
    void mustBeUpdatedSignal();
    void guessFlowUnitSignal(int panel_number, bool is_ratio);

protected:
    LQFlowUnitPanel(LQFlowUnitWidget* owner, int number, bool is_ratio, const QString& title,
                    const QString& property_tip, QWidget* parent);

    /// A labelled list of the grid's items of one kind in a new row below those that are there; `beside`, when not
    /// null, stands to its right.
    Lodex::LQGObjContextSelector* add_selector(const char* name, const char* key, const QString& text,
                                               const QString& tip, QWidget* beside = nullptr);
    /// The rows below the choice of what is analysed.
    void build_settings();
    void settings_changed();

private:
    void build_creation();
    QLabel* add_label(int row, const QString& text, QWidget* field);
    void colormapChanged(const QString& property_name);
    void setColormap(std::unique_ptr<Lodex::Colormap> colormap);
    [[nodiscard]] Lodex::Property* find_property(const QString& name) const;

    LQFlowUnitWidget* owner_;
    int number_;
    bool is_ratio_;
    Lodex::SGrid* grid_ = nullptr;
    bool must_be_updated_ = true;

    QGroupBox* group_;
    QGridLayout* rows_;
    Lodex::LQGObjContextSelector* property_;
    Lodex::LQGObjContextSelector* region_ = nullptr;
    QComboBox* averagingComboBox_ = nullptr;
    QCheckBox* volCheckBox_ = nullptr;
    QLabel* valueTextLabel_ = nullptr;
    QLineEdit* valueLineEdit_ = nullptr;
    QComboBox* guessComboBox_ = nullptr;
    QLineEdit* guessLineEdit_ = nullptr;
    QPushButton* guessPushButton_ = nullptr;

    std::unique_ptr<Lodex::Colormap> colormap_;
    std::vector<QRgb> colors_; ///< of the colour map at even places, so that a table is painted quickly
    double low_clip_ = 0;
    double high_clip_ = 0;
    std::unique_ptr<LQColormapPropertyObserver> observer_;
    std::array<std::array<float, 2>, kinds> ranges_{};
    std::array<std::vector<float>, kinds> shown_;
    std::unique_ptr<FlowUnitStatsManager> manager_;
};

} // namespace Kelvane

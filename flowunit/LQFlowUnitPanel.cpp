#include "flowunit/LQFlowUnitPanel.h"

#include "flowunit/LQColormapPropertyObserver.h"

#include <Kelvane/upscaling/Upscaler.h>
#include <Kelvane/upscaling/UpscalerTypes.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/qtools/LQPixmapLib.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/utils/COSUri.h>
#include <Lodex/utils/FactoryLib.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/utils/PathName.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <cmath>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;
using Lodex::to_qstring;

namespace {

constexpr int color_steps = 256;
/// Properties that have one number a cell.
constexpr const char* property_key = "properties1d";

bool is_power(const QString& method)
{
    return to_cstring(method) == PowerUpscalerType::type();
}

/// Whether volume weighting means something for the method.
bool takes_weights(const QString& method)
{
    static const std::array without{MaxUpscalerType::type(),    MinUpscalerType::type(),
                                    MostProbableUpscalerType::type(), SumUpscalerType::type(),
                                    MedianUpscalerType::type(), NumberUpscalerType::type(),
                                    DykstraParsonCoeffUpscalerType::type()};
    return std::ranges::find(without, to_cstring(method)) == without.end();
}

/// A finite number in the C locale; 0 when the text is none.
float to_float(const QString& text, bool* ok)
{
    bool reads = false;
    const float value = text.toFloat(&reads);
    // A text such as "nan" is no number that one can compute with; "inf" is one, out of every range.
    reads = reads && !std::isnan(value);
    if (ok)
        *ok = reads;
    return reads ? value : 0.0F;
}

} // namespace

LQFlowUnitPanel::LQFlowUnitPanel(LQFlowUnitWidget* owner, int number, bool is_ratio, const QString& title,
                                 const QString& property_tip, QWidget* parent)
    : QWidget(parent), owner_(owner), number_(number), is_ratio_(is_ratio), group_(new QGroupBox(title, this)),
      rows_(new QGridLayout(group_)), manager_(FlowUnitStatsManager::create())
{
    auto* box = new QVBoxLayout(this);
    box->setContentsMargins(2, 0, 2, 0);
    box->addWidget(group_);
    rows_->setColumnStretch(1, 1);
    property_ = add_selector("propertyComboBox", property_key, tr("Property"), property_tip);
    connect(property_, &Lodex::LQMultiComboBox::selectionChanged, this,
            [this] { changeProperty(property_->currentText()); });
}

LQFlowUnitPanel::~LQFlowUnitPanel() = default;

QLabel* LQFlowUnitPanel::add_label(int row, const QString& text, QWidget* field)
{
    auto* label = new QLabel(text, group_);
    label->setToolTip(field->toolTip());
    label->setBuddy(field);
    rows_->addWidget(label, row, 0);
    return label;
}

Lodex::LQGObjContextSelector* LQFlowUnitPanel::add_selector(const char* name, const char* key, const QString& text,
                                                            const QString& tip, QWidget* beside)
{
    auto* selector = new Lodex::LQGObjContextSelector(key, group_);
    selector->setObjectName(name);
    selector->setToolTip(tip);
    selector->setMinimumContentsLength(8);
    selector->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    const int row = rows_->count() == 0 ? 0 : rows_->rowCount();
    add_label(row, text, selector);
    rows_->addWidget(selector, row, 1, 1, beside ? 1 : 2);
    if (beside)
        rows_->addWidget(beside, row, 2);
    return selector;
}

void LQFlowUnitPanel::build_settings()
{
    const int row = rows_->rowCount();
    averagingComboBox_ = new QComboBox(group_);
    averagingComboBox_->setObjectName("averagingComboBox");
    averagingComboBox_->setToolTip(tr("Describe how to average the property within each layer"));
    averagingComboBox_->setMinimumContentsLength(8);
    averagingComboBox_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    Lodex::COSNameList types;
    Lodex::FactoryLib::instance()->list(KelvaneGridObjUpscalerFactoriesDomain(), "upgridder", types);
    for (const Lodex::CString& type : types)
        averagingComboBox_->addItem(to_qstring(Lodex::PathName::basename(type)));
    add_label(row, tr("Mean"), averagingComboBox_);
    rows_->addWidget(averagingComboBox_, row, 1);
    valueLineEdit_ = new QLineEdit(QStringLiteral("0"), group_);
    valueLineEdit_->setObjectName("valueLineEdit");
    valueLineEdit_->setToolTip(tr("Power value of the averaging method."));
    valueLineEdit_->setMinimumWidth(valueLineEdit_->fontMetrics().horizontalAdvance(QStringLiteral("-0.000")) + 12);
    valueTextLabel_ = new QLabel(tr("Power"), group_);
    valueTextLabel_->setObjectName("valueTextLabel");
    valueTextLabel_->setToolTip(valueLineEdit_->toolTip());
    valueTextLabel_->setBuddy(valueLineEdit_);
    auto* power = new QHBoxLayout;
    power->addWidget(valueTextLabel_);
    power->addWidget(valueLineEdit_, 1);
    rows_->addLayout(power, row, 2);

    volCheckBox_ = new QCheckBox(tr("Volume weighted"), group_);
    volCheckBox_->setObjectName("volCheckBox");
    volCheckBox_->setToolTip(tr("The contribution of each cell will be weighted by its volume."));
    volCheckBox_->setChecked(true);
    region_ = add_selector("regionComboBox", "regions_plus", tr("Region"),
                           tr("Select the region whose cells are analyzed."), volCheckBox_);
    build_creation();

    connect(averagingComboBox_, &QComboBox::currentTextChanged, this, &LQFlowUnitPanel::averagingClicked);
    connect(volCheckBox_, &QCheckBox::toggled, this, &LQFlowUnitPanel::volWeightedChecked);
    connect(valueLineEdit_, &QLineEdit::textChanged, this, &LQFlowUnitPanel::powerValueHasChanged);
    connect(region_, &Lodex::LQMultiComboBox::selectionChanged, this,
            [this] { changeRegion(region_->currentText()); });
    averagingClicked(averagingMethod());
}

void LQFlowUnitPanel::build_creation()
{
    const int row = rows_->rowCount();
    guessComboBox_ = new QComboBox(group_);
    guessComboBox_->setObjectName("guessComboBox");
    guessComboBox_->addItems({tr("number of flow units"), tr("deviation from mean"), tr("deviation from mean (%)"),
                              tr("maximum difference (%)"), tr("maximum threshold"), tr("minimum threshold")});
    guessComboBox_->setToolTip(tr("Calculate flow units from::\n") +
                               tr("Number of flow units: Group layers with the closest means to create n flow "
                                  "units.\n") +
                               tr("Deviation from mean: Group layers with deviations from mean below n.\n") +
                               tr("Deviation from mean (%): Group layers with deviations from mean below n%.\n") +
                               tr("Maximum difference (%): Group layers with differences below n%.\n") +
                               tr("Maximum threshold: Group layers with layer means below n.\n") +
                               tr("Minimum threshold: Group layers with layer means above n.\n"));
    guessComboBox_->setMinimumContentsLength(8);
    guessComboBox_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    guessLineEdit_ = new QLineEdit(group_);
    guessLineEdit_->setObjectName("guessLineEdit");
    guessLineEdit_->setPlaceholderText(QStringLiteral("n"));
    guessLineEdit_->setToolTip(guessComboBox_->toolTip());
    guessLineEdit_->setMinimumWidth(guessLineEdit_->fontMetrics().horizontalAdvance(QStringLiteral("0.0000")) + 12);
    guessPushButton_ =
        new QPushButton(Lodex::LQPixmapLib::icon("flow_units"), tr("Create flow units"), group_);
    guessPushButton_->setObjectName("guessPushButton");
    guessPushButton_->setToolTip(tr("Create Flow Units: Merges layers that meet the specified criterion."));
    guessPushButton_->setAutoDefault(false);

    auto* label = add_label(row, tr("Calculate flow units from:"), guessComboBox_);
    rows_->removeWidget(label);
    rows_->addWidget(label, row, 0, 1, 3);
    auto* line = new QHBoxLayout;
    line->addWidget(guessComboBox_, 2);
    line->addWidget(guessLineEdit_, 1);
    line->addWidget(guessPushButton_);
    rows_->addLayout(line, row + 1, 0, 1, 3);
    rows_->setRowStretch(row + 2, 1);

    connect(guessComboBox_, &QComboBox::textActivated, this, &LQFlowUnitPanel::guessChanged);
    connect(guessPushButton_, &QPushButton::clicked, this, &LQFlowUnitPanel::guessFlowUnit);
}

QString LQFlowUnitPanel::getPropertyName() const
{
    return property_->currentText();
}

QString LQFlowUnitPanel::getRegionName() const
{
    return region_->currentText();
}

QString LQFlowUnitPanel::averagingMethod() const
{
    return averagingComboBox_->currentText();
}

float LQFlowUnitPanel::getPowerValue(bool* ok) const
{
    return to_float(valueLineEdit_->text(), ok);
}

bool LQFlowUnitPanel::isPowervalueValid() const
{
    if (!is_power(averagingMethod()))
        return true;
    bool ok = false;
    const float power = getPowerValue(&ok);
    if (!ok) {
        Logger::fatal(Format(to_cstring(tr("Cannot evaluate the power value.\n"))));
        return false;
    }
    if (power < -1 || power > 1) {
        Logger::fatal(Format(to_cstring(tr("The power value must be in [-1;1] range.\n"))));
        return false;
    }
    return true;
}

bool LQFlowUnitPanel::isVolWeightedChecked() const
{
    return takes_weights(averagingMethod()) && volCheckBox_->isChecked();
}

LQFlowUnitPanel::GuessMethod LQFlowUnitPanel::getThresholdMethod() const
{
    return static_cast<GuessMethod>(guessComboBox_->currentIndex());
}

double LQFlowUnitPanel::getThresholdValue(GuessMethod method, bool* ok) const
{
    if (method != FlowUnitStatsManager::NumberOfFlowUnits)
        return to_float(guessLineEdit_->text(), ok);
    bool reads = false;
    const int number = guessLineEdit_->text().toInt(&reads, 10);
    if (ok)
        *ok = reads;
    return reads ? number : 0;
}

void LQFlowUnitPanel::setGuess(bool on)
{
    guessPushButton_->setEnabled(on);
}

void LQFlowUnitPanel::setMinMax(float min, float max, int kind)
{
    ranges_.at(static_cast<std::size_t>(kind)) = {min, max};
}

void LQFlowUnitPanel::getMinMax(float& min, float& max, int kind) const
{
    min = ranges_.at(static_cast<std::size_t>(kind))[0];
    max = ranges_.at(static_cast<std::size_t>(kind))[1];
}

void LQFlowUnitPanel::settings_changed()
{
    mustBeUpdated(true);
    emit mustBeUpdatedSignal();
}

void LQFlowUnitPanel::changeSGrid(Lodex::SGrid* grid)
{
    grid_ = grid;
    property_->setObject(grid);
    region_->setObject(grid);
    mustBeUpdated(true);
    // A property of the same name has another style in another grid.
    colormapUpdate();
}

void LQFlowUnitPanel::averagingClicked(const QString& method)
{
    valueLineEdit_->setEnabled(is_power(method));
    valueTextLabel_->setEnabled(is_power(method));
    volCheckBox_->setEnabled(takes_weights(method));
    settings_changed();
}

void LQFlowUnitPanel::changeProperty(const QString& name)
{
    settings_changed();
    colormapChanged(name);
}

void LQFlowUnitPanel::changeRegion(const QString&)
{
    settings_changed();
}

void LQFlowUnitPanel::volWeightedChecked()
{
    settings_changed();
}

void LQFlowUnitPanel::powerValueHasChanged(const QString&)
{
    settings_changed();
}

void LQFlowUnitPanel::guessFlowUnit()
{
    setGuess(false);
    emit guessFlowUnitSignal(number_, is_ratio_);
}

void LQFlowUnitPanel::guessChanged(const QString&)
{
    setGuess(true);
}

Lodex::Property* LQFlowUnitPanel::find_property(const QString& name) const
{
    if (!grid_ || name.isEmpty()) // a grid that goes has emptied the list, and must not be asked any more
        return nullptr;
    const Lodex::PropertyDB* properties = grid_->property_db();
    if (!properties)
        return nullptr;
    Lodex::Property* property = properties->find(Lodex::COSUri(to_cstring(name)).name());
    return property ? property : properties->find(to_cstring(name)); // a name with a "/" in it
}

std::unique_ptr<Lodex::Colormap> LQFlowUnitPanel::getColormap(const QString& property_name)
{
    const Lodex::Property* property = find_property(property_name);
    if (!property)
        return nullptr;
    const auto number = [&](const char* attribute) {
        return to_qstring(property->style()->attribute(attribute)).toDouble();
    };
    low_clip_ = number("low_clip");
    high_clip_ = number("high_clip");
    return std::make_unique<Lodex::Colormap>(*property->style());
}

QColor LQFlowUnitPanel::colorAt(double place) const
{
    if (colors_.empty() || std::isnan(place))
        return {};
    return QColor::fromRgb(
        colors_[static_cast<std::size_t>(std::lround(std::clamp(place, 0.0, 1.0) * (color_steps - 1)))]);
}

void LQFlowUnitPanel::setColormap(std::unique_ptr<Lodex::Colormap> colormap)
{
    colormap_ = std::move(colormap);
    colors_.clear();
    for (int step = 0; step < color_steps; ++step) {
        const auto [red, green, blue] = colormap_->colour(static_cast<double>(step) / (color_steps - 1));
        colors_.push_back(qRgb(red, green, blue));
    }
    emit colormapUpdateSignal();
}

void LQFlowUnitPanel::colormapUpdate()
{
    colormapChanged(getPropertyName());
}

void LQFlowUnitPanel::colormapChanged(const QString& property_name)
{
    if (auto colormap = getColormap(property_name))
        setColormap(std::move(colormap));
    if (const Lodex::Property* property = find_property(property_name)) {
        observer_ = std::make_unique<LQColormapPropertyObserver>(this, property->style());
        emit colormapUpdateSignal();
    } else {
        observer_.reset();
    }
}

} // namespace Kelvane

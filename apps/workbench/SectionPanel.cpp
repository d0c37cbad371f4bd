#include "SectionPanel.h"

#include "lodex/volumes/CornerPointGrid.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace lodex {

SectionPanel::SectionPanel(QWidget* parent)
    : QWidget(parent), axis_(new QComboBox(this)), slider_(new QSlider(Qt::Horizontal, this)),
      number_(new QSpinBox(this)), count_(new QLabel(this)), colour_by_(new QComboBox(this)),
      view_(new SectionView(this))
{
    setObjectName("sectionPanel");
    axis_->setObjectName("sectionAxis");
    axis_->addItem(tr("J section"), static_cast<int>(SectionAxis::J));
    axis_->addItem(tr("I section"), static_cast<int>(SectionAxis::I));
    axis_->setToolTip(tr("Whether the cells of one J or of one I are shown"));
    axis_->setAccessibleName(tr("Direction of the section"));
    slider_->setObjectName("sectionSlider");
    slider_->setToolTip(tr("Moves the section through the grid"));
    slider_->setAccessibleName(tr("Section"));
    number_->setObjectName("sectionNumber");
    number_->setKeyboardTracking(false);
    number_->setToolTip(tr("Number of the section, from 1"));
    number_->setAccessibleName(tr("Section"));
    colour_by_->setObjectName("colourBy");
    colour_by_->setToolTip(tr("What the cells are coloured by"));
    colour_by_->setMinimumContentsLength(12);
    colour_by_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    view_->setObjectName("sectionView");

    auto* row = new QHBoxLayout;
    row->addWidget(axis_);
    row->addWidget(slider_, 1);
    row->addWidget(number_);
    row->addWidget(count_);
    row->addSpacing(16);
    auto* label = new QLabel(tr("&Colour by"), this);
    label->setBuddy(colour_by_);
    row->addWidget(label);
    row->addWidget(colour_by_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(row);
    layout->addWidget(view_, 1);

    grid_watch_.changed = [this] { fill_colourings(); };
    grid_watch_.gone = [this] { set_grid(nullptr); };
    connect(axis_, &QComboBox::currentIndexChanged, this, &SectionPanel::choose_axis);
    connect(slider_, &QSlider::valueChanged, this, &SectionPanel::choose_section);
    connect(number_, &QSpinBox::valueChanged, this, &SectionPanel::choose_section);
    connect(colour_by_, &QComboBox::currentIndexChanged, this, &SectionPanel::choose_colouring);
    connect(colour_by_, &QComboBox::activated, this,
            [this] { wanted_ = colour_by_->currentData().value<ColourBy>(); });
    set_grid(nullptr);
}

SectionAxis SectionPanel::axis() const
{
    return static_cast<SectionAxis>(axis_->currentData().toInt());
}

void SectionPanel::set_grid(CornerPointGrid* grid)
{
    grid_watch_.observe(grid);
    view_->set_grid(grid);
    for (QWidget* control : std::initializer_list<QWidget*>{axis_, slider_, number_, colour_by_})
        control->setEnabled(grid);
    choose_axis();
    fill_colourings();
}

void SectionPanel::colour_by(const ColourBy& colouring)
{
    for (int n = 0; n < colour_by_->count(); ++n) {
        if (colour_by_->itemData(n).value<ColourBy>() == colouring) {
            wanted_ = colouring;
            colour_by_->setCurrentIndex(n);
            return;
        }
    }
}

QString SectionPanel::state() const
{
    const auto colouring = colour_by_->currentData().value<ColourBy>();
    return QStringLiteral("%1 %2 %3 %4")
        .arg(static_cast<int>(axis()))
        .arg(number_->value())
        .arg(static_cast<int>(colouring.kind))
        .arg(QString::fromStdString(colouring.property));
}

void SectionPanel::restore_state(const QString& state)
{
    bool axis_read = false, number_read = false, kind_read = false;
    const int axis = state.section(u' ', 0, 0).toInt(&axis_read);
    const int number = state.section(u' ', 1, 1).toInt(&number_read);
    const int kind = state.section(u' ', 2, 2).toInt(&kind_read);
    const int row = axis_->findData(axis);
    if (!axis_read || !number_read || !kind_read || row < 0 || kind < 0 ||
        kind > static_cast<int>(ColourBy::Kind::Property))
        return;
    axis_->setCurrentIndex(row);
    if (number >= number_->minimum() && number <= number_->maximum())
        choose_section(number);
    colour_by({static_cast<ColourBy::Kind>(kind), state.section(u' ', 3).toStdString()});
}

void SectionPanel::choose_axis()
{
    auto* grid = static_cast<CornerPointGrid*>(grid_watch_.observed());
    const auto a = static_cast<std::size_t>(axis());
    const int count = grid ? static_cast<int>(grid->header().size[a]) : 1;
    // What the user chose stays for the next grid that has it; else the middle is a good place to start.
    const int shown = chosen_[a] >= 1 && chosen_[a] <= count ? chosen_[a] : (count + 1) / 2;
    {
        const QSignalBlocker quiet_slider(slider_), quiet_number(number_);
        slider_->setRange(1, count);
        slider_->setPageStep(std::max(count / 10, 1));
        number_->setRange(1, count);
        slider_->setValue(shown);
        number_->setValue(shown);
    }
    count_->setText(grid ? tr("of %1").arg(count) : QString());
    view_->set_section(axis(), shown - 1);
}

void SectionPanel::choose_section(int number)
{
    chosen_[static_cast<std::size_t>(axis())] = number;
    slider_->setValue(number);
    number_->setValue(number);
    view_->set_section(axis(), number - 1);
}

void SectionPanel::fill_colourings()
{
    const auto* grid = static_cast<CornerPointGrid*>(grid_watch_.observed());
    const QSignalBlocker quiet(colour_by_);
    colour_by_->clear();
    const auto add = [this](const QString& text, const ColourBy& colouring) {
        colour_by_->addItem(text, QVariant::fromValue(colouring));
    };
    int first_continuous = -1, wanted = -1;
    if (grid) {
        for (const PropertyData& property : grid->header().properties) {
            if (property.on_points)
                continue;
            if (!property.discrete() && first_continuous < 0)
                first_continuous = colour_by_->count();
            add(QString::fromStdString(property.name), {ColourBy::Kind::Property, property.name});
        }
        if (!grid->header().layers.empty())
            add(tr("unit"), {ColourBy::Kind::Unit, {}});
        add(tr("one colour"), {});
        for (int n = 0; n < colour_by_->count() && wanted < 0; ++n) {
            if (colour_by_->itemData(n).value<ColourBy>() == wanted_)
                wanted = n;
        }
        colour_by_->setCurrentIndex(wanted >= 0 ? wanted : std::max(first_continuous, 0));
    }
    choose_colouring();
}

void SectionPanel::choose_colouring()
{
    view_->set_colouring(colour_by_->currentData().value<ColourBy>());
}

} // namespace lodex

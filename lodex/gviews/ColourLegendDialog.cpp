#include "ColourLegendDialog.h"

#include "CellPalette.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/xtools/HelpKey.h"

#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/qtools/QtText.h>

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>

namespace lodex {

/// Closes the dialog when its property is gone.
class ColourLegendDialog::Watch final : public Lodex::GObjObserver {
public:
    explicit Watch(ColourLegendDialog& dialog) : dialog_(dialog) { observe(dialog.grid_); }
    void update(Lodex::Component*) override
    {
        if (!dialog_.style())
            dialog_.QDialog::reject();
    }
    void disconnect(Lodex::Component* component) override
    {
        GObjObserver::disconnect(component);
        dialog_.grid_ = nullptr;
        dialog_.QDialog::reject();
    }

private:
    ColourLegendDialog& dialog_;
};

namespace {

QPixmap map_sample(const Lodex::CString& name, const QSize& size)
{
    Lodex::Style style("sample");
    style.set_attribute("colormap", name);
    const Lodex::Colormap map(style);
    QImage image(size, QImage::Format_RGB32);
    for (int x = 0; x < size.width(); ++x) {
        const auto [r, g, b] = map.colour(x / (size.width() - 1.0));
        for (int y = 0; y < size.height(); ++y)
            image.setPixel(x, y, qRgb(r, g, b));
    }
    return QPixmap::fromImage(image);
}

QString shown(std::optional<double> number)
{
    return number ? QString::fromStdString(format_general(*number, 7)) : QString();
}

/// The next number of four digits below or above, so that a range from the values reads well and leaves none out.
std::optional<double> rounded(std::optional<double> number, bool up)
{
    if (!number || *number == 0 || !std::isfinite(*number))
        return number;
    const double exponent = std::floor(std::log10(std::abs(*number))) - 3;
    // Powers of ten with a whole exponent are exact, their inverses are not.
    const double scale = std::pow(10.0, std::abs(exponent));
    const double digits = exponent < 0 ? *number * scale : *number / scale;
    const double whole = up ? std::ceil(digits - 1e-6) : std::floor(digits + 1e-6);
    return exponent < 0 ? whole / scale : whole * scale;
}

QIcon swatch(const QColor& colour)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(colour);
    return pixmap;
}

} // namespace

ColourLegendDialog::ColourLegendDialog(CornerPointGrid& grid, const std::string& property, QWidget* parent)
    : QDialog(parent), grid_(&grid), property_(property)
{
    setObjectName(QStringLiteral("colour_legend_dialog"));
    set_help_page(*this, "user-doc/legend.html");
    setWindowTitle(tr("Colours of %1").arg(QString::fromStdString(property)));
    const PropertyData* values = grid.model().find_property(property);
    if (values) {
        const ValueRange range = value_range(grid.model(), *values);
        least_ = range.min;
        greatest_ = range.max;
        found_codes_ = range.codes;
    }
    build(values && values->discrete());
    if (const Lodex::Style* shown_style = style())
        original_ = read_colour_scale(*shown_style);
    set_scale(original_);
    watch_ = std::make_unique<Watch>(*this);
}

ColourLegendDialog::~ColourLegendDialog() = default;

Lodex::Style* ColourLegendDialog::style() const
{
    const Lodex::Property* property = grid_ ? grid_->property_db()->find(property_) : nullptr;
    return property ? property->style() : nullptr;
}

void ColourLegendDialog::build(bool discrete)
{
    auto* layout = new QVBoxLayout(this);
    auto* fields = new QWidget;
    auto* form = new QFormLayout(fields);
    form->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(fields);
    fields->setVisible(!discrete);

    const auto named = [](auto* widget, const char* name, const QString& tip) {
        widget->setObjectName(QString::fromLatin1(name));
        widget->setToolTip(tip);
        return widget;
    };
    map_ = named(new QComboBox, "colour_map", tr("Colours from the low to the high end of the range"));
    const QSize sample(96, 14);
    map_->setIconSize(sample);
    for (const Lodex::CString& name : Lodex::Colormap::names())
        map_->addItem(QIcon(map_sample(name, sample)), Lodex::to_qstring(name));
    form->addRow(tr("Colour &map:"), map_);

    automatic_ = named(new QCheckBox(tr("From the &values")), "automatic_range",
                       tr("The range runs from the least to the greatest value of the active cells"));
    form->addRow(tr("Range:"), automatic_);
    low_ = named(new QLineEdit, "low_clip",
                 tr("Value of the low end; a greater one than the high end turns the map round"));
    high_ = named(new QLineEdit, "high_clip", tr("Value of the high end"));
    form->addRow(tr("&Low:"), low_);
    form->addRow(tr("&High:"), high_);
    function_ = named(new QComboBox, "scale_function", tr("How the colours are spread over the range"));
    function_->addItem(tr("Automatic"), static_cast<int>(ColourScale::Function::Automatic));
    function_->addItem(tr("Linear"), static_cast<int>(ColourScale::Function::Linear));
    function_->addItem(tr("Logarithmic"), static_cast<int>(ColourScale::Function::Logarithmic));
    form->addRow(tr("&Scale:"), function_);
    grey_outside_ = named(new QCheckBox(tr("&Grey")), "grey_outside",
                          tr("Values beyond the range are grey; otherwise they take the colour of the nearer end"));
    form->addRow(tr("Outside the range:"), grey_outside_);

    message_ = named(new QLabel, "message", QString());
    message_->setWordWrap(true);
    layout->addWidget(message_);
    if (discrete) {
        message_->hide();
        build_codes(*layout);
    }
    buttons_ = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply |
                                    QDialogButtonBox::Reset);
    buttons_->setObjectName(QStringLiteral("buttons"));
    const std::array<std::tuple<QDialogButtonBox::StandardButton, const char*, QString>, 4> names{
        {{QDialogButtonBox::Ok, "ok", tr("Shows the cells so and closes the window")},
         {QDialogButtonBox::Cancel, "cancel", tr("Takes back what was applied and closes the window")},
         {QDialogButtonBox::Apply, "apply", tr("Shows the cells so")},
         {QDialogButtonBox::Reset, "reset",
          discrete ? tr("The first colours of all codes")
                   : tr("Range and scale from the values, the first colour map")}}};
    for (const auto& [button, name, tip] : names)
        named(buttons_->button(button), name, tip);
    layout->addWidget(buttons_);

    for (QWidget* field : std::initializer_list<QWidget*>{map_, automatic_, low_, high_, function_, grey_outside_})
        field->setEnabled(!discrete);
    connect(automatic_, &QCheckBox::toggled, this, [this](bool on) {
        if (on) {
            low_->setText(shown(rounded(least_, false)));
            high_->setText(shown(rounded(greatest_, true)));
        }
        update_enabled();
    });
    if (!discrete) {
        for (QLineEdit* field : {low_, high_})
            connect(field, &QLineEdit::textChanged, this, &ColourLegendDialog::update_enabled);
        connect(function_, &QComboBox::currentIndexChanged, this, &ColourLegendDialog::update_enabled);
    }
    connect(buttons_, &QDialogButtonBox::accepted, this, &ColourLegendDialog::accept);
    connect(buttons_, &QDialogButtonBox::rejected, this, &ColourLegendDialog::reject);
    connect(buttons_->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, &ColourLegendDialog::apply);
    connect(buttons_->button(QDialogButtonBox::Reset), &QPushButton::clicked, this, [this] { set_scale({}); });
}

void ColourLegendDialog::build_codes(QVBoxLayout& layout)
{
    codes_ = new QListWidget;
    codes_->setObjectName(QStringLiteral("codes"));
    codes_->setToolTip(tr("The codes and their colours; a double click changes the colour"));
    layout.addWidget(codes_);
    change_ = new QPushButton(tr("&Change Colour..."));
    change_->setObjectName(QStringLiteral("change_colour"));
    change_->setToolTip(tr("Chooses the colour of the selected code"));
    change_->setAutoDefault(false);
    layout.addWidget(change_);
    const auto enable = [this] { change_->setEnabled(codes_->currentItem() != nullptr); };
    connect(codes_, &QListWidget::currentRowChanged, this, enable);
    connect(codes_, &QListWidget::itemActivated, this, &ColourLegendDialog::choose_colour);
    connect(change_, &QPushButton::clicked, this, &ColourLegendDialog::choose_colour);
    enable();
}

void ColourLegendDialog::list_codes()
{
    const PropertyData* values = grid_ ? grid_->model().find_property(property_) : nullptr;
    if (!codes_ || !values)
        return;
    const int row = codes_->currentRow();
    codes_->clear();
    for (const std::int32_t code : found_codes_) {
        const auto name = values->code_names.find(code);
        auto* item = new QListWidgetItem(
            name == values->code_names.end()
                ? QString::number(code)
                : QStringLiteral("%1  (%2)").arg(QString::fromStdString(name->second)).arg(code));
        const auto own = code_colours_.find(code);
        const QColor colour = own == code_colours_.end()
                                  ? CellPalette::distinct_colour(static_cast<std::size_t>(codes_->count()))
                                  : QColor::fromRgb(own->second);
        item->setIcon(swatch(colour));
        item->setData(Qt::UserRole, code);
        item->setData(Qt::UserRole + 1, colour);
        codes_->addItem(item);
    }
    codes_->setCurrentRow(std::clamp(row, 0, codes_->count() - 1));
}

void ColourLegendDialog::choose_colour()
{
    const QListWidgetItem* item = codes_->currentItem();
    if (!item)
        return;
    auto* chooser = new QColorDialog(item->data(Qt::UserRole + 1).value<QColor>(), this);
    chooser->setObjectName(QStringLiteral("colour_chooser"));
    chooser->setOption(QColorDialog::DontUseNativeDialog);
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    chooser->setWindowTitle(tr("Colour of %1").arg(item->text()));
    connect(chooser, &QColorDialog::colorSelected, this,
            [this, code = item->data(Qt::UserRole).toInt()](const QColor& colour) {
                code_colours_[code] = colour.rgb() & 0xffffffu;
                list_codes();
            });
    chooser->open();
}

void ColourLegendDialog::set_scale(const ColourScale& scale)
{
    code_colours_ = scale.code_colours;
    list_codes();
    map_->setCurrentIndex(std::max(0, map_->findText(QString::fromStdString(scale.colormap))));
    automatic_->setChecked(!scale.low && !scale.high);
    low_->setText(shown(scale.low ? scale.low : rounded(least_, false)));
    high_->setText(shown(scale.high ? scale.high : rounded(greatest_, true)));
    function_->setCurrentIndex(function_->findData(static_cast<int>(scale.function)));
    grey_outside_->setChecked(scale.grey_outside);
    update_enabled();
}

ColourScale ColourLegendDialog::scale() const
{
    ColourScale scale;
    scale.colormap =
        map_->currentIndex() == 0 && original_.colormap.empty() ? std::string() : map_->currentText().toStdString();
    if (!automatic_->isChecked()) {
        scale.low = parse_double(low_->text().trimmed().toStdString());
        scale.high = parse_double(high_->text().trimmed().toStdString());
    }
    scale.function = static_cast<ColourScale::Function>(function_->currentData().toInt());
    scale.grey_outside = grey_outside_->isChecked();
    scale.code_colours = code_colours_;
    return scale;
}

QString ColourLegendDialog::complaint() const
{
    if (!map_->isEnabled())
        return {};
    const ColourScale wanted = scale();
    if (!automatic_->isChecked()) {
        if (!wanted.low)
            return tr("The low end is not a number.");
        if (!wanted.high)
            return tr("The high end is not a number.");
    }
    const auto low = wanted.low ? wanted.low : least_, high = wanted.high ? wanted.high : greatest_;
    if (wanted.function == ColourScale::Function::Logarithmic && low && high && (*low <= 0 || *high <= 0))
        return tr("A logarithmic scale needs a range above zero.");
    return {};
}

void ColourLegendDialog::update_enabled()
{
    if (!map_->isEnabled())
        return;
    low_->setEnabled(!automatic_->isChecked());
    high_->setEnabled(!automatic_->isChecked());
    const QString wrong = complaint();
    message_->setText(wrong);
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(wrong.isEmpty());
    buttons_->button(QDialogButtonBox::Apply)->setEnabled(wrong.isEmpty());
}

bool ColourLegendDialog::apply()
{
    Lodex::Style* const target = style();
    if (!target || !complaint().isEmpty())
        return false;
    if (map_->isEnabled()) {
        write_colour_scale(*target, scale());
    } else {
        ColourScale codes = original_; // the rest counts for nothing, and stays
        codes.code_colours = code_colours_;
        write_colour_scale(*target, codes);
    }
    return true;
}

void ColourLegendDialog::accept()
{
    if (apply())
        QDialog::accept();
}

void ColourLegendDialog::reject()
{
    if (Lodex::Style* const target = style())
        write_colour_scale(*target, original_);
    QDialog::reject();
}

} // namespace lodex

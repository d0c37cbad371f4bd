#pragma once

#include "ColourScale.h"

#include <QDialog>
#include <QPointer>

#include <map>
#include <memory>
#include <set>
#include <string>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QVBoxLayout;

namespace lodex {

class CornerPointGrid;

/// Edits how the values of a property are coloured, range and map of numbers or the colour of each code; what is applied
/// goes into the property's style, which every camera follows. Closes by itself when the grid or the property goes away.
class ColourLegendDialog : public QDialog {
    Q_OBJECT

public:
    /// The property must be there.
    ColourLegendDialog(CornerPointGrid& grid, const std::string& property, QWidget* parent = nullptr);
    ~ColourLegendDialog() override;

    /// What the fields say now.
    [[nodiscard]] ColourScale scale() const;
    void set_scale(const ColourScale& scale);
    /// Writes the fields to the style; false with a message when a field does not read.
    bool apply();

public Q_SLOTS:
    void accept() override;
    /// Takes back what this dialog applied.
    void reject() override;

private:
    class Watch;
    void build(bool discrete);
    void build_codes(QVBoxLayout& layout);
    void list_codes();
    void choose_colour();
    void update_enabled();
    /// What is wrong with the fields; empty when nothing is.
    [[nodiscard]] QString complaint() const;
    [[nodiscard]] Lodex::Style* style() const;

    CornerPointGrid* grid_;
    std::string property_;
    ColourScale original_;
    std::optional<double> least_, greatest_;
    std::set<std::int32_t> found_codes_;
    std::map<std::int32_t, std::uint32_t> code_colours_;
    std::unique_ptr<Watch> watch_;
    QComboBox* map_ = nullptr;
    QCheckBox* automatic_ = nullptr;
    QLineEdit* low_ = nullptr;
    QLineEdit* high_ = nullptr;
    QComboBox* function_ = nullptr;
    QCheckBox* grey_outside_ = nullptr;
    QLabel* message_ = nullptr;
    QListWidget* codes_ = nullptr; // null for continuous values
    QPushButton* change_ = nullptr;
    QDialogButtonBox* buttons_ = nullptr;
};

} // namespace lodex

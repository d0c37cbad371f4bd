#pragma once

#include "SectionView.h"

class QComboBox;
class QLabel;
class QSlider;
class QSpinBox;

namespace lodex {

/// A section view with what chooses its section and its colours.
class SectionPanel : public QWidget {
    Q_OBJECT

public:
    explicit SectionPanel(QWidget* parent = nullptr);

    /// Shows the same section and property as before as far as the grid has them. Null: nothing.
    void set_grid(CornerPointGrid* grid);
    [[nodiscard]] SectionView* view() const { return view_; }
    /// Colours the cells by this, when the grid has it.
    void colour_by(const ColourBy& colouring);

    /// Axis, section and colours as text, and back; a text without sense changes nothing.
    [[nodiscard]] QString state() const;
    void restore_state(const QString& state);

private:
    void fill_colourings();
    void choose_axis();
    void choose_section(int number);
    void choose_colouring();
    [[nodiscard]] SectionAxis axis() const;

    QComboBox* axis_;
    QSlider* slider_;
    QSpinBox* number_;
    QLabel* count_;
    QComboBox* colour_by_;
    SectionView* view_;
    GridWatch grid_watch_;
    std::array<int, 2> chosen_{};                     // by the user, for each axis, 1-based; 0: none yet
    ColourBy wanted_{ColourBy::Kind::Property, {}}; // what the user chose last, kept over grids that lack it
};

} // namespace lodex

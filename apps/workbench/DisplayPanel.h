#pragma once

#include "Watch.h"

#include "lodex/gviews/CameraView.h"

#include <QWidget>

#include <array>
#include <map>
#include <string>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QSlider;
class QSpinBox;

namespace lodex {

/// What a person sets of a camera: which grid it shows and how. Each grid keeps its settings while it lives; what it is
/// coloured by carries over to the next grid that has it.
class DisplayPanel : public QWidget {
    Q_OBJECT

public:
    /// The camera must live longer.
    explicit DisplayPanel(CameraView& camera, QWidget* parent = nullptr);

    /// Shows this grid alone; null: nothing.
    void set_grid(CornerPointGrid* grid);
    [[nodiscard]] CornerPointGrid* grid() const;

    /// Of the grid shown.
    void colour_by(const ColourBy& colour);
    /// Shows only the cells of a region; empty: all.
    void show_region(const QString& region);
    /// Shows only these K layers, 0-based.
    void show_layers(IndexRange layers);

    /// How each grid is shown that was shown so far, by its name.
    [[nodiscard]] std::map<std::string, GridDisplay> displays() const;
    /// For grids that are there; the others keep theirs.
    void set_displays(const std::map<std::string, GridDisplay>& displays);
    void set_view(double exaggeration, bool orthographic, bool axes);

public slots:
    /// All cells again: no slices, no threshold, no region.
    void show_all_cells();
    void edit_legend();
    void save_picture();

signals:
    /// Something for the status line.
    void told(const QString& text);

private:
    struct Slice {
        QCheckBox* on;
        QSpinBox *from, *to;
        QSlider* slider;
    };

    [[nodiscard]] QWidget* build_colours();
    [[nodiscard]] QWidget* build_slices();
    [[nodiscard]] QWidget* build_threshold();
    [[nodiscard]] QWidget* build_cells();
    [[nodiscard]] QWidget* build_view();
    void connect_controls();
    void fill_lists();
    void fill_codes();
    void show_threshold(bool discrete);
    void read_display(const GridDisplay& display);
    [[nodiscard]] GridDisplay chosen_display() const;
    void apply();
    void move_slice(Slice& slice, int first);
    void update_enabled();

    CameraView& camera_;
    GridWatch watch_;
    ColourBy wanted_;
    bool wanted_set_ = false; // false: the first continuous property
    bool reading_ = false;    // controls are being set by the program
    std::map<std::uint64_t, GridDisplay> displays_;

    QComboBox* colour_;
    QPushButton* legend_;
    QCheckBox* show_legend_;
    std::array<Slice, 3> slices_{};
    QRadioButton *box_, *fence_;
    QGroupBox* threshold_;
    QComboBox* threshold_property_;
    QLineEdit *min_, *max_;
    QListWidget* codes_;
    QWidget* between_; // the word between the two fields
    QComboBox* region_;
    QCheckBox *inactive_, *outline_, *edges_, *painted_;
    QDoubleSpinBox* exaggeration_;
    QCheckBox *orthographic_, *axes_;
    QComboBox* standard_;
};

} // namespace lodex

Q_DECLARE_METATYPE(lodex::ColourBy)

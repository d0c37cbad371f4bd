#pragma once

#include "sgresize/LQSGSectionDialog.h"

#include <Lodex/utils/List.h>

#include <QStringList>

#include <array>
#include <ostream>
#include <string>
#include <vector>

class QLabel;

namespace Kelvane {

class LQSGManualAxisEditorMngr;

/// A dialog that makes a new grid by changing cell sections along all axes at once: a tab for each axis, switched on or
/// off by itself, one command for each axis that is on. The commands are chained through temporary grids, which are
/// gone at the end, whatever happened in between.
///
/// Axes are counted from 0 here: I, J, K.
class LQSGWholeGridDialog : public LQSGSectionDialog {
    Q_OBJECT

public:
    void updatePaintedSections() override;
    /// Shows the numbers of cells of the source grid and of the grid to come.
    void updateCells() override;

protected:
    static constexpr int axes = 3;

    /// What the window says of its choices, and how it starts.
    struct Wording {
        bool copies_properties;
        QString copy_properties_tip;
        QString copy_regions_tip;
        std::string temporary_suffix; ///< of the temporary grids' names, before their number
        QString no_activity;          ///< message when the new grid could not be tied to its source
    };

    LQSGWholeGridDialog();

    [[nodiscard]] virtual Wording wording() const = 0;
    /// Makes the editor of the next axis (I first) in its tab.
    virtual void build_axis(const QString& axis_name, QWidget* page, QVBoxLayout* layout) = 0;
    /// Adds what the dialog shows below the lists of what is copied.
    virtual void build_more_options(QWidget*) {}
    [[nodiscard]] virtual LQSGManualAxisEditorMngr& editor(int axis) const = 0;
    [[nodiscard]] virtual bool is_axis_enabled(int axis) const = 0;
    /// Number of cells that `cells` along the axis become by its rows.
    [[nodiscard]] virtual long new_cells(int axis, long cells) const = 0;
    /// Appends the triples of the axis's rows (see LQSGSectionDialog::paint_sections()). Returns how many these are.
    virtual long write_painted_axis(int axis, std::ostream& triples) const = 0;
    /// Whether the rows of all axes are checked before any command runs; else each axis when its turn comes.
    [[nodiscard]] virtual bool checks_rows_first() const = 0;
    /// The options of the commands, the same for each axis, composed once.
    virtual void write_options(std::ostream& options) const = 0;
    virtual void write_command(int axis, const Lodex::CString& source, const Lodex::CString& result,
                               const std::string& options, std::ostream& command) const = 0;
    /// Says how regions pass on, behind their list.
    virtual void write_region_mode(std::ostream&) const {}
    /// Records in the host how the new grid came from the source. False when the host refuses.
    [[nodiscard]] virtual bool register_activity(Lodex::SGrid* made) = 0;

    bool build_box(QWidget* parent, QVBoxLayout* layout) override;
    bool update_axis_edt() override;
    bool process() override;

    /// Destroys the grids of these names, but for the first and the last one.
    void clean(Lodex::List<QString> names);
    /// " copy_fb_regions F copy_regions R [regions ...] copy_style 1".
    void write_region_options(std::ostream& options) const;
    [[nodiscard]] bool copies_properties() const;
    /// The chosen properties joined by "+".
    [[nodiscard]] QString chosen_properties() const;
    [[nodiscard]] bool uses_model() const;

private:
    using CountLabels = std::array<QPointer<QLabel>, axes + 1>; // the last one is the total

    [[nodiscard]] QWidget* build_tabs(QWidget* parent);
    [[nodiscard]] QWidget* build_counts(QWidget* parent);
    void build_options(QWidget* parent, QVBoxLayout* layout);
    static void show_counts(const CountLabels& labels, const std::array<long, axes>& cells);

    /// Source grid, temporaries, new grid: one more than there are commands.
    [[nodiscard]] Lodex::List<QString> chain_names(int commands) const;
    /// Whether there is a grid already of any name that the chain is to make.
    [[nodiscard]] static bool any_taken(const Lodex::List<QString>& names);
    /// Sends the commands of these axes. False when an axis is refused in its turn; those before it have run.
    [[nodiscard]] bool run_chain(const std::vector<int>& enabled, const Lodex::List<QString>& names);

    CountLabels cells_;
    CountLabels new_cells_;
    QPointer<QCheckBox> copy_properties_;
    QPointer<QCheckBox> fault_blocks_;
    QPointer<QCheckBox> copy_regions_;
    QPointer<QCheckBox> model_information_;
};

} // namespace Kelvane

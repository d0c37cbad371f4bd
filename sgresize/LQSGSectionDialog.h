#pragma once

#include "frame/SGridObserver.h"

#include <Lodex/utils/Action.h>
#include <Lodex/utils/CString.h>

#include <QPointer>
#include <QScopedValueRollback>
#include <QWidget>

#include <memory>
#include <sstream>
#include <string>

class QCheckBox;
class QGroupBox;
class QLineEdit;
class QVBoxLayout;

namespace Lodex {
class ICommandStub;
class LQMultiComboBox;
class SGrid;
class XMShell;
} // namespace Lodex

namespace Kelvane {

class LQDialogFrame;

/// Base of the dialogs that make a new stratigraphic grid from an existing one by changing its cell sections: source
/// grid, name of the new grid, preview of the chosen sections, and the way from the buttons to the command.
///
/// The object itself is never shown: build_shell() makes the window, and closing the window deletes the object.
class LQSGSectionDialog : public QWidget {
    Q_OBJECT

public:
    /// With builds_extension there is a lower panel with the lists of properties and regions to copy.
    explicit LQSGSectionDialog(bool builds_extension);
    ~LQSGSectionDialog() override;

    /// Makes the window and returns it; the host shows it.
    virtual Lodex::XMShell* build_shell() = 0;
    /// Paints the chosen sections on the source grid, when that is switched on.
    virtual void updatePaintedSections() = 0;
    /// Called whenever a row or the grid changes.
    virtual void updateCells() = 0;

public slots:
    virtual void on_sgrid_name_changed();
    virtual void on_help() = 0;
    /// Validates and sends the command. True once the command is sent, whatever the host makes of it.
    virtual bool process() = 0;
    virtual void set_region(bool on);
    virtual void set_properties(bool on);

protected:
    /// Lays out the dialog's own widgets.
    virtual bool build_box(QWidget* parent, QVBoxLayout* layout) = 0;
    /// Lets the axis editors follow the grid and the axis. False when there is no grid.
    virtual bool update_axis_edt() = 0;

public:
    /// Selects the grid that the stub's keyword "sgrid" names, when there is such a grid.
    void init(Lodex::ICommandStub* stub);
    /// The grid that was found for the selector's text last; null when there is none.
    [[nodiscard]] Lodex::SGrid* get_sgrid() const { return sgrid_; }
    /// Proposes a name for the next grid: the given one, or the first unused one made from it.
    void setNewGridName(const QString& name);

    /// Adds a widget to the lower panel, below its lists.
    void add_widget_to_extension(QWidget* widget);
    /// Shows or hides the lower panel. The window gets its former place and size back when the panel is hidden.
    void show_extension(bool on);

    /// Takes the painting off the grid that the selector names.
    void unPaintSections();

public slots:
    void on_ok();
    void cancel();
    void set_paint(bool on);

protected:
    /// The window around the dialog: banner, build_box(), buttons.
    Lodex::XMShell* open_shell(const Lodex::CString& name, const QString& title, const QString& banner,
                               Lodex::Action* delete_action);
    /// The group "Stratigraphic Grid Definition": name of the new grid, source grid.
    [[nodiscard]] QGroupBox* build_definition(QWidget* parent);
    /// The labelled row of the grid selector.
    [[nodiscard]] QWidget* build_selector(QWidget* parent);
    /// The group "Graphic Attributes" with the switch of the preview.
    [[nodiscard]] QGroupBox* build_graphic_attributes(QWidget* parent);
    /// Adds the lower panel, hidden, to the layout; nothing when the dialog was made without one or has it already.
    void build_extension(QWidget* parent, QVBoxLayout* layout);

    /// New name, selected grid and existing grid, in this order; the first that is missing is reported.
    [[nodiscard]] bool check();
    /// Looks up the grid that the selector names.
    void update_sgrid();
    /// The stratigraphic grid of this name in the catalogue; null when there is none.
    [[nodiscard]] static Lodex::SGrid* find_sgrid(const QString& name);

    [[nodiscard]] QString sgrid_name() const;
    [[nodiscard]] QString new_grid_name() const;
    [[nodiscard]] Lodex::LQMultiComboBox* property_list() const { return property_list_; }
    [[nodiscard]] Lodex::LQMultiComboBox* region_list() const { return region_list_; }
    [[nodiscard]] bool is_painting() const { return paint_on_; }

    /// Sends painted sections of one axis (1 to 3) to the source grid's style; the two other axes are cleared.
    /// `triples` holds `count` triples of axis, 1 and index, a blank before each number.
    void paint_sections(int axis, const std::string& triples, long count);
    /// Sets the source grid's painted sections to this text, quotes and the semicolon behind them included, and shows
    /// them.
    void send_sections(const std::string& quoted);
    /// True when painting is on and a grid is selected; a missing grid is reported.
    [[nodiscard]] bool can_paint() const;
    void warn_no_grid() const;
    /// Runs the command. While it runs, no button of the dialog does anything and the window stays open.
    void execute(std::ostringstream& command);
    /// Keeps that state over several commands, for as long as the returned object lives.
    [[nodiscard]] QScopedValueRollback<bool> hold() { return QScopedValueRollback<bool>(executing_, true); }
    [[nodiscard]] bool is_executing() const { return executing_; }

private:
    void close_shell();

    QPointer<Lodex::LQMultiComboBox> gridSelector_;
    QPointer<QLineEdit> new_grid_name_;
    bool paint_on_ = false;
    Lodex::SGrid* sgrid_ = nullptr;
    QPointer<Lodex::XMShell> shell_;
    QPointer<QCheckBox> paint_check_box_;
    QPointer<Lodex::LQMultiComboBox> property_list_;
    std::unique_ptr<SGridObserver> property_observer_;
    QPointer<Lodex::LQMultiComboBox> region_list_;
    std::unique_ptr<SGridObserver> region_observer_;
    QPointer<QWidget> extension_;
    QRect geometry_before_;
    QSize minimum_before_;
    QSize maximum_before_;
    bool builds_extension_;
    bool extension_built_ = false;
    bool executing_ = false;
    bool closed_ = false;
};

} // namespace Kelvane

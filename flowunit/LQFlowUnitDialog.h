#pragma once

#include "frame/SGridObserver.h"

#include <QPointer>
#include <QWidget>

#include <memory>

class QButtonGroup;
class QCheckBox;
class QFrame;
class QGroupBox;
class QPushButton;
class QVBoxLayout;

namespace Lodex {
class ICommandStub;
class LQDoubleLineEdit;
class LQMultiComboBox;
class XMShell;
} // namespace Lodex

namespace Kelvane {

class LQFlowUnitWidget;

/// The window "Flow Unit Analysis": the flow unit widget, the options of the new grid in a lower part that folds
/// away, the buttons. In create mode it has a new grid built and records how it came about; in edit mode it records a
/// coarsening of the grid and no more.
///
/// The object itself is never shown: build_shell() makes the window, and closing the window deletes the object.
class LQFlowUnitDialog : public QWidget {
    Q_OBJECT

public:
    LQFlowUnitDialog();
    ~LQFlowUnitDialog() override;

    /// Makes the window and returns it; the host shows it after init().
    Lodex::XMShell* build_shell();
    /// Reads "mode", "sgrid" and "for_sgrid" of the pending command, which may be null.
    void init(Lodex::ICommandStub* stub);
    /// Proposes a name for the new grid: the given one, or the first unused one made from it. Not before init().
    void setNewGridName(const QString& name);
    [[nodiscard]] LQFlowUnitWidget* flow_unit_widget() const { return flow_unit_panel_; }

public slots:
    /// True when the grid or the coarsening is made and recorded.
    bool apply();
    void on_ok();
    void on_help();
    void cancel();
    void on_save_text();
    void show_extension(bool on);
    void add_widget_to_extension(QWidget* widget);
    void set_region(bool on);
    void set_region_mode(int id);
    void update_region_selector();

private:
    [[nodiscard]] bool check();
    [[nodiscard]] bool save(bool create);
    [[nodiscard]] bool launch();
    void build_extension(QWidget* parent);
    QGroupBox* build_region_modes(QWidget* parent);
    void build_buttons(QWidget* parent, QVBoxLayout* box);

    QPointer<LQFlowUnitWidget> flow_unit_panel_;
    bool create_mode_ = true;
    QPointer<Lodex::XMShell> shell_;
    bool applying_ = false;
    bool closed_ = false;

    QPushButton* advanced_button_ = nullptr;
    QFrame* advanced_frame_ = nullptr;
    QWidget* extension_ = nullptr;
    int grown_by_ = 0; ///< height that the window took when the extension was shown
    QCheckBox* copy_fb_regions_ = nullptr;
    QCheckBox* copy_regions_ = nullptr;
    Lodex::LQMultiComboBox* region_list_ = nullptr;
    std::unique_ptr<SGridObserver> region_observer_;
    QGroupBox* region_mode_group_ = nullptr;
    QButtonGroup* region_modes_ = nullptr;
    Lodex::LQDoubleLineEdit* number_percentile_ = nullptr;
    Lodex::LQDoubleLineEdit* volume_percentile_ = nullptr;
    QCheckBox* model_info_ = nullptr;
};

} // namespace Kelvane

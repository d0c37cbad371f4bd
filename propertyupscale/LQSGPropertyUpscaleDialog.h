#pragma once

#include "frame/SGridObserver.h"
#include "propertyupscale/UpscaleChoices.h"

#include <Lodex/utils/CString.h>

#include <QPointer>
#include <QWizard>

#include <array>
#include <memory>
#include <ostream>
#include <vector>

class QAbstractButton;
class QBoxLayout;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QLineEdit;
class QTextEdit;

namespace Lodex {
class ICommandStub;
class LQDoubleLineEdit;
class LQGObjContextSelector;
class LQGObjSelector;
class LQIntLineEdit;
class SGrid;
} // namespace Lodex

namespace Kelvane {

/// Brings one property of a fine stratigraphic grid onto a coarse one: porosity, permeability or an indicator. The
/// pages ask for one thing after the other, the last one shows all choices together.
///
/// Made with new; deletes itself when its window is closed. On the last page the help button becomes "OK", which sends
/// the command and closes; Finish sends it and leaves the window open.
class LQSGPropertyUpscaleDialog : public QWizard {
    Q_OBJECT

public:
    enum Page { Grids, Mapping, Method, Properties, PreProcessing, PostProcessing, Summary };

    LQSGPropertyUpscaleDialog();
    ~LQSGPropertyUpscaleDialog() override;

    /// Builds the pages at the first call and returns the wizard; the host shows it.
    QWizard* dialog();
    /// Takes the fine grid (keyword "sgrid") and the fine property (keyword "property", an address) from the pending
    /// command. The pages must have been built.
    void init(Lodex::ICommandStub* stub);

    /// Composes the command from the widgets, see compose_upscale_command().
    [[nodiscard]] bool check(std::ostream& messages, std::ostream& command) const;
    /// See replace_characters().
    static int replace(Lodex::CopyCString& text, char from, char to);
    /// The stratigraphic grid of this name; null when there is none.
    [[nodiscard]] static Lodex::SGrid* update_sgrid(const QString& name);

    /// Lists the mappers for the two grids once both are chosen; a mapper that is still there stays chosen.
    void update_mappers();
    /// Shows the parameters that class and method have.
    void update_method_frame();
    /// Shows one selector or three, and refills what is shown.
    void update_fine_property_frame();
    void update_coarse_property_frame();
    /// Writes the summary into the box, above it in red what keeps the command from being sent.
    void update_summary(QTextEdit* box);

    [[nodiscard]] UpscaleChoices choices() const;
    /// The text given to the summary box last; the box itself rewrites what it is given.
    [[nodiscard]] const QString& summary_text() const { return summary_text_; }
    [[nodiscard]] const Lodex::CopyCString& help_topic() const { return help_topic_; }

public slots:
    void on_fine_sgrid_name_change();
    void on_coarse_sgrid_name_change();
    void on_property_class_change(const QString& property_class);
    void on_method_change(const QString& method);
    void on_help();
    void on_ok();
    /// Validates and sends the command. True once the command is sent, whatever the host makes of it.
    bool process();
    /// Finish: sends the command and leaves the window open.
    void accept() override;
    /// Called for every page that comes on show, on the way back as well.
    void showPage(QWidget* page);

protected:
    /// A window whose command is running stays.
    void done(int result) override;

private:
    /// Three selectors or names, along I, J and K.
    using Selectors = std::array<QPointer<Lodex::LQMultiComboBox>, 3>;
    struct RegionChoice {
        QPointer<QCheckBox> on;
        QPointer<Lodex::LQMultiComboBox> names;
        std::unique_ptr<SGridObserver> observer;
    };
    struct ReplacementChoice {
        QPointer<QCheckBox> on;
        QPointer<Lodex::LQDoubleLineEdit> value;
    };
    struct Texts {
        const char* name;
        QString label;
        QString tip;
    };

    // The pages, in source files of their own.
    [[nodiscard]] QWidget* build_grids_page();
    [[nodiscard]] QWidget* build_mapping_page();
    [[nodiscard]] QWidget* build_method_page();
    [[nodiscard]] QWidget* build_properties_page();
    [[nodiscard]] QWidget* build_pre_processing_page();
    [[nodiscard]] QWidget* build_post_processing_page();
    [[nodiscard]] QWidget* build_summary_page();
    void add_page(Page index, const QString& title, QWidget* content);
    [[nodiscard]] QWidget* build_grid(QWidget* parent, const Texts& grid, const char* prefix,
                                      QPointer<Lodex::LQGObjSelector>& selector, RegionChoice& regions);
    [[nodiscard]] QWidget* build_power(QWidget* parent);
    [[nodiscard]] QWidget* build_volume_weight(QWidget* parent);
    [[nodiscard]] QWidget* build_property_weight(QWidget* parent);
    [[nodiscard]] QWidget* build_sampling(QWidget* parent);
    [[nodiscard]] QWidget* build_boundary(QWidget* parent);
    [[nodiscard]] QWidget* build_exact(QWidget* parent);
    [[nodiscard]] QWidget* build_scalar(QWidget* parent, const Texts& texts,
                                        const QPointer<Lodex::LQMultiComboBox>& selector);
    [[nodiscard]] QWidget* build_tensor(QWidget* parent, const QString& title, const std::array<Texts, 3>& texts,
                                        const Selectors& selectors);
    [[nodiscard]] Lodex::LQMultiComboBox* new_property_list(QWidget* parent, const Texts& texts, bool coarse,
                                                            const QString& typed = {});
    void build_replacement(QGridLayout* grid, const Texts& texts, const QString& help, ReplacementChoice& choice);
    void build_buttons();
    void fit_size();

    [[nodiscard]] PropertyClass property_class() const;
    void show_tensor(QWidget* scalar, QWidget* tensor, bool on);

    QPointer<Lodex::LQGObjSelector> fine_gridSelector_;
    QPointer<Lodex::LQGObjSelector> coarse_gridSelector_;
    RegionChoice fine_regions_;
    RegionChoice coarse_regions_;

    QPointer<QComboBox> mapper_;
    QPointer<QCheckBox> fault_management_;

    QPointer<QComboBox> property_class_;
    QPointer<QComboBox> method_;
    QPointer<QWidget> power_frame_;
    QPointer<QLineEdit> power_;
    QPointer<QWidget> weight_volume_frame_;
    QPointer<QCheckBox> weight_volume_;
    QPointer<QWidget> weight_property_frame_;
    QPointer<QCheckBox> weight_property_switch_;
    QPointer<Lodex::LQGObjContextSelector> weight_property_;
    QPointer<QWidget> sampling_frame_;
    QPointer<QButtonGroup> sampling_;
    std::array<QPointer<Lodex::LQIntLineEdit>, 3> sampling_counts_;
    QPointer<QWidget> boundary_frame_;
    QPointer<QButtonGroup> boundary_;
    QPointer<QWidget> exact_frame_;
    QPointer<QButtonGroup> exact_;

    QPointer<Lodex::LQMultiComboBox> fine_prop_cb_;
    QPointer<Lodex::LQMultiComboBox> fine_prop_i_cb_;
    QPointer<Lodex::LQMultiComboBox> fine_prop_j_cb_;
    QPointer<Lodex::LQMultiComboBox> fine_prop_k_cb_;
    QPointer<QWidget> fine_scalar_frame_;
    QPointer<QWidget> fine_tensor_frame_;
    QPointer<Lodex::LQMultiComboBox> coarse_prop_cb_;
    Selectors coarse_tensor_;
    QPointer<QWidget> coarse_scalar_frame_;
    QPointer<QWidget> coarse_tensor_frame_;
    /// The first one fills the scalar selector, the others those along I, J and K.
    std::vector<std::unique_ptr<SGridObserver>> fine_properties_;
    std::vector<std::unique_ptr<SGridObserver>> coarse_properties_;

    ReplacementChoice zero_;
    ReplacementChoice negative_;
    ReplacementChoice no_data_;
    QPointer<QCheckBox> problem_region_;

    QPointer<QTextEdit> summary_;
    QString summary_text_;
    Lodex::CopyCString help_topic_;
    bool built_ = false;
    bool executing_ = false;
};

} // namespace Kelvane

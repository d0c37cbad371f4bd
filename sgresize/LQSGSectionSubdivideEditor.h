#pragma once

#include "sgresize/LQSGSectionEditor.h"

#include <Lodex/volumes/LayerInfo.h>

class QComboBox;
class QLineEdit;

namespace Kelvane {

class LQSGSubdivideAxisEditorMngr;

/// A run of cell sections each of which is replaced by `amount_section()` cells. Along K the row proposes layering and
/// thickness of the layer that it starts in, when the grid has layers.
class LQSGSectionSubdivideEditor : public LQSGSectionEditor {
    Q_OBJECT

public:
    explicit LQSGSectionSubdivideEditor(LQSGSubdivideAxisEditorMngr* manager);

    void build(QTableWidget* table, int row) override;
    void update_max(long n) override;
    void set_min(long n) override;
    /// Offers the layerings of the manager's axis. A choice stays as long as the axis offers the same ones; along K the
    /// layer that the row starts in chooses, and gives the thickness.
    void update_strati_cb();

    /// Number of cells that replace one.
    [[nodiscard]] int amount_section() const;
    /// The thickness as typed; may be empty. In the project's vertical unit along K, its horizontal one along I and J.
    [[nodiscard]] QString thickness() const;
    /// The same as a number, 0 when it does not read as one.
    [[nodiscard]] float thickness_value() const;
    /// The layering as commands name it: "proportional", "parallel_to_base" (along I and J the minus side) or
    /// "parallel_to_top" (the plus side).
    [[nodiscard]] const char* strati_type() const;
    [[nodiscard]] Lodex::LayerInfo::LayeringStyle strati_type_info() const;
    [[nodiscard]] QList<QWidget*> tab_order() const override;

    /// Columns of the table.
    enum Column {
        FromColumn,
        ToColumn,
        AmountColumn,
        StratigraphyColumn,
        ThicknessColumn,
        AddColumn,
        RemoveColumn,
        ColumnCount
    };

public slots:
    void add_a_section() override;
    void remove_a_section() override;
    /// Lets a thickness be typed where the layering has one.
    void on_strati_change(const QString& choice);
    /// Proposes the thickness anew, then has the dialog count its cells.
    void updateCells(int value) override;
    void setSpinBoxMinMax1(int) override;
    void setSpinBoxMinMax2(int) override;

private:
    /// The layerings that an axis offers, in the order of their keywords.
    [[nodiscard]] static QStringList choices(const QString& axis);
    /// The layer of the first section of the run; null where there is none.
    [[nodiscard]] const Lodex::LayerInfo* layer() const;
    void suggest_thickness(const Lodex::LayerInfo& layer);

    QPointer<QSpinBox> amount_;
    QPointer<QComboBox> strati_;
    QPointer<QLineEdit> thickness_;
    LQSGSubdivideAxisEditorMngr* subdivide_manager_;
};

} // namespace Kelvane

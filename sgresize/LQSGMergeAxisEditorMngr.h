#pragma once

#include "sgresize/LQSGManualAxisEditorMngr.h"
#include "sgresize/LQSGSectionMergeEditor.h"

namespace Kelvane {

/// An axis whose cell sections are merged, one LQSGSectionMergeEditor per row. The flag of its operations says
/// whether the rows carry the column of the section to keep.
class LQSGMergeAxisEditorMngr : public virtual LQSGAxisEditorMngr, public LQSGManualAxisEditorMngr {
    Q_DECLARE_TR_FUNCTIONS(Kelvane::LQSGMergeAxisEditorMngr)

public:
    LQSGMergeAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog);
    LQSGMergeAxisEditorMngr(const LQSGMergeAxisEditorMngr& other);
    LQSGMergeAxisEditorMngr& operator=(const LQSGMergeAxisEditorMngr& other);

    bool build_editor_axis(QWidget* parent, QVBoxLayout* layout) override;
    /// False as well, with a message, when along K a group of sections straddles two stratigraphic units.
    bool check_intersections() override;

    void add_section(LQSGSectionMergeEditor* after, bool with_property);
    void remove_section(LQSGSectionMergeEditor* editor);
    /// Makes the first row in table().
    void build_sections_panel(bool with_property);
    /// The i-th row, 0-based from the top; null outside.
    [[nodiscard]] LQSGSectionMergeEditor* get_sections(long i) const;

private:
    [[nodiscard]] bool check_units() const;
};

} // namespace Kelvane

Q_DECLARE_INTERFACE(Kelvane::LQSGMergeAxisEditorMngr, "LQSGMergeAxisEditorMngr")

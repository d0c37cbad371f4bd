#pragma once

#include "sgresize/LQSGManualAxisEditorMngr.h"
#include "sgresize/LQSGSectionSubdivideEditor.h"

#include <ostream>

namespace Lodex {
class LayerInfo;
}

namespace Kelvane {

/// An axis whose cell sections are subdivided, one LQSGSectionSubdivideEditor per row.
class LQSGSubdivideAxisEditorMngr : public virtual LQSGAxisEditorMngr, public LQSGManualAxisEditorMngr {
    Q_DECLARE_TR_FUNCTIONS(Kelvane::LQSGSubdivideAxisEditorMngr)

public:
    LQSGSubdivideAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog);
    LQSGSubdivideAxisEditorMngr(const LQSGSubdivideAxisEditorMngr& other);
    LQSGSubdivideAxisEditorMngr& operator=(const LQSGSubdivideAxisEditorMngr& other);

    bool build_editor_axis(QWidget* parent, QVBoxLayout* layout) override;
    /// The rows offer the layerings of the current axis.
    void update_axis() override;

    void add_section(LQSGSectionSubdivideEditor* after);
    void remove_section(LQSGSectionSubdivideEditor* editor);
    /// Makes the first row in table().
    void build_sections_panel();
    /// The i-th row, 0-based from the top; null outside.
    [[nodiscard]] LQSGSectionSubdivideEditor* get_sections(long i) const;

    /// The layer that holds this cell section (0-based) along K; null along the other axes and where there is none.
    [[nodiscard]] const Lodex::LayerInfo* layer_of(long section) const;

    /// The keyword value "sections": section (0-based), cells added, layering and thickness of every cell section of
    /// every row, in the order of the table, all joined by "+". Rows are not sorted.
    void write_sections(std::ostream& text) const;
    /// Appends " axis 1 section " for every cell section (0-based) of every row. Returns how many these are.
    long write_painted_sections(std::ostream& triples) const;
};

} // namespace Kelvane

Q_DECLARE_INTERFACE(Kelvane::LQSGSubdivideAxisEditorMngr, "LQSGSubdivideAxisEditorMngr")

#pragma once

#include <Lodex/utils/CString.h>
#include <Lodex/utils/Value.h>

#include <QCoreApplication>
#include <QString>

class QVBoxLayout;
class QWidget;

namespace Kelvane {

class LQSGSectionDialog;

/// One axis of a section dialog: its name as the user sees it, the keyword that commands use, and the way back to the
/// dialog. Copies share the direction value.
class LQSGAxisEditorMngr {
    Q_DECLARE_TR_FUNCTIONS(Kelvane::LQSGAxisEditorMngr)

public:
    /// The dialog is not owned; null leaves the forwarding operations without effect.
    LQSGAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog);
    LQSGAxisEditorMngr(const LQSGAxisEditorMngr&) = default;
    LQSGAxisEditorMngr& operator=(const LQSGAxisEditorMngr&) = default;
    virtual ~LQSGAxisEditorMngr() = default;

    /// Builds the axis editor's widgets into the layout.
    virtual bool build_editor_axis(QWidget* parent, QVBoxLayout* layout);

    /// The translated name of an axis, I = 1, J = 2, K = 3; empty for any other number. Axis names are compared with
    /// these.
    [[nodiscard]] static QString axis_text(int axis);

    [[nodiscard]] const QString& axis_name() const { return axis_name_; }
    /// Derives the direction keyword from the stored name. An unknown name is reported and keeps the former keyword.
    void set_axis();
    void set_axis(const QString& axis_name);
    /// 1, 2 or 3 for I, J or K; an unknown name is reported and gives 0.
    [[nodiscard]] int axis() const;
    /// "first axis", "second axis" or "vertical".
    [[nodiscard]] Lodex::CopyCString get_axis_direction() const;

    void updatePaintedSections();
    void updateCells();

    [[nodiscard]] LQSGSectionDialog* dialog() const { return dialog_; }

private:
    [[nodiscard]] int known_axis() const;
    static void report_unknown_axis();

    Lodex::Ref<Lodex::StringValue> direction_;
    QString axis_name_;
    LQSGSectionDialog* dialog_;
};

} // namespace Kelvane

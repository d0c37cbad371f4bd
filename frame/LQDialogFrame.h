#pragma once

#include <QDialog>
#include <QPushButton>

class QHBoxLayout;
class QVBoxLayout;

namespace Kelvane {

/// Body of a shell window: from top to bottom the banner, the dialog's own widgets in box(), the buttons. Escape
/// emits cancelled() and closes nothing by itself. No button is a default one, so Enter in a field only ends the
/// entry there.
class LQDialogFrame : public QDialog {
    Q_OBJECT

public:
    explicit LQDialogFrame(QWidget* parent);

    [[nodiscard]] QVBoxLayout* box() const { return box_; }

    /// The module's picture and, beside it, the text (may be empty).
    void add_banner(const QString& text);

    /// OK, Apply, Cancel and Help, for the slots on_ok(), process(), cancel() and on_help(). Escape cancels as well.
    template <class Dialog> void add_button_row(Dialog* dialog)
    {
        QHBoxLayout* row = new_button_row();
        connect(add_button(row, "ok_button", tr("OK"), tr("Apply (close window)")), &QPushButton::clicked, dialog,
                &Dialog::on_ok);
        connect(add_button(row, "apply_button", tr("Apply"), tr("Apply (leave window open)")), &QPushButton::clicked,
                dialog, &Dialog::process);
        connect(add_button(row, "cancel_button", tr("Cancel"), tr("Cancel (close window)")), &QPushButton::clicked,
                dialog, &Dialog::cancel);
        connect(add_button(row, "help_button", tr("Help"), tr("Launch help")), &QPushButton::clicked, dialog,
                &Dialog::on_help);
        connect(this, &LQDialogFrame::cancelled, dialog, &Dialog::cancel);
    }

    /// Escape or the close button of the window.
    void reject() override;

signals:
    void cancelled();

private:
    QHBoxLayout* new_button_row();
    QPushButton* add_button(QHBoxLayout* row, const char* name, const QString& text, const QString& tip);

    QVBoxLayout* box_;
};

} // namespace Kelvane

#include "flowunit/Question.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace Kelvane {

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("Kelvane::FlowUnitQuestion", text);
}

Answer run(QWidget* parent, const QString& text, bool with_cancel)
{
    QMessageBox box(QMessageBox::Question, translated("Flow Unit"), text, QMessageBox::NoButton, parent);
    box.setObjectName("flow_unit_question");
    box.setTextFormat(Qt::PlainText);
    const auto add = [&](const char* label, const char* name, QMessageBox::ButtonRole role) {
        QPushButton* button = box.addButton(translated(label), role);
        button->setObjectName(name);
        return button;
    };
    auto* yes = add(QT_TRANSLATE_NOOP("Kelvane::FlowUnitQuestion", "&Yes"), "yes_button", QMessageBox::YesRole);
    auto* no = add(QT_TRANSLATE_NOOP("Kelvane::FlowUnitQuestion", "&No"), "no_button", QMessageBox::NoRole);
    QPushButton* cancel = nullptr;
    if (with_cancel)
        cancel = add(QT_TRANSLATE_NOOP("Kelvane::FlowUnitQuestion", "&Cancel"), "cancel_button",
                     QMessageBox::RejectRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(with_cancel ? cancel : no);
    box.exec();
    if (box.clickedButton() == yes)
        return Answer::Yes;
    return box.clickedButton() == no ? Answer::No : with_cancel ? Answer::Cancel : Answer::No;
}

} // namespace

Answer ask(QWidget* parent, const QString& text)
{
    return run(parent, text, false);
}

Answer ask_or_cancel(QWidget* parent, const QString& text)
{
    return run(parent, text, true);
}

} // namespace Kelvane

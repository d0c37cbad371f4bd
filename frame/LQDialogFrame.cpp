#include "frame/LQDialogFrame.h"

#include <Lodex/qtools/LQPixmapLib.h>

#include <QBoxLayout>
#include <QLabel>

namespace Kelvane {

namespace {

/// Name of the module's picture in the host's picture library.
constexpr const char* banner_picture = "stratigraphic_modelling";

} // namespace

LQDialogFrame::LQDialogFrame(QWidget* parent) : QDialog(parent), box_(new QVBoxLayout(this)) {}

void LQDialogFrame::add_banner(const QString& text)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(12);
    auto* picture = new QLabel(this);
    picture->setObjectName("banner_picture");
    picture->setPixmap(Lodex::LQPixmapLib::load(banner_picture));
    picture->setAccessibleDescription(text);
    row->addWidget(picture);
    auto* label = new QLabel(this);
    label->setObjectName("banner_text");
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setWordWrap(true);
    row->addWidget(label, 1);
    box_->addLayout(row);
}

QHBoxLayout* LQDialogFrame::new_button_row()
{
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    box_->addLayout(row);
    return row;
}

QPushButton* LQDialogFrame::add_button(QHBoxLayout* row, const char* name, const QString& text, const QString& tip)
{
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setAutoDefault(false);
    row->addWidget(button);
    return button;
}

void LQDialogFrame::reject()
{
    emit cancelled();
}

} // namespace Kelvane

#include "frame/LQDialogFrame.h"

#include <Lodex/qtools/LQPixmapLib.h>

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>

#include <utility>

namespace Kelvane {

namespace {

/// Name of the module's picture in the host's picture library.
constexpr const char* banner_picture = "sgrid_module";

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

void LQDialogFrame::watch_close(std::function<bool()> may_close)
{
    may_close_ = std::move(may_close);
    installEventFilter(this);
}

bool LQDialogFrame::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == this && event->type() == QEvent::Close && may_close_) {
        if (!may_close_()) {
            event->ignore();
            return true;
        }
        closing_ = true;
    }
    return QDialog::eventFilter(watched, event);
}

void LQDialogFrame::reject()
{
    // A dialog rejects itself both on Escape and while its window closes; only the first is a wish to cancel.
    if (closing_)
        QDialog::reject();
    else
        emit cancelled();
}

} // namespace Kelvane

#include <lodex/appli/MessageBoxSink.h>

#include <lodex/qtools/BusyState.h>

#include <Lodex/qtools/LQDialogTools.h>
#include <Lodex/qtools/QtText.h>

#include <QApplication>

#include <utility>

namespace lodex {

MessageBoxSink::MessageBoxSink()
{
    connect(&BusyState::instance(), &BusyState::released, this, &MessageBoxSink::show);
    Lodex::Logger::add_sink(this);
}

MessageBoxSink::~MessageBoxSink()
{
    Lodex::Logger::remove_sink(this);
    delete box_;
}

void MessageBoxSink::message(Lodex::LogLevel level, const Lodex::CString& text)
{
    if (level != Lodex::LogLevel::Fatal || !enabled_ || !qobject_cast<QApplication*>(QCoreApplication::instance()))
        return;
    QString shown = Lodex::to_qstring(text);
    while (shown.endsWith(u'\n'))
        shown.chop(1);
    QMetaObject::invokeMethod(this, [this, shown] { add(shown); }, Qt::QueuedConnection);
}

void MessageBoxSink::add(const QString& text)
{
    waiting_.append(text);
    show();
}

void MessageBoxSink::show()
{
    if (waiting_.isEmpty() || BusyState::instance().busy())
        return;
    if (!box_) {
        box_ = new QMessageBox(Lodex::LQDialogTools::active_top_widget());
        box_->setObjectName(QStringLiteral("messageBox"));
        box_->setAttribute(Qt::WA_DeleteOnClose);
        box_->setIcon(QMessageBox::Critical);
        box_->setWindowTitle(QApplication::applicationDisplayName());
        box_->setStandardButtons(QMessageBox::Ok);
        box_->setTextFormat(Qt::PlainText);
        box_->setTextInteractionFlags(Qt::TextSelectableByMouse);
        connect(box_, &QDialog::finished, this, [this] { box_.clear(); });
        shown_.clear();
    }
    shown_ += std::exchange(waiting_, {});
    box_->setText(shown_.join(u'\n'));
    box_->open();
}

} // namespace lodex

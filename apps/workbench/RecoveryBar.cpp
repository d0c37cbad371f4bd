#include "RecoveryBar.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>

namespace lodex {

RecoveryBar::RecoveryBar(QWidget* parent) : QFrame(parent), text_(new QLabel(this))
{
    setObjectName("recoveryBar");
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    text_->setObjectName("recoveryText");
    text_->setForegroundRole(QPalette::ToolTipText);
    text_->setTextFormat(Qt::PlainText);
    text_->setWordWrap(true);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->addWidget(text_, 1);
    const auto add_button = [&](const char* name, const QString& text, const QString& tip) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(name);
        button->setToolTip(tip);
        button->setAutoDefault(false);
        row->addWidget(button);
        return button;
    };
    connect(add_button("recoveryRecover", tr("Recover"), tr("Opens what was kept in place of what is open now")),
            &QPushButton::clicked, this, [this] {
                if (!sessions_.isEmpty())
                    emit recover_wanted(sessions_.front());
            });
    connect(add_button("recoveryDiscard", tr("Discard"), tr("Deletes what was kept")), &QPushButton::clicked, this,
            [this] {
                if (sessions_.isEmpty())
                    return;
                emit discard_wanted(take());
                if (sessions_.isEmpty())
                    emit nothing_left();
            });
    connect(add_button("recoveryLater", tr("Later"), tr("Asks again at the next start")), &QPushButton::clicked, this,
            [this] {
                if (sessions_.isEmpty())
                    return;
                emit later_wanted(take());
                if (sessions_.isEmpty())
                    emit nothing_left();
            });
    hide();
}

void RecoveryBar::offer(const QList<KeptSession>& sessions)
{
    sessions_ = sessions;
    show_first();
}

void RecoveryBar::remove(const QString& name)
{
    sessions_.removeIf([&name](const KeptSession& session) { return session.name == name; });
    show_first();
}

KeptSession RecoveryBar::take()
{
    const KeptSession first = sessions_.takeFirst();
    show_first();
    return first;
}

void RecoveryBar::show_first()
{
    setVisible(!sessions_.isEmpty());
    if (sessions_.isEmpty())
        return;
    const KeptSession& session = sessions_.front();
    const QString when = QLocale().toString(session.when, QStringLiteral("yyyy-MM-dd HH:mm"));
    const QString size = QLocale().formattedDataSize(session.bytes);
    const QString grids = session.grids.isEmpty() ? tr("no grids") : session.grids.join(QStringLiteral(", "));
    text_->setText(session.project.isEmpty()
                       ? tr("A session ended before it was saved. Kept on %1: %2 (%3).").arg(when, grids, size)
                       : tr("A session on %4 ended before it was saved. Kept on %1: %2 (%3).")
                             .arg(when, grids, size, QFileInfo(session.project).fileName()));
}

} // namespace lodex

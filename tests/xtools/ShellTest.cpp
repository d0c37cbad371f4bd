#include "Pictures.h"

#include <Lodex/xtools/LQActionAdapter.h>
#include <Lodex/xtools/XMQShell.h>

#include <Lodex/qtools/LQPixmapLib.h>

#include <lodex/qtools/BusyState.h>

#include <gtest/gtest.h>

#include <QDialog>
#include <QDir>
#include <QDialogButtonBox>
#include <QFrame>
#include <QGroupBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>

#include <functional>
#include <memory>

using Lodex::XMQShell;

namespace {

/// Counts executions, as the delete action of a dialog would delete it.
class CountingAction : public Lodex::Action {
public:
    explicit CountingAction(int& count, std::function<void()> also = {}) : count_(count), also_(std::move(also)) {}
    void execute() override
    {
        ++count_;
        if (also_)
            also_();
    }

private:
    int& count_;
    std::function<void()> also_;
};

/// A dialog as the module builds them: an object of its own beside the body, with the buttons' slots.
class Dialog : public QWidget {
    Q_OBJECT

public:
    Dialog()
    {
        body = new QDialog;
        auto* layout = new QVBoxLayout(body);
        edit = new QLineEdit("name", body);
        layout->addWidget(edit);
        cancel_button = new QPushButton("Cancel", body);
        cancel_button->setAutoDefault(false);
        layout->addWidget(cancel_button);
        connect(cancel_button, &QPushButton::clicked, this, &Dialog::cancel);
        shell = new XMQShell(body, "TestShell", "A title");
        shell->set_delete_action(new CountingAction(deleted, [this] { edit_lived = !edit.isNull(); }));
    }

    QPointer<QDialog> body;
    QPointer<QLineEdit> edit;
    QPointer<QPushButton> cancel_button;
    QPointer<XMQShell> shell;
    int deleted = 0;
    int cancelled = 0;
    bool edit_lived = false;
    bool refuse = false;

public slots:
    void cancel()
    {
        ++cancelled;
        if (!refuse)
            shell->close();
    }
};

/// A body with the slot itself.
class CancellingBody : public QDialog {
    Q_OBJECT

public:
    int cancelled = 0;
    std::function<void()> on_cancel;

public slots:
    void cancel()
    {
        ++cancelled;
        if (on_cancel)
            on_cancel();
    }
};

/// A body whose reject() asks first.
class ReluctantBody : public QDialog {
public:
    void reject() override
    {
        ++rejected;
        if (willing)
            QDialog::reject();
    }
    int rejected = 0;
    bool willing = false;
};

/// A part of a body with the slot.
class CancellingPart : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;
    int cancelled = 0;

public slots:
    void cancel() { ++cancelled; }
};

/// Deletes what waits for the event loop.
void run_deletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

} // namespace

TEST(Shell, WindowBearsNameAndTitle)
{
    Dialog dialog;
    QWidget* window = dialog.shell->widget();
    EXPECT_EQ(window->objectName(), "TestShell");
    EXPECT_EQ(window->windowTitle(), "A title");
    EXPECT_EQ(dialog.shell->title(), "A title");
    EXPECT_EQ(dialog.shell->name(), Lodex::CString("TestShell"));
    EXPECT_TRUE(window->isWindow());
    EXPECT_FALSE(dialog.body->isWindow());
    EXPECT_EQ(dialog.body->window(), window);
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(dialog.edit->isHidden());
    delete dialog.shell;
}

TEST(Shell, ShowsAtItsSizeHintWithinTheScreen)
{
    Dialog dialog;
    dialog.shell->show();
    QWidget* window = dialog.shell->widget();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(dialog.edit->isVisible());
    EXPECT_EQ(window->size(), window->sizeHint());
    EXPECT_TRUE(window->screen()->availableGeometry().contains(window->geometry()));
    delete dialog.shell;

    Dialog large;
    large.body->setMinimumSize(300, 200);
    auto* filler = new QLabel(QString("line\n").repeated(500), large.body);
    filler->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
    large.body->layout()->addWidget(filler);
    large.shell->show();
    EXPECT_LE(large.shell->widget()->height(), large.shell->widget()->screen()->availableGeometry().height());
    delete large.shell;
}

TEST(Shell, CloseDeletesOnceAndFromTheEventLoop)
{
    Dialog dialog;
    dialog.shell->show();
    QPointer<QWidget> window = dialog.shell->widget();
    dialog.shell->close();
    dialog.shell->close();
    EXPECT_EQ(dialog.deleted, 0) << "not inside the call";
    ASSERT_FALSE(window.isNull());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(XMQShell::find("TestShell"), nullptr) << "a closing shell is not found any more";
    run_deletions();
    EXPECT_EQ(dialog.deleted, 1);
    EXPECT_TRUE(dialog.edit_lived) << "the dialog goes before its widgets";
    EXPECT_TRUE(dialog.shell.isNull());
    EXPECT_TRUE(window.isNull());
    EXPECT_TRUE(dialog.body.isNull()) << "the shell owns the body";
}

TEST(Shell, ClosesFromInsideASlotOfTheDialog)
{
    Dialog dialog;
    dialog.shell->show();
    bool alive_after_close = false;
    QObject::connect(dialog.cancel_button, &QPushButton::clicked, &dialog,
                     [&] { alive_after_close = !dialog.cancel_button.isNull() && dialog.deleted == 0; });
    QTest::mouseClick(dialog.cancel_button, Qt::LeftButton);
    EXPECT_TRUE(alive_after_close);
    EXPECT_EQ(dialog.cancelled, 1);
    run_deletions();
    EXPECT_EQ(dialog.deleted, 1);
}

TEST(Shell, EscapeAndTheWindowsButtonRunCancel)
{
    for (const bool escape : {true, false}) {
        Dialog dialog;
        dialog.shell->show();
        if (escape)
            QTest::keyClick(dialog.edit, Qt::Key_Escape);
        else
            dialog.shell->widget()->close();
        EXPECT_EQ(dialog.cancelled, 1);
        ASSERT_FALSE(dialog.shell.isNull());
        EXPECT_FALSE(dialog.shell->widget()->isVisible());
        run_deletions();
        EXPECT_EQ(dialog.deleted, 1);
        EXPECT_TRUE(dialog.shell.isNull());
    }
}

TEST(Shell, StaysOpenAndWholeWhenCancelRefuses)
{
    Dialog dialog;
    dialog.refuse = true;
    dialog.shell->show();
    QTest::keyClick(dialog.edit, Qt::Key_Escape);
    dialog.shell->widget()->close();
    dialog.body->close();
    EXPECT_EQ(dialog.cancelled, 3);
    EXPECT_TRUE(dialog.shell->widget()->isVisible());
    EXPECT_TRUE(dialog.body->isVisible()) << "no empty frame";
    run_deletions();
    EXPECT_EQ(dialog.deleted, 0);
    delete dialog.shell;
    EXPECT_EQ(dialog.deleted, 1);
}

TEST(Shell, CancelSlotOfTheBodyComesFirst)
{
    auto* body = new CancellingBody;
    auto* button = new QPushButton("Cancel", body);
    int clicks = 0;
    QObject::connect(button, &QPushButton::clicked, [&] { ++clicks; });
    XMQShell shell(body, "BodyShell", "Body");
    body->on_cancel = [&] { shell.close(); };
    shell.show();
    QTest::keyClick(body, Qt::Key_Escape);
    EXPECT_EQ(body->cancelled, 1);
    EXPECT_EQ(clicks, 0);
    EXPECT_FALSE(shell.widget()->isVisible());
    QCoreApplication::removePostedEvents(&shell, QEvent::DeferredDelete);
}

TEST(Shell, CancelSlotOfAPartIsFound)
{
    auto* body = new QDialog;
    auto* part = new CancellingPart("text", body);
    new QMessageBox(body); // a window of its own inside the body
    XMQShell shell(body, "PartShell", "Part");
    shell.show();
    QTest::keyClick(shell.widget(), Qt::Key_Escape);
    EXPECT_EQ(part->cancelled, 1);
    EXPECT_TRUE(shell.widget()->isVisible());
}

TEST(Shell, WithoutCancelEscapeCloses)
{
    int deleted = 0;
    auto* body = new QDialog;
    auto* edit = new QLineEdit(body);
    QPointer<XMQShell> shell = new XMQShell(body, "PlainShell", "Plain");
    shell->set_delete_action(new CountingAction(deleted));
    shell->show();
    QTest::keyClick(edit, Qt::Key_Escape);
    run_deletions();
    EXPECT_TRUE(shell.isNull());
    EXPECT_EQ(deleted, 1);
}

TEST(Shell, WithoutCancelTheBodysRejectDecides)
{
    int deleted = 0;
    auto* body = new ReluctantBody;
    QPointer<XMQShell> shell = new XMQShell(body, "ReluctantShell", "Reluctant");
    shell->set_delete_action(new CountingAction(deleted));
    shell->show();
    QTest::keyClick(body, Qt::Key_Escape);
    EXPECT_EQ(body->rejected, 1);
    EXPECT_TRUE(shell->widget()->isVisible());
    body->willing = true;
    shell->widget()->close();
    EXPECT_EQ(body->rejected, 2);
    EXPECT_FALSE(shell->widget()->isVisible());
    run_deletions();
    EXPECT_TRUE(shell.isNull());
    EXPECT_EQ(deleted, 1);
}

TEST(Shell, HelpKeyPressesTheHelpButton)
{
    Dialog dialog;
    auto* help = new QPushButton("&Help", dialog.body);
    int helps = 0;
    QObject::connect(help, &QPushButton::clicked, [&] { ++helps; });
    dialog.shell->show();
    QTest::keyClick(dialog.edit, Qt::Key_F1);
    EXPECT_EQ(helps, 1);
    EXPECT_TRUE(dialog.shell->widget()->isVisible());
    delete dialog.shell;
}

TEST(Shell, BodyThatIsNoDialogJustCloses)
{
    QPointer<XMQShell> shell = new XMQShell(new QLabel("text"), "LabelShell", "Label");
    shell->show();
    QTest::keyClick(shell->widget(), Qt::Key_Escape);
    run_deletions();
    EXPECT_TRUE(shell.isNull());
}

TEST(Shell, DisabledCancelButtonIsNotClicked)
{
    Dialog dialog;
    dialog.cancel_button->setEnabled(false);
    dialog.shell->show();
    dialog.shell->widget()->close();
    EXPECT_EQ(dialog.cancelled, 0);
    run_deletions();
    EXPECT_EQ(dialog.deleted, 1);
}

TEST(Shell, FinishedBodyClosesTheWindow)
{
    Dialog dialog;
    dialog.shell->show();
    dialog.body->accept();
    EXPECT_FALSE(dialog.shell->widget()->isVisible());
    run_deletions();
    EXPECT_EQ(dialog.deleted, 1);
    EXPECT_EQ(dialog.cancelled, 0);
}

TEST(Shell, DeletedBodyClosesTheWindow)
{
    Dialog dialog;
    dialog.shell->show();
    delete dialog.body;
    run_deletions();
    EXPECT_TRUE(dialog.shell.isNull());
    EXPECT_EQ(dialog.deleted, 1);
}

TEST(Shell, DeleteActionMayReplaceNothingTwice)
{
    int deleted = 0;
    {
        XMQShell shell(new QDialog, "S", "S");
        shell.set_delete_action(new CountingAction(deleted));
        shell.set_delete_action(nullptr);
    }
    EXPECT_EQ(deleted, 0) << "an action taken away is let go";
    {
        XMQShell shell(new QDialog, "S", "S");
        shell.set_delete_action(new CountingAction(deleted, [&] { shell.close(); }));
    }
    EXPECT_EQ(deleted, 1);
    run_deletions();
}

TEST(Shell, CloseDuringACommandWaitsForItsEnd)
{
    Dialog dialog;
    dialog.shell->show();
    lodex::BusyState& busy = lodex::BusyState::instance();
    busy.enter();
    QTest::keyClick(dialog.edit, Qt::Key_Escape);
    dialog.shell->widget()->close();
    EXPECT_EQ(dialog.cancelled, 0) << "cannot be entered while a command runs";
    EXPECT_TRUE(dialog.shell->widget()->isVisible());
    dialog.shell->close(); // by the program
    EXPECT_FALSE(dialog.shell->widget()->isVisible());
    run_deletions();
    EXPECT_EQ(dialog.deleted, 0);
    busy.leave();
    EXPECT_EQ(dialog.deleted, 0);
    run_deletions();
    EXPECT_EQ(dialog.deleted, 1);
}

TEST(Shell, OldestOfANameIsFound)
{
    EXPECT_EQ(XMQShell::find("S"), nullptr);
    auto first = std::make_unique<XMQShell>(new QDialog, "S", "first");
    XMQShell second(new QDialog, "S", "second");
    XMQShell other(new QDialog, "T", "other");
    EXPECT_EQ(XMQShell::find("S"), first.get());
    EXPECT_EQ(XMQShell::find("T"), &other);
    first.reset();
    EXPECT_EQ(XMQShell::find("S"), &second);
}

TEST(Shell, GoesWithTheWindowItBelongsTo)
{
    auto owner = std::make_unique<QMainWindow>();
    owner->show();
    auto* body = new QDialog(owner.get());
    int deleted = 0;
    QPointer<QDialog> watched = body;
    bool body_lived = false;
    QPointer<XMQShell> shell = new XMQShell(body, "OwnedShell", "Owned");
    shell->set_delete_action(new CountingAction(deleted, [&] { body_lived = !watched.isNull(); }));
    shell->show();
    owner.reset();
    run_deletions();
    EXPECT_TRUE(shell.isNull());
    EXPECT_EQ(deleted, 1);
    EXPECT_TRUE(body_lived) << "the owner's death must not delete the body first";
}

TEST(Shell, DoesNotGoWithAnotherShell)
{
    QMainWindow owner;
    QPointer<XMQShell> first = new XMQShell(new QDialog(&owner), "First", "First");
    auto* second = new XMQShell(new QDialog(first->widget()), "Second", "Second");
    QPointer<XMQShell> third = new XMQShell(new QDialog(second->widget()), "Third", "Third");
    delete first;
    delete second;
    run_deletions();
    ASSERT_FALSE(third.isNull());
    EXPECT_EQ(XMQShell::find("Third"), third);
    delete third;
}

TEST(Shell, DoesNotKeepTheApplicationAlive)
{
    Dialog dialog;
    EXPECT_FALSE(dialog.shell->widget()->testAttribute(Qt::WA_QuitOnClose));
    delete dialog.shell;
}

TEST(ActionAdapter, SignalExecutesTheAction)
{
    int count = 0;
    QPushButton button;
    auto* action = new CountingAction(count);
    auto* adapter = new Lodex::LQActionAdapter(action, &button);
    EXPECT_EQ(action->references(), 1);
    QObject::connect(&button, &QPushButton::clicked, adapter, &Lodex::LQActionAdapter::run);
    button.click();
    button.click();
    EXPECT_EQ(count, 2);
}

TEST(ActionAdapter, ActionMayDeleteTheAdapter)
{
    int count = 0;
    QPointer<Lodex::LQActionAdapter> adapter;
    adapter = new Lodex::LQActionAdapter(new CountingAction(count, [&] { delete adapter; }), nullptr);
    adapter->run();
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(adapter.isNull());
    Lodex::LQActionAdapter nothing(nullptr, nullptr);
    nothing.run();
}

TEST(Shell, PictureForLookingAt)
{
    const QString folder = picture_folder();
    auto* body = new QDialog;
    auto* layout = new QVBoxLayout(body);
    auto* banner = new QHBoxLayout;
    auto* picture = new QLabel(body);
    picture->setPixmap(Lodex::LQPixmapLib::load("stratigraphic_modelling"));
    banner->addWidget(picture);
    banner->addWidget(new QLabel("Create new SGrid by merging cell sections of existing SGrid", body), 1);
    layout->addLayout(banner);
    auto* group = new QGroupBox("Section Editor", body);
    auto* row = new QHBoxLayout(group);
    row->addWidget(new QSpinBox(group));
    for (const char* name : {"ptr_right", "row_add", "row_remove", "table_insert_row_above", "table_merge_rows",
                             "flow_units", "filesave"}) {
        auto* button = new QPushButton(group);
        button->setIcon(Lodex::LQPixmapLib::icon(name));
        button->setEnabled(qstrcmp(name, "row_remove") != 0);
        row->addWidget(button);
    }
    layout->addWidget(group);
    auto* buttons = new QDialogButtonBox(
        QDialogButtonBox::Ok | QDialogButtonBox::Apply | QDialogButtonBox::Cancel | QDialogButtonBox::Help, body);
    layout->addWidget(buttons);
    XMQShell shell(body, "PictureShell", "Merge SGrid Sections");
    shell.show();
    EXPECT_TRUE(shell.widget()->grab().save(folder + "/shell.png"));
}

#include "ShellTest.moc"

#include "frame/DeleteAction.h"
#include "frame/LQDialogFrame.h"
#include "tests/frame/DeferredDeletes.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

namespace {

using Kelvane::DeleteAction;
using Kelvane::LQDialogFrame;

/// Counts what its buttons do.
class Target : public QObject {
    Q_OBJECT

public:
    ~Target() override { ++deleted; }
    int ok = 0, applied = 0, cancelled = 0, helped = 0;
    static inline int deleted = 0;

public slots:
    void on_ok() { ++ok; }
    bool process() { return ++applied > 0; }
    void cancel() { ++cancelled; }
    void on_help() { ++helped; }
};

TEST(DeleteAction, DeletesTheDialogOnceAndLater)
{
    Target::deleted = 0;
    auto* target = new Target;
    Lodex::Ref<Lodex::Action> action(new DeleteAction<Target>(target));
    action->execute();
    EXPECT_EQ(Target::deleted, 0);
    action->execute();
    run_deferred_deletes();
    EXPECT_EQ(Target::deleted, 1);
    action->execute();
    run_deferred_deletes();
    EXPECT_EQ(Target::deleted, 1);
}

TEST(DeleteAction, NullOrGoneDoesNothing)
{
    Target::deleted = 0;
    Lodex::Ref<Lodex::Action> none(new DeleteAction<Target>(nullptr));
    none->execute();
    auto target = std::make_unique<Target>();
    Lodex::Ref<Lodex::Action> action(new DeleteAction<Target>(target.get()));
    target.reset();
    action->execute();
    run_deferred_deletes();
    EXPECT_EQ(Target::deleted, 1);
}

TEST(DeleteAction, ItsEndLeavesTheDialogAlone)
{
    Target target;
    Target::deleted = 0;
    {
        Lodex::Ref<Lodex::Action> action(new DeleteAction<Target>(&target));
    }
    run_deferred_deletes();
    EXPECT_EQ(Target::deleted, 0);
}

TEST(DialogFrame, ButtonRow)
{
    LQDialogFrame frame(nullptr);
    Target target;
    frame.add_button_row(&target);
    const auto buttons = frame.findChildren<QPushButton*>();
    const QStringList texts{"OK", "Apply", "Cancel", "Help"};
    const QStringList tips{"Apply (close window)", "Apply (leave window open)", "Cancel (close window)", "Launch help"};
    ASSERT_EQ(buttons.size(), 4);
    frame.show();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(buttons[i]->text(), texts[i]);
        EXPECT_EQ(buttons[i]->toolTip(), tips[i]);
        EXPECT_FALSE(buttons[i]->objectName().isEmpty());
        EXPECT_FALSE(buttons[i]->autoDefault());
        EXPECT_FALSE(buttons[i]->isDefault());
        EXPECT_TRUE(i == 0 || buttons[i]->x() > buttons[i - 1]->x());
        QTest::mouseClick(buttons[i], Qt::LeftButton);
    }
    EXPECT_EQ(target.ok, 1);
    EXPECT_EQ(target.applied, 1);
    EXPECT_EQ(target.cancelled, 1);
    EXPECT_EQ(target.helped, 1);
}

TEST(DialogFrame, BannerHasThePictureAndTheText)
{
    LQDialogFrame frame(nullptr);
    frame.add_banner("Create new SGrid for upscaling\nby merging cells of existing SGrid");
    const auto* picture = frame.findChild<QLabel*>("banner_picture");
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->pixmap().isNull());
    const auto* text = frame.findChild<QLabel*>("banner_text");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->text(), "Create new SGrid for upscaling\nby merging cells of existing SGrid");
    EXPECT_EQ(frame.box()->count(), 1);
}

TEST(DialogFrame, EscapeAndTheWindowsCloseButtonCancel)
{
    LQDialogFrame frame(nullptr);
    Target target;
    frame.add_button_row(&target);
    frame.show();
    QTest::keyClick(&frame, Qt::Key_Escape);
    EXPECT_EQ(target.cancelled, 1);
    frame.close();
    EXPECT_EQ(target.cancelled, 2);
}

TEST(DialogFrame, EnterInAFieldPressesNoButton)
{
    LQDialogFrame frame(nullptr);
    Target target;
    auto* field = new QLineEdit(&frame);
    frame.box()->addWidget(field);
    frame.add_button_row(&target);
    frame.show();
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(target.ok + target.applied + target.cancelled + target.helped, 0);
    EXPECT_TRUE(frame.isVisible());
}

} // namespace

#include "test_dialog_frame.moc"

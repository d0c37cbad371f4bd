#include <Lodex/qtools/LQDialogTools.h>
#include <Lodex/qtools/Lodex_qtools_init.h>
#include <Lodex/utils/Format.h>

#include <lodex/qtools/BusyState.h>
#include <lodex/qtools/MainWindowRegistry.h>

#include <gtest/gtest.h>

#include <QMainWindow>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

#include <memory>

using Lodex::LQDialogTools;

TEST(DialogTools, MainWindowStandsInForAnActiveOne)
{
    ASSERT_EQ(LQDialogTools::active_top_widget(), nullptr);
    auto main = std::make_unique<QMainWindow>();
    lodex::set_main_window(main.get());
    EXPECT_EQ(LQDialogTools::active_top_widget(), main.get());

    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_EQ(LQDialogTools::active_top_widget(), &other);
    other.hide();

    main.reset();
    EXPECT_EQ(lodex::main_window(), nullptr) << "a window that died is forgotten";
}

TEST(BusyState, TellsOnceWhenTheLastWorkIsOver)
{
    lodex::BusyState& state = lodex::BusyState::instance();
    QSignalSpy released(&state, &lodex::BusyState::released);
    EXPECT_FALSE(state.busy());
    state.enter();
    state.enter();
    state.leave();
    EXPECT_TRUE(state.busy());
    EXPECT_EQ(released.count(), 0);
    state.leave();
    EXPECT_FALSE(state.busy());
    EXPECT_EQ(released.count(), 1);
    state.leave();
    EXPECT_EQ(released.count(), 1);
    EXPECT_FALSE(state.busy());
}

namespace {

struct Reverse : QTranslator {
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* text, const char*, int) const override
    {
        return qstrcmp(context, "Messages") == 0 ? QString("<%1>").arg(text) : QString();
    }
};

} // namespace

TEST(QtoolsInit, MessagesAskTheTranslations)
{
    Lodex::Lodex_qtools_init::initialize();
    EXPECT_EQ(Lodex::Format::tr("Hello %1").arg("you").text(), Lodex::CString("Hello you"));
    Reverse translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(Lodex::Format::tr("Hello %1").arg("you").text(), Lodex::CString("<Hello you>"));
    QCoreApplication::removeTranslator(&translator);
    Lodex::Lodex_qtools_init::terminate();
}

// Main program of the widget tests: no display needed, dialogs of the toolkit instead of the desktop's, C locale numbers.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    QLocale::setDefault(QLocale::c());
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}

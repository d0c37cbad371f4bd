// Main program of the widget tests: no display needed, dialogs of the toolkit instead of the desktop's, C locale numbers.
// On a platform with a display the drawing context is what a camera needs.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>
#include <QSurfaceFormat>

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    QLocale::setDefault(QLocale::c());
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    if (qgetenv("QT_QPA_PLATFORM") != "offscreen") {
        QSurfaceFormat format;
        format.setVersion(3, 2);
        format.setProfile(QSurfaceFormat::CoreProfile);
        format.setDepthBufferSize(24);
        format.setSamples(0);
        QSurfaceFormat::setDefaultFormat(format);
        QApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    }
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}

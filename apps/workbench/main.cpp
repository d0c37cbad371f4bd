// lodex-workbench: the desktop application.

#include "HeadlessRun.h"
#include "MainWindow.h"
#include "Theme.h"
#include "Translations.h"
#include "Workbench.h"
#include "lodex/appli/GuiServices.h"
#include "lodex/gviews/CameraView.h"
#include "lodex/utils/Version.h"

#include <Lodex/gui/Lodex_gui_init.h>

#include <CLI/CLI.hpp>

#include <QApplication>
#include <QLocale>
#include <QSettings>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int bad_usage = 2;

struct Options {
    std::vector<std::string> models;
    std::string headless; ///< folder for the results; empty: open the window
    std::string language; ///< of menus and windows; empty: the user's choice, else the desktop's
    double keep_after = 20; ///< seconds
};

/// Nothing when the program shall end with `status`.
bool read_options(int argc, char** argv, Options& options, int& status)
{
    CLI::App app{"Opens the workbench, on the last project or the example field when no file is given.",
                 "lodex-workbench"};
    app.set_version_flag("--version", std::string("lodex-workbench ") + lodex::program_version());
    app.add_option("MODEL", options.models, "Model files to import, or a project file to open")->check(CLI::ExistingFile);
    app.add_option(
           "--headless", options.headless,
           "Work without a display: coarsen the example field through the dialog, carry its properties over, compare, "
           "and leave pictures, model, reports and journal in this folder")
        ->excludes("MODEL");
    app.add_option("--language", options.language,
                   "Language of menus and windows, such as fr; commands stay as they are");
    app.add_option("--keep-after", options.keep_after,
                   "Seconds after a change until a copy is kept for recovery, while nothing is touched")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    try {
        app.parse(argc, argv);
        return true;
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? 0 : bad_usage;
        return false;
    }
}

bool has_argument(int argc, char** argv, std::initializer_list<std::string_view> beginnings)
{
    return std::any_of(argv + 1, argv + argc, [&](std::string_view argument) {
        return std::ranges::any_of(beginnings,
                                   [&](std::string_view beginning) { return argument.starts_with(beginning); });
    });
}

/// What the toolkit says of a platform without a screen tells the user nothing.
void pass_on_message(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (!text.startsWith(u"This plugin does not support") && !text.startsWith(u"QStandardPaths: XDG_RUNTIME_DIR"))
        std::cerr << qFormatLogMessage(type, context, text).toStdString() << '\n';
}

lodex::Workbench::Options workbench_options(const Options& options)
{
    lodex::Workbench::Options result;
    for (const std::string& model : options.models)
        result.files.append(QString::fromStdString(model));
    const auto after = std::chrono::milliseconds(static_cast<long>(options.keep_after * 1000));
    result.times.settle = after;
    result.times.idle = std::min(result.times.idle, after);
    return result;
}

/// Theme and language, as asked for now, chosen before, or as the desktop has them.
void use_choices(const std::string& language)
{
    const auto settings = lodex::MainWindow::user_settings();
    const int theme = settings->value("theme", 0).toInt();
    lodex::use_theme(theme > 0 && theme <= static_cast<int>(lodex::Theme::Dark) ? static_cast<lodex::Theme>(theme)
                                                                                : lodex::Theme::System);
    QStringList wanted = QLocale::system().uiLanguages();
    wanted.prepend(settings->value("language").toString());
    wanted.prepend(QString::fromStdString(language));
    lodex::use_language(lodex::language_for(wanted));
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    int status = 0;
    // Help and version need no display.
    if (has_argument(argc, argv, {"--help", "-h", "--version"}) && !read_options(argc, argv, options, status))
        return status;
    if (has_argument(argc, argv, {"--headless"})) {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(pass_on_message);
    }

    lodex::CameraView::prepare_application();
    QApplication application(argc, argv); // takes the toolkit's own arguments out
    QApplication::setApplicationName(QStringLiteral("lodex-workbench"));
    QApplication::setApplicationDisplayName(QStringLiteral("lodex workbench"));
    QApplication::setApplicationVersion(QString::fromLatin1(lodex::program_version()));
    QApplication::setDesktopFileName(QStringLiteral("org.lodex.Workbench")); // the menu entry that it belongs to
    std::setlocale(LC_NUMERIC, "C"); // numbers in fields, commands and files read alike everywhere
    QLocale::setDefault(QLocale::c());
    if (!read_options(argc, argv, options, status))
        return status;
    Lodex::Lodex_gui_init::initialize();

    if (!options.headless.empty()) {
        lodex::use_language(lodex::language_for({QString::fromStdString(options.language)}));
        return lodex::run_headless(options.headless, std::cout, std::cerr);
    }
    use_choices(options.language);

    const lodex::GuiServices services;
    QApplication::setQuitOnLastWindowClosed(false); // the window may be made anew
    lodex::Workbench workbench(workbench_options(options));
    QObject::connect(&workbench, &lodex::Workbench::closed, &application, &QCoreApplication::quit);
    workbench.window().show();
    QTimer::singleShot(0, &workbench, &lodex::Workbench::start);
    return QApplication::exec();
}

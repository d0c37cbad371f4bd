// docs/widgets.md lists every widget that a person can touch. It is made here from the running windows; with
// LODEX_UPDATE_DOCS set the page is written, else it is compared.

#include "WorkbenchTest.h"

#include "apps/workbench/MainWindow.h"
#include "apps/workbench/DialogTable.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "apps/workbench/plots/NumbersWindow.h"
#include "CommandStub.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>

#include <fstream>
#include <sstream>

using namespace lodex;

namespace {

class WidgetListTest : public WorkbenchTest {};

bool can_be_touched(const QWidget& widget)
{
    return qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QAbstractSpinBox*>(&widget) ||
           qobject_cast<const QComboBox*>(&widget) || qobject_cast<const QLineEdit*>(&widget) ||
           qobject_cast<const QAbstractItemView*>(&widget) || qobject_cast<const QPlainTextEdit*>(&widget) ||
           (qobject_cast<const QAbstractSlider*>(&widget) && !qobject_cast<const QScrollBar*>(&widget));
}

/// Part of another widget that is listed itself: the field inside a spin box, the list of a combo box, buttons that the
/// toolkit puts into tabs and tool bars.
bool is_part(const QWidget& widget)
{
    for (const QWidget* parent = widget.parentWidget(); parent; parent = parent->parentWidget()) {
        if (qobject_cast<const QAbstractSpinBox*>(parent) || qobject_cast<const QComboBox*>(parent) ||
            parent->inherits("QTabBar") || parent->inherits("QToolBar") || parent->inherits("QHeaderView") ||
            parent->inherits("QLineEdit"))
            return true;
    }
    return widget.inherits("QHeaderView") || widget.inherits("QTableCornerButton");
}

QString rows(const QString& title, const QWidget& window)
{
    QString text = "## " + title + "\n\n| object name | class | tooltip |\n|---|---|---|\n";
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!can_be_touched(*widget) || is_part(*widget) || widget->objectName().startsWith("qt_"))
            continue;
        EXPECT_FALSE(widget->objectName().isEmpty())
            << widget->metaObject()->className() << " in " << title.toStdString() << " has no object name; parent "
            << widget->parentWidget()->objectName().toStdString();
        QString tip = widget->toolTip();
        text += "| `" + widget->objectName() + "` | " + QString(widget->metaObject()->className()) + " | " +
                tip.replace('\n', ' ') + " |\n";
    }
    return text + "\n";
}

} // namespace

TEST_F(WidgetListTest, ThePageListsEveryWidgetThatCanBeTouched)
{
    QString page =
        "# Widgets\n\nEvery widget that a person can touch, by its object name, for tests, assistive tools and "
        "recorded sessions.\nMade from the running windows by the tests of the workbench (`LODEX_UPDATE_DOCS=1`).\n\n";
    {
        MainWindow window;
        page += rows("Main window", window);
    }
    add_box("Box");
    {
        NumbersWindow numbers(*find_grid("Box"));
        numbers.setAttribute(Qt::WA_DeleteOnClose, false);
        page += rows("Numbers", numbers);
        ComparisonWindow comparison;
        comparison.setAttribute(Qt::WA_DeleteOnClose, false);
        page += rows("Compare fine with coarse", comparison);
    }
    for (const DialogRow& row : dialog_rows()) {
        const auto opener = row.opener();
        CommandStub nothing;
        QWidget* const window = opener->open(nothing, {}).window;
        page += rows(window->windowTitle(), *window);
        window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    const std::string path = SOURCE_DIR "/docs/widgets.md";
    if (qEnvironmentVariableIsSet("LODEX_UPDATE_DOCS")) {
        std::ofstream(path) << page.toStdString();
        return;
    }
    std::ostringstream written;
    written << std::ifstream(path).rdbuf();
    EXPECT_EQ(written.str(), page.toStdString());
}

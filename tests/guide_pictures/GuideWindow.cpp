#include "GuideWindow.h"

#include "Pictures.h"

#include "apps/workbench/ObjectTree.h"
#include "apps/workbench/Theme.h"
#include "lodex/gviews/CameraView.h"
#include "lodex/interpreter/Interpreter.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/gui/Lodex_gui_init.h>
#include <Lodex/gviews/Picking.h>
#include <Lodex/qtools/LQMultiComboBox.h>

#include <QAction>
#include <QCursor>
#include <QFileDialog>
#include <QLineEdit>
#include <QScreen>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <vector>

using namespace lodex;

namespace {

struct Shade {
    std::array<int, 3> rgb;
    std::int64_t pixels;
};
using Box = std::vector<Shade>;

/// Channel in which the shades of a box differ most, and by how much.
std::pair<std::size_t, int> widest(const Box& box)
{
    std::pair<std::size_t, int> result{0, -1};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const auto [low, high] =
            std::ranges::minmax(box, {}, [channel](const Shade& shade) { return shade.rgb[channel]; });
        if (high.rgb[channel] - low.rgb[channel] > result.second)
            result = {channel, high.rgb[channel] - low.rgb[channel]};
    }
    return result;
}

/// How much is won by halving a box: more for one of many pixels, so that smooth shades stay smooth.
double worth(const Box& box)
{
    std::int64_t pixels = 0;
    for (const Shade& shade : box)
        pixels += shade.pixels;
    return widest(box).second * std::pow(static_cast<double>(pixels), 0.25);
}

/// With a palette of 256 colours, which makes a file of a third of the size: boxes of colour are halved until there are
/// so many.
QImage with_palette(const QImage& picture)
{
    const QImage opaque = picture.convertToFormat(QImage::Format_RGB32);
    std::map<QRgb, std::int64_t> pixels;
    for (int y = 0; y < opaque.height(); ++y) {
        for (int x = 0; x < opaque.width(); ++x)
            ++pixels[opaque.pixel(x, y)];
    }
    std::vector<Box> boxes(1);
    for (const auto& [colour, count] : pixels)
        boxes.front().push_back({{qRed(colour), qGreen(colour), qBlue(colour)}, count});
    std::vector<double> worths{worth(boxes.front())};
    while (boxes.size() < 256) {
        const auto most = std::ranges::max_element(worths);
        if (*most == 0)
            break;
        Box* const box = &boxes[static_cast<std::size_t>(most - worths.begin())];
        const auto [channel, range] = widest(*box);
        const int low = std::ranges::min(*box, {}, [c = channel](const Shade& s) { return s.rgb[c]; }).rgb[channel];
        const auto upper = std::ranges::partition(
            *box, [c = channel, middle = low + range / 2](const Shade& s) { return s.rgb[c] <= middle; });
        Box half(upper.begin(), upper.end());
        box->erase(upper.begin(), upper.end());
        *most = worth(*box);
        worths.push_back(worth(half));
        boxes.push_back(std::move(half));
    }
    QImage result(opaque.size(), QImage::Format_Indexed8);
    result.setColorCount(static_cast<int>(boxes.size()));
    std::map<QRgb, uint> place;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        std::array<std::int64_t, 3> sum{};
        std::int64_t count = 0;
        for (const Shade& shade : boxes[i]) {
            for (std::size_t c = 0; c < 3; ++c)
                sum[c] += shade.pixels * shade.rgb[c];
            count += shade.pixels;
            place[qRgb(shade.rgb[0], shade.rgb[1], shade.rgb[2])] = static_cast<uint>(i);
        }
        const auto mean = [&](std::size_t c) { return static_cast<int>((sum[c] + count / 2) / count); };
        result.setColor(static_cast<int>(i), qRgb(mean(0), mean(1), mean(2)));
    }
    for (int y = 0; y < opaque.height(); ++y) {
        for (int x = 0; x < opaque.width(); ++x)
            result.setPixel(x, y, place[opaque.pixel(x, y)]);
    }
    return result;
}

void save(const QImage& picture, const QString& name)
{
    const QString folder = qEnvironmentVariableIsSet("LODEX_UPDATE_DOCS")
                               ? QStringLiteral(SOURCE_DIR "/docs/help/pictures/")
                               : picture_folder() + QStringLiteral("/guide_");
    EXPECT_GT(picture.width(), 200) << name.toStdString();
    EXPECT_TRUE(with_palette(picture).save(folder + name + QStringLiteral(".png"), "PNG", 0)) << name.toStdString();
}

} // namespace

GuideWindow::GuideWindow()
{
    Lodex::Lodex_gui_init::initialize();
    Lodex::GeobaseLib::instance()->clear();
    Interpreter::instance().clear_journal();
    use_theme(Theme::Light);
    QCursor::setPos(1279, 899); // nothing shall light up below it
    QApplication::setCursorFlashTime(0); // nor shall a text cursor come and go
    window_ = std::make_unique<MainWindow>();
    window_->resize(1240, 820);
    window_->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
    window_->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window_.get()));
}

GuideWindow::~GuideWindow()
{
    window_.reset();
    Lodex::GraphicLib::instance()->reset_tool();
    Lodex::GeobaseLib::instance()->clear();
    Interpreter::instance().clear_journal();
    use_theme(Theme::System);
}

void GuideWindow::make_example()
{
    ASSERT_TRUE(window_->run("lodex create example name Example"));
    settle();
}

void GuideWindow::settle()
{
    bool drawn = false;
    const auto connection =
        QObject::connect(window_->camera(), &CameraView::drawn, window_.get(), [&drawn] { drawn = true; });
    window_->camera()->request_update();
    EXPECT_TRUE(QTest::qWaitFor([&drawn] { return drawn; }));
    QObject::disconnect(connection);
    QApplication::processEvents();
}

void GuideWindow::picture_of(QWidget* shown, const QString& name)
{
    if (shown == window_.get()) {
        window_->statusBar()->clearMessage(); // tells a time, another one each time
        settle();
    }
    QApplication::processEvents();
    save(shown->screen()->grabWindow(shown->winId()).toImage(), name);
}

void GuideWindow::picture_of_part(QWidget* widget, const QString& name)
{
    QApplication::processEvents();
    save(widget->grab().toImage(), name);
}

QWidget* GuideWindow::open_dialog(const char* id)
{
    QWidget* const dialog = window_->open_dialog(QLatin1String(id));
    if (!dialog)
        throw std::runtime_error(std::string("the dialog does not open: ") + id);
    EXPECT_TRUE(QTest::qWaitForWindowExposed(dialog));
    dialog->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
    return dialog;
}

void GuideWindow::close(QWidget* dialog)
{
    dialog->close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
}

void GuideWindow::select(const QString& grid)
{
    ObjectTree* const tree = window_->tree();
    const auto items = tree->findItems(grid, Qt::MatchExactly, ObjectTree::NameColumn);
    ASSERT_EQ(items.size(), 1) << grid.toStdString();
    tree->scrollToItem(items.front());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, tree->visualItemRect(items.front()).center());
    QApplication::processEvents();
}

void GuideWindow::trigger(const char* action)
{
    auto* const one = part<QAction>(window_.get(), action);
    EXPECT_TRUE(one->isEnabled()) << action;
    one->trigger();
    QApplication::processEvents();
}

QWidget* GuideWindow::trigger_window(const char* action)
{
    const QWidgetList before = QApplication::topLevelWidgets();
    trigger(action);
    QWidget* opened = nullptr;
    const bool found = QTest::qWaitFor([&] {
        for (QWidget* one : QApplication::topLevelWidgets()) {
            if (one->isVisible() && !before.contains(one))
                opened = one;
        }
        return opened != nullptr;
    });
    if (!found)
        throw std::runtime_error(std::string("no window opens: ") + action);
    EXPECT_TRUE(QTest::qWaitForWindowExposed(opened));
    opened->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(opened));
    return opened;
}

void GuideWindow::click(QWidget* widget)
{
    EXPECT_TRUE(widget->isVisible() && widget->isEnabled()) << widget->objectName().toStdString();
    QTest::mouseClick(widget, Qt::LeftButton);
    QApplication::processEvents();
}

void GuideWindow::tick(QWidget* box)
{
    EXPECT_TRUE(box->isVisible() && box->isEnabled()) << box->objectName().toStdString();
    QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, {8, box->height() / 2});
    QApplication::processEvents();
}

void GuideWindow::type_over(QWidget* field, const QString& text)
{
    EXPECT_TRUE(field->isVisible() && field->isEnabled()) << field->objectName().toStdString();
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Tab);
    QApplication::processEvents();
}

void GuideWindow::choose(const QObject* parent, const char* name, const QString& entry)
{
    auto* const list = part<Lodex::LQMultiComboBox>(parent, name);
    EXPECT_TRUE(list->isVisible() && list->isEnabled()) << name;
    if (list->isEditable())
        type_over(list->lineEdit(), entry);
    else
        list->setSelectedItems({entry});
    EXPECT_EQ(list->currentText(), entry) << name;
    QApplication::processEvents();
}

void GuideWindow::answer_file_dialog(const QString& path)
{
    QTimer::singleShot(0, qApp, [path] {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog) {
            ADD_FAILURE() << "no file dialog opened";
            return;
        }
        auto* const name = part<QLineEdit>(dialog, "fileNameEdit");
        name->setText(path); // typed letter by letter, the list of suggestions would take the Enter
        QTest::keyClick(name, Qt::Key_Return);
        if (dialog->isVisible()) {
            ADD_FAILURE() << "the file dialog does not take " << path.toStdString();
            dialog->reject();
        }
    });
}

// The page "Getting started", followed in the window as it is written: what it says comes out, and its pictures are made
// on the way. Its script makes the same models.

#include "GuideWindow.h"

#include "apps/workbench/ObjectTree.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/gviews/CameraView.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/GeobaseLib.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QWizard>

using namespace lodex;

namespace {

class GettingStarted : public GuideWindow {
protected:
    GettingStarted()
    {
        QFile file(SOURCE_DIR "/docs/help/user-doc/getting_started.html");
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        page_ = QString::fromUtf8(file.readAll());
    }
    void expect_on_page(const QString& text) const
    {
        EXPECT_TRUE(page_.contains(text.toHtmlEscaped())) << "the page does not say: " << text.toStdString();
    }

    void make_the_coarse_grid()
    {
        select("Example");
        QWidget* const dialog = trigger_window("upscaleGrid");
        type_over(part<QLineEdit>(dialog, "new_grid_name_"), "Coarse");
        auto* const tabs = part<QTabWidget>(dialog, "axis_tabs_");
        const std::pair<const char*, int> axes[] = {{"axis_i_page", 50}, {"axis_j_page", 40}, {"axis_k_page", 40}};
        for (int axis = 0; axis < 3; ++axis) {
            QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, Qt::NoModifier, tabs->tabBar()->tabRect(axis).center());
            const auto* const row = part<QWidget>(dialog, axes[axis].first);
            auto* const on = part<QCheckBox>(row, "enable_box_");
            if (!on->isChecked())
                tick(on);
            type_over(part<QSpinBox>(row, "to_"), QString::number(axes[axis].second));
            EXPECT_EQ(part<QSpinBox>(row, "from_")->value(), 1);
            EXPECT_EQ(part<QSpinBox>(row, "step_")->value(), 2);
        }
        EXPECT_TRUE(part<QLabel>(dialog, "new_cells_total")->text().contains("10000"));
        picture_of(dialog, "start_coarsen");
        click(part<QPushButton>(dialog, "ok_button"));
        const CornerPointGrid* const coarse = find_grid("Coarse");
        ASSERT_NE(coarse, nullptr);
        EXPECT_EQ(coarse->model().size, (GridSize{25, 20, 20}));
    }

    static void next(QWizard* wizard, int times = 1)
    {
        for (int n = 0; n < times; ++n)
            click(wizard->button(QWizard::NextButton));
    }
    void carry_properties_over()
    {
        select("Example");
        auto* const wizard = qobject_cast<QWizard*>(trigger_window("upscaleProperty"));
        ASSERT_NE(wizard, nullptr);
        choose(wizard, "fine_gridSelector_", "Example");
        choose(wizard, "coarse_gridSelector_", "Coarse");
        next(wizard);
        auto* const mapper = part<QComboBox>(wizard, "mapper_");
        mapper->setCurrentText("parametric");
        EXPECT_EQ(mapper->currentText(), "parametric");
        next(wizard);
        auto* const kind = part<QComboBox>(wizard, "property_class_");
        auto* const method = part<QComboBox>(wizard, "method_");
        EXPECT_EQ(kind->currentText(), "Porosity");
        EXPECT_EQ(method->currentText(), "Arithmetic");
        tick(part<QCheckBox>(wizard, "weight_volume_"));
        next(wizard);
        choose(wizard, "fine_prop_cb_", "PORO");
        choose(wizard, "coarse_prop_cb_", "PORO");
        next(wizard, 3);
        EXPECT_FALSE(part<QTextEdit>(wizard, "summary_")->toHtml().contains("#ff0000"));
        picture_of(wizard, "start_summary");
        click(wizard->button(QWizard::FinishButton));
        ASSERT_NE(find_grid("Coarse")->model().find_property("PORO"), nullptr);

        for (int n = 0; n < 4; ++n)
            click(wizard->button(QWizard::BackButton));
        kind->setCurrentText("Permeability");
        method->setCurrentText("EFMixed");
        EXPECT_EQ(method->currentText(), "EFMixed");
        next(wizard);
        const char* const fine[] = {"fine_prop_i_cb_", "fine_prop_j_cb_", "fine_prop_k_cb_"};
        const char* const coarse[] = {"coarse_prop_i_cb_", "coarse_prop_j_cb_", "coarse_prop_k_cb_"};
        const char* const names[] = {"PERMX", "PERMY", "PERMZ"};
        for (int axis = 0; axis < 3; ++axis) {
            choose(wizard, fine[axis], names[axis]);
            choose(wizard, coarse[axis], names[axis]);
        }
        next(wizard, 3);
        EXPECT_FALSE(part<QTextEdit>(wizard, "summary_")->toHtml().contains("#ff0000"));
        click(wizard->button(QWizard::HelpButton)); // "OK" on this page
        for (const char* name : names)
            ASSERT_NE(find_grid("Coarse")->model().find_property(name), nullptr) << name;
    }

    void compare_them()
    {
        select("Coarse");
        auto* const comparison = qobject_cast<ComparisonWindow*>(trigger_window("compare"));
        ASSERT_NE(comparison, nullptr);
        comparison->choose("Example", "PORO", "Coarse", "PORO", "parametric");
        click(part<QPushButton>(comparison, "comparisonCompare"));
        QApplication::processEvents();
        const auto* const table = part<QTableWidget>(comparison, "comparisonTable");
        const auto items = table->findItems("Mean by volume", Qt::MatchExactly);
        ASSERT_EQ(items.size(), 1);
        for (int column = 1; column <= 2; ++column)
            expect_on_page(table->item(items.front()->row(), column)->text());
        picture_of(comparison, "start_compare");
        comparison->close();
    }

    QString page_;
    QTemporaryDir folder_;
};

QByteArray content(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

TEST_F(GettingStarted, ComesOutAsThePageSays)
{
    make_example();
    select("Example");
    auto* const colour = part<QComboBox>(window(), "displayColour");
    colour->setCurrentText("PORO");
    picture_of(window(), "start_window");
    make_the_coarse_grid();
    carry_properties_over();
    compare_them();
    window()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    select("Coarse");
    colour->setCurrentText("PORO");
    part<QTabWidget>(window(), "lowerTabs")->setCurrentIndex(1); // the journal
    picture_of(window(), "start_coarse");

    const QString made = folder_.filePath("coarse.grdecl");
    answer_file_dialog(made);
    trigger("export");
    ASSERT_TRUE(QFile::exists(made));
    const QString session = folder_.filePath("session.lodex");
    answer_file_dialog(session);
    trigger("saveJournal");
    ASSERT_TRUE(QFile::exists(session));

    // The session's script and that of the page, each by the batch runner.
    const QByteArray expected = content(made);
    ASSERT_TRUE(QFile::remove(made));
    QProcess runner;
    runner.setWorkingDirectory(folder_.path());
    runner.setProcessChannelMode(QProcess::MergedChannels);
    runner.start(QStringLiteral(BUILD_BIN_DIR "/lodex"), {"run", session});
    ASSERT_TRUE(runner.waitForFinished(120000));
    EXPECT_EQ(runner.exitCode(), 0) << runner.readAll().toStdString() << content(session).toStdString();
    EXPECT_TRUE(content(made) == expected) << "the journal makes another model";

    ASSERT_TRUE(QFile::remove(made));
    const qsizetype from = page_.indexOf("<pre class=\"script\">");
    ASSERT_GT(from, 0);
    QString script = page_.mid(from + 20, page_.indexOf("</pre>", from) - from - 20);
    script.replace("&quot;", "\"").replace("&gt;", ">").replace("&lt;", "<").replace("&amp;", "&");
    QFile file(folder_.filePath("page.lodex"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(script.toUtf8());
    file.close();
    runner.start(QStringLiteral(BUILD_BIN_DIR "/lodex"), {"run", file.fileName()});
    ASSERT_TRUE(runner.waitForFinished(120000));
    EXPECT_EQ(runner.exitCode(), 0) << runner.readAll().toStdString();
    EXPECT_TRUE(content(made) == expected) << "the page's script makes another model";
}

} // namespace

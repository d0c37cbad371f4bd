#include "WorkbenchTest.h"

#include "apps/workbench/HeadlessRun.h"

#include <nlohmann/json.hpp>

#include <QImage>
#include <QProcess>

#include <algorithm>
#include <fstream>
#include <set>

using namespace lodex;

namespace {

class HeadlessTest : public WorkbenchTest {};

std::size_t colours_of(const QImage& picture)
{
    std::set<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 3) {
        for (int x = 0; x < picture.width(); x += 3)
            colours.insert(picture.pixel(x, y));
    }
    return colours.size();
}

TEST_F(HeadlessTest, LeavesPicturesModelReportsAndJournal)
{
    std::ostringstream results, problems;
    ASSERT_EQ(run_headless(file("new") / "out", results, problems), 0) << problems.str();
    EXPECT_EQ(problems.str(), "");
    const auto out = file("new") / "out";
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(out))
        names.insert(entry.path().filename().string());
    const std::set<std::string> expected{"coarse.grdecl",
                                         "coarse.json",
                                         "coarse_cross.png",
                                         "coarse_grid.png",
                                         "coarse_histogram.png",
                                         "coarse_profile.png",
                                         "comparison_PERMX.png",
                                         "comparison_PORO.png",
                                         "dialog_downscaleGrid.png",
                                         "dialog_flowUnits.png",
                                         "dialog_subdivideSections.png",
                                         "dialog_upscaleGrid.png",
                                         "dialog_upscaleProperty.png",
                                         "difference.png",
                                         "fine.json",
                                         "fine_cross.png",
                                         "fine_grid.png",
                                         "fine_histogram.png",
                                         "fine_painted.png",
                                         "fine_profile.png",
                                         "journal.lodex",
                                         "merge_dialog.png",
                                         "report.json",
                                         "window.png"};
    EXPECT_EQ(names, expected);
    for (const char* name :
         {"merge_dialog.png", "fine_grid.png", "coarse_grid.png", "comparison_PORO.png", "window.png"}) {
        const QImage picture(QString::fromStdString((out / name).string()));
        EXPECT_GT(picture.width(), 400) << name;
        EXPECT_GT(picture.height(), 300) << name;
        EXPECT_GT(colours_of(picture), 20u) << name;
    }

    const auto fine = nlohmann::json::parse(content(out / "fine.json"));
    const auto coarse = nlohmann::json::parse(content(out / "coarse.json"));
    EXPECT_EQ(fine["size"], nlohmann::json({50, 40, 40}));
    EXPECT_EQ(coarse["size"], nlohmann::json({50, 40, 20}));
    EXPECT_NEAR(coarse["total_volume"].get<double>() / fine["total_volume"].get<double>(), 1, 1e-6);
    for (const char* property : {"PORO", "PERMX", "PERMY", "PERMZ", "FACIES"})
        EXPECT_TRUE(coarse["properties"].contains(property)) << property;

    // Porosity by volume is conserved over the cells that are compared; the report says what was run.
    const auto report = nlohmann::json::parse(content(out / "report.json"));
    EXPECT_EQ(report["fine"]["size"], fine["size"]);
    EXPECT_EQ(report["coarse"]["size"], coarse["size"]);
    EXPECT_EQ(report["comparisons"].size(), 3u);
    const auto& porosity = report["comparisons"]["PORO"];
    EXPECT_NEAR(porosity["coarse"]["mean"].get<double>() / porosity["fine"]["mean"].get<double>(), 1, 5e-3)
        << porosity.dump(2);
    EXPECT_GE(report["commands"].size(), 8u);
    EXPECT_NE(report["commands"][2]["text"].get<std::string>().find("upscale_porosity"), std::string::npos);
    EXPECT_EQ(coarse["layers"].size(), 4u);

    EXPECT_NE(
        results.str().find("fine grid   Example: 50 x 40 x 40 = 80000 cells, " + fine["active"].dump() + " active"),
        std::string::npos)
        << results.str();
    EXPECT_NE(results.str().find("50 x 40 x 20 = 40000 cells, " + coarse["active"].dump() + " active"),
              std::string::npos);
    for (const std::string& name : names)
        EXPECT_NE(results.str().find((out / name).string()), std::string::npos) << name;

    // The exported model reads back, and the journal makes the same grid again.
    clear();
    ASSERT_TRUE(run("lodex import file \"" + (out / "coarse.grdecl").string() + "\" name Again"));
    EXPECT_EQ(find_grid("Again")->model().size, (GridSize{50, 40, 20}));
    ASSERT_TRUE(run(content(out / "journal.lodex")));
    ASSERT_NE(find_grid("Example_coarse"), nullptr);
    EXPECT_EQ(std::ranges::count(find_grid("Example_coarse")->model().active, 1), coarse["active"].get<std::int64_t>());
    EXPECT_EQ(find_grid("Example_coarse")->model().active, find_grid("Again")->model().active);
}

TEST_F(HeadlessTest, SaysWhyItFailed)
{
    std::ofstream(file("taken")) << "a file where a folder is wanted";
    std::ostringstream results, problems;
    EXPECT_EQ(run_headless(file("taken"), results, problems), 1);
    EXPECT_TRUE(problems.str().starts_with("error: ")) << problems.str();
    EXPECT_NE(problems.str().find("taken"), std::string::npos);
    EXPECT_EQ(results.str(), "");
}

TEST_F(HeadlessTest, TakesTheReasonFromTheLogWhenTheMergeFails)
{
    add_box("Example_coarse"); // the name that the run wants
    std::ostringstream results, problems;
    EXPECT_EQ(run_headless(file("out"), results, problems), 1);
    EXPECT_NE(problems.str().find("taken"), std::string::npos) << problems.str();
}

struct Ended {
    int status;
    std::string out, err;
};

Ended start(const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_QPA_PLATFORM");
    environment.remove("DISPLAY");
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(BUILD_BIN_DIR "/lodex-workbench"), arguments);
    EXPECT_TRUE(process.waitForFinished(120000));
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput().toStdString(), process.readAllStandardError().toStdString()};
}

TEST_F(HeadlessTest, ProgramRunsWithoutADisplay)
{
    const Ended run = start({"--headless", QString::fromStdString(file("out").string())});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("coarse grid Example_coarse: 50 x 40 x 20"), std::string::npos) << run.out;
    EXPECT_TRUE(std::filesystem::exists(file("out") / "coarse.grdecl"));
}

TEST_F(HeadlessTest, ProgramTellsItselfAndRefusesBadUsage)
{
    const Ended version = start({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.out.starts_with("lodex-workbench ")) << version.out;
    const Ended help = start({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--headless"), std::string::npos);
    EXPECT_EQ(start({"--headless"}).status, 2);
    EXPECT_EQ(start({"--headless", "x", "--nonsense"}).status, 2);
    EXPECT_EQ(start({"--headless", "/dev/null/x"}).status, 1);
}

} // namespace

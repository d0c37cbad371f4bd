#include "HeadlessRun.h"

#include "DisplayPanel.h"
#include "JournalView.h"
#include "MainWindow.h"
#include "NumberTexts.h"
#include "SectionPanel.h"
#include "plots/ComparisonWindow.h"
#include "plots/NumbersWindow.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/utils/AtomicFile.h"
#include "lodex/utils/Numbers.h"
#include "lodex/utils/Version.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/utils/Logger.h>

#include <nlohmann/json.hpp>

#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace lodex {

namespace {

using nlohmann::ordered_json;

constexpr const char* fine_name = "Example";
constexpr const char* coarse_name = "Example_coarse";

/// Writes warnings as they come and keeps errors, to say why something failed.
class Problems : public Lodex::LogSink {
public:
    explicit Problems(std::ostream& warnings) : warnings_(warnings) { Lodex::Logger::add_sink(this); }
    ~Problems() override { Lodex::Logger::remove_sink(this); }
    Problems(const Problems&) = delete;
    Problems& operator=(const Problems&) = delete;

    void message(Lodex::LogLevel level, const Lodex::CString& text) override
    {
        if (level == Lodex::LogLevel::Warning) {
            std::string_view shown = text.str();
            while (shown.ends_with('\n'))
                shown.remove_suffix(1);
            warnings_ << "warning: " << shown << '\n';
        }
        if (level < Lodex::LogLevel::Error)
            return;
        text_ += (text_.empty() ? "" : "\n") + text.str();
        while (text_.ends_with('\n'))
            text_.pop_back();
    }
    /// The given text with what the log says.
    [[nodiscard]] std::runtime_error failure(const std::string& what) const
    {
        return std::runtime_error(what + ": " + (text_.empty() ? "the log gives no reason" : text_));
    }

private:
    std::ostream& warnings_;
    std::string text_;
};

template <class Widget> Widget& part(const QWidget& window, const char* name)
{
    auto* widget = window.findChild<Widget*>(QString::fromLatin1(name));
    if (!widget)
        throw std::runtime_error(std::string("the window has no ") + name);
    return *widget;
}

void let_events_run()
{
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void save_text(std::string_view text, const std::filesystem::path& path)
{
    AtomicFile file(path);
    file.write(text);
    file.commit();
}

void save_image(const QImage& image, const std::filesystem::path& path)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!image.save(&buffer, "PNG"))
        throw std::runtime_error(path.string() + ": the picture cannot be written");
    save_text({bytes.constData(), static_cast<std::size_t>(bytes.size())}, path);
}

void save_picture(QWidget& widget, const std::filesystem::path& path)
{
    save_image(widget.grab().toImage(), path);
}

std::string line_of(const std::string& title, const std::string& name)
{
    const GridModel& model = find_grid(name)->model();
    const auto text = [](std::int64_t number) { return std::to_string(number); };
    const std::string unit = length_unit_text(*find_grid(name)).toStdString();
    const VolumeSummary volumes = summarise_volumes(model);
    return title + " " + name + ": " + text(model.size[0]) + " x " + text(model.size[1]) + " x " + text(model.size[2]) +
           " = " + text(model.cells()) + " cells, " + text(volumes.active_cells) + " active; bulk volume " +
           format_general(volumes.active_volume, 12) + (unit.empty() ? "" : " " + unit + "3") +
           " of the active cells, " + format_general(volumes.total_volume, 12) + " of all";
}

class Run {
public:
    Run(const std::filesystem::path& folder, std::ostream& results, std::ostream& problems)
        : folder_(folder), results_(results), problems_(problems)
    {}

    void all()
    {
        window_.resize(1360, 860);
        window_.show();
        command(std::string("lodex create example name ") + fine_name);
        show_grid(fine_name, "fine", "the fine grid");
        coarsen();
        carry_over();
        compare();
        show_numbers();
        show_other_dialogs();
        show_grid(coarse_name, "coarse", "the coarse grid");
        let_events_run();
        save_picture(window_, file("window.png", "the whole window"));
        command(std::string("lodex export sgrid ") + coarse_name + " file " +
                path("coarse.grdecl", "the coarse model"));
        report_["fine"] = report(fine_name, "fine.json", "report of the fine grid");
        report_["coarse"] = report(coarse_name, "coarse.json", "report of the coarse grid");
        save_journal(file("journal.lodex", "the commands that made both grids"));
        save_text(report_.dump(2) + "\n", file("report.json", "what was run, both grids, and how they compare"));
        results_ << line_of("fine grid  ", fine_name) << '\n' << line_of("coarse grid", coarse_name) << '\n';
        for (const std::string& line : comparisons_)
            results_ << line << '\n';
        results_ << made_;
    }

private:
    /// Answers of the statements.
    std::string command(const std::string& text)
    {
        std::string answer;
        for (const StatementResult& result : Interpreter::instance().run(text)) {
            ordered_json counts = ordered_json::object();
            for (const auto& [name, value] : result.counts)
                counts[name] = value;
            report_["commands"].push_back({{"text", result.text}, {"seconds", result.seconds}, {"counts", counts}});
            if (result.status != StatementStatus::Done)
                throw problems_.failure(text);
            answer += result.answer;
        }
        return answer;
    }

    /// Works the merge dialog as a person would.
    void coarsen()
    {
        QWidget* const window = window_.open_dialog("mergeSections");
        if (!window)
            throw problems_.failure("the merge dialog does not open");
        QWidget& dialog = *window;
        part<QLineEdit>(dialog, "new_grid_name_").setText(coarse_name);
        part<QComboBox>(dialog, "direction_").setCurrentIndex(2);
        part<QSpinBox>(dialog, "from_").setValue(1);
        part<QSpinBox>(dialog, "to_").setValue(static_cast<int>(find_grid(fine_name)->header().size[2]));
        part<QSpinBox>(dialog, "step_").setValue(2);
        part<QCheckBox>(dialog, "copy_regions_").setChecked(true);
        part<QCheckBox>(dialog, "paint_check_box_").setChecked(true);
        let_events_run();
        save_picture(dialog, file("merge_dialog.png", "the merge dialog"));
        save_section(file("fine_painted.png", "the fine grid with the chosen sections"));
        const CornerPointGrid* before = find_grid(coarse_name);
        part<QPushButton>(dialog, "apply_button").click();
        if (!find_grid(coarse_name) || find_grid(coarse_name) == before)
            throw problems_.failure("the merge dialog made no grid");
        report_["commands"].push_back({{"text", Interpreter::instance().journal().back()}});
        part<QPushButton>(dialog, "cancel_button").click();
        let_events_run();
    }

    /// Porosity by the mean over bulk volume, permeability by a flow method (conforming finite elements), facies by the
    /// most probable one.
    void carry_over()
    {
        const std::string on = std::string("lodex on SGrid ") + fine_name, to = std::string(" Coarse ") + coarse_name;
        command(on + " upscale_porosity fine_porosity PORO" + to +
                " coarse_porosity PORO mapper stratigraphic upscaler Arithmetic weight_using_volume 1");
        command(on + " upscale_permeability fine_Perm_I PERMX fine_Perm_J PERMY fine_Perm_K PERMZ" + to +
                " coarse_Perm_I PERMX coarse_Perm_J PERMY coarse_Perm_K PERMZ mapper stratigraphic upscaler EFConform"
                " boundary Confined");
        command(on + " upscale_indicator fine_indicator FACIES" + to +
                " coarse_indicator FACIES mapper stratigraphic upscaler \"Most probable\"");
    }

    void compare()
    {
        for (const char* property : {"PORO", "PERMX", "FACIES"}) {
            const std::string name = property;
            const ordered_json answer = ordered_json::parse(command(
                std::string("lodex on SGrid ") + fine_name + " compare_property " + name + " Coarse " + coarse_name +
                " coarse_property " + name + " mapper stratigraphic difference " + name + "_difference"));
            report_["comparisons"][name] = answer;
        }
        window_.tree()->select(coarse_name);
        for (const char* property : {"PORO", "PERMX"}) {
            ComparisonWindow* const window = window_.open_comparison();
            window->choose(fine_name, property, coarse_name, property, "stratigraphic");
            window->compare();
            let_events_run();
            for (const QStringList& row : window->table().rows) {
                if (row.front() == ComparisonWindow::tr("Mean by volume"))
                    comparisons_.push_back(std::string(property) + ": mean by volume " + row[1].toStdString() +
                                           " fine, " + row[2].toStdString() + " coarse (" + row[3].toStdString() + ")");
            }
            save_picture(*window, file(std::string("comparison_") + property + ".png",
                                       std::string("fine and coarse ") + property));
            window->close();
            let_events_run();
        }
        window_.show_property(coarse_name, "PERMX_difference");
        let_events_run();
        save_section(file("difference.png", "where the coarse permeability differs from the mean of the fine one"));
    }

    void show_numbers()
    {
        for (const char* grid : {fine_name, coarse_name}) {
            window_.tree()->select(TreeItem{.kind = TreeItem::Kind::Property, .grid = grid, .name = "PORO"});
            NumbersWindow* const window = window_.open_numbers();
            auto& pages = part<QTabWidget>(*window, "numbersPages");
            const std::string start = grid == fine_name ? "fine" : "coarse";
            const char* const names[] = {"histogram", "profile", "cross"};
            const char* const titles[] = {"histogram of porosity", "porosity by K layer",
                                          "permeability against porosity"};
            part<QComboBox>(*window, "numbersOther").setCurrentText("PERMX");
            part<QCheckBox>(*window, "numbersLogY").setChecked(true);
            for (int page = 0; page < 3; ++page) {
                pages.setCurrentIndex(page);
                let_events_run();
                save_picture(*window, file(start + "_" + names[page] + ".png",
                                           std::string(titles[page]) + ", " + start + " grid"));
            }
            window->close();
            let_events_run();
        }
    }

    void show_other_dialogs()
    {
        window_.tree()->select(TreeItem{.kind = TreeItem::Kind::Property, .grid = fine_name, .name = "PORO"});
        for (const DialogRow& row : dialog_rows()) {
            const std::string id = row.id;
            if (id == "mergeSections")
                continue;
            QWidget* const window = window_.open_dialog(row.id);
            if (!window)
                throw problems_.failure(id + ": the dialog does not open");
            let_events_run();
            save_picture(*window, file("dialog_" + id + ".png", "dialog " + window->windowTitle().toStdString()));
            window->close();
            let_events_run();
        }
    }

    /// The section, and the camera's view where there is one.
    void show_grid(const std::string& name, const std::string& start, const std::string& what)
    {
        window_.tree()->select(QString::fromStdString(name));
        window_.display()->colour_by(ColourBy::of_property("PORO"));
        window_.section()->colour_by({ColourBy::Kind::Property, "PORO"});
        let_events_run();
        save_section(file(start + "_grid.png", what + ", a section"));
        CameraView& camera = *window_.camera();
        if (!camera.can_draw())
            return;
        const QImage picture = camera.picture({1200, 800});
        if (picture.isNull())
            throw problems_.failure("the camera makes no picture");
        save_image(picture, file(start + "_camera.png", what + ", in 3D"));
    }

    void save_section(const std::filesystem::path& path)
    {
        auto& views = part<QTabWidget>(window_, "views");
        QWidget* const before = views.currentWidget();
        views.setCurrentWidget(window_.section());
        let_events_run();
        save_picture(*window_.section()->view(), path);
        views.setCurrentWidget(before);
    }

    [[nodiscard]] ordered_json report(const std::string& grid, const std::string& name, const std::string& what)
    {
        command("lodex report sgrid " + grid + " file " + path(name, what));
        return ordered_json::parse(command("lodex report sgrid " + grid));
    }

    /// A file of the folder, noted for the list of what was made.
    [[nodiscard]] std::filesystem::path file(const std::string& name, const std::string& what)
    {
        const std::filesystem::path whole = folder_ / name;
        made_ += whole.string() + ": " + what + "\n";
        return whole;
    }
    [[nodiscard]] std::string path(const std::string& name, const std::string& what)
    {
        const QString text = quoted_path(QString::fromStdString(file(name, what).string()));
        if (text.isEmpty())
            throw problems_.failure("the folder cannot stand in a command");
        return text.toStdString();
    }

    std::filesystem::path folder_;
    std::ostream& results_;
    std::string made_;
    std::vector<std::string> comparisons_;
    ordered_json report_{
        {"program", "lodex-workbench"}, {"version", program_version()}, {"commands", ordered_json::array()}};
    const Problems problems_;
    MainWindow window_;
};

} // namespace

int run_headless(const std::filesystem::path& folder, std::ostream& results, std::ostream& problems)
{
    try {
        std::filesystem::create_directories(folder);
        Run(folder, results, problems).all();
        return 0;
    } catch (const std::exception& error) {
        problems << "error: " << error.what() << '\n';
        return 1;
    }
}

} // namespace lodex

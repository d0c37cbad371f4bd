#include "HeadlessRun.h"

#include "GridList.h"
#include "JournalView.h"
#include "MainWindow.h"
#include "SectionPanel.h"
#include "lodex/utils/AtomicFile.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/utils/Logger.h>
#include <Lodex/xtools/XMQShell.h>

#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace lodex {

namespace {

constexpr const char* fine_name = "Example";
constexpr const char* coarse_name = "Example_coarse";
constexpr const char* merge_shell = "SgridMergeSectionShell";

/// Writes warnings as they come and keeps errors, to say why something failed.
class Problems : public Lodex::LogSink {
public:
    explicit Problems(std::ostream& warnings) : warnings_(warnings) { Lodex::Logger::add_sink(this); }
    ~Problems() override { Lodex::Logger::remove_sink(this); }
    Problems(const Problems&) = delete;
    Problems& operator=(const Problems&) = delete;

    void message(Lodex::LogLevel level, const Lodex::CString& text) override
    {
        if (level == Lodex::LogLevel::Warning)
            warnings_ << "warning: " << text << '\n';
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

void save_picture(QWidget& widget, const std::filesystem::path& path)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!widget.grab().toImage().save(&buffer, "PNG"))
        throw std::runtime_error(path.string() + ": the picture cannot be written");
    AtomicFile file(path);
    file.write({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    file.commit();
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
        coarsen();
        window_.grids()->select(coarse_name);
        let_events_run();
        save_picture(*window_.section()->view(), file("coarse_grid.png", "the coarse grid"));
        command(std::string("lodex export sgrid ") + coarse_name + " file " +
                path("coarse.grdecl", "the coarse model"));
        command(std::string("lodex report sgrid ") + fine_name + " file " +
                path("fine.json", "report of the fine grid"));
        command(std::string("lodex report sgrid ") + coarse_name + " file " +
                path("coarse.json", "report of the coarse grid"));
        save_journal(file("journal.lodex", "the commands that made both grids"));
        results_ << line_of("fine grid  ", fine_name) << '\n' << line_of("coarse grid", coarse_name) << '\n' << made_;
    }

private:
    void command(const std::string& text)
    {
        if (!window_.run(QString::fromStdString(text)))
            throw problems_.failure(text);
    }

    /// Works the merge dialog as a person would.
    void coarsen()
    {
        window_.open_merge_dialog();
        const Lodex::XMQShell* shell = Lodex::XMQShell::find(merge_shell);
        if (!shell)
            throw problems_.failure("the merge dialog does not open");
        QWidget& dialog = *shell->widget();
        part<QLineEdit>(dialog, "new_grid_name_").setText(coarse_name);
        part<QComboBox>(dialog, "direction_").setCurrentIndex(2);
        part<QSpinBox>(dialog, "from_").setValue(1);
        part<QSpinBox>(dialog, "to_").setValue(static_cast<int>(find_grid(fine_name)->model().size[2]));
        part<QSpinBox>(dialog, "step_").setValue(2);
        part<QCheckBox>(dialog, "copy_properties_").setChecked(true);
        part<QCheckBox>(dialog, "paint_check_box_").setChecked(true);
        let_events_run();
        save_picture(dialog, file("merge_dialog.png", "the merge dialog"));
        save_picture(*window_.section()->view(), file("fine_grid.png", "the fine grid with the chosen sections"));
        const CornerPointGrid* before = find_grid(coarse_name);
        part<QPushButton>(dialog, "apply_button").click();
        if (!find_grid(coarse_name) || find_grid(coarse_name) == before)
            throw problems_.failure("the merge dialog made no grid");
        part<QPushButton>(dialog, "cancel_button").click();
        let_events_run();
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

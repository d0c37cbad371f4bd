// A host program that opens a dialog of the module and sees each command that the dialog sends before it is run.
//   merge_dialog            opens the dialog on a small grid
//   merge_dialog --apply    fills it in and applies it, without a person

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/gui/Lodex_gui_init.h>
#include <Lodex/interpreter/CommandExecuter.h>
#include <Lodex/interpreter/ICommandStub.h>
#include <Lodex/xtools/XMShell.h>

#include <sgresize/LQSGSectionMergeDialog.h>

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <iostream>
#include <sstream>

namespace {

/// Prints each command, then has the library run it. A host with an interpreter of its own would run it there.
class PrintingExecuter : public Lodex::CommandExecuter {
public:
    PrintingExecuter() : next_(Lodex::CommandLib::instance()->set_cmd_executer(this)) {}
    ~PrintingExecuter() override { Lodex::CommandLib::instance()->set_cmd_executer(next_); }
    PrintingExecuter(const PrintingExecuter&) = delete;
    PrintingExecuter& operator=(const PrintingExecuter&) = delete;

    bool run_cmd(std::ostringstream& command, Lodex::Action* after) override
    {
        std::cout << "command: " << command.str().c_str() << std::endl; // the text ends at its first NUL
        return next_->run_cmd(command, after);
    }

private:
    Lodex::CommandExecuter* next_;
};

/// Selects the grid in the dialog.
class OpenedOn : public Lodex::ICommandStub {
public:
    explicit OpenedOn(const char* grid) : grid_(grid) {}

    [[nodiscard]] bool get(const Lodex::CString& key, Lodex::CopyCString& value, int index) const override
    {
        if (key != Lodex::CString("sgrid") || index != 0)
            return false;
        value = grid_;
        return true;
    }

private:
    Lodex::CString grid_;
};

/// What a person would do: layers 1 to 12 in threes, then Apply.
void fill_in_and_apply(QWidget& dialog)
{
    dialog.findChild<QLineEdit*>("new_grid_name_")->setText("Coarse");
    dialog.findChild<QWidget*>("direction_")->setProperty("currentIndex", 2);
    dialog.findChild<QSpinBox*>("from_")->setValue(1);
    dialog.findChild<QSpinBox*>("to_")->setValue(12);
    dialog.findChild<QSpinBox*>("step_")->setValue(3);
    dialog.findChild<QPushButton*>("apply_button")->click();
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Lodex::Lodex_gui_init::initialize();
    PrintingExecuter executer;

    std::ostringstream grid;
    grid << "lodex create sgrid name Fine size 8+6+12 spacing 50+50+2";
    if (!executer.run_cmd(grid, nullptr))
        return 1;

    auto* const dialog = new Kelvane::LQSGSectionMergeDialog; // goes when its window closes
    Lodex::XMShell* const shell = dialog->build_shell();
    OpenedOn stub("Fine");
    dialog->init(&stub);
    shell->show();
    if (application.arguments().contains("--apply")) {
        fill_in_and_apply(*shell->widget());
        shell->close();
        QCoreApplication::processEvents();
        return Lodex::GeobaseLib::instance()->is_name_used("Coarse") ? 0 : 1;
    }
    return QApplication::exec();
}

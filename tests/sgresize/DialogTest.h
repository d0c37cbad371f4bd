#pragma once

#include "sgresize/LQSGSectionMergeDialog.h"
#include "tests/frame/Catalogue.h"

#include "CommandStub.h"
#include "MessageList.h"

#include <Lodex/qtools/LQMultiComboBox.h>
#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/xtools/XMQShell.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>

#include <string>

/// What closes or removes something goes from the event loop.
inline void run_deferred_deletes()
{
    for (int i = 0; i < 4; ++i)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// The boxes of one row of a section table, by the names of the widgets.
struct RowWidgets {
    QTableWidget* table;
    int row;

    template <class Widget> [[nodiscard]] Widget* find(const char* name) const
    {
        for (int column = 0; column < table->columnCount(); ++column) {
            if (QWidget* cell = table->cellWidget(row, column)) {
                if (auto* widget = cell->findChild<Widget*>(name))
                    return widget;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QSpinBox* from() const { return find<QSpinBox>("from_"); }
    [[nodiscard]] QSpinBox* to() const { return find<QSpinBox>("to_"); }
    [[nodiscard]] QSpinBox* step() const { return find<QSpinBox>("step_"); }
    [[nodiscard]] QSpinBox* property() const { return find<QSpinBox>("property_section_"); }
    [[nodiscard]] QPushButton* add() const { return find<QPushButton>("add_button"); }
    [[nodiscard]] QPushButton* remove() const { return find<QPushButton>("remove_button"); }
    [[nodiscard]] QToolButton* pick(const char* name) const { return find<QToolButton>(name); }
};

/// A section merge dialog in its shell, on grids of the catalogue.
class MergeDialogTest : public testing::Test {
protected:
    ~MergeDialogTest() override
    {
        if (shell)
            shell->close();
        run_deferred_deletes();
    }

    /// Opens the dialog on a grid (empty: on none) and shows the chosen axis.
    void open(const std::string& grid = "G", const char* axis = nullptr)
    {
        open(new Kelvane::LQSGSectionMergeDialog, grid, axis);
    }
    void open(Kelvane::LQSGSectionMergeDialog* made, const std::string& grid = "G", const char* axis = nullptr)
    {
        dialog = made;
        shell = dialog->build_shell();
        if (!grid.empty()) {
            CommandStub stub{{"sgrid", grid}};
            dialog->init(&stub);
        }
        shell->show();
        if (axis)
            find<QComboBox>("direction_")->setCurrentText(axis);
        log.texts.clear();
        messages.clear();
    }

    template <class Widget> [[nodiscard]] Widget* find(const char* name) const
    {
        return shell->widget()->findChild<Widget*>(name);
    }
    [[nodiscard]] RowWidgets row(int index) const { return {find<QTableWidget>("table"), index}; }
    [[nodiscard]] int rows() const { return find<QTableWidget>("table")->rowCount(); }
    void set_row(int index, int from, int to, int step, int property)
    {
        // The upper bound first, so that no value drags another one.
        row(index).to()->setValue(to);
        row(index).from()->setValue(from);
        row(index).step()->setValue(step);
        row(index).property()->setValue(property);
    }
    void add_row(int after) { click(row(after).add()); }
    static void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    void name(const QString& text) { find<QLineEdit>("new_grid_name_")->setText(text); }
    void press(const char* button) { click(find<QPushButton>(button)); }

    [[nodiscard]] std::vector<std::string> fatal() const { return messages.of(Lodex::LogLevel::Fatal); }
    [[nodiscard]] std::vector<std::string> errors() const { return messages.of(Lodex::LogLevel::Error); }
    [[nodiscard]] std::vector<std::string> warnings() const { return messages.of(Lodex::LogLevel::Warning); }

    using Texts = std::vector<std::string>;

    CleanCatalogue catalogue;
    MessageList messages;
    CommandLog log;
    QPointer<Kelvane::LQSGSectionMergeDialog> dialog;
    QPointer<Lodex::XMShell> shell;
};

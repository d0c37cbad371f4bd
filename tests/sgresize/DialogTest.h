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
#include <QTranslator>

#include <string>

/// What closes or removes something goes from the event loop.
inline void run_deferred_deletes()
{
    for (int i = 0; i < 4; ++i)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Marks everything that can be translated.
class MarkingTranslator : public QTranslator {
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* text, const char*, int) const override
    {
        return qstrncmp(context, "Kelvane::", 9) == 0 ? QStringLiteral("<") + text + QStringLiteral(">") : QString();
    }
};

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
    [[nodiscard]] QSpinBox* amount() const { return find<QSpinBox>("amount_"); }
    [[nodiscard]] QComboBox* strati() const { return find<QComboBox>("strati_"); }
    [[nodiscard]] QLineEdit* thickness() const { return find<QLineEdit>("thickness_"); }
    [[nodiscard]] QPushButton* add() const { return find<QPushButton>("add_button"); }
    [[nodiscard]] QPushButton* remove() const { return find<QPushButton>("remove_button"); }
    [[nodiscard]] QToolButton* pick(const char* name) const { return find<QToolButton>(name); }

    /// The bounds of the run: the upper one first, so that no value drags another one.
    void set_run(int first, int last) const
    {
        to()->setValue(last);
        from()->setValue(first);
    }
    void set_merge(int first, int last, int jump, int kept) const
    {
        set_run(first, last);
        step()->setValue(jump);
        property()->setValue(kept);
    }
    void set_division(int first, int last, int count, int layering, const QString& size) const
    {
        set_run(first, last);
        amount()->setValue(count);
        strati()->setCurrentIndex(layering);
        thickness()->setText(size);
    }
};

/// A section dialog in its shell, on grids of the catalogue.
template <class Dialog> class SectionDialogTest : public testing::Test {
protected:
    ~SectionDialogTest() override
    {
        if (shell)
            shell->close();
        run_deferred_deletes();
    }

    /// Opens the dialog on a grid (empty: on none) and shows the chosen axis.
    void open(const std::string& grid = "G", const char* axis = nullptr)
    {
        open(new Dialog, grid, axis);
    }
    void open(Dialog* made, const std::string& grid = "G", const char* axis = nullptr)
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
        return shell->widget()->template findChild<Widget*>(name);
    }
    [[nodiscard]] RowWidgets row(int index) const { return {find<QTableWidget>("table"), index}; }
    [[nodiscard]] int rows() const { return find<QTableWidget>("table")->rowCount(); }
    void add_row(int after) { click(row(after).add()); }
    static void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    void name(const QString& text) { find<QLineEdit>("new_grid_name_")->setText(text); }
    void press(const char* button) { click(find<QPushButton>(button)); }
    bool process() { return static_cast<Kelvane::LQSGSectionDialog*>(dialog.data())->process(); }
    void choose_grid(const QStringList& names)
    {
        find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems(names);
    }

    [[nodiscard]] std::vector<std::string> fatal() const { return messages.of(Lodex::LogLevel::Fatal); }
    [[nodiscard]] std::vector<std::string> errors() const { return messages.of(Lodex::LogLevel::Error); }
    [[nodiscard]] std::vector<std::string> warnings() const { return messages.of(Lodex::LogLevel::Warning); }

    using Texts = std::vector<std::string>;

    CleanCatalogue catalogue;
    MessageList messages;
    CommandLog log;
    QPointer<Dialog> dialog;
    QPointer<Lodex::XMShell> shell;
};

class MergeDialogTest : public SectionDialogTest<Kelvane::LQSGSectionMergeDialog> {
protected:
    void set_row(int index, int from, int to, int step, int property)
    {
        row(index).set_merge(from, to, step, property);
    }
};

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
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>
#include <QTranslator>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

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

    struct BoxTexts {
        const char* name;
        const char* text;
        const char* tip;
        bool on;
    };
    void expect_boxes(std::initializer_list<BoxTexts> boxes) const
    {
        for (const BoxTexts& expected : boxes) {
            const auto* box = find<QCheckBox>(expected.name);
            ASSERT_TRUE(box) << expected.name;
            EXPECT_EQ(box->text(), expected.text);
            EXPECT_EQ(box->toolTip(), expected.tip);
            EXPECT_EQ(box->isChecked(), expected.on) << expected.name;
        }
    }
    /// The combo box of the axes and the word in front of it.
    void expect_direction() const
    {
        const char* tip = "Choose the axis along which you want to merge the sections.";
        const auto* direction = find<QComboBox>("direction_");
        ASSERT_EQ(direction->count(), 3);
        EXPECT_EQ(direction->itemText(0), "Axis I");
        EXPECT_EQ(direction->itemText(1), "Axis J");
        EXPECT_EQ(direction->itemText(2), "Axis K");
        EXPECT_EQ(direction->currentIndex(), 0);
        EXPECT_EQ(direction->toolTip(), tip);
        QStringList tips;
        for (const QLabel* label : shell->widget()->template findChildren<QLabel*>()) {
            if (label->text() == "Direction")
                tips.append(label->toolTip());
        }
        EXPECT_EQ(tips, QStringList{tip});
    }
    /// The groups that have a title, in the order in which they were made.
    [[nodiscard]] QStringList group_titles() const
    {
        QStringList titles;
        for (const QGroupBox* group : shell->widget()->template findChildren<QGroupBox*>()) {
            if (!group->title().isEmpty())
                titles.append(group->title());
        }
        return titles;
    }
    void expect_labels(std::initializer_list<const char*> texts) const
    {
        QStringList labels;
        for (const QLabel* label : shell->widget()->template findChildren<QLabel*>())
            labels.append(label->text());
        for (const char* text : texts)
            EXPECT_TRUE(labels.contains(text)) << text;
    }
    /// Every widget that a person can touch has a name.
    void expect_names() const
    {
        for (const QWidget* widget : shell->widget()->template findChildren<QWidget*>()) {
            const bool inner = widget->window() != shell->widget() || widget->objectName().startsWith("qt_") ||
                               qobject_cast<QTabWidget*>(widget->parentWidget());
            if (inner || widget->focusPolicy() == Qt::NoFocus)
                continue;
            EXPECT_FALSE(widget->objectName().isEmpty()) << widget->metaObject()->className();
        }
    }
    /// What stands below what, from top to bottom, and beside what, from left to right.
    void expect_order(std::initializer_list<const char*> names, Qt::Orientation orientation) const
    {
        int last = -1;
        for (const char* name : names) {
            const auto* widget = find<QWidget>(name);
            ASSERT_TRUE(widget) << name;
            const QPoint place = widget->mapTo(shell->widget(), widget->rect().center());
            const int at = orientation == Qt::Vertical ? place.y() : place.x();
            EXPECT_GT(at, last) << name;
            last = at;
        }
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

/// The rows of an axis and their manager, without a dialog around them.
template <class Manager> class RowsTest : public testing::Test {
protected:
    RowsTest()
    {
        manager.build_editor_axis(&parent, new QVBoxLayout(&parent));
        messages.clear();
    }
    [[nodiscard]] RowWidgets row(int index) const { return {manager.table(), index}; }
    [[nodiscard]] std::vector<std::string> fatal() const { return messages.of(Lodex::LogLevel::Fatal); }
    [[nodiscard]] std::vector<std::string> errors() const { return messages.of(Lodex::LogLevel::Error); }

    MessageList messages;
    QWidget parent;
    Manager manager{"Axis K", nullptr};
};

class MergeDialogTest : public SectionDialogTest<Kelvane::LQSGSectionMergeDialog> {
protected:
    void set_row(int index, int from, int to, int step, int property)
    {
        row(index).set_merge(from, to, step, property);
    }
};

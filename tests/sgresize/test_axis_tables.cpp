// The table editors of the whole-grid dialogs.

#include "DialogTest.h"

#include "sgresize/LQSGMergeAxisFullEditorMngr.h"
#include "sgresize/LQSGSubdivideAxisFullEditorMngr.h"

#include <QFrame>
#include <QLabel>
#include <QVBoxLayout>

namespace {

using namespace Kelvane;
using Calls = std::vector<std::string>;

/// Writes down what the managers ask of it.
class AskedDialog : public LQSGSectionDialog {
public:
    AskedDialog() : LQSGSectionDialog(false) {}
    Lodex::XMShell* build_shell() override { return nullptr; }
    void updatePaintedSections() override { note("paint"); }
    void updateCells() override { note("cells"); }
    void on_help() override {}
    bool process() override { return false; }

    Calls calls;
    QPointer<QFrame> frame; ///< looked at with each call

protected:
    bool build_box(QWidget*, QVBoxLayout*) override { return true; }
    bool update_axis_edt() override { return false; }

private:
    void note(const std::string& what) { calls.push_back(what + (frame && frame->isEnabled() ? " on" : " off")); }
};

template <class Manager> class AxisTableTest : public testing::Test {
protected:
    void build(const char* axis)
    {
        manager = std::make_unique<Manager>(axis, &dialog);
        EXPECT_TRUE(manager->build_editor_axis(&parent, new QVBoxLayout(&parent)));
        dialog.frame = find<QFrame>("sections_frame_");
        dialog.calls.clear();
    }
    template <class Widget> [[nodiscard]] Widget* find(const char* name) const
    {
        return parent.findChild<Widget*>(name);
    }
    [[nodiscard]] QCheckBox* enable_box() const { return find<QCheckBox>("enable_box_"); }
    [[nodiscard]] RowWidgets row(int index = 0) const { return {manager->table(), index}; }
    [[nodiscard]] QStringList columns() const
    {
        QStringList titles;
        for (int c = 0; c < manager->table()->columnCount(); ++c)
            titles.append(manager->table()->horizontalHeaderItem(c)->text());
        return titles;
    }

    MessageList messages;
    AskedDialog dialog;
    QWidget parent;
    std::unique_ptr<Manager> manager;
};

class MergeAxisTable : public AxisTableTest<LQSGMergeAxisFullEditorMngr> {
};
class SubdivideAxisTable : public AxisTableTest<LQSGSubdivideAxisFullEditorMngr> {
};

TEST_F(MergeAxisTable, AFreshTab)
{
    for (const char* axis : {"Axis I", "Axis J", "Axis K"}) {
        SCOPED_TRACE(axis);
        QWidget page;
        LQSGMergeAxisFullEditorMngr fresh(axis, &dialog);
        EXPECT_TRUE(fresh.build_editor_axis(&page, new QVBoxLayout(&page)));
        const auto* box = page.findChild<QCheckBox*>("enable_box_");
        EXPECT_EQ(box->text(), QString("Enabled/Disabled %1").arg(axis));
        EXPECT_EQ(box->toolTip(), QString("Enabled/Disabled %1 as merged axis").arg(axis));
        EXPECT_FALSE(box->isChecked());
        EXPECT_FALSE(fresh.is_enabled());
        EXPECT_FALSE(page.findChild<QFrame*>("sections_frame_")->isEnabled());
        EXPECT_EQ(page.findChild<QLabel*>("sections_heading_")->text(), "Sections to be merged");
        EXPECT_EQ(fresh.table()->objectName(), "scrollview");
        EXPECT_EQ(fresh.table()->rowCount(), 1);
        EXPECT_EQ(fresh.number_of_sections(), 1);
        EXPECT_FALSE((RowWidgets{fresh.table(), 0}.remove()->isEnabled()));
    }
    EXPECT_TRUE(messages.entries.empty());
}

TEST_F(MergeAxisTable, Columns)
{
    build("Axis J");
    EXPECT_EQ(columns(),
              (QStringList{"From cell", "To cell", "With step", "Property section to keep", QString(), QString()}));
    const auto in_column = [&](int column, const char* name) {
        return manager->table()->cellWidget(0, column)->findChild<QWidget*>(name) != nullptr;
    };
    EXPECT_TRUE(in_column(0, "from_"));
    EXPECT_TRUE(in_column(1, "to_"));
    EXPECT_TRUE(in_column(2, "step_"));
    EXPECT_TRUE(in_column(3, "property_section_"));
    EXPECT_TRUE(in_column(4, "add_button"));
    EXPECT_TRUE(in_column(5, "remove_button"));
}

TEST_F(MergeAxisTable, TheBoxGreysTheRowsThenPaintsThenCounts)
{
    build("Axis K");
    manager->update_manual_frame(21);
    row().set_merge(3, 8, 3, 5);
    dialog.calls.clear();
    enable_box()->click();
    EXPECT_TRUE(manager->is_enabled());
    EXPECT_TRUE(row().from()->isEnabled());
    EXPECT_EQ(dialog.calls, (Calls{"paint on", "cells on"}));
    enable_box()->click();
    EXPECT_FALSE(manager->is_enabled());
    EXPECT_FALSE(row().from()->isEnabled());
    EXPECT_EQ(dialog.calls, (Calls{"paint on", "cells on", "paint off", "cells off"}));
    EXPECT_EQ(manager->number_of_sections(), 1);
    EXPECT_EQ(row().from()->value(), 3);
    EXPECT_EQ(row().to()->value(), 8);
    EXPECT_EQ(row().step()->value(), 3);
    EXPECT_EQ(row().property()->value(), 5);
}

TEST_F(MergeAxisTable, HidingTheSectionToKeepLeavesItsValues)
{
    build("Axis I");
    manager->update_manual_frame(21);
    row().set_merge(3, 8, 3, 5);
    manager->add_section(manager->get_sections(0), true);
    const int kept = row(1).property()->value();
    manager->table()->setColumnHidden(3, true);
    EXPECT_EQ(manager->get_sections(0)->ref_section(), 5);
    EXPECT_EQ(manager->get_sections(1)->ref_section(), kept);
    manager->add_section(manager->get_sections(1), true); // a row that never saw the column
    manager->table()->setColumnHidden(3, false);
    EXPECT_EQ(row(0).property()->value(), 5);
    EXPECT_GE(manager->table()->columnWidth(3), row(2).property()->sizeHint().width());
}

TEST_F(MergeAxisTable, CastsToTheManager)
{
    build("Axis K");
    QObject* object = manager.get();
    EXPECT_STREQ(object->metaObject()->className(), "Kelvane::LQSGMergeAxisFullEditorMngr");
    EXPECT_EQ(qobject_cast<LQSGMergeAxisEditorMngr*>(object), static_cast<LQSGMergeAxisEditorMngr*>(manager.get()));
    EXPECT_TRUE(object->inherits("Kelvane::LQSGMergeAxisFullEditorMngr"));
    EXPECT_TRUE(object->qt_metacast("LQSGMergeAxisEditorMngr"));
    EXPECT_FALSE(qobject_cast<LQSGSubdivideAxisEditorMngr*>(object));
    QObject other;
    EXPECT_FALSE(qobject_cast<LQSGMergeAxisEditorMngr*>(&other));
}

TEST_F(MergeAxisTable, CopiesHaveTheAxisOnly)
{
    build("Axis J");
    enable_box()->click();
    dialog.calls.clear();
    const LQSGMergeAxisFullEditorMngr copy(*manager);
    EXPECT_EQ(copy.axis(), 2);
    EXPECT_EQ(copy.dialog(), &dialog);
    EXPECT_EQ(copy.number_of_sections(), 0);
    EXPECT_EQ(copy.table(), nullptr);
    EXPECT_FALSE(copy.is_enabled());
    EXPECT_TRUE(copy.children().isEmpty());
    LQSGMergeAxisFullEditorMngr assigned("Axis I", nullptr);
    assigned = *manager;
    EXPECT_EQ(assigned.get_axis_direction().str(), "second axis");
    EXPECT_EQ(assigned.dialog(), &dialog);
    // The direction is shared, the box is not.
    manager->set_axis("Axis K");
    EXPECT_EQ(copy.get_axis_direction().str(), "vertical");
    enable_box()->click();
    EXPECT_EQ(dialog.calls, (Calls{"paint off", "cells off"}));
    EXPECT_EQ(manager->number_of_sections(), 1);
}

TEST_F(SubdivideAxisTable, ArealTabs)
{
    for (const char* axis : {"Axis I", "Axis J"}) {
        SCOPED_TRACE(axis);
        QWidget page;
        LQSGSubdivideAxisFullEditorMngr fresh(axis, &dialog);
        EXPECT_TRUE(fresh.build_editor_axis(&page, new QVBoxLayout(&page)));
        QStringList titles;
        for (int c = 0; c < fresh.table()->columnCount(); ++c)
            titles.append(fresh.table()->horizontalHeaderItem(c)->text());
        EXPECT_EQ(titles, (QStringList{"From cell", "To cell", "Amount", "Pattern", "Width", QString(), QString()}));
        EXPECT_FALSE(page.findChild<QCheckBox*>("isochore_box_"));
        EXPECT_FALSE(fresh.is_vertical());
        auto* percent = page.findChild<QCheckBox*>("percent_box_");
        EXPECT_EQ(percent->text(), "New cell width value is given as percent of the original cell width");
        EXPECT_EQ(percent->toolTip(), "If on, the entered width represents percents of the original cell width.");
        EXPECT_FALSE(fresh.is_percent());
        percent->click();
        EXPECT_TRUE(fresh.is_percent());
        EXPECT_FALSE(fresh.is_vertical());
    }
}

TEST_F(SubdivideAxisTable, TheTabOfTheLayers)
{
    build("Axis K");
    EXPECT_EQ(columns(), (QStringList{"From cell", "To cell", "Amount", "Stratigraphy", "Thickness", QString(),
                                      QString()}));
    auto* isochore = find<QCheckBox>("isochore_box_");
    EXPECT_EQ(isochore->text(), "New cell thickness value is given as isochore");
    EXPECT_EQ(isochore->toolTip(),
              "If on, the cell thickness will be computed in reference to Z, else along fiber.");
    EXPECT_FALSE(manager->is_vertical());
    isochore->click();
    EXPECT_TRUE(manager->is_vertical());
    auto* percent = find<QCheckBox>("percent_box_");
    EXPECT_EQ(percent->text(), "New cell thickness value is given as percent of the original cell thickness");
    EXPECT_EQ(percent->toolTip(), "If on, the entered thickness represents percents of the original cell thickness.");
    percent->click();
    EXPECT_TRUE(manager->is_percent());
    // They belong to the axis, not to its rows.
    EXPECT_TRUE(isochore->isEnabled());
    EXPECT_TRUE(percent->isEnabled());
    EXPECT_TRUE(dialog.calls.empty());
}

TEST_F(SubdivideAxisTable, AFreshTab)
{
    build("Axis J");
    // The words and the name of the axis run together.
    EXPECT_EQ(enable_box()->text(), "Enabled/DisabledAxis J");
    EXPECT_EQ(enable_box()->toolTip(), "Enabled/DisabledAxis J as subdivided axis");
    EXPECT_FALSE(enable_box()->isChecked());
    EXPECT_FALSE(manager->is_enabled());
    EXPECT_FALSE(find<QFrame>("sections_frame_")->isEnabled());
    EXPECT_EQ(find<QLabel>("sections_heading_")->text(), "Sections to be subdivided");
    EXPECT_EQ(manager->table()->objectName(), "scrollview");
    EXPECT_EQ(manager->number_of_sections(), 1);
    EXPECT_TRUE(manager->table()->cellWidget(0, 3)->findChild<QComboBox*>("strati_"));
    EXPECT_TRUE(manager->table()->cellWidget(0, 4)->findChild<QLineEdit*>("thickness_"));
    EXPECT_TRUE(manager->table()->cellWidget(0, 5)->findChild<QPushButton*>("add_button"));
    EXPECT_TRUE(manager->table()->cellWidget(0, 6)->findChild<QPushButton*>("remove_button"));
}

TEST_F(SubdivideAxisTable, FromTopToBottom)
{
    build("Axis K");
    const auto* outer = static_cast<QVBoxLayout*>(parent.layout());
    ASSERT_EQ(outer->count(), 1);
    const auto* layout = qobject_cast<QVBoxLayout*>(outer->itemAt(0)->layout());
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->spacing(), 4);
    ASSERT_EQ(layout->count(), 4);
    auto* frame = find<QFrame>("sections_frame_");
    EXPECT_EQ(layout->itemAt(0)->widget(), enable_box());
    EXPECT_EQ(layout->itemAt(1)->widget(), frame);
    const auto* isochore_row = qobject_cast<QHBoxLayout*>(layout->itemAt(2)->layout());
    const auto* percent_row = qobject_cast<QHBoxLayout*>(layout->itemAt(3)->layout());
    ASSERT_TRUE(isochore_row && percent_row);
    EXPECT_EQ(isochore_row->itemAt(0)->widget(), find<QCheckBox>("isochore_box_"));
    EXPECT_EQ(percent_row->itemAt(0)->widget(), find<QCheckBox>("percent_box_"));
    EXPECT_EQ(frame->layout()->contentsMargins(), QMargins(4, 4, 4, 4));
    ASSERT_EQ(frame->layout()->count(), 2);
    EXPECT_EQ(frame->layout()->itemAt(0)->widget(), find<QLabel>("sections_heading_"));
    EXPECT_EQ(frame->layout()->itemAt(1)->widget(), manager->table());
}

TEST_F(SubdivideAxisTable, AnyOtherNameGetsTheWordsOfTheLayersButNoIsochore)
{
    build("Axis L");
    EXPECT_EQ(columns().mid(3, 2), (QStringList{"Stratigraphy", "Thickness"}));
    EXPECT_EQ(find<QCheckBox>("percent_box_")->text(),
              "New cell thickness value is given as percent of the original cell thickness");
    EXPECT_FALSE(find<QCheckBox>("isochore_box_"));
}

TEST_F(SubdivideAxisTable, TheBoxGreysTheRowsThenPaintsThenCounts)
{
    build("Axis I");
    manager->update_manual_frame(21);
    row().set_division(3, 8, 4, 1, "5");
    dialog.calls.clear();
    enable_box()->click();
    EXPECT_TRUE(row().thickness()->isEnabled());
    enable_box()->click();
    EXPECT_FALSE(row().thickness()->isEnabled());
    EXPECT_EQ(dialog.calls, (Calls{"paint on", "cells on", "paint off", "cells off"}));
    EXPECT_EQ(row().amount()->value(), 4);
    EXPECT_EQ(row().strati()->currentIndex(), 1);
    EXPECT_EQ(row().thickness()->text(), "5");
}

TEST_F(SubdivideAxisTable, EveryValueThatCountsIsPaintedAndCounted)
{
    build("Axis I");
    manager->update_manual_frame(21);
    for (QSpinBox* box : {row().amount(), row().from(), row().to()}) {
        dialog.calls.clear();
        box->setValue(box->value() == 20 ? 19 : box->value() + 1);
        EXPECT_EQ(dialog.calls, (Calls{"paint off", "cells off"})) << box->objectName().toStdString();
    }
    dialog.calls.clear();
    row().strati()->setCurrentIndex(1);
    row().thickness()->setText("3");
    EXPECT_EQ(dialog.calls, Calls{});
    QTest::mouseClick(row().add(), Qt::LeftButton); // greyed out
    EXPECT_EQ(manager->number_of_sections(), 1);
    enable_box()->click();
    dialog.calls.clear();
    QTest::mouseClick(row().add(), Qt::LeftButton);
    EXPECT_EQ(manager->number_of_sections(), 2);
    EXPECT_EQ(dialog.calls, (Calls{"paint on", "cells on"}));
    QTest::mouseClick(row(1).remove(), Qt::LeftButton);
    EXPECT_EQ(dialog.calls, (Calls{"paint on", "cells on", "paint on", "cells on"}));
    run_deferred_deletes();
}

TEST_F(SubdivideAxisTable, CastsToTheManager)
{
    build("Axis K");
    QObject* object = manager.get();
    EXPECT_STREQ(object->metaObject()->className(), "Kelvane::LQSGSubdivideAxisFullEditorMngr");
    EXPECT_EQ(qobject_cast<LQSGSubdivideAxisEditorMngr*>(object),
              static_cast<LQSGSubdivideAxisEditorMngr*>(manager.get()));
    EXPECT_TRUE(object->qt_metacast("LQSGSubdivideAxisEditorMngr"));
    EXPECT_FALSE(qobject_cast<LQSGMergeAxisEditorMngr*>(object));
}

TEST_F(SubdivideAxisTable, CopiesHaveTheAxisOnly)
{
    build("Axis K");
    enable_box()->click();
    find<QCheckBox>("isochore_box_")->click();
    find<QCheckBox>("percent_box_")->click();
    const LQSGSubdivideAxisFullEditorMngr copy(*manager);
    EXPECT_EQ(copy.axis(), 3);
    EXPECT_EQ(copy.number_of_sections(), 0);
    EXPECT_FALSE(copy.is_enabled() || copy.is_vertical() || copy.is_percent());
    LQSGSubdivideAxisFullEditorMngr assigned("Axis I", nullptr);
    assigned = *manager;
    EXPECT_EQ(assigned.axis_name(), "Axis K");
    EXPECT_FALSE(assigned.is_enabled() || assigned.is_vertical() || assigned.is_percent());
    EXPECT_TRUE(manager->is_enabled() && manager->is_vertical() && manager->is_percent());
}

} // namespace

#pragma once

#include "propertyupscale/LQSGPropertyUpscaleDialog.h"
#include "tests/frame/Catalogue.h"
#include "tests/frame/DeferredDeletes.h"

#include "CommandStub.h"
#include "MessageList.h"

#include <Kelvane/upscaling/Kelvane_upscaling_init.h>
#include <Lodex/qtools/LQMultiComboBox.h>
#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QTextEdit>
#include <QWizardPage>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

/// The property upscaling wizard on a fine and a coarse grid, both with layers, and a grid with nothing on it.
class WizardTest : public testing::Test {
protected:
    using Dialog = Kelvane::LQSGPropertyUpscaleDialog;
    using Texts = std::vector<std::string>;

    WizardTest()
    {
        Kelvane::Kelvane_upscaling_init::initialize();
        auto* fine = add_box("Fine", {4, 3, 6});
        for (const char* name : {"PORO", "PERM X", "NTG", "FACIES"})
            add_property(fine, name);
        add_region(fine, "Zone A");
        add_region(fine, "South");
        set_layers(fine, {2, 4});
        auto* coarse = add_box("Coarse", {2, 3, 2});
        add_property(coarse, "OLD");
        add_region(coarse, "East 1");
        set_layers(coarse, {1, 1});
        add_box("Bare", {2, 2, 2});
    }
    ~WizardTest() override
    {
        if (dialog)
            dialog->close();
        run_deferred_deletes();
    }

    /// Opens the wizard with nothing chosen.
    void open_empty()
    {
        dialog = new Dialog;
        EXPECT_EQ(dialog->dialog(), dialog);
        dialog->show();
        messages.clear();
    }
    /// Opens it with both grids chosen.
    void open()
    {
        open_empty();
        choose("fine_gridSelector_", "Fine");
        choose("coarse_gridSelector_", "Coarse");
    }

    template <class Widget = QWidget> [[nodiscard]] Widget* find(const QString& name) const
    {
        auto* widget = dialog->findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name.toStdString();
        return widget;
    }
    [[nodiscard]] Lodex::LQMultiComboBox* list(const char* name) const { return find<Lodex::LQMultiComboBox>(name); }
    [[nodiscard]] QComboBox* combo(const char* name) const { return find<QComboBox>(name); }

    void choose(const char* name, const QString& entry) const
    {
        auto* box = list(name);
        if (box->isEditable())
            box->setEditText(entry);
        else
            box->setSelectedItems(entry.isEmpty() ? QStringList() : QStringList(entry));
    }
    void choose_class(const QString& name) const { combo("property_class_")->setCurrentText(name); }
    void choose_method(const QString& name) const
    {
        combo("method_")->setCurrentText(name);
        EXPECT_EQ(combo("method_")->currentText(), name);
    }
    void upscale_with(const QString& property_class, const QString& method) const
    {
        choose_class(property_class);
        choose_method(method);
    }
    void tick(const char* name, bool on = true) const { find<QCheckBox>(name)->setChecked(on); }
    void type(const char* name, const QString& text) const { find<QLineEdit>(name)->setText(text); }
    void replace_values(const char* which, const QString& value) const
    {
        tick(qPrintable(QString(which) + "_switch_"));
        type(qPrintable(QString(which) + "_value_"), value);
    }
    /// Whether the widget would be seen with its page on show.
    [[nodiscard]] bool shown(const char* name) const { return !find<QWidget>(name)->isHidden(); }
    [[nodiscard]] QStringList entries(const char* name) const
    {
        QStringList texts;
        for (int i = 0; i < combo(name)->count(); ++i)
            texts.append(combo(name)->itemText(i));
        return texts;
    }

    struct Checked {
        bool complete;
        std::string message; ///< all that was written, line ends included
        std::string command; ///< up to the NUL
        std::string behind;  ///< the NUL and what follows
    };
    [[nodiscard]] Checked check() const
    {
        std::ostringstream said, command;
        const bool complete = dialog->check(said, command);
        const std::string text = command.str();
        const std::size_t end = std::min(text.find('\0'), text.size());
        return {complete, said.str(), text.substr(0, end), text.substr(end)};
    }
    [[nodiscard]] std::string command() const
    {
        const Checked checked = check();
        EXPECT_TRUE(checked.complete) << checked.message;
        return checked.command;
    }
    [[nodiscard]] std::string refusal() const
    {
        const Checked checked = check();
        EXPECT_FALSE(checked.complete) << checked.command;
        return checked.message;
    }
    /// The value of a keyword of the command, up to the keyword that follows.
    [[nodiscard]] std::string between(const std::string& from, const std::string& to) const
    {
        const std::string text = command();
        const auto begin = text.find(from);
        const auto end = text.find(to, begin == std::string::npos ? begin : begin + from.size());
        if (begin == std::string::npos || (!to.empty() && end == std::string::npos))
            return "(not in \"" + text + "\")";
        return text.substr(begin + from.size(), to.empty() ? end : end - begin - from.size());
    }

    [[nodiscard]] QAbstractButton* button(QWizard::WizardButton which) const { return dialog->button(which); }
    static void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    void next(int times = 1) const
    {
        for (int i = 0; i < times; ++i)
            click(button(QWizard::NextButton));
    }
    void go_to_summary() const
    {
        while (dialog->currentId() != Dialog::Summary)
            next();
    }
    /// The only text that was sent since the last call.
    [[nodiscard]] std::string sent()
    {
        EXPECT_EQ(log.texts.size(), 1U);
        const std::string text = log.texts.empty() ? std::string() : log.texts.front();
        log.texts.clear();
        return text;
    }
    [[nodiscard]] Texts fatal() const { return messages.of(Lodex::LogLevel::Fatal); }

    CleanCatalogue catalogue;
    MessageList messages;
    CommandLog log;
    QPointer<Dialog> dialog;
};

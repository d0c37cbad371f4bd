#pragma once

#include "flowunit/LQFlowUnitDialog.h"
#include "flowunit/LQFlowUnitRatioPanel.h"
#include "flowunit/LQFlowUnitWidget.h"
#include "flowunit/LQTable.h"
#include "tests/frame/Catalogue.h"
#include "tests/frame/DeferredDeletes.h"

#include "CommandStub.h"
#include "MessageList.h"

#include <Lodex/qtools/LQMultiComboBox.h>
#include <Lodex/utils/PluginManager.h>
#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/xtools/LQObjectSelectors.h>
#include <Lodex/xtools/XMQShell.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using Texts = std::vector<std::string>;
using Units = std::vector<int>;

/// Answers message boxes as they come up, and remembers them.
class Answers {
public:
    Answers()
    {
        timer_.setInterval(1);
        QObject::connect(&timer_, &QTimer::timeout, [this] { look(); });
        timer_.start();
    }
    /// Object names of the buttons to press in turn ("" presses Escape).
    void expect(std::initializer_list<const char*> buttons) { buttons_.insert(buttons_.end(), buttons.begin(), buttons.end()); }

    struct Box {
        QString title, text;
        QStringList buttons;
        QString default_button;
    };
    std::vector<Box> boxes;
    /// Called while the next box is open, before it is answered.
    std::function<void()> meanwhile;

private:
    void look()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        Box seen{box->windowTitle(), box->text(), {}, box->defaultButton() ? box->defaultButton()->objectName() : QString()};
        for (const QAbstractButton* button : box->buttons())
            seen.buttons.append(button->text());
        seen.buttons.sort(); // their order on the screen is the desktop's business
        boxes.push_back(seen);
        if (meanwhile)
            std::exchange(meanwhile, {})();
        const QString name = buttons_.empty() ? QString() : QString(buttons_.front());
        EXPECT_FALSE(buttons_.empty()) << "a question that was not expected: " << box->text().toStdString();
        if (!buttons_.empty())
            buttons_.erase(buttons_.begin());
        if (name.isEmpty())
            QTest::keyClick(box, Qt::Key_Escape);
        else
            box->findChild<QPushButton*>(name)->click();
    }
    QTimer timer_;
    std::vector<const char*> buttons_;
};

/// Stops the runs that show this progress at once and notes the titles of all.
struct Stop : Lodex::ProgressSink {
    explicit Stop(std::string title) : stopped(std::move(title)), former(Lodex::ProgressTracer::set_sink(this)) {}
    ~Stop() override { Lodex::ProgressTracer::set_sink(former); }
    void begin(const Lodex::CString& title) override { titles.push_back(title.str()); }
    bool progress(double) override { return titles.back() != stopped; }
    void end() override {}

    std::string stopped;
    Lodex::ProgressSink* former;
    Texts titles;
};

/// Does something once while a run shows this progress, as an event could; stops nothing.
struct DuringRun : Lodex::ProgressSink {
    DuringRun(std::string at, std::function<void()> what)
        : title(std::move(at)), action(std::move(what)), former(Lodex::ProgressTracer::set_sink(this))
    {
    }
    ~DuringRun() override { Lodex::ProgressTracer::set_sink(former); }
    void begin(const Lodex::CString& text) override { titles.push_back(text.str()); }
    bool progress(double) override
    {
        if (action && titles.back() == title)
            std::exchange(action, {})();
        return true;
    }
    void end() override {}
    [[nodiscard]] long runs() const { return std::ranges::count(titles, title); }

    std::string title;
    std::function<void()> action;
    Lodex::ProgressSink* former;
    Texts titles;
};

/// A flow unit dialog in its shell, on grids of the catalogue.
class FlowUnitTest : public testing::Test {
protected:
    ~FlowUnitTest() override
    {
        if (shell)
            shell->close();
        run_deferred_deletes();
        Lodex::PluginManager::instance()->set_loaded("Venlacore", true);
    }

    /// A box with layers of these numbers of K cells; properties P (1, 2, ... per layer times 10) and Q (all 2).
    static lodex::CornerPointGrid* add_layered(const std::string& grid_name, const std::vector<int>& sizes)
    {
        int layers = 0;
        for (const int size : sizes)
            layers += size;
        auto* grid = add_box(grid_name, {2, 2, layers});
        set_layers(grid, sizes);
        grid->change([](lodex::GridModel& model) {
            lodex::PropertyData p{.name = "P"}, q{.name = "Q"};
            std::vector<float> values;
            for (std::int64_t cell = 0; cell < model.cells(); ++cell)
                values.push_back(10.0F * static_cast<float>(cell / 4 + 1));
            p.values = values;
            q.values = std::vector<float>(static_cast<std::size_t>(model.cells()), 2.0F);
            model.properties = {p, q};
        });
        return grid;
    }

    void open(const CommandStub& given = CommandStub{{"sgrid", "G"}})
    {
        CommandStub stub = given;
        dialog = new Kelvane::LQFlowUnitDialog;
        shell = dialog->build_shell();
        dialog->init(&stub);
        shell->show();
        widget = dialog->flow_unit_widget();
        table = find<Kelvane::LQTable>("table");
        log.texts.clear();
        messages.clear();
    }
    void close()
    {
        if (shell)
            shell->close();
        run_deferred_deletes();
    }

    template <class Widget> [[nodiscard]] Widget* find(const char* name) const
    {
        return shell->widget()->findChild<Widget*>(name);
    }
    /// A control of a panel, "property_panel_1" or "ratio_panel_1" and so on.
    template <class Widget> [[nodiscard]] Widget* find(const char* panel, const char* name) const
    {
        return find<QWidget>(panel)->findChild<Widget*>(name);
    }
    static void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    void press(const char* button) { click(find<QPushButton>(button)); }
    void name(const QString& text) { find<QLineEdit>("newGridLineEdit")->setText(text); }
    void select(const char* panel, const char* list, const QString& entry)
    {
        find<Lodex::LQMultiComboBox>(panel, list)->setSelectedItems({entry});
    }
    void method(const char* panel, const QString& averaging)
    {
        find<QComboBox>(panel, "averagingComboBox")->setCurrentText(averaging);
    }
    void set_units(const Units& units)
    {
        Lodex::List<int> list;
        for (const int unit : units)
            list.append(unit);
        widget->setFlowUnit(list);
    }
    [[nodiscard]] Units units() const
    {
        const Lodex::List<int> list = widget->getFlowUnitsList();
        return {list.begin(), list.end()};
    }
    [[nodiscard]] QString cell(int row, int column) const { return table->cellText(row, column); }
    [[nodiscard]] QStringList column(int index) const
    {
        QStringList texts;
        for (int row = 0; row < table->rowCount(); ++row)
            texts.append(cell(row, index));
        return texts;
    }
    [[nodiscard]] bool enabled(const char* button) const { return find<QPushButton>(button)->isEnabled(); }

    [[nodiscard]] Texts fatal() const { return messages.of(Lodex::LogLevel::Fatal); }
    [[nodiscard]] Texts errors() const { return messages.of(Lodex::LogLevel::Error); }
    /// The fatal messages since the last call.
    Texts take_fatal()
    {
        const Texts texts = fatal();
        messages.clear();
        return texts;
    }
    /// The only command sent since the last call, without its end.
    std::string command()
    {
        std::string text = log.take();
        if (!text.empty() && text.back() == '\0')
            text.pop_back();
        return text;
    }

    CleanCatalogue catalogue;
    MessageList messages;
    CommandLog log;
    Answers answers;
    QPointer<Kelvane::LQFlowUnitDialog> dialog;
    QPointer<Lodex::XMShell> shell;
    Kelvane::LQFlowUnitWidget* widget = nullptr;
    Kelvane::LQTable* table = nullptr;
};

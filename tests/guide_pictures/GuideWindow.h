#pragma once

#include "apps/workbench/MainWindow.h"

#include <QApplication>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

/// The workbench in a real display, and the pictures of the guide: with LODEX_UPDATE_DOCS set they are saved to
/// docs/help/pictures, else to the folder of the tests' pictures.
class GuideWindow : public testing::Test {
protected:
    GuideWindow();
    ~GuideWindow() override;

    /// The example field, as the program makes it when it starts.
    void make_example();
    /// Until the camera has drawn what was asked for.
    void settle();

    /// What the screen shows of a window.
    void picture_of(QWidget* window, const QString& name);
    /// A part of a window, drawn by itself.
    void picture_of_part(QWidget* widget, const QString& name);

    /// Opens a dialog of the menu on the selected grid, brought to its own best size.
    QWidget* open_dialog(const char* id);
    static void close(QWidget* dialog);
    void select(const QString& grid);
    void trigger(const char* action);
    /// The window that comes up with an action.
    QWidget* trigger_window(const char* action);

    template <class Widget> static Widget* part(const QObject* parent, const char* name)
    {
        auto* widget = parent->findChild<Widget*>(QLatin1String(name));
        if (!widget)
            throw std::runtime_error(std::string("no widget ") + name);
        return widget;
    }
    static void click(QWidget* widget);
    /// Clicks on the box itself, which may be wider than its text.
    static void tick(QWidget* box);
    /// Puts a text where another one stands.
    static void type_over(QWidget* field, const QString& text);
    /// Chooses an entry of a list of grids, properties or regions; types it where the list can be typed into.
    static void choose(const QObject* parent, const char* name, const QString& entry);
    /// Answers the file dialog that opens next.
    static void answer_file_dialog(const QString& path);

    [[nodiscard]] lodex::MainWindow* window() const { return window_.get(); }

private:
    std::unique_ptr<lodex::MainWindow> window_;
};

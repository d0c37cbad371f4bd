#pragma once

#include "DialogTest.h"

#include "sgresize/LQSGDownscaleDialog.h"
#include "sgresize/LQSGUpscaleDialog.h"

#include <QGroupBox>
#include <QLabel>
#include <QTabWidget>

#include <array>
#include <string>

enum AxisTab { TabI, TabJ, TabK };

/// A whole-grid dialog in its shell, on grids of the catalogue.
template <class Dialog> class GridDialogTest : public SectionDialogTest<Dialog> {
protected:
    [[nodiscard]] QWidget* page(AxisTab axis) const
    {
        static constexpr std::array pages{"axis_i_page", "axis_j_page", "axis_k_page"};
        return this->template find<QWidget>(pages[axis]);
    }
    template <class Widget> [[nodiscard]] Widget* on_page(AxisTab axis, const char* name) const
    {
        return page(axis)->template findChild<Widget*>(name);
    }
    [[nodiscard]] QTableWidget* table(AxisTab axis) const { return on_page<QTableWidget>(axis, "scrollview"); }
    [[nodiscard]] RowWidgets row(AxisTab axis, int index = 0) const { return {table(axis), index}; }
    void add_row(AxisTab axis, int after = 0)
    {
        show(axis);
        this->click(row(axis, after).add());
    }
    void show(AxisTab axis) { this->template find<QTabWidget>("axis_tabs_")->setCurrentIndex(axis); }
    /// Clicks on the box itself, which is wider than its text.
    static void tick(QAbstractButton* box)
    {
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(8, box->height() / 2));
    }
    void tick(const char* name) { tick(this->template find<QAbstractButton>(name)); }
    /// Switches an axis on or off.
    void tick(AxisTab axis)
    {
        show(axis);
        tick(on_page<QCheckBox>(axis, "enable_box_"));
    }
    /// The numbers of a row of counts, as they stand in its labels: I, J, K, total.
    [[nodiscard]] std::vector<long> counts(const std::string& prefix) const
    {
        std::vector<long> numbers;
        for (const char* column : {"i", "j", "k", "total"}) {
            const QString text = this->template find<QLabel>((prefix + column).c_str())->text();
            const QString begin = "<b><font color=\"#0000ff\">", end = "</font></b>";
            EXPECT_TRUE(text.startsWith(begin) && text.endsWith(end)) << text.toStdString();
            numbers.push_back(text.mid(begin.size(), text.size() - begin.size() - end.size()).toLong());
        }
        return numbers;
    }
    [[nodiscard]] std::vector<long> new_counts() const { return counts("new_cells_"); }
    /// The texts sent since the last call.
    std::vector<std::string> sent() { return std::exchange(this->log.texts, {}); }
    /// The value of a keyword in a command: what stands before the next keyword.
    [[nodiscard]] static std::string value_of(const std::string& command, const std::string& key,
                                              const std::string& next)
    {
        const auto begin = command.find(' ' + key + ' ');
        const auto end = command.find(' ' + next + ' ');
        if (begin == std::string::npos || end == std::string::npos)
            return "no " + key + " in " + command;
        const auto start = begin + key.size() + 2;
        return command.substr(start, end - start);
    }
    /// The size of a grid as the counts show it.
    [[nodiscard]] static std::vector<long> size_of(const std::string& grid)
    {
        const auto* found = lodex::find_grid(grid);
        if (!found)
            return {};
        const auto& n = found->model().size;
        return {static_cast<long>(n[0]), static_cast<long>(n[1]), static_cast<long>(n[2]),
                static_cast<long>(n[0] * n[1] * n[2])};
    }
    [[nodiscard]] static bool exists(const std::string& grid) { return lodex::find_grid(grid) != nullptr; }
    /// Names of the grids that chains leave behind; there should be none.
    [[nodiscard]] static std::vector<std::string> temporaries()
    {
        Lodex::COSNameList names;
        Lodex::GeobaseLib::instance()->names(Lodex::SGrid::static_type_id_(), names);
        std::vector<std::string> found;
        for (const auto& name : names) {
            if (name.str().starts_with("_tmpobj_"))
                found.push_back(name.str());
        }
        return found;
    }
};

class UpscaleDialogTest : public GridDialogTest<Kelvane::LQSGUpscaleDialog> {
};
class DownscaleDialogTest : public GridDialogTest<Kelvane::LQSGDownscaleDialog> {
};

// The window as a user sees it, on the example field; what is cut off fails the test, the rest is for people to look at.

#include "FlowUnitTest.h"

#include "Pictures.h"

#include <QDir>
#include <QStyleFactory>

namespace {

class FlowUnitPictures : public FlowUnitTest {
protected:
    FlowUnitPictures() { lodex::add_grid("example", lodex::make_example({20, 16, 12})); }
    ~FlowUnitPictures() override { QApplication::setPalette(former_); }

    void picture(const QString& file)
    {
        QWidget* window = shell->widget();
        for (int n = 0; n < 3; ++n)
            QCoreApplication::processEvents();
        const QPixmap image = window->grab();
        EXPECT_EQ(image.size(), window->size() * image.devicePixelRatio());
        EXPECT_TRUE(image.save(QDir(picture_folder()).filePath(file + ".png")));
    }
    void expect_nothing_cut_off()
    {
        for (const QWidget* control : shell->widget()->findChildren<QWidget*>()) {
            const bool touchable = qobject_cast<const QAbstractButton*>(control) || qobject_cast<const QLineEdit*>(control) ||
                                   qobject_cast<const QSpinBox*>(control) || qobject_cast<const QLabel*>(control);
            if (!touchable || !control->isVisible() || control->parentWidget() == table || control->objectName().startsWith("qt_"))
                continue;
            EXPECT_GE(control->width(), control->minimumSizeHint().width()) << control->objectName().toStdString();
            EXPECT_GE(control->height(), control->minimumSizeHint().height()) << control->objectName().toStdString();
        }
    }
    static QPalette dark()
    {
        QPalette palette(QColor(45, 45, 48), QColor(37, 37, 38));
        palette.setColor(QPalette::Base, QColor(30, 30, 30));
        palette.setColor(QPalette::AlternateBase, QColor(45, 45, 48));
        for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText, QPalette::ToolTipText})
            palette.setColor(role, QColor(225, 225, 225));
        for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
            palette.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
        palette.setColor(QPalette::PlaceholderText, QColor(130, 130, 130));
        return palette;
    }
    void fill()
    {
        open(CommandStub{{"sgrid", "example"}, {"for_sgrid", "example_units"}});
        find<QSpinBox>("numRatiosSpinBox")->setValue(1);
        select("property_panel_1", "propertyComboBox", "PERMX");
        select("ratio_panel_1", "propertyComboBox", "PERMX");
        select("ratio_panel_1", "overPropertyComboBox", "PORO");
        method("property_panel_1", "Geometric");
        press("updateStatsPushButton");
        set_units({1, 1, 2, 2, 2, 3, 3, 4, 4, 4, 4, 4});
    }

private:
    QPalette former_ = QApplication::palette();
};

} // namespace

TEST_F(FlowUnitPictures, Light)
{
    fill();
    picture("flow_units");
    expect_nothing_cut_off();
    press("advanced_button_");
    picture("flow_units_advanced");
    expect_nothing_cut_off();
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(FlowUnitPictures, Dark)
{
    QApplication::setPalette(dark());
    fill();
    press("advanced_button_");
    table->setCurrentCell(3, 0);
    picture("flow_units_dark");
}

TEST_F(FlowUnitPictures, Empty)
{
    open(CommandStub{});
    picture("flow_units_empty");
    expect_nothing_cut_off();
}

TEST_F(FlowUnitPictures, EditMode)
{
    open(CommandStub{{"sgrid", "example"}, {"mode", "edit"}, {"for_sgrid", "example_units"}});
    picture("flow_units_edit");
    expect_nothing_cut_off();
}

TEST_F(FlowUnitPictures, TheFirstSizeShowsAllColumnsOfOnePanel)
{
    open(CommandStub{{"sgrid", "example"}});
    const int end = table->columnViewportPosition(table->columnCount() - 1) + table->columnWidth(table->columnCount() - 1);
    EXPECT_GE(table->viewport()->width(), end);
    picture("flow_units_first");
}

// The analysis as text, byte by byte.

#include "FlowUnitTest.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QTemporaryDir>

namespace {

constexpr const char* gap = "\t \t \t \t";

class FlowUnitText : public FlowUnitTest {
protected:
    /// Fills in the file dialog as it comes up; an empty name cancels it.
    void save_as(const QString& path)
    {
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* file_dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!file_dialog)
                return;
            timer.stop();
            filters = file_dialog->nameFilters();
            proposed = file_dialog->findChild<QLineEdit*>("fileNameEdit")->text();
            if (path.isEmpty()) {
                file_dialog->reject();
                return;
            }
            file_dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
            file_dialog->findChild<QPushButton*>()->setFocus();
            QMetaObject::invokeMethod(file_dialog, "accept");
        });
        timer.start(1);
        press("save_text_button");
    }
    QStringList filters;
    QString proposed;
};

} // namespace

TEST_F(FlowUnitText, ByteByByte)
{
    auto* grid = add_layered("G", {2, 1});
    add_region(grid, "R");
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(2);
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    select("property_panel_2", "propertyComboBox", "Q");
    select("property_panel_2", "regionComboBox", "R");
    method("property_panel_2", "Median");
    select("ratio_panel_1", "propertyComboBox", "P");
    select("ratio_panel_1", "overPropertyComboBox", "Q");
    method("ratio_panel_1", "Power");
    find<QLineEdit>("ratio_panel_1", "valueLineEdit")->setText("0.5");
    set_units({1, 1, 2});

    const std::string start = "Flow Unit Analysis for grid G\n"
                              "Original number of layers:\t3\n"
                              "Number of flow units:\t2\n"
                              "\n"
                              "\tProperty:\tP" + std::string(gap) + "Q" + gap + "P\t \\ \tQ\t \t\n"
                              "\tRegion:\teverywhere" + gap + "R" + gap + "everywhere" + gap + "\n";
    const std::string names = "Layer Mean\tFlow Unit mean\t% Difference\tHeterogeneity\t";
    const std::string head = "Layer\tFlow Unit\t" + names + names + names + "Stratigraphic Unit\n";
    // Ratios 5 and 10: ((sqrt 5 + sqrt 10) / 2)^2 = 7.28553.
    const std::string rows = "1\t1\t10\t15\t-33.333\t0\t2\t2\t0\t0\t5\t7.2855\t-31.371\t0\tA\t\n"
                             "2\t1\t20\t15\t33.333\t0\t2\t2\t0\t0\t10\t7.2855\t37.258\t0\tA\t\n"
                             "3\t2\t30\t30\t0\t0\t2\t2\t0\t0\t15\t15\t0\t0\tB\t\n";
    EXPECT_EQ(widget->upgriddingText().toStdString(),
              start + "\tMethod:\tArithmetic\tcell volume weighted\t \t \tMedian\t\t \t \tPower:0.5\tcell volume weighted\t \t \t\n" +
                  head + rows + "\n");

    // An invalid power writes nothing: what follows moves to the left.
    find<QLineEdit>("ratio_panel_1", "valueLineEdit")->setText("7");
    method("property_panel_2", "Power");
    find<QLineEdit>("property_panel_2", "valueLineEdit")->setText("x");
    const std::string shifted = widget->upgriddingText().toStdString();
    EXPECT_NE(shifted.find("\n\tMethod:\tArithmetic\tcell volume weighted\t \t \t\nLayer\t"), std::string::npos) << shifted;
    find<QLineEdit>("ratio_panel_1", "valueLineEdit")->setText("-1");
    find<QCheckBox>("ratio_panel_1", "volCheckBox")->setChecked(false);
    EXPECT_NE(widget->upgriddingText().toStdString().find("weighted\t \t \tPower:-1\t\t \t \t\n"), std::string::npos);
}

TEST_F(FlowUnitText, WithoutPanelsAndWithoutAGrid)
{
    open(CommandStub{});
    find<QSpinBox>("numPropSpinBox")->setValue(0);
    EXPECT_EQ(widget->upgriddingText(), "Flow Unit Analysis for grid \nOriginal number of layers:\t0\nNumber of flow units:\t-1\n\n"
                                        "\tProperty:\t\n\tRegion:\t\n\tMethod:\t\nLayer\tFlow Unit\tStratigraphic Unit\n\n");
}

TEST_F(FlowUnitText, TheFile)
{
    add_layered("G", {2, 1});
    open();
    const QTemporaryDir folder;
    const QString path = folder.filePath(QString::fromUtf8("déjà vu.tsv")); // no suffix is added
    save_as(path);
    EXPECT_EQ(proposed, "flow_unit_analysis_G.txt");
    EXPECT_EQ(filters, QStringList{"*.txt"});
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), widget->upgriddingText().toUtf8());

    const auto before = QDir(folder.path()).entryList();
    save_as({});
    EXPECT_EQ(QDir(folder.path()).entryList(), before);
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(FlowUnitText, AFileThatCannotBeWritten)
{
    add_layered("G", {2, 1});
    open();
    save_as("/no_such_folder_here/x.txt");
    const Texts texts = fatal();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_TRUE(texts[0].starts_with("Cannot write the file /no_such_folder_here/x.txt: ")) << texts[0];
}

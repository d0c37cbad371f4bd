// Pictures of the dialogs at the size they open with, in light and dark colours, for people to look at.

#include "GridDialogTest.h"
#include "Pictures.h"

#include "sgresize/LQSGSectionSubdivideDialog.h"

#include <QApplication>
#include <QDir>
#include <QHeaderView>

namespace {

void use_dark_colours()
{
    QPalette palette;
    const QColor window(45, 45, 48), base(30, 30, 30), text(225, 225, 225), dim(130, 130, 130);
    for (const auto role : {QPalette::Window, QPalette::AlternateBase, QPalette::Button})
        palette.setColor(role, window);
    palette.setColor(QPalette::Base, base);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::BrightText})
        palette.setColor(role, text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dim);
    palette.setColor(QPalette::Highlight, QColor(38, 79, 120));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    QApplication::setPalette(palette);
}

class Colours {
public:
    Colours() : former_(QApplication::palette()) {}
    ~Colours() { QApplication::setPalette(former_); }
    Colours(const Colours&) = delete;
    Colours& operator=(const Colours&) = delete;

private:
    QPalette former_;
};

void save(QWidget* window, const QString& file)
{
    QCoreApplication::processEvents();
    const QPixmap image = window->grab();
    EXPECT_EQ(image.size(), window->size() * image.devicePixelRatio());
    EXPECT_TRUE(image.save(QDir(picture_folder()).filePath(file + ".png")));
}

/// Nothing of a row is cut off, and no column needs scrolling sideways.
void expect_room(const QTableWidget* table)
{
    for (int c = 0; c < table->columnCount(); ++c) {
        if (table->isColumnHidden(c))
            continue;
        const QWidget* cell = table->cellWidget(0, c);
        EXPECT_GE(cell->width(), cell->minimumSizeHint().width()) << c;
        EXPECT_GE(cell->height(), cell->minimumSizeHint().height()) << c;
    }
    EXPECT_LE(table->horizontalHeader()->length(), table->viewport()->width());
}

class SubdividePictures : public SectionDialogTest<Kelvane::LQSGSectionSubdivideDialog> {
};

TEST_F(SubdividePictures, LightAndDark)
{
    const Colours colours;
    lodex::add_grid("example", lodex::make_example({20, 16, 12}));
    for (const bool dark : {false, true}) {
        if (dark)
            use_dark_colours();
        const QString suffix = dark ? "_dark" : "_light";
        open("example", "Axis K");
        name("example_fine");
        row(0).set_run(1, 3);
        save(shell->widget(), "subdivide_dialog" + suffix);
        for (int i = 0; i < 6; ++i)
            add_row(i);
        save(shell->widget(), "subdivide_dialog_rows" + suffix);
        expect_room(find<QTableWidget>("table"));
        shell->close();
        run_deferred_deletes();
    }
}

class UpscalePictures : public UpscaleDialogTest {
};

TEST_F(UpscalePictures, LightAndDark)
{
    const Colours colours;
    lodex::add_grid("example", lodex::make_example({20, 16, 12}));
    for (const bool dark : {false, true}) {
        if (dark)
            use_dark_colours();
        const QString suffix = dark ? "_dark" : "_light";
        open("example");
        save(shell->widget(), "upscale_dialog" + suffix);
        name("example_coarse");
        tick("copy_properties_");
        tick(TabK);
        for (int i = 0; i < 6; ++i)
            add_row(TabK, i);
        save(shell->widget(), "upscale_dialog_rows" + suffix);
        expect_room(table(TabK));
        shell->close();
        run_deferred_deletes();
    }
}

class DownscalePictures : public DownscaleDialogTest {
};

TEST_F(DownscalePictures, LightAndDark)
{
    const Colours colours;
    lodex::add_grid("example", lodex::make_example({20, 16, 12}));
    for (const bool dark : {false, true}) {
        if (dark)
            use_dark_colours();
        const QString suffix = dark ? "_dark" : "_light";
        open("example");
        save(shell->widget(), "downscale_dialog" + suffix);
        name("example_fine");
        tick(TabK);
        row(TabK).set_division(1, 3, 5, 2, "0.5");
        add_row(TabK);
        EXPECT_GE(row(TabK).strati()->width(), row(TabK).strati()->sizeHint().width());
        save(shell->widget(), "downscale_dialog_rows" + suffix);
        expect_room(table(TabK));
        shell->close();
        run_deferred_deletes();
    }
}

} // namespace

#include "Pictures.h"

#include <Lodex/qtools/LQPixmapLib.h>

#include <Lodex/qtools/QtText.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QPainter>

#include <cmath>

using Lodex::LQPixmapLib;

namespace {

double luminance(QRgb colour)
{
    const auto linear = [](int byte) {
        const double c = byte / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

/// Contrast between two colours, 1 to 21, as the rules for accessible pages define it.
double contrast(QRgb a, QRgb b)
{
    const double x = luminance(a), y = luminance(b);
    return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

/// Share of the picture's area whose contrast to the background is at least that of a graphic one can make out.
double visible_share(const QPixmap& picture, QColor background)
{
    QImage drawn(picture.size(), QImage::Format_RGB32);
    drawn.fill(background);
    QPainter painter(&drawn);
    painter.drawPixmap(0, 0, picture);
    painter.end();
    int visible = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x)
            visible += contrast(drawn.pixel(x, y), background.rgb()) >= 2.5;
    }
    return static_cast<double>(visible) / (drawn.width() * drawn.height());
}

} // namespace

TEST(PixmapLib, EveryNameThatDialogsUseIsThere)
{
    const QStringList names = LQPixmapLib::names();
    for (const char* name : {"filesave", "flow_units", "go_back", "go_forward", "help_contents", "lodex", "ptr_right",
                             "row_add", "row_remove", "stratigraphic_modelling", "table_insert_row_above",
                             "table_merge_rows"})
        EXPECT_TRUE(names.contains(name)) << name;
    QStringList sorted = names;
    sorted.sort();
    EXPECT_EQ(names, sorted);
}

TEST(PixmapLib, EveryPictureIsVisibleOnWhiteAndOnDark)
{
    for (const QString& name : LQPixmapLib::names()) {
        const QPixmap picture = LQPixmapLib::load(Lodex::to_cstring(name));
        ASSERT_FALSE(picture.isNull()) << name.toStdString();
        EXPECT_GT(visible_share(picture, Qt::white), 0.08) << name.toStdString();
        EXPECT_GT(visible_share(picture, QColor(0x2b, 0x2b, 0x2b)), 0.08) << name.toStdString();
    }
}

TEST(PixmapLib, PicturesHaveTheirOwnSize)
{
    EXPECT_EQ(LQPixmapLib::load("ptr_right").deviceIndependentSize(), QSizeF(24, 24));
    const QSizeF banner = LQPixmapLib::load("stratigraphic_modelling").deviceIndependentSize();
    EXPECT_GE(banner.width(), 48);
    EXPECT_GE(banner.height(), 48);
}

TEST(PixmapLib, UnknownNamesGiveNothing)
{
    for (const char* name : {"", "nowhere", "../icons/lodex", "icons/lodex"}) {
        EXPECT_TRUE(LQPixmapLib::load(name).isNull()) << name;
        EXPECT_TRUE(LQPixmapLib::icon(name).isNull()) << name;
    }
}

TEST(PixmapLib, IconsAreSharpAtEverySize)
{
    const QIcon icon = LQPixmapLib::icon("row_add");
    for (const int size : {16, 24, 64, 256}) {
        const QPixmap picture = icon.pixmap(size, size);
        ASSERT_EQ(picture.size(), QSize(size, size));
        // A drawn edge passes from empty to full within two pixels; a stretched one would not.
        const QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
        int soft = 0, full = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const int alpha = qAlpha(image.pixel(x, y));
                soft += alpha > 20 && alpha < 235;
                full += alpha >= 235;
            }
        }
        EXPECT_GT(full, 0) << size;
        if (size >= 64) {
            EXPECT_LT(soft, full / 2) << size;
        }
    }
}

TEST(PixmapLib, DisabledIconIsGreyed)
{
    const QIcon icon = LQPixmapLib::icon("row_remove");
    const QImage normal = icon.pixmap(32, 32, QIcon::Normal).toImage();
    const QImage disabled = icon.pixmap(32, 32, QIcon::Disabled).toImage();
    EXPECT_NE(normal, disabled);
    int colourful = 0;
    for (int y = 0; y < disabled.height(); ++y) {
        for (int x = 0; x < disabled.width(); ++x) {
            const QColor colour = disabled.pixelColor(x, y);
            colourful += colour.alpha() > 128 && colour.hsvSaturation() > 100;
        }
    }
    EXPECT_EQ(colourful, 0);
}

TEST(PixmapLib, IconDrawsKeepingItsProportions)
{
    QImage target(100, 40, QImage::Format_ARGB32);
    target.fill(Qt::transparent);
    QPainter painter(&target);
    LQPixmapLib::icon("lodex").paint(&painter, QRect(0, 0, 100, 40));
    painter.end();
    EXPECT_GT(qAlpha(target.pixel(50, 20)), 200);
    EXPECT_EQ(qAlpha(target.pixel(5, 20)), 0) << "a square picture does not fill a wide place";
}

TEST(PixmapLib, PicturesForLookingAt)
{
    const QString folder = picture_folder();
    const QStringList names = LQPixmapLib::names();
    constexpr int kCell = 110;
    QImage sheet(kCell * static_cast<int>(names.size()), 2 * kCell, QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.fillRect(0, kCell, sheet.width(), kCell, QColor(0x2b, 0x2b, 0x2b));
    for (int i = 0; i < names.size(); ++i) {
        const QIcon icon = LQPixmapLib::icon(Lodex::to_cstring(names[i]));
        for (int row = 0; row < 2; ++row) {
            icon.paint(&painter, QRect(i * kCell + 4, row * kCell + 6, 72, 72));
            icon.paint(&painter, QRect(i * kCell + 82, row * kCell + 30, 24, 24));
        }
        painter.setPen(Qt::darkGray);
        painter.drawText(QRect(i * kCell + 2, 82, kCell - 4, 26), Qt::AlignCenter | Qt::TextWrapAnywhere, names[i]);
    }
    painter.end();
    EXPECT_TRUE(sheet.save(folder + "/icons.png"));
}

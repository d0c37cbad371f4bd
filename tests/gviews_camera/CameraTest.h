#pragma once

#include <lodex/gviews/CameraView.h>
#include <lodex/volumes/CornerPointGrid.h>
#include <lodex/volumes/model/CellGeometry.h>
#include <lodex/volumes/model/Create.h>

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>

#include <Pictures.h>
#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

/// An empty catalogue and a window with a camera.
struct CameraTest : testing::Test {
    CameraTest() { Lodex::GeobaseLib::instance()->clear(); }
    ~CameraTest() override
    {
        view.reset();
        Lodex::GraphicLib::instance()->reset_tool();
        Lodex::GeobaseLib::instance()->clear();
    }

    void show(const QSize& size = {900, 650})
    {
        view->resize(size);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        settle();
    }
    /// Until what was asked for is drawn.
    void settle()
    {
        bool drawn = false;
        const auto connection = QObject::connect(view.get(), &lodex::CameraView::drawn, [&drawn] { drawn = true; });
        view->request_update();
        EXPECT_TRUE(QTest::qWaitFor([&drawn] { return drawn; }));
        QObject::disconnect(connection);
        QApplication::processEvents();
    }
    void save(const QImage& image, const char* name)
    {
        ASSERT_FALSE(image.isNull());
        EXPECT_TRUE(image.save(picture_folder() + QStringLiteral("/%1.png").arg(QLatin1String(name))));
    }
    /// Middle of a cell's face in the view.
    QPointF place_of(const lodex::CornerPointGrid& grid, std::int64_t i, std::int64_t j, std::int64_t k,
                     lodex::CellSide side) const
    {
        const auto points = lodex::side_corners(lodex::cell_corners(grid.model(), i, j, k), side);
        lodex::Point3 middle{};
        for (const auto& point : points) {
            for (std::size_t axis = 0; axis < 3; ++axis)
                middle[axis] += point[axis] / 4;
        }
        return view->transform().project(view->transform().to_drawn(middle)).value();
    }

    std::unique_ptr<lodex::CameraView> view = std::make_unique<lodex::CameraView>();
};

/// About how far two colours are apart when the light is left out: difference of hue, 0 to 180; 180 when just one is
/// grey.
inline int hue_difference(const QColor& a, const QColor& b)
{
    const bool grey_a = a.hsvSaturation() < 25, grey_b = b.hsvSaturation() < 25;
    if (grey_a || grey_b)
        return grey_a && grey_b ? 0 : 180;
    const int difference = std::abs(a.hsvHue() - b.hsvHue());
    return std::min(difference, 360 - difference);
}

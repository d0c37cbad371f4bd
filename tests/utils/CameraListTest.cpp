#include <lodex/utils/CameraList.h>

#include <Lodex/gviews/Camera.h>

#include <gtest/gtest.h>

namespace {

class CountingCamera : public Lodex::Camera {
public:
    void request_update() override { ++requests; }
    int requests = 0;
};

} // namespace

TEST(CameraList, UpdatesEveryCameraThatIsOpen)
{
    EXPECT_EQ(lodex::update_all_cameras(), 0) << "none is no error";
    CountingCamera first, second;
    lodex::add_camera(&first);
    lodex::add_camera(&second);
    EXPECT_EQ(lodex::update_all_cameras(), 2);
    lodex::remove_camera(&first);
    EXPECT_EQ(lodex::update_all_cameras(), 1);
    lodex::remove_camera(&second);
    lodex::remove_camera(&second);
    EXPECT_EQ(lodex::update_all_cameras(), 0);
    EXPECT_EQ(first.requests, 1);
    EXPECT_EQ(second.requests, 2);
}

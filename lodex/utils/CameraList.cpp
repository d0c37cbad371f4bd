#include "CameraList.h"

#include <Lodex/gviews/Camera.h>

#include <algorithm>
#include <vector>

namespace lodex {

namespace {

std::vector<Lodex::Camera*>& cameras()
{
    static std::vector<Lodex::Camera*> list;
    return list;
}

} // namespace

void add_camera(Lodex::Camera* camera)
{
    if (camera && std::ranges::find(cameras(), camera) == cameras().end())
        cameras().push_back(camera);
}

void remove_camera(Lodex::Camera* camera)
{
    std::erase(cameras(), camera);
}

int update_all_cameras()
{
    const auto list = cameras(); // a camera may go while it answers
    for (Lodex::Camera* camera : list)
        camera->request_update();
    return static_cast<int>(list.size());
}

} // namespace lodex

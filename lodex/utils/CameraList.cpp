#include "CameraList.h"

#include <Lodex/gviews/Camera.h>

#include <lodex/utils/Immortal.h>

#include <algorithm>
#include <vector>

namespace lodex {

namespace {

std::vector<Lodex::Camera*>& cameras()
{
    static Immortal<std::vector<Lodex::Camera*>> list;
    return list.get();
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
    int count = 0;
    for (Lodex::Camera* camera : std::vector(cameras())) {
        if (std::ranges::find(cameras(), camera) == cameras().end())
            continue; // went away while another one answered
        camera->request_update();
        ++count;
    }
    return count;
}

} // namespace lodex

#pragma once

namespace Lodex {
class Camera;
}

namespace lodex {

/// The cameras that are open, for commands that know nothing of windows. GUI thread only; cameras are not owned.
void add_camera(Lodex::Camera* camera);
void remove_camera(Lodex::Camera* camera);
/// Asks every camera to draw again; returns how many there are.
int update_all_cameras();

} // namespace lodex

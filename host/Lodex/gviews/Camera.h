#pragma once

namespace Lodex {

/// A view that shows objects. It enters itself with Cameras and takes itself out.
class Camera {
public:
    virtual ~Camera() = default;
    /// Draw again soon.
    virtual void request_update() = 0;
};

} // namespace Lodex

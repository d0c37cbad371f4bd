#pragma once

#include <Lodex/utils/Action.h>
#include <Lodex/utils/CString.h>

#include <array>

namespace Lodex {

class GObj;
class SGrid;
class SGridSubset;

/// What a pick in a camera hit.
class PickInfo {
public:
    virtual ~PickInfo() = default;
    /// x, y, depth; null when the pick has no point.
    [[nodiscard]] virtual const std::array<double, 3>* point() const = 0;
};

/// A pick on a stratigraphic grid.
class SGridPickInfo : public PickInfo {
public:
    [[nodiscard]] virtual SGrid* grid() const = 0;
    /// The cell under the cursor; null when the pick has only a point.
    [[nodiscard]] virtual const SGridSubset* subset() const = 0;
};

/// The current graphic selection.
class GraphicSelection {
public:
    virtual ~GraphicSelection() = default;
    /// The picked object; of a click beside all that is drawn the first object that the camera shows, with a point that
    /// lies on none of them. Null when the camera shows nothing.
    [[nodiscard]] virtual GObj* object() const = 0;
    /// Details of the pick; null when there are none.
    [[nodiscard]] virtual const PickInfo* pick_info() const = 0;
};

/// A tool of the camera that waits for a pick. The library holds a reference while it is current.
class CameraToolAction : public Action {
public:
    /// Makes this the current tool of the camera.
    void execute() override;
    /// Called for every pick while the tool is current; the selection stands in GraphicLib::selection().
    virtual void on_pick() = 0;
    /// Text for the status line.
    [[nodiscard]] virtual CString hint() const { return {}; }
};

/// Hears of the current tool.
class ToolObserver {
public:
    virtual ~ToolObserver() = default;
    /// null: the default tool.
    virtual void tool_changed(CameraToolAction* tool) = 0;
};

/// Cameras, the current tool and the current selection.
class GraphicLib {
public:
    [[nodiscard]] static GraphicLib* instance();

    virtual ~GraphicLib() = default;
    virtual void set_tool(CameraToolAction* tool) = 0;
    /// Back to the default tool.
    virtual void reset_tool() = 0;
    /// Null while the default tool is current.
    [[nodiscard]] virtual CameraToolAction* tool() const = 0;

    /// Null when nothing is selected.
    [[nodiscard]] virtual const GraphicSelection* selection() const = 0;
    /// Called by a camera: sets the selection (not owned, valid during the call) and hands it to the current tool.
    virtual void pick(const GraphicSelection* selection) = 0;

    virtual void attach(ToolObserver* observer) = 0;
    virtual void detach(ToolObserver* observer) = 0;
};

} // namespace Lodex

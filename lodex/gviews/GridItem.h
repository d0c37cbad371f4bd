#pragma once

#include "CellPalette.h"
#include "FaceActor.h"
#include "ViewTransform.h"

#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/geobase/Style.h>

#include <functional>
#include <map>
#include <optional>

class vtkRenderer;

namespace lodex {

/// One grid in a scene: follows the grid, its style and the style of the property that it is coloured by, and makes
/// anew what went out of date at the next refresh().
class GridItem {
public:
    /// `changed` is called when something has to be drawn anew, `gone` before the grid is destroyed; the item may be
    /// destroyed in that call.
    GridItem(CornerPointGrid& grid, GridDisplay display, vtkRenderer& renderer, std::function<void()> changed,
             std::function<void()> gone);
    ~GridItem();
    GridItem(const GridItem&) = delete;
    GridItem& operator=(const GridItem&) = delete;

    [[nodiscard]] CornerPointGrid& grid() const { return grid_; }
    [[nodiscard]] const GridDisplay& display() const { return display_; }
    void set_display(const GridDisplay& display);
    /// Reads the painted sections from the grid's style.
    void read_painted();
    [[nodiscard]] const SectionSets& painted() const { return painted_; }
    /// True when sections are painted and shown.
    [[nodiscard]] bool paints() const;

    /// Shows the edges of a cell; nothing: of none.
    void mark_cell(std::optional<std::int64_t> cell);
    [[nodiscard]] std::optional<std::int64_t> marked_cell() const { return marked_; }
    void set_line_colour(double red, double green, double blue);

    void refresh(const Point3& scene_origin, double exaggeration);
    /// Shows or hides the lines between cells: `area` is about how many pixels the grid covers.
    void refresh_edges(double area);
    /// What refresh() made last.
    [[nodiscard]] const CellPalette& palette() const { return palette_; }
    /// Box round what is drawn; real x, y, depth.
    [[nodiscard]] const DrawnBox& real_box() const { return real_box_; }
    /// Of the faces that are drawn now.
    [[nodiscard]] std::size_t face_count();

    /// The faces that can be picked now; null when none are drawn.
    [[nodiscard]] FaceActor* pickable();
    /// Cell of a face of pickable().
    [[nodiscard]] std::int64_t cell_of_face(std::size_t face) { return pickable()->faces().cell[face]; }

    static constexpr std::array<std::array<CellPalette::Rgb, 2>, 3> painted_colours{
        {{{{240, 110, 40}, {255, 172, 92}}}, {{{44, 150, 95}, {120, 200, 140}}}, {{{170, 70, 170}, {214, 140, 210}}}}};
    /// Cells beside painted ones where both are drawn.
    static constexpr CellPalette::Rgb unpainted{186, 190, 196};

private:
    struct GridWatch final : Lodex::GObjObserver {
        explicit GridWatch(GridItem& owner) : item(owner) {}
        void update(Lodex::Component*) override { item.values_changed(); }
        void disconnect(Lodex::Component* component) override;
        void renamed(Lodex::Component*) override { item.changed_(); }
        GridItem& item;
    };
    struct StyleWatch final : Lodex::StyleObserver {
        explicit StyleWatch(std::function<void()> what) : then(std::move(what)) {}
        ~StyleWatch() override { observe(nullptr); }
        void observe(Lodex::Style* next);
        void update(Lodex::StyleInfo*) override { then(); }
        void disconnect() override { style = nullptr; }
        std::function<void()> then;
        Lodex::Style* style = nullptr;
    };

    void values_changed();
    void watch_property();
    void refresh_palette();
    void refresh_faces();
    void refresh_sections();
    void colour_sections(std::span<const std::uint32_t> cells, std::span<std::uint8_t> rgb) const;
    /// The outer faces of all active cells.
    [[nodiscard]] const FaceList& surface();
    /// The greatest number of faces that are drawn of a part of the cells.
    [[nodiscard]] std::size_t budget();
    /// The faces that stand for the grid now.
    [[nodiscard]] FaceActor& shown_faces();
    void refresh_box();
    [[nodiscard]] Point3 place(const Point3& origin, const Point3& scene_origin, double exaggeration) const;

    CornerPointGrid& grid_;
    GridDisplay display_;
    vtkRenderer& renderer_;
    std::function<void()> changed_, gone_;
    GridWatch grid_watch_;
    StyleWatch grid_style_, property_style_;

    SectionSets painted_;
    std::string painted_text_;
    CellPalette palette_;
    std::map<std::string, ValueRange> ranges_; // by property, until values change
    std::optional<FaceList> surface_;
    FaceActor faces_, sections_;
    bool sections_in_faces_ = false; // painted sections are colours of faces_ instead of faces of their own
    bool faces_painted_ = false;     // the colours that faces_ has now
    LineActor outline_, mark_;
    std::optional<std::int64_t> marked_;
    DrawnBox real_box_;
    bool faces_old_ = true, colours_old_ = true, sections_old_ = true, outline_old_ = true, mark_old_ = true;
};

} // namespace lodex

#include "GridItem.h"

#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>

#include <QCoreApplication>

#include <vtkRenderer.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>

namespace lodex {

namespace {

constexpr double least_face = 2.2; // mean side of a face in pixels; below, no line round a cell would be seen
constexpr std::size_t grain = 1 << 14;

/// Runs of neighbouring sections.
std::size_t runs(const std::set<std::int64_t>& sections)
{
    std::size_t count = 0;
    std::optional<std::int64_t> former;
    for (const std::int64_t section : sections) {
        count += !former || section != *former + 1;
        former = section;
    }
    return count;
}

} // namespace

void GridItem::GridWatch::disconnect(Lodex::Component* component)
{
    GObjObserver::disconnect(component);
    const auto gone = item.gone_; // the item may go in the call
    gone();
}

void GridItem::StyleWatch::observe(Lodex::Style* next)
{
    if (next == style)
        return;
    if (style)
        style->detach_style(this);
    style = next;
    if (style)
        style->attach_style(this);
}

GridItem::GridItem(CornerPointGrid& grid, GridDisplay display, vtkRenderer& renderer, std::function<void()> changed,
                   std::function<void()> gone)
    : grid_(grid), display_(std::move(display)), renderer_(renderer), changed_(std::move(changed)),
      gone_(std::move(gone)), grid_watch_(*this), grid_style_([this] {
          read_painted();
          changed_();
      }),
      property_style_([this] {
          colours_old_ = true;
          changed_();
      }),
      outline_(1.2f), mark_(2.5f)
{
    grid_watch_.observe(&grid_);
    grid_style_.observe(grid_.style());
    watch_property();
    for (vtkActor* actor : {faces_.actor(), sections_.actor(), outline_.actor(), mark_.actor()})
        renderer_.AddActor(actor);
    mark_.set_colour(1, 0.1, 0.55);
    read_painted();
}

GridItem::~GridItem()
{
    for (vtkActor* actor : {faces_.actor(), sections_.actor(), outline_.actor(), mark_.actor()})
        renderer_.RemoveActor(actor);
}

void GridItem::watch_property()
{
    const Lodex::Property* property = display_.colour.kind == ColourBy::Kind::Property
                                          ? grid_.property_db()->find(display_.colour.property)
                                          : nullptr;
    property_style_.observe(property ? property->style() : nullptr);
}

void GridItem::values_changed()
{
    ranges_.clear();
    surface_.reset(); // cells may have become inactive
    palette_ = {};
    colours_old_ = true;
    if (display_.filter.threshold || !display_.filter.region.empty())
        faces_old_ = true;
    watch_property();
    changed_();
}

void GridItem::set_display(const GridDisplay& display)
{
    if (display == display_)
        return;
    if (!(display.filter == display_.filter) || display.faces_at_ease != display_.faces_at_ease)
        faces_old_ = sections_old_ = true;
    if (!(display.colour == display_.colour))
        colours_old_ = true;
    display_ = display;
    watch_property();
    changed_();
}

void GridItem::read_painted()
{
    const Lodex::Style* style = grid_.style();
    const std::string text = style ? style->attribute("*sections").str() : std::string();
    if (text == painted_text_)
        return;
    painted_text_ = text;
    std::int64_t outside = 0;
    SectionSets painted = section_sets(text, grid_.header().size, &outside);
    if (outside > 0) {
        Lodex::Logger::warning(
            Lodex::Format(Lodex::to_cstring(QCoreApplication::translate(
                              "lodex::CameraView", "%1: painted sections outside the grid are left out: %2\n")))
                .arg(grid_.name())
                .arg(static_cast<long>(outside)));
    }
    if (painted == painted_)
        return;
    painted_ = std::move(painted);
    sections_old_ = true;
}

bool GridItem::paints() const
{
    return display_.painted_sections &&
           std::ranges::any_of(painted_, [](const auto& sections) { return !sections.empty(); });
}

void GridItem::mark_cell(std::optional<std::int64_t> cell)
{
    if (cell == marked_)
        return;
    marked_ = cell;
    mark_old_ = true;
    changed_();
}

void GridItem::set_line_colour(double red, double green, double blue)
{
    outline_.set_colour(red, green, blue);
}

Point3 GridItem::place(const Point3& origin, const Point3& scene_origin, double exaggeration) const
{
    return {origin[0] - scene_origin[0], origin[1] - scene_origin[1], (scene_origin[2] - origin[2]) * exaggeration};
}

void GridItem::refresh_palette()
{
    const ValueRange* range = nullptr;
    if (display_.colour.kind == ColourBy::Kind::Property) {
        const PropertyData* property = grid_.model().find_property(display_.colour.property);
        if (property && !property->on_points) {
            auto found = ranges_.find(property->name);
            if (found == ranges_.end())
                found = ranges_.emplace(property->name, value_range(grid_.model(), *property)).first;
            range = &found->second;
        }
    }
    palette_ = CellPalette(grid_, display_.colour, range);
}

const FaceList& GridItem::surface()
{
    if (!surface_)
        surface_ = list_visible_faces(grid_.model(), ShownCells(grid_.model(), CellFilter()));
    return *surface_;
}

std::size_t GridItem::budget()
{
    return std::max(display_.faces_at_ease, surface().faces + surface().faces / 2);
}

void GridItem::refresh_faces()
{
    const GridModel& model = grid_.model();
    CellFilter body = display_.filter;
    body.threshold.reset();
    body.region.clear();
    if (display_.filter == CellFilter()) {
        faces_.set_faces(faces_of(model, surface()));
    } else if (body == display_.filter || 6 * static_cast<std::size_t>(model.cells()) <= display_.faces_at_ease) {
        faces_.set_faces(visible_faces(model, ShownCells(model, display_.filter)));
    } else {
        // What a threshold leaves may be ragged all through: millions of faces that nobody can see.
        const ShownCells shown(model, display_.filter);
        const std::size_t most = budget();
        std::optional<FaceList> list;
        if (guess_visible_faces(model, shown) < most + most / 4)
            list = list_visible_faces(model, shown, most);
        if (!list) {
            const ShownCells all(model, body);
            list = body == CellFilter() ? nearest_faces(model, shown, all, surface(), most)
                                        : nearest_faces(model, shown, all, *list_visible_faces(model, all), most);
        }
        faces_.set_faces(faces_of(model, *list));
    }
    faces_old_ = false;
}

void GridItem::refresh_sections()
{
    const GridModel& model = grid_.model();
    std::optional<FaceList> list;
    // At most: both sides of each run, all active.
    std::size_t guess = 0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        guess += 2 * runs(painted_[axis]) * static_cast<std::size_t>(model.cells() / model.size[axis]);
    const bool all = std::ranges::any_of(std::array<std::size_t, 3>{0, 1, 2}, [&](std::size_t axis) {
        return static_cast<std::int64_t>(painted_[axis].size()) == model.size[axis];
    });
    const bool few_cells = 6 * static_cast<std::size_t>(model.cells()) <= display_.faces_at_ease;
    if (few_cells || (!all && guess <= 8 * budget()))
        list = list_visible_faces(model, ShownCells(model, painted_), few_cells ? SIZE_MAX : budget());
    sections_in_faces_ = !list && display_.filter == CellFilter();
    sections_.set_faces(sections_in_faces_ ? FaceSet() : faces_of(model, list ? *list : surface()));
    sections_old_ = false;
}

void GridItem::colour_sections(std::span<const std::uint32_t> cells, std::span<std::uint8_t> rgb) const
{
    const GridSize& size = grid_.model().size;
    std::array<std::vector<const CellPalette::Rgb*>, 3> colours; // of each section; null: not painted
    for (std::size_t axis = 0; axis < 3; ++axis) {
        colours[axis].resize(static_cast<std::size_t>(size[axis]));
        // Neighbouring sections differ, so that their bounds are seen.
        for (const std::int64_t section : painted_[axis])
            colours[axis][static_cast<std::size_t>(section)] =
                &painted_colours[axis][static_cast<std::size_t>(section % 2)];
    }
    const auto ni = static_cast<std::uint32_t>(size[0]), nij = static_cast<std::uint32_t>(size[0] * size[1]);
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, cells.size(), grain),
                      [&](const tbb::blocked_range<std::size_t>& range) {
                          for (std::size_t n = range.begin(); n != range.end(); ++n) {
                              const std::uint32_t layer = cells[n] / nij, in_layer = cells[n] % nij;
                              const CellPalette::Rgb* colour = colours[2][layer];
                              if (!colour)
                                  colour = colours[1][in_layer / ni];
                              if (!colour)
                                  colour = colours[0][in_layer % ni];
                              std::ranges::copy(colour ? *colour : unpainted,
                                                rgb.begin() + static_cast<std::ptrdiff_t>(3 * n));
                          }
                      });
}

void GridItem::refresh(const Point3& scene_origin, double exaggeration)
{
    const bool painting = paints();
    if (colours_old_)
        refresh_palette();
    bool recolour = colours_old_;
    colours_old_ = false;
    if (display_.visible && painting && sections_old_) {
        refresh_sections();
        if (sections_in_faces_)
            recolour = true;
        else
            sections_.set_colours([this](auto cells, auto rgb) { colour_sections(cells, rgb); });
    } else if (!painting && !sections_old_) {
        sections_.set_faces({});
        sections_old_ = true;
    }
    const bool faces_shown = display_.visible && &shown_faces() == &faces_;
    if (faces_old_ && faces_shown) {
        refresh_faces();
        recolour = true;
        refresh_box();
    }
    const bool paint_faces = painting && faces_shown;
    if (recolour || (faces_shown && paint_faces != faces_painted_)) {
        faces_.set_colours([&](auto cells, auto rgb) {
            if (paint_faces)
                colour_sections(cells, rgb);
            else
                palette_.colours(cells, rgb);
        });
        faces_painted_ = paint_faces;
    }
    if (outline_old_ && display_.visible) {
        outline_.set_lines(grid_outline(grid_.model()));
        outline_old_ = false;
        refresh_box();
    }
    if (mark_old_) {
        const auto [ni, nj, nk] = grid_.model().size;
        mark_.set_lines(marked_ ? cell_edges(grid_.model(), *marked_ % ni, *marked_ / ni % nj, *marked_ / (ni * nj))
                                : LineSet());
        mark_old_ = false;
    }

    faces_.set_visible(faces_shown);
    sections_.set_visible(display_.visible && painting && !faces_shown);
    outline_.set_visible(display_.visible &&
                         (painting ? display_.rest == GridDisplay::Rest::Outline : display_.outline));
    mark_.set_visible(display_.visible && marked_.has_value());
    faces_.set_place(place(faces_.faces().origin, scene_origin, exaggeration), exaggeration);
    sections_.set_place(place(sections_.faces().origin, scene_origin, exaggeration), exaggeration);
    outline_.set_place(place(outline_.lines().origin, scene_origin, exaggeration), exaggeration);
    mark_.set_place(place(mark_.lines().origin, scene_origin, exaggeration), exaggeration);
}

FaceActor& GridItem::shown_faces()
{
    return !paints() || sections_in_faces_ ? faces_ : sections_;
}

std::size_t GridItem::face_count()
{
    return shown_faces().faces().size();
}

void GridItem::refresh_edges(double area)
{
    for (FaceActor* faces : {&faces_, &sections_}) {
        const double seen =
            static_cast<double>(std::max<std::size_t>(faces->faces().size(), 2)) / 2; // the others look away
        faces->set_edges(display_.cell_edges && area / seen >= least_face * least_face);
    }
}

void GridItem::refresh_box()
{
    DrawnBox box;
    const auto add = [&box](const std::vector<float>& points, const Point3& origin) {
        if (points.empty())
            return;
        std::array<float, 3> least{points[0], points[1], points[2]}, greatest = least;
        for (std::size_t n = 0; n + 2 < points.size(); n += 3) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                least[axis] = std::min(least[axis], points[n + axis]);
                greatest[axis] = std::max(greatest[axis], points[n + axis]);
            }
        }
        for (const auto& corner : {least, greatest})
            box.add({origin[0] + corner[0], origin[1] + corner[1], origin[2] - corner[2]});
    };
    add(outline_.lines().points, outline_.lines().origin);
    add(faces_.faces().points, faces_.faces().origin);
    real_box_ = box;
}

FaceActor* GridItem::pickable()
{
    for (FaceActor* faces : {&faces_, &sections_}) {
        if (faces->visible())
            return faces;
    }
    return nullptr;
}

} // namespace lodex

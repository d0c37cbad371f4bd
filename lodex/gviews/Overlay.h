#pragma once

#include "CellPalette.h"
#include "ViewTransform.h"

#include <QFont>
#include <QRectF>
#include <QString>

#include <vector>

class QPainter;

namespace lodex {

/// The colours of one grid, for the legend.
struct LegendItem {
    const CellPalette* palette = nullptr;
    QString grid; ///< its name; shown where there is more than one legend
};

/// What is written and drawn over the picture of the grids. Lengths are logical pixels.
struct Overlay {
    ViewTransform view;
    DrawnBox box;
    QString length_unit; ///< of the axes; empty: none
    std::vector<LegendItem> legends;
    QColor text, background;
    QFont font;
    bool axes = true;
    bool triad = true;
    QString note; ///< in the corner below on the right
};

/// Draws it in a picture of the size view.size.
void paint_overlay(QPainter& painter, const Overlay& overlay);

/// Where paint_overlay() puts the legends, in their order; legends that find no room are empty.
[[nodiscard]] std::vector<QRectF> legend_places(const Overlay& overlay);

/// Room that legends and axis labels take on the left, top, right and bottom of a view.
struct OverlayMargins {
    double left = 0, top = 0, right = 0, bottom = 0;
};
[[nodiscard]] OverlayMargins overlay_margins(const Overlay& overlay);

/// An edge of the box that lies on its outline as seen now, with the numbers along it.
struct BoxAxis {
    int axis = 0;     ///< 0 x, 1 y, 2 depth
    QPointF from, to; ///< its ends on the screen, from the least to the greatest drawn coordinate
    QPointF outwards; ///< unit vector away from the box
    std::vector<std::pair<QPointF, QString>> ticks; ///< the number is empty where another one is in the way
};
/// One edge for every axis that has an extent and is not seen end-on.
[[nodiscard]] std::vector<BoxAxis> box_axes(const Overlay& overlay);

} // namespace lodex

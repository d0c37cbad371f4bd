#pragma once

#include "lodex/volumes/CornerPointGrid.h"

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace lodex {

/// Which cells a plot looks at: the active ones, of one region when a name is given.
struct PlotCells {
    const CornerPointGrid* grid = nullptr;
    std::string region; ///< empty: everywhere
    bool by_volume = false;
};

/// How often values occur. Discrete properties have one bar a code.
struct Histogram {
    bool discrete = false;
    bool logarithmic = false;        ///< bins are even in the logarithm
    std::vector<double> edges;       ///< one more than bars; codes +- 0.5 when discrete
    std::vector<std::string> labels; ///< of the bars, discrete only
    std::vector<double> heights;     ///< number of cells, or their bulk volume
    std::vector<double> cumulative;  ///< part of all that lies up to the bar's upper edge, 0 to 1
    std::int64_t values = 0;         ///< defined values shown
    std::int64_t left_out = 0;       ///< undefined ones, and those of 0 or less on a logarithmic axis
};

/// bins is looked at for continuous properties. Nothing is shown for a property without values.
[[nodiscard]] Histogram histogram(const PlotCells& cells, const PropertyData& property, int bins, bool logarithmic);

/// Mean per K layer; NaN where a layer has none.
struct Profile {
    std::string name;
    std::vector<double> means; ///< one per K layer, from the top
};

[[nodiscard]] Profile k_profile(const PlotCells& cells, const PropertyData& property);

/// Pairs of two properties at the same cells.
struct CrossPairs {
    std::vector<double> x, y;   ///< at most `most` pairs, spread evenly over all
    std::int64_t pairs = 0;     ///< cells where both are defined
    double correlation = 0;     ///< Pearson's, over all pairs; NaN when one of the two does not vary
};

[[nodiscard]] CrossPairs cross_pairs(const PlotCells& cells, const PropertyData& x, const PropertyData& y,
                                     std::size_t most);

/// The cell property that plots and comparisons begin with: the first continuous one that is not `besides`, else the
/// first one. Empty when there is none.
[[nodiscard]] QString first_property(const CornerPointGrid& grid, const QString& besides = {});

} // namespace lodex

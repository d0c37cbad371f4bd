#pragma once

#include <Lodex/utils/CString.h>
#include <Lodex/utils/List.h>

#include <memory>
#include <vector>

namespace Lodex {
class SGrid;
}

namespace Kelvane {

/// Statistics of one property, or of the ratio of two, per K layer and per flow unit. An undefined number is a NaN.
class FlowUnitStatsManager {
public:
    /// How flow units are made from layer statistics; the value is the position in the panel's list.
    enum GuessMethod {
        NumberOfFlowUnits = 0,
        DeviationFromMean = 1,
        DeviationFromMeanPercent = 2,
        MaximumDifferencePercent = 3,
        MaximumThreshold = 4,
        MinimumThreshold = 5
    };
    /// Kinds of series for getMinMax(), in the order of the table's columns.
    enum Kind { LayerMean = 0, FlowUnitMean = 1, Difference = 2, Heterogeneity = 3 };

    [[nodiscard]] static std::unique_ptr<FlowUnitStatsManager> create();
    virtual ~FlowUnitStatsManager() = default;

    /// Works everything out. flow_units holds the 1-based flow unit number of every K layer; property and denominator are
    /// 0-based positions among the grid's properties, denominator -1 for none; power is used by the power mean alone.
    /// False when cancelled or when an argument does not fit; the former results stay.
    virtual bool execute(const Lodex::SGrid* grid, const Lodex::List<int>& flow_units, int property,
                         const Lodex::CString& averaging_method, const Lodex::CString& region, bool volume_weighted,
                         double power, int denominator) = 0;
    /// Whether the user stopped the last execute().
    [[nodiscard]] virtual bool cancelled() const = 0;

    /// One number per K layer.
    [[nodiscard]] virtual const std::vector<float>& getUnitAvrgList() const = 0;
    /// One number per flow unit, index = number - 1.
    [[nodiscard]] virtual const std::vector<float>& getFlowAvrgList() const = 0;
    /// Dykstra-Parsons coefficient, one number per K layer, 0 to 1.
    [[nodiscard]] virtual const std::vector<float>& getStatsLayers() const = 0;
    /// 100 (layer mean - flow unit mean) / flow unit mean, one number per K layer.
    [[nodiscard]] virtual const std::vector<float>& getDeltas() const = 0;
    /// Range of the defined numbers of one kind; false when there is none.
    virtual bool getMinMax(float& min, float& max, int kind) const = 0;

    /// New 1-based flow unit numbers, one per layer, from the statistics worked out last. False before any execute().
    virtual bool compute_units_from_threshold(double value, GuessMethod method, Lodex::List<int>& flow_units) = 0;
};

} // namespace Kelvane

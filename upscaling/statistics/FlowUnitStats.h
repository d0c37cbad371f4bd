#pragma once

#include "CellSamples.h"
#include "SortedLayers.h"

#include "upscaling/kernels/Averages.h"

#include <Kelvane/upscaling/FlowUnitStatsManager.h>
#include <Lodex/geobase/GObjObserver.h>
#include <Lodex/utils/Progress.h>

#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace Kelvane {

/// The averaging method of this name; nothing when there is none.
[[nodiscard]] std::optional<Average> average_of_type(const Lodex::CString& upscaler_type);

/// Layer statistics are worked out on all threads, each layer by one of them in a fixed order, and kept as long as
/// grid, settings and the numbers that they came from stay the same; flow units are put together from them. Where an
/// average cannot be put together (median, most probable value, Dykstra-Parsons) the units that are new are worked out
/// from the cells.
///
/// A grid also tells of changes that mean nothing here, such as a new record of how another grid came from it. What is
/// kept goes only when the fingerprint of the numbers is another one. A grid that changes or goes while progress is
/// shown stops the run as the user would.
class FlowUnitStats final : public FlowUnitStatsManager, private Lodex::GObjObserver {
public:
    bool execute(const Lodex::SGrid* grid, const Lodex::List<int>& flow_units, int property,
                 const Lodex::CString& averaging_method, const Lodex::CString& region, bool volume_weighted,
                 double power, int denominator) override;
    [[nodiscard]] bool cancelled() const override { return cancelled_; }

    [[nodiscard]] const std::vector<float>& getUnitAvrgList() const override { return layer_means_; }
    [[nodiscard]] const std::vector<float>& getFlowAvrgList() const override { return unit_means_; }
    [[nodiscard]] const std::vector<float>& getStatsLayers() const override { return heterogeneities_; }
    [[nodiscard]] const std::vector<float>& getDeltas() const override { return deltas_; }
    bool getMinMax(float& min, float& max, int kind) const override;
    bool compute_units_from_threshold(double value, GuessMethod method, Lodex::List<int>& flow_units) override;

private:
    /// All that the layer statistics depend on besides the grid.
    struct Settings {
        int property;
        int denominator;
        Average method;
        double power; ///< 0 where the method does not look at it
        Lodex::CString region;
        bool volume_weighted;
        friend bool operator==(const Settings&, const Settings&) = default;
    };
    /// Statistics of each layer for one set of settings.
    struct Layers {
        std::vector<PartialAverage> partials; ///< empty when the method cannot be joined
        std::vector<double> means;
        std::vector<double> heterogeneities;
    };
    /// First and last layer of a flow unit, 0-based and inclusive.
    using Unit = std::pair<int, int>;
    /// Means of flow units that cannot be put together from partial results.
    using UnitMeans = std::map<Unit, double>;

    void update(Lodex::Component* component) override;
    void disconnect(Lodex::Component* component) override;

    [[nodiscard]] static Settings checked(int property, int denominator, const Lodex::CString& averaging_method,
                                          const Lodex::CString& region, bool volume_weighted, double power);
    [[nodiscard]] static CellSamples samples_of(const Lodex::SGrid& grid, const Settings& settings);
    [[nodiscard]] static Layers layers_of(const CellSamples& samples, const Settings& settings,
                                          const Lodex::ProgressCheck& progress);
    [[nodiscard]] static SortedLayers sorted_layers_of(const CellSamples& samples, const Settings& settings,
                                                       const Lodex::ProgressCheck& progress);
    [[nodiscard]] static double mean_of_cells(const CellSamples& samples, const Settings& settings, const Unit& unit);
    [[nodiscard]] static double joined_mean(const Layers& layers, const Unit& unit);
    void publish(const std::vector<Unit>& units, const std::vector<double>& means);

    std::optional<Settings> settings_; ///< of the layers; nothing before the first run
    bool outdated_ = false;            ///< the grid told of a change or went
    Fingerprint fingerprint_;          ///< of the numbers that the layers came from
    bool cancelled_ = false;
    Layers layers_;
    UnitMeans unit_cache_;

    std::vector<int> flow_units_;
    std::vector<int> stratigraphic_units_;

    std::vector<float> layer_means_;
    std::vector<float> unit_means_;
    std::vector<float> heterogeneities_;
    std::vector<float> deltas_;
};

} // namespace Kelvane

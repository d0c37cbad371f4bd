#pragma once

#include "propertyupscale/UpscaleMethods.h"

#include <QString>

#include <array>

namespace Kelvane {

/// Everything a person has entered on the pages, as the widgets give it. Axes in the order I, J, K.
struct UpscaleChoices {
    struct Regions {
        bool on = false;
        QString names; ///< joined by "+"
    };
    /// A kind of value that may be replaced before the upscaling.
    struct Replacement {
        bool on = false;
        QString text;     ///< as typed
        double value = 0; ///< what the text reads as; 0 when it does not read as a number
    };
    enum Boundary { Confined = 0, KConfined = 1, Unconfined = 2 };
    enum Sampling { Adaptive = 0, Fixed = 1 };
    enum Solver { Approximate = 0, Exact = 1 };

    QString fine_grid;
    QString coarse_grid;
    Regions fine_regions;
    Regions coarse_regions;

    QString mapper;
    bool fault_management = false;

    QString property_class;
    QString method;
    QString power; ///< as typed
    bool weight_by_volume = false;
    bool weight_by_property = false;
    QString weight_property; ///< joined by "+"
    int sampling = Adaptive; ///< id of the button; any other number as well
    std::array<QString, 3> sampling_texts; ///< as typed
    std::array<int, 3> sampling_counts{};  ///< what the texts read as; 0 for one that is no whole number
    int boundary = Confined;
    int solver = Approximate;

    QString fine_property;
    std::array<QString, 3> fine_permeability;
    QString coarse_property;
    std::array<QString, 3> coarse_permeability;

    Replacement zero;
    Replacement negative;
    Replacement no_data;

    bool problem_region = false;

    [[nodiscard]] PropertyClass kind() const { return property_class_of(property_class); }
};

} // namespace Kelvane

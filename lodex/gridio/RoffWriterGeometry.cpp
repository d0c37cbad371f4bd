// Pillars and depths of a ROFF file.

#include <lodex/gridio/FloatFit.h>
#include <lodex/gridio/RoffWriterImpl.h>

#include <cmath>

namespace lodex::roff {

/// Numbers of 64 bits are written as the usual 32 bits relative to an offset, and what that leaves over, where it
/// leaves anything, in a tag of its own: off + f + rest gives the number to the last bit.
void Writer::write_coordinates()
{
    const auto [ni, nj, nk] = model_.size;
    const RealArray& coord = model_.coord;
    std::array<bool, 2> fits{true, true};
    std::array<double, 2> low{1e300, 1e300};
    std::array<double, 2> high{-1e300, -1e300};
    for (std::size_t n = 0; n < coord.size(); ++n) {
        const double value = coord[n];
        if (!std::isfinite(value)) {
            fail("coord has the value " + shortest_text(value) + " at position " + std::to_string(n + 1)
                 + ", expected a finite number");
        }
        if (const std::size_t axis = n % 3; axis < 2) {
            fits[axis] = fits[axis] && fits_float(value);
            low[axis] = std::min(low[axis], value);
            high[axis] = std::max(high[axis], value);
        }
    }
    for (std::size_t axis = 0; axis < 2; ++axis) {
        // A round number near the middle, which 32 bits hold.
        const double middle = std::round(low[axis] / 2 + high[axis] / 2);
        offset_[axis] = fits[axis] || std::fabs(middle) >= (1 << 24) ? 0 : middle;
    }
    std::vector<float> stored(coord.size());
    std::vector<double> rest(coord.size());
    double largest = 0;
    bool exact = true;
    for (std::int64_t i = 0; i <= ni; ++i) {
        for (std::int64_t j = 0; j <= nj; ++j) {
            const auto from = static_cast<std::size_t>(6 * (i + (ni + 1) * j));
            const auto to = static_cast<std::size_t>(6 * (i * (nj + 1) + j));
            constexpr std::size_t numbers = 6;
            std::array<double, numbers> shifted;
            for (std::size_t n = 0; n < numbers; ++n) {
                // The file has the bottom point first.
                const double value = coord[from + (n + 3) % numbers];
                shifted[n] = (n % 3 == 2 ? -value : value) - offset_[n % 3];
            }
            narrow(shifted, std::span(stored).subspan(to, numbers));
            for (std::size_t n = 0; n < numbers; ++n) {
                const std::size_t axis = n % 3;
                const double value = coord[from + (n + 3) % numbers];
                const double part = static_cast<double>(stored[to + n]);
                const double read = (offset_[axis] == 0 ? part : part + offset_[axis]) * (axis == 2 ? -1 : 1);
                rest[to + n] = value - read;
                exact = exact && std::isfinite(part) && read + rest[to + n] == value;
                largest = std::max(largest, std::fabs(rest[to + n]));
            }
        }
    }
    if (!exact) {
        offset_ = {};
    }
    out_.begin_tag("translate");
    out_.scalar("xoffset", static_cast<float>(offset_[0]));
    out_.scalar("yoffset", static_cast<float>(offset_[1]));
    out_.scalar("zoffset", 0.0F);
    out_.end_tag();
    out_.begin_tag("scale");
    out_.scalar("xscale", 1.0F);
    out_.scalar("yscale", 1.0F);
    out_.scalar("zscale", -1.0F);
    out_.end_tag();
    out_.begin_tag("cornerLines");
    if (exact) {
        out_.array("data", std::span<const float>(stored));
        out_.end_tag();
        if (largest > 0) {
            out_.begin_tag("lodexCornerLines");
            out_.array("data", std::span<const double>(rest));
            out_.end_tag();
            inform("what other programs pass over",
                   "pillars need 64 bits; other programs read them rounded to 32 bits, at most "
                       + shortest_text(static_cast<float>(largest)) + " off");
        }
    } else {
        for (std::int64_t i = 0; i <= ni; ++i) {
            for (std::int64_t j = 0; j <= nj; ++j) {
                for (std::size_t n = 0; n < 6; ++n) {
                    const auto at = static_cast<std::size_t>(6 * (i * (nj + 1) + j)) + n;
                    const double value = coord[static_cast<std::size_t>(6 * (i + (ni + 1) * j)) + (n + 3) % 6];
                    rest[at] = n % 3 == 2 ? -value : value;
                }
            }
        }
        out_.array("data", std::span<const double>(rest));
        out_.end_tag();
        warn("numbers of 64 bits", "pillars are written in 64 bits, which some programs do not read");
    }
    tick(static_cast<std::int64_t>(coord.size()));
}

template <class Depth>
void Writer::check_finite(const NodeDepths<Depth>& nodes, std::span<const Depth> zcorn) const
{
    if (nodes.finite()) {
        return;
    }
    for (std::size_t n = 0; n < zcorn.size(); ++n) {
        if (!std::isfinite(zcorn[n])) {
            fail("zcorn has the value " + shortest_text(zcorn[n]) + " at position " + std::to_string(n + 1)
                 + ", expected a finite number");
        }
    }
}

template <class Depth, class Stored>
void Writer::write_node_depths(NodeDepths<Depth>& nodes, std::span<const Depth> zcorn, DepthPart part)
{
    out_.begin_array(type_of<Stored>, "data", nodes.count());
    std::array<RawBuffer, 2> raw;
    write_blocks<Stored>(nodes.blocks(), [&](std::size_t block, std::size_t buffer) {
        const auto values = nodes.template block<Stored>(block, part, raw[buffer], buffers_[buffer]);
        check_finite(nodes, zcorn);
        return values;
    });
    out_.end_array();
    out_.end_tag();
}

template <class Depth> void Writer::write_depths_of(std::span<const Depth> zcorn)
{
    NodeDepths<Depth> nodes(model_.size, zcorn, [this](std::int64_t count) { tick(count); });
    check_finite(nodes, zcorn);
    if (nodes.count() > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
        fail("the grid has more depths than the format can count");
    }
    out_.begin_tag("zvalues");
    out_.array("splitEnz", nodes.splits());
    if (nodes.fits_with_rest()) {
        write_node_depths<Depth, float>(nodes, zcorn, DepthPart::Negative);
    }
    if constexpr (std::is_same_v<Depth, double>) {
        if (!nodes.fits_with_rest()) {
            write_node_depths<Depth, double>(nodes, zcorn, DepthPart::Negative);
            warn("numbers of 64 bits", "depths are written in 64 bits, which some programs do not read");
        } else if (nodes.largest_rest() > 0) {
            out_.begin_tag("lodexZvalues");
            write_node_depths<Depth, double>(nodes, zcorn, DepthPart::Rest);
            inform("what other programs pass over",
                   "depths need 64 bits; other programs read them rounded to 32 bits, at most "
                       + shortest_text(static_cast<float>(nodes.largest_rest())) + " off");
        }
    }
}

void Writer::write_depths()
{
    model_.zcorn.visit([this](auto zcorn) {
        using Depth = std::remove_const_t<typename std::decay_t<decltype(zcorn)>::element_type>;
        write_depths_of<Depth>(zcorn);
    });
}

} // namespace lodex::roff

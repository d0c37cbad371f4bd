#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Kelvane {

/// 256 bits that stand for the bits of numbers and arrays added in a certain order: equal contents have equal
/// fingerprints, and contents that differ in one place have different ones for certain, in more places but for one
/// chance in 2^64. Arrays are read at the speed of the memory, on all threads; the result does not depend on their
/// number.
class Fingerprint {
public:
    void add(std::uint64_t number);
    template <class Value> void add(std::span<const Value> values) { add_bytes(std::as_bytes(values)); }

    friend bool operator==(const Fingerprint&, const Fingerprint&) = default;

private:
    using State = std::array<std::uint64_t, 4>;

    static State of_block(std::span<const std::byte> bytes);
    void add_bytes(std::span<const std::byte> bytes);

    State state_{1, 2, 3, 4};
};

} // namespace Kelvane

#pragma once

#include <Kelvane/upscaling/Upscaler.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Kelvane {

/// What a method says about itself. The page of operators is made from it.
struct UpscalerInfo {
    std::string name;                  ///< identifier and display name, UpscalerTypes.h
    int rank = 0;                      ///< place in lists
    std::vector<std::string> families; ///< property classes it serves: "Porosity", "Permeability", "Indicator", "upgridder"
    std::string summary;               ///< one sentence
    std::string formula;
    std::string source;                ///< where the formula comes from
    std::string inputs;                ///< what it reads and what it gives
    std::string special_values;        ///< what becomes of zero, negative and undefined values
};

/// The infos of all methods, by rank.
[[nodiscard]] std::vector<const UpscalerInfo*> upscaler_infos();

/// The upscaler of a method of a family; null when the family has none of that name.
[[nodiscard]] std::unique_ptr<Upscaler> make_upscaler(std::string_view family, std::string_view method);

/// Enters a factory for `Method` under each of its families: `const UpscalerRegistration<Method> registration{{...}};` in the
/// method's own source file.
class UpscalerRegistrationBase {
protected:
    using Create = std::unique_ptr<Upscaler> (*)();
    UpscalerRegistrationBase(UpscalerInfo info, Create create);
};

template <class Method> class UpscalerRegistration : UpscalerRegistrationBase {
public:
    explicit UpscalerRegistration(UpscalerInfo info)
        : UpscalerRegistrationBase(std::move(info), [] { return std::unique_ptr<Upscaler>(std::make_unique<Method>()); })
    {
    }
};

} // namespace Kelvane

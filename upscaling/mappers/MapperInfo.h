#pragma once

#include <Lodex/volumes/GridObjCellMapper.h>

#include <memory>
#include <string>
#include <vector>

namespace Kelvane {

/// What a mapper says of itself, for lists and for the page of operators. Plain English sentences.
struct MapperInfo {
    std::string name;             ///< last component of the registered path
    std::string family;           ///< Lodex::GeoSGridCellMapper::type() or Lodex::MetaSGridCellMapper::type()
    int place = 0;                ///< within the family: lower ones are listed first
    std::string rule;             ///< which fine cells belong to a coarse cell
    std::string needs;            ///< what it needs of the two grids
    std::string samples;          ///< which fine cell a sample of a coarse cell takes
    std::string fault_management; ///< what "do not upscale across faults" does
    std::string inactive_cells;   ///< what happens to inactive cells on both grids

    [[nodiscard]] std::string path() const { return family + "/" + name; }
};

/// Texts that hold for every mapper that leaves these questions to MatchBase.
[[nodiscard]] std::string usual_fault_management();
[[nodiscard]] std::string usual_inactive_cells();

/// Factory of a mapper that says what it does.
class MapperFactory : public Lodex::CellMapperFactory {
public:
    [[nodiscard]] virtual const MapperInfo& info() const = 0;
    [[nodiscard]] Lodex::CString path() const override { return info().path(); }
    [[nodiscard]] int rank() const override { return info().place; }
};

/// Registers a mapper when the library is loaded: a mapper is one pair of files with
///     const MapperRegistrar<SomeMapper> registrar;
/// in its .cpp; SomeMapper::info() returns its MapperInfo.
template <class Mapper> class MapperRegistrar {
public:
    MapperRegistrar()
    {
        Lodex::FactoryLib::instance()->add(Lodex::GridObjCellMapperFactoriesDomain(), std::make_unique<MadeBy>());
    }

private:
    class MadeBy final : public MapperFactory {
    public:
        MadeBy() : info_(Mapper::info()) {}
        [[nodiscard]] const MapperInfo& info() const override { return info_; }
        [[nodiscard]] std::unique_ptr<Lodex::GridObjCellMapper> create() const override
        {
            return std::make_unique<Mapper>();
        }

    private:
        MapperInfo info_;
    };
};

/// The registered mappers that say what they do, family "geo" first, in the order of their lists.
[[nodiscard]] std::vector<MapperInfo> mapper_infos();

} // namespace Kelvane

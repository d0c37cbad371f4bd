#include "UpscalerInfo.h"

#include <algorithm>
#include <deque>

namespace Kelvane {

namespace {

// Filled while the library is loaded, read afterwards.
std::deque<UpscalerInfo>& infos()
{
    static std::deque<UpscalerInfo> list;
    return list;
}

class MethodFactory final : public UpscalerFactory {
public:
    using Create = std::unique_ptr<Upscaler> (*)();
    MethodFactory(Lodex::CString path, int rank, Create make) : path_(std::move(path)), rank_(rank), make_(make) {}
    [[nodiscard]] Lodex::CString path() const override { return path_; }
    [[nodiscard]] int rank() const override { return rank_; }
    [[nodiscard]] std::unique_ptr<Upscaler> create() const override { return make_(); }

private:
    Lodex::CString path_;
    int rank_;
    Create make_;
};

} // namespace

std::vector<const UpscalerInfo*> upscaler_infos()
{
    std::vector<const UpscalerInfo*> list;
    for (const UpscalerInfo& info : infos())
        list.push_back(&info);
    std::ranges::stable_sort(list, {}, &UpscalerInfo::rank);
    return list;
}

std::unique_ptr<Upscaler> make_upscaler(std::string_view family, std::string_view method)
{
    const auto* factory = dynamic_cast<const UpscalerFactory*>(Lodex::FactoryLib::instance()->find(
        KelvaneGridObjUpscalerFactoriesDomain(), std::string(family) + "/" + std::string(method)));
    return factory ? factory->create() : nullptr;
}

UpscalerRegistrationBase::UpscalerRegistrationBase(UpscalerInfo info, Create create)
{
    for (const std::string& family : info.families)
        Lodex::FactoryLib::instance()->add(KelvaneGridObjUpscalerFactoriesDomain(),
                                           std::make_unique<MethodFactory>(family + "/" + info.name, info.rank, create));
    infos().push_back(std::move(info));
}

Lodex::CString KelvaneGridObjUpscalerFactoriesDomain()
{
    return "KelvaneGridObjUpscaler";
}

} // namespace Kelvane

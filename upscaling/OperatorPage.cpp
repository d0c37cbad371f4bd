#include "OperatorPage.h"

#include "upscaling/mappers/MapperInfo.h"
#include "upscaling/upscalers/UpscalerInfo.h"

namespace Kelvane {

namespace {

std::string row(const std::string& head, const std::string& text)
{
    return text.empty() ? std::string() : "- " + head + ": " + text + "\n";
}

} // namespace

std::string operator_page()
{
    std::string page = "## Methods\n";
    for (const UpscalerInfo* info : upscaler_infos()) {
        std::string families;
        for (const std::string& family : info->families)
            families += (families.empty() ? "" : ", ") + family;
        page += "\n### " + info->name + "\n\n" + info->summary + "\n\n";
        page += row("Formula", info->formula.empty() ? std::string() : "`" + info->formula + "`");
        page += row("Source", info->source);
        page += row("Property classes", families);
        page += row("Reads and makes", info->inputs);
        page += row("Special values", info->special_values);
    }
    page += "\n## Mappers\n";
    for (const MapperInfo& info : mapper_infos()) {
        page += "\n### " + info.name + "\n\n" + info.rule + "\n\n";
        page += row("Family", info.family);
        page += row("Needs", info.needs);
        page += row("Samples", info.samples);
        page += row("Fault management", info.fault_management);
        page += row("Inactive cells", info.inactive_cells);
    }
    return page;
}

} // namespace Kelvane

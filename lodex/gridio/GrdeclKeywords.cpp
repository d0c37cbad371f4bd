#include <lodex/gridio/GrdeclKeywords.h>

#include <algorithm>
#include <unordered_map>

namespace lodex::grdecl {

namespace {

constexpr std::string_view cell_arrays[] = {
    "PORO", "PERMX", "PERMY", "PERMZ", "PERMXY", "PERMYZ", "PERMZX", "PERMR", "PERMTHT", "NTG", "PORV", "DEPTH",
    "MULTX", "MULTX-", "MULTY", "MULTY-", "MULTZ", "MULTZ-", "MULTPV", "TRANX", "TRANY", "TRANZ", "DX", "DY", "DZ",
    "DZNET", "MINPVV", "SWAT", "SOIL", "SGAS", "PRESSURE", "RS", "RV", "PBUB", "PDEW", "SWATINIT", "SWL", "SWCR", "SWU",
    "SGL", "SGCR", "SGU", "SOWCR", "SOGCR", "SWLPC", "SGLPC", "ISWL", "ISWCR", "ISWU", "ISGL", "ISGCR", "ISGU", "ISOWCR",
    "ISOGCR", "KRW", "KRWR", "KRG", "KRGR", "KRO", "KRORW", "KRORG", "PCW", "PCG", "IKRW", "IKRWR", "IKRG", "IKRGR",
    "IKRO", "IKRORW", "IKRORG", "IPCW", "IPCG", "THCONR", "HEATCR", "FIPNUM", "SATNUM", "EQLNUM", "PVTNUM", "IMBNUM",
    "FLUXNUM", "MULTNUM", "OPERNUM", "PINCHNUM", "ENDNUM", "MISCNUM", "ROCKNUM", "WITNUM"};

constexpr std::string_view never_arrays[] = {
    "MINPV", "PINCH", "GRIDFILE", "MESSAGES", "RPTGRID", "RPTSOL", "RPTPROPS", "RPTREGS", "RPTRST", "RPTSCHED", "NSTACK",
    "TABDIMS", "EQLDIMS", "REGDIMS", "WELLDIMS", "FAULTDIM", "GRIDOPTS", "COORDSYS", "GDORIENT", "INRAD", "DRV",
    "DTHETAV", "PVTW", "ROCK", "DENSITY", "GRAVITY", "EQUIL", "DATUM", "JFUNC", "MAPAXES", "MAXVALUE", "MINVALUE",
    "THPRES", "NUMRES", "VFPIDIMS", "VFPPDIMS", "SMRYDIMS", "WSEGDIMS", "EXTRAPMS", "MULTFLT", "MULTREGT", "OLDTRAN",
    "MINNNCT", "MINDZNET", "MINROCKV", "PINCHOUT", "ZIPPY2", "DEPTHZ", "GRIDUNIT", "MAPUNITS"};

constexpr std::string_view operations[] = {"COPY", "ADD", "MULTIPLY", "EQUALS", "MINVALUE", "MAXVALUE", "OPERATE",
                                           "OPERATER", "EQUALREG", "ADDREG", "MULTIREG", "COPYREG", "COPYBOX"};

constexpr std::string_view lists[] = {"MULTFLT", "MULTREGT", "NNC", "EDITNNC", "EDITNNCR", "THPRES", "MULTREGP",
                                      "AQUNUM", "AQUCON", "MAXTRANZ", "THPRESFT"};

constexpr std::string_view records[] = {"SPECGRID", "DIMENS", "MAPAXES", "MAPUNITS", "GRIDUNIT", "COORD", "ZCORN",
                                        "ACTNUM", "INCLUDE", "TOPS", "DXV", "DYV", "DZV", "GDORIENT", "MINPV", "PINCH",
                                        "BOX", "GRIDFILE", "COORDSYS", "RPTGRID", "START"};

constexpr std::string_view flags[] = {"RUNSPEC", "GRID", "EDIT", "PROPS", "REGIONS", "SOLUTION", "SUMMARY", "SCHEDULE",
                                      "OPTIMIZE", "END", "ENDINC", "ENDBOX", "ECHO", "NOECHO", "INIT", "NEWTRAN", "OIL",
                                      "WATER", "GAS", "DISGAS", "VAPOIL", "METRIC", "FIELD", "LAB", "UNIFIN", "UNIFOUT",
                                      "FMTIN", "FMTOUT", "NONNC", "RADIAL", "CART"};

struct Blocks {
    std::string_view name;
    std::string_view closed_by;
};
constexpr Blocks blocks[] = {{"SKIP", "ENDSKIP"}, {"SKIP100", "ENDSKIP"}, {"SKIP300", "ENDSKIP"}, {"CARFIN", "ENDFIN"},
                             {"RADFIN", "ENDFIN"}, {"RADFIN4", "ENDFIN"}};

using Table = std::unordered_map<std::string_view, KeywordInfo>;

Table make_table()
{
    Table table;
    const auto entry = [&table](std::string_view name) -> KeywordInfo& {
        KeywordInfo& info = table[name];
        info.known = true;
        return info;
    };
    for (const auto name : cell_arrays) {
        entry(name).cell_array = true;
    }
    for (const auto name : never_arrays) {
        // These names occur as data too, so a line that begins with one does not end the data before it.
        table[name].never_array = true;
    }
    for (const auto name : records) {
        entry(name).layout = Layout::Record;
    }
    for (const auto name : flags) {
        table[name].layout = Layout::Flag;
    }
    for (const auto name : {"RUNSPEC", "GRID", "EDIT", "PROPS", "REGIONS", "SOLUTION", "SUMMARY", "SCHEDULE", "ENDBOX"}) {
        entry(name).layout = Layout::Flag;
    }
    for (const auto name : operations) {
        entry(name).layout = Layout::List;
        entry(name).changes_arrays = true;
    }
    for (const auto name : lists) {
        entry(name).layout = Layout::List;
    }
    entry("FAULTS").layout = Layout::List;
    entry("TITLE").layout = Layout::NextLine;
    for (const auto& [name, closed_by] : blocks) {
        entry(name).layout = Layout::Block;
        entry(name).closed_by = closed_by;
    }
    return table;
}

const Table& table()
{
    static const Table the_table = make_table();
    return the_table;
}

} // namespace

std::string upper(std::string_view word)
{
    std::string result(word);
    for (char& c : result) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return result;
}

KeywordInfo keyword_info(std::string_view upper_name)
{
    const auto found = table().find(upper_name);
    return found == table().end() ? KeywordInfo{} : found->second;
}

Section section_of(std::string_view upper_name)
{
    static const std::unordered_map<std::string_view, Section> sections = {
        {"RUNSPEC", Section::Runspec}, {"GRID", Section::Grid},         {"EDIT", Section::Edit},
        {"PROPS", Section::Props},     {"REGIONS", Section::Regions},   {"SOLUTION", Section::Solution},
        {"SUMMARY", Section::Summary}, {"SCHEDULE", Section::Schedule}, {"OPTIMIZE", Section::Schedule}};
    const auto found = sections.find(upper_name);
    return found == sections.end() ? Section::None : found->second;
}

bool is_discrete_name(std::string_view name)
{
    constexpr std::string_view names[] = {"FACIES", "ZONE", "ZONES", "REGION", "FIPZON", "LITHO", "LITHOLOGY",
                                          "ROCKTYPE", "RTYPE", "SEGMENT", "FAULTBLK", "FAULTBLOCK", "SUBZONE", "CODE"};
    const std::string word = upper(name);
    return word.ends_with("NUM") || (word.starts_with("FIP") && word.size() > 3)
        || std::find(std::begin(names), std::end(names), word) != std::end(names);
}

bool is_keyword(std::string_view word)
{
    constexpr std::size_t longest = 64;
    const auto letter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    return !word.empty() && word.size() <= longest && letter(word.front())
        && std::all_of(word.begin(), word.end(), [&](char c) {
               return letter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '+' || c == '.';
           });
}

} // namespace lodex::grdecl

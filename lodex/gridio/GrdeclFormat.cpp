#include <lodex/gridio/GrdeclFormat.h>

#include <lodex/gridio/GrdeclKeywords.h>
#include <lodex/gridio/GrdeclReader.h>
#include <lodex/gridio/GrdeclWriter.h>

#include <algorithm>
#include <array>

namespace lodex {

namespace {

const GridFormatRegistrar<GrdeclFormat> registrar;

constexpr std::array<std::string_view, 4> file_endings = {".grdecl", ".data", ".inc", ".prop"};

} // namespace

std::span<const std::string_view> GrdeclFormat::endings() const
{
    return file_endings;
}

bool GrdeclFormat::recognises(std::string_view head, const std::filesystem::path& path) const
{
    if (head.find('\0') != std::string_view::npos) {
        return false;
    }
    while (!head.empty()) {
        const std::size_t start = head.find_first_not_of(" \t\r\n\f\v");
        head.remove_prefix(std::min(start, head.size()));
        if (!head.starts_with("--")) {
            break;
        }
        head.remove_prefix(std::min(head.find('\n'), head.size()));
    }
    const std::string_view word = head.substr(0, head.find_first_of(" \t\r\n/'\""));
    if (!grdecl::is_keyword(word)) {
        return false;
    }
    const std::string name = grdecl::upper(word);
    const auto info = grdecl::keyword_info(name);
    if (name == word && (info.known || info.layout != grdecl::Layout::Unknown || info.never_array
                         || grdecl::is_discrete_name(name))) {
        return true;
    }
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::find(file_endings.begin(), file_endings.end(), ending) != file_endings.end();
}

ReadResult GrdeclFormat::read(const std::filesystem::path& path, const ReadOptions& options) const
{
    return grdecl::read_file(path, options);
}

WriteResult GrdeclFormat::write(const GridModel& model, const std::filesystem::path& path,
                                const WriteOptions& options) const
{
    return grdecl::write_file(model, path, options);
}

} // namespace lodex

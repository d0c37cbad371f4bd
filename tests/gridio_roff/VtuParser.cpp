#include "VtuParser.h"

#include <cstring>
#include <sstream>
#include <stdexcept>

namespace lodex::test {

namespace {

struct Element {
    std::string name;
    std::map<std::string, std::string> attributes;
    bool closes = false;
    bool empty = false;
};

[[noreturn]] void fail(const std::string& what)
{
    throw std::runtime_error("vtu: " + what);
}

std::string plain(std::string text)
{
    for (const auto& [entity, c] :
         std::map<std::string, char>{{"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&amp;", '&'}}) {
        for (auto at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1)) {
            text.replace(at, entity.size(), 1, c);
        }
    }
    return text;
}

Element parse_element(std::string_view inside)
{
    Element element;
    element.closes = inside.starts_with('/');
    inside.remove_prefix(element.closes ? 1 : 0);
    element.empty = inside.ends_with('/');
    inside.remove_suffix(element.empty ? 1 : 0);
    const auto end = std::min(inside.find(' '), inside.size());
    element.name = inside.substr(0, end);
    inside.remove_prefix(end);
    while (!inside.empty()) {
        const auto equals = inside.find("=\"");
        if (inside.front() != ' ' || equals == std::string_view::npos) {
            fail("attributes of " + element.name);
        }
        const auto quote = inside.find('"', equals + 2);
        if (quote == std::string_view::npos) {
            fail("quotes of " + element.name);
        }
        element.attributes[std::string(inside.substr(1, equals - 1))] =
            plain(std::string(inside.substr(equals + 2, quote - equals - 2)));
        inside.remove_prefix(quote + 1);
    }
    return element;
}

std::size_t size_of(const std::string& type)
{
    static const std::map<std::string, std::size_t> sizes = {{"UInt8", 1},   {"Int32", 4},   {"Int64", 8},
                                                             {"Float32", 4}, {"Float64", 8}};
    return sizes.at(type);
}

} // namespace

VtuFile parse_vtu(std::string_view bytes)
{
    constexpr std::string_view head = "<?xml version=\"1.0\"?>\n";
    if (!bytes.starts_with(head)) {
        fail("no XML");
    }
    VtuFile file;
    std::vector<std::string> open;
    std::map<std::string, std::size_t> offsets;
    std::size_t at = head.size();
    std::size_t appended = 0;
    while (appended == 0) {
        const auto begin = bytes.find('<', at);
        const auto end = bytes.find('>', begin);
        if (begin == std::string_view::npos || end == std::string_view::npos) {
            fail("ends early");
        }
        const Element element = parse_element(bytes.substr(begin + 1, end - begin - 1));
        at = end + 1;
        if (element.closes) {
            if (open.empty() || open.back() != element.name) {
                fail("</" + element.name + "> closes nothing");
            }
            open.pop_back();
            continue;
        }
        if (element.name == "VTKFile"
            && (element.attributes.at("type") != "UnstructuredGrid" || element.attributes.at("header_type") != "UInt64"
                || element.attributes.at("byte_order") != "LittleEndian")) {
            fail("kind of file");
        }
        if (element.name == "Piece") {
            file.points = std::stoul(element.attributes.at("NumberOfPoints"));
            file.cells = std::stoul(element.attributes.at("NumberOfCells"));
        }
        if (element.name == "DataArray" && element.attributes.at("format") == "ascii") {
            const auto close = bytes.find('<', at);
            std::istringstream codes{std::string(bytes.substr(at, close - at))};
            std::vector<std::string> texts;
            std::string text;
            for (int code = 0; codes >> code;) {
                if (code == 0) {
                    texts.push_back(text);
                    text.clear();
                } else {
                    text += static_cast<char>(code);
                }
            }
            if (std::to_string(texts.size()) != element.attributes.at("NumberOfTuples")) {
                fail("number of texts");
            }
            file.texts[element.attributes.at("Name")] = texts;
        } else if (element.name == "DataArray") {
            const std::string name = element.attributes.at("Name");
            VtuFile::Array array{open.back(), element.attributes.at("type"), 1, ""};
            if (const auto found = element.attributes.find("NumberOfComponents"); found != element.attributes.end()) {
                array.components = std::stoul(found->second);
            }
            if (!file.arrays.emplace(name, array).second) {
                fail("two arrays " + name);
            }
            offsets[name] = std::stoul(element.attributes.at("offset"));
        }
        if (element.name == "AppendedData") {
            appended = bytes.find('_', at) + 1;
        } else if (!element.empty) {
            open.push_back(element.name);
        }
    }
    if (open != std::vector<std::string>{"VTKFile"}) {
        fail("open elements before the data");
    }
    std::size_t total = 0;
    for (auto& [name, array] : file.arrays) {
        std::uint64_t length = 0;
        std::memcpy(&length, bytes.data() + appended + offsets[name], sizeof(length));
        const bool of_points = array.section == "PointData" || array.section == "Points";
        const std::size_t tuples = of_points ? file.points : name == "connectivity" ? 8 * file.cells : file.cells;
        if (length != tuples * array.components * size_of(array.type)) {
            fail("length of " + name);
        }
        array.bytes = bytes.substr(appended + offsets[name] + sizeof(length), length);
        total += sizeof(length) + length;
    }
    if (bytes.substr(appended + total) != "\n  </AppendedData>\n</VTKFile>\n") {
        fail("end of the data");
    }
    return file;
}

std::vector<double> VtuFile::numbers(const std::string& name) const
{
    const Array& array = arrays.at(name);
    const auto all = [&array](auto kind) {
        using T = decltype(kind);
        std::vector<T> values(array.bytes.size() / sizeof(T));
        if (!values.empty()) {
            std::memcpy(values.data(), array.bytes.data(), array.bytes.size());
        }
        return std::vector<double>(values.begin(), values.end());
    };
    if (array.type == "Float32") {
        return all(float{});
    }
    if (array.type == "Float64") {
        return all(double{});
    }
    if (array.type == "Int32") {
        return all(std::int32_t{});
    }
    if (array.type == "Int64") {
        return all(std::int64_t{});
    }
    return all(std::uint8_t{});
}

} // namespace lodex::test

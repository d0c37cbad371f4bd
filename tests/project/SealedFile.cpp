#include "SealedFile.h"

#include "lodex/project/ArrayCodec.h"

#include <cstdio>
#include <sstream>

namespace {

std::uint32_t sum_of(const std::string& text)
{
    return lodex::checksum(std::as_bytes(std::span(text)));
}

std::string hexadecimal(std::uint32_t number)
{
    char text[9];
    std::snprintf(text, sizeof text, "%x", number);
    return text;
}

} // namespace

std::string contents_of(const std::string& project)
{
    std::istringstream lines(project.substr(0, 512));
    std::string word;
    std::size_t place = 0, size = 0;
    while (lines >> word && word != "contents") {
    }
    lines >> place >> size;
    return place < project.size() ? project.substr(place, size) : std::string();
}

std::string with_contents(const std::string& project, const std::string& contents, int format)
{
    std::string lines = "LODEX PROJECT\nformat " + std::to_string(format) + "\n";
    lines += "contents " + std::to_string(project.size()) + " " + std::to_string(contents.size()) + " " +
             hexadecimal(sum_of(contents)) + "\n";
    lines += "size " + std::to_string(project.size() + contents.size()) + "\n";
    lines += "check " + hexadecimal(sum_of(lines)) + "\n";
    lines.resize(512, '\0');
    return lines + project.substr(std::min<std::size_t>(512, project.size())) + contents;
}

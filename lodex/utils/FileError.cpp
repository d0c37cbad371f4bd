#include <lodex/utils/FileError.h>

namespace lodex {

namespace {

std::string compose(const std::string& file, std::int64_t line, const std::string& reason)
{
    std::string text = to_utf8(file);
    if (line > 0) {
        text += ':' + std::to_string(line);
    }
    return text + ": " + reason;
}

/// Length of the UTF-8 sequence that begins at position i, 0 when it is not one.
std::size_t sequence_length(std::string_view bytes, std::size_t i)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    const unsigned char lead = byte(i);
    std::size_t length = 0;
    unsigned char second_min = 0x80;
    unsigned char second_max = 0xBF;
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        second_min = lead == 0xE0 ? 0xA0 : 0x80;
        second_max = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        second_min = lead == 0xF0 ? 0x90 : 0x80;
        second_max = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (i + length > bytes.size() || byte(i + 1) < second_min || byte(i + 1) > second_max) {
        return 0;
    }
    for (std::size_t at = i + 2; at < i + length; ++at) {
        if ((byte(at) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

} // namespace

FileError::FileError(std::string file, std::int64_t line, std::string reason)
    : ModelError(compose(file, line, reason)), file_(std::move(file)), line_(line), reason_(std::move(reason))
{
}

std::string to_utf8(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t length = sequence_length(bytes, i);
        if (length > 0) {
            text.append(bytes, i, length);
            i += length;
        } else {
            const auto byte = static_cast<unsigned char>(bytes[i++]);
            text += static_cast<char>(0xC0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

} // namespace lodex

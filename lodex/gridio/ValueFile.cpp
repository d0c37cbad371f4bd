#include "ValueFile.h"

#include <lodex/utils/FileError.h>
#include "lodex/utils/InputFile.h"
#include "lodex/utils/Numbers.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

namespace lodex {

namespace {

constexpr std::size_t block_size = 1 << 20;

bool is_text(std::string_view head)
{
    return std::ranges::all_of(head, [](unsigned char c) { return c >= 0x20 ? c < 0x7f : std::isspace(c) != 0; });
}

double from_little_endian(const char* bytes)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, bytes, sizeof bits);
    if constexpr (std::endian::native == std::endian::big)
        bits = __builtin_bswap64(bits);
    return std::bit_cast<double>(bits);
}

std::string counts_differ(std::int64_t found, bool more, std::int64_t expected)
{
    return std::string("holds ") + (more ? "more than " : "") + std::to_string(found) + " values; expected " +
           std::to_string(expected);
}

/// Hands out the words of a text stream with their line, block by block.
class Words {
public:
    explicit Words(InputFile& in) : in_(in) {}

    bool next(std::string& word)
    {
        word.clear();
        for (;;) {
            if (at_ == block_.size() && !refill())
                return !word.empty();
            const char c = block_[at_++];
            if (!std::isspace(static_cast<unsigned char>(c))) {
                if (word.empty())
                    word_line_ = line_;
                word += c;
                continue;
            }
            line_ += c == '\n';
            if (!word.empty())
                return true;
        }
    }
    [[nodiscard]] std::int64_t line() const { return word_line_; }
    [[nodiscard]] std::uint64_t bytes_read() const { return bytes_; }

private:
    bool refill()
    {
        block_.resize(block_size);
        block_.resize(in_.read(block_));
        bytes_ += block_.size();
        at_ = 0;
        return !block_.empty();
    }

    InputFile& in_;
    std::string block_;
    std::size_t at_ = 0;
    std::int64_t line_ = 1, word_line_ = 1;
    std::uint64_t bytes_ = 0;
};

} // namespace

std::vector<double> read_values(const std::filesystem::path& path, std::int64_t count, const ProgressCheck& progress)
{
    InputFile in(path);
    const std::uint64_t bytes = in.size();
    constexpr std::uint64_t head_bytes = 4096;
    std::string head(static_cast<std::size_t>(std::min(bytes, head_bytes)), '\0');
    head.resize(in.read(head));
    in.seek(0);

    const auto check = [&](std::uint64_t done) {
        if (progress && !progress(static_cast<double>(done) / static_cast<double>(std::max<std::uint64_t>(bytes, 1))))
            throw Cancelled{};
    };
    std::vector<double> values;
    if (!is_text(head)) {
        if (bytes != static_cast<std::uint64_t>(count) * sizeof(double)) {
            throw FileError(path.string(), 0, "holds " + std::to_string(bytes) + " bytes; expected " + std::to_string(count) +
                                                  " doubles of 8 bytes");
        }
        values.reserve(static_cast<std::size_t>(count));
        std::vector<char> block(block_size);
        while (values.size() < static_cast<std::size_t>(count)) {
            const std::size_t wanted = static_cast<std::size_t>(count) - values.size();
            const std::size_t got = std::min(in.read(block) / sizeof(double), wanted);
            if (got == 0) {
                in.check_unchanged();
                throw FileError(path.string(), 0, "ends early");
            }
            for (std::size_t i = 0; i < got; ++i) {
                const double value = from_little_endian(block.data() + i * sizeof(double));
                if (!std::isfinite(value)) {
                    throw FileError(path.string(), 0, "value " + std::to_string(values.size() + 1) + " is \"" +
                                                          format_shortest(value) + "\", which is no finite number");
                }
                values.push_back(value);
            }
            check(values.size() * sizeof(double));
        }
        in.check_unchanged();
        return values;
    }

    Words words(in);
    std::string word;
    constexpr std::size_t values_per_check = 1 << 16;
    while (words.next(word)) {
        const auto number = parse_double(word);
        if (!number)
            throw FileError(path.string(), words.line(), "\"" + to_utf8(word.substr(0, 40)) + "\" is no finite number");
        if (values.size() == static_cast<std::size_t>(count))
            throw FileError(path.string(), words.line(), counts_differ(count, true, count));
        values.push_back(*number);
        if (values.size() % values_per_check == 0)
            check(words.bytes_read());
    }
    in.check_unchanged();
    if (values.size() != static_cast<std::size_t>(count))
        throw FileError(path.string(), 0, counts_differ(static_cast<std::int64_t>(values.size()), false, count));
    return values;
}

} // namespace lodex

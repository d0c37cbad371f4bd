#include <lodex/gridio/RecordFile.h>

#include <algorithm>
#include <bit>
#include <cassert>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace lodex::records {

namespace {

constexpr std::size_t buffer_bytes = 1024 * 1024;
constexpr std::uint64_t tick_bytes = 1024 * 1024;
constexpr std::int32_t header_bytes = 16;
constexpr std::size_t name_bytes = 8;
constexpr std::size_t type_bytes = 4;
constexpr std::size_t length_bytes = 4;
constexpr std::uint64_t header_record_bytes = header_bytes + 2 * length_bytes;
constexpr std::size_t values_per_block = 1000;
constexpr std::size_t strings_per_block = 105;
constexpr std::size_t longest_string = 999; ///< the type states it in three digits
constexpr std::size_t longest_number = 64;

std::uint32_t swapped(std::uint32_t bits)
{
    return __builtin_bswap32(bits);
}

std::uint64_t swapped(std::uint64_t bits)
{
    return __builtin_bswap64(bits);
}

/// Copies numbers of 4 or 8 bytes between the file's order and the machine's.
template <class Bits> void copy_ordered(char* to, const char* from, std::size_t count, bool swap)
{
    if (!swap) {
        std::memcpy(to, from, count * sizeof(Bits));
        return;
    }
    // Pieces of fixed length, which compilers turn into vector instructions at every level of optimisation.
    constexpr std::size_t piece = 16;
    std::size_t i = 0;
    for (; i + piece <= count; i += piece) {
        Bits values[piece];
        std::memcpy(values, from + i * sizeof(Bits), sizeof values);
        for (Bits& value : values) {
            value = swapped(value);
        }
        std::memcpy(to + i * sizeof(Bits), values, sizeof values);
    }
    for (; i < count; ++i) {
        Bits value;
        std::memcpy(&value, from + i * sizeof(Bits), sizeof value);
        value = swapped(value);
        std::memcpy(to + i * sizeof(Bits), &value, sizeof value);
    }
}

template <class T> using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;

std::uint32_t bits_at(const char* p)
{
    std::uint32_t bits;
    std::memcpy(&bits, p, sizeof bits);
    return bits;
}

bool is_little(std::uint32_t bits, std::uint32_t value)
{
    return bits == (std::endian::native == std::endian::little ? value : swapped(value));
}

bool is_big(std::uint32_t bits, std::uint32_t value)
{
    return bits == (std::endian::native == std::endian::big ? value : swapped(value));
}

std::string trimmed_end(std::string_view text)
{
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return std::string(text);
}

bool printable(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool is_blank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// For messages: in quotes, without control characters.
std::string in_quotes(std::string_view text)
{
    constexpr std::size_t most = 40;
    std::string shown(text.substr(0, most));
    for (char& c : shown) {
        c = static_cast<unsigned char>(c) < ' ' || c == '\x7F' ? '?' : c;
    }
    return '"' + to_utf8(shown) + (text.size() > most ? "...\"" : "\"");
}

/// False when there is no such type.
bool set_type(Header& header, std::string_view name)
{
    header.type_name = trimmed_end(name);
    const auto is = [&](std::string_view type_name, Type type, std::size_t width) {
        if (name != type_name) {
            return false;
        }
        header.type = type;
        header.width = width;
        return true;
    };
    if (is("INTE", Type::Integer, 4) || is("REAL", Type::Real, 4) || is("DOUB", Type::Double, 8)
        || is("LOGI", Type::Logical, 4) || is("CHAR", Type::String, 8) || is("MESS", Type::Message, 0)) {
        return true;
    }
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    if (name.size() == type_bytes && name[0] == 'C' && digit(name[1]) && digit(name[2]) && digit(name[3])) {
        header.type = Type::String;
        header.width = static_cast<std::size_t>((name[1] - '0') * 100 + (name[2] - '0') * 10 + (name[3] - '0'));
        return header.width > 0;
    }
    return false;
}

/// Marks a header that holds the upper part of a count beyond 31 bits for the header behind it.
constexpr std::string_view long_count = "X231";

struct Closer {
    int descriptor;
    ~Closer()
    {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
    int release() { return std::exchange(descriptor, -1); }
};

} // namespace

// --- the beginning of a file -----------------------------------------------------------------------------------------

std::vector<Header> peek_headers(std::string_view head)
{
    std::vector<Header> headers;
    constexpr std::size_t most = 200;
    if (head.size() >= header_record_bytes
        && (is_big(bits_at(head.data()), header_bytes) || is_little(bits_at(head.data()), header_bytes))) {
        const bool little = is_little(bits_at(head.data()), header_bytes);
        const bool swap = little != (std::endian::native == std::endian::little);
        const auto number = [&](std::size_t place) {
            const std::uint32_t bits = bits_at(head.data() + place);
            return swap ? swapped(bits) : bits;
        };
        std::size_t place = 0;
        while (headers.size() < most && place + header_record_bytes <= head.size()) {
            Header header;
            const std::string_view name = head.substr(place + length_bytes, name_bytes);
            if (number(place) != header_bytes || number(place + length_bytes + header_bytes) != header_bytes
                || !printable(name) || !set_type(header, head.substr(place + length_bytes + 12, type_bytes))) {
                break;
            }
            header.name = trimmed_end(name);
            header.count = number(place + length_bytes + name_bytes);
            header.byte = place;
            place += header_record_bytes;
            std::uint64_t bytes = header.count * header.width;
            headers.push_back(std::move(header));
            while (bytes > 0 && place + length_bytes <= head.size()) {
                const std::uint64_t block = number(place);
                if (block == 0 || block > bytes || block > head.size()) {
                    return headers;
                }
                bytes -= block;
                place += block + 2 * length_bytes;
            }
        }
        return headers;
    }
    // Text: lines 'NAME    '  COUNT 'TYPE'.
    const std::size_t first = head.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || head[first] != '\'' || head.find('\0') != std::string_view::npos) {
        return headers;
    }
    while (!head.empty() && headers.size() < most) {
        const std::size_t line_end = std::min(head.find('\n'), head.size() - 1);
        const std::string_view line = head.substr(0, line_end + 1);
        head.remove_prefix(line_end + 1);
        const std::size_t open = line.find_first_not_of(" \t");
        if (open == std::string_view::npos || line[open] != '\'') {
            if (headers.empty() && open != std::string_view::npos && !is_blank(line[open])) {
                break;
            }
            continue;
        }
        const std::size_t close = line.find('\'', open + 1);
        const std::size_t digits = close == std::string_view::npos ? close : line.find_first_not_of(" \t", close + 1);
        if (digits == std::string_view::npos || line[digits] < '0' || line[digits] > '9') {
            if (headers.empty()) {
                break;
            }
            continue; // strings
        }
        Header header;
        const auto [end, error] = std::from_chars(line.data() + digits, line.data() + line.size(), header.count);
        const std::size_t type = line.find('\'', static_cast<std::size_t>(end - line.data()));
        if (error != std::errc{} || type == std::string_view::npos || type + 1 + type_bytes >= line.size()
            || close - open - 1 > name_bytes || !set_type(header, line.substr(type + 1, type_bytes))) {
            break;
        }
        header.name = trimmed_end(line.substr(open + 1, close - open - 1));
        headers.push_back(std::move(header));
    }
    return headers;
}

// --- reading: the file -----------------------------------------------------------------------------------------------

Reader::Reader(const std::filesystem::path& path, ProgressCheck progress)
    : shown_(path.string()), progress_(std::move(progress))
{
    const auto fail_open = [this](int error) {
        return FileError(shown_, 0, "cannot be read: " + std::generic_category().message(error));
    };
    Closer file{::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    if (file.descriptor < 0) {
        throw fail_open(errno);
    }
    struct stat status {};
    if (::fstat(file.descriptor, &status) != 0) {
        throw fail_open(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw FileError(shown_, 0, S_ISDIR(status.st_mode) ? "is a folder, expected a file" : "is not a regular file");
    }
    stamp_ = {status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    file_bytes_ = static_cast<std::uint64_t>(status.st_size);
    buffer_ = std::make_unique_for_overwrite<char[]>(buffer_bytes);
    begin_ = at_ = end_ = buffer_.get();
    descriptor_ = file.descriptor;
    try {
        start();
    } catch (...) {
        descriptor_ = -1;
        throw;
    }
    file.release();
}

std::unique_ptr<Reader> Source::open(ProgressCheck progress) const
{
    return bytes ? std::make_unique<Reader>(*bytes, path) : std::make_unique<Reader>(path, std::move(progress));
}

Reader::Reader(std::string_view bytes, const std::filesystem::path& name)
    : shown_(name.string()), file_bytes_(bytes.size()), begin_(bytes.data()), at_(begin_), end_(begin_ + bytes.size())
{
    start();
}

Reader::~Reader()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void Reader::start()
{
    if (!need(length_bytes)) {
        throw FileError(shown_, 0, file_bytes_ == 0 ? "is empty" : "is too short for a header");
    }
    const std::uint32_t first = bits_at(at_);
    if (is_big(first, header_bytes)) {
        return;
    }
    if (is_little(first, header_bytes)) {
        little_endian_ = true;
        return;
    }
    const char* p = at_;
    while (p != end_ && is_blank(*p)) {
        ++p;
    }
    if (p == end_ || *p != '\'') {
        throw FileError(shown_, 0, "begins neither with the length of a header record (16) nor with a name in quotes");
    }
    formatted_ = true;
}

bool Reader::fill(std::size_t count)
{
    if (descriptor_ < 0) {
        return false;
    }
    tick();
    char* const buffer = buffer_.get();
    const std::size_t kept = available();
    buffer_position_ += static_cast<std::uint64_t>(at_ - begin_);
    std::memmove(buffer, at_, kept);
    begin_ = at_ = buffer;
    std::size_t used = kept;
    while (used < count) {
        const ssize_t got = ::read(descriptor_, buffer + used, buffer_bytes - used);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw FileError(shown_, 0, "cannot be read: " + std::generic_category().message(errno));
        }
        if (got == 0) {
            break;
        }
        used += static_cast<std::size_t>(got);
    }
    end_ = buffer + used;
    if (used < count && buffer_position_ + used < file_bytes_) {
        throw FileError(shown_, 0, "was cut off while it was being read");
    }
    return used >= count;
}

void Reader::advance(std::uint64_t count)
{
    if (count <= available()) {
        at_ += count;
        return;
    }
    const std::uint64_t target = position() + count;
    if (::lseek(descriptor_, static_cast<off_t>(target), SEEK_SET) < 0) {
        throw FileError(shown_, 0, "cannot be read: " + std::generic_category().message(errno));
    }
    buffer_position_ = target;
    begin_ = at_ = end_ = buffer_.get();
}

void Reader::tick()
{
    if (progress_ && position() >= next_tick_) {
        next_tick_ = position() + tick_bytes;
        if (!progress_(static_cast<double>(position())
                       / static_cast<double>(std::max<std::uint64_t>(file_bytes_, 1)))) {
            throw Cancelled{};
        }
    }
}

void Reader::check_unchanged() const
{
    if (descriptor_ < 0) {
        return;
    }
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0
        || stamp_ != std::array<std::int64_t, 3>{status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec}) {
        throw FileError(shown_, 0, "was changed while it was being read");
    }
}

void Reader::fail_at(std::uint64_t byte, std::int64_t line, const std::string& reason) const
{
    check_unchanged(); // else what it says here is an accident
    const std::string array = header_.name.empty() ? "" : in_quotes(header_.name) + ": ";
    throw FileError(shown_, formatted_ ? line : 0,
                    formatted_ ? array + reason : "at byte " + std::to_string(byte) + ": " + array + reason);
}

void Reader::fail_here(const std::string& reason) const
{
    fail_at(position(), line_, reason);
}

void Reader::fail(const std::string& reason) const
{
    fail_at(header_.byte, header_.line, reason);
}

Message Reader::message(Message::Level level, const std::string& text) const
{
    return {level, to_utf8(shown_), header_.line, text};
}

std::optional<Header> Reader::next()
{
    skip_rest();
    tick();
    return formatted_ ? next_text() : next_binary();
}

// --- reading: unformatted --------------------------------------------------------------------------------------------

std::int32_t Reader::length_at(const char* p) const
{
    const bool native = little_endian_ == (std::endian::native == std::endian::little);
    return static_cast<std::int32_t>(native ? bits_at(p) : swapped(bits_at(p)));
}

Header Reader::read_binary_header()
{
    header_ = {};
    if (!need(header_record_bytes)) {
        fail_here("the file ends within a header");
    }
    const std::int32_t length = length_at(at_);
    if (length != header_bytes) {
        fail_here(static_cast<std::int32_t>(swapped(static_cast<std::uint32_t>(length))) == header_bytes
                      ? "the byte order is not that of the file's beginning"
                      : "a record of " + std::to_string(length) + " bytes where a header of 16 is expected");
    }
    if (length_at(at_ + length_bytes + header_bytes) != header_bytes) {
        fail_here("the lengths before and behind a header differ: 16 and "
                  + std::to_string(length_at(at_ + length_bytes + header_bytes)));
    }
    const char* const p = at_ + length_bytes;
    Header header;
    header.byte = position();
    const std::string_view name(p, name_bytes);
    if (!printable(name)) {
        fail_here("the name " + in_quotes(name) + " is no text");
    }
    header.name = trimmed_end(name);
    header_ = header;
    const std::int32_t count = length_at(p + name_bytes);
    const std::string_view type(p + name_bytes + length_bytes, type_bytes);
    if (type == long_count) {
        header.type_name = long_count;
        header.count = static_cast<std::uint64_t>(-static_cast<std::int64_t>(std::min(count, 0)));
    } else if (!set_type(header, type)) {
        fail_here("the type " + in_quotes(type) + " is not known");
    } else if (count < 0) {
        fail_here("states " + std::to_string(count) + " values");
    } else {
        header.count = static_cast<std::uint64_t>(count);
    }
    advance(header_record_bytes);
    return header;
}

std::optional<Header> Reader::next_binary()
{
    // Some programs write an empty record for an array without values.
    if (header_.width > 0 && header_.count == 0 && need(2 * length_bytes) && bits_at(at_) == 0
        && bits_at(at_ + length_bytes) == 0) {
        advance(2 * length_bytes);
    }
    if (!need(1)) {
        return {};
    }
    Header header = read_binary_header();
    std::uint64_t upper = 0;
    if (header.type_name == long_count) {
        const std::string name = header.name;
        upper = header.count << 31;
        const std::uint64_t byte = header.byte;
        header = read_binary_header();
        if (header.name != name || header.type_name == long_count) {
            fail_at(byte, 0, "the header behind one of type X231 is of " + in_quotes(header.name) + ", expected "
                                 + in_quotes(name));
        }
        header.byte = byte;
    }
    header.count += upper;
    header_ = header;
    const std::uint64_t rest = file_bytes_ - position();
    if (header.width > 0 && header.count > rest / header.width) {
        fail(std::to_string(header.count) + " values of " + std::to_string(header.width)
             + " bytes, but the file has only " + std::to_string(rest) + " bytes behind the header");
    }
    left_ = header.width > 0 ? header.count : 0;
    block_left_ = 0;
    return header;
}

void Reader::begin_block()
{
    if (!need(length_bytes)) {
        fail_here("the file ends, " + std::to_string(left_) + " of " + std::to_string(header_.count)
                  + " values are missing");
    }
    block_length_ = length_at(at_);
    const std::uint64_t rest = file_bytes_ - position();
    const auto length = static_cast<std::uint64_t>(block_length_);
    if (block_length_ <= 0 || length % header_.width != 0 || length / header_.width > left_) {
        fail_here("a record of " + std::to_string(block_length_) + " bytes, expected " + std::to_string(left_)
                  + " values of " + std::to_string(header_.width) + " bytes or a part of them");
    }
    if (length + 2 * length_bytes > rest) {
        fail_here("a record of " + std::to_string(block_length_) + " bytes, but the file ends after "
                  + std::to_string(rest - length_bytes));
    }
    advance(length_bytes);
    block_left_ = length;
}

void Reader::end_block()
{
    if (!need(length_bytes)) {
        fail_here("the file ends within a record");
    }
    if (length_at(at_) != block_length_) {
        fail_here("the lengths before and behind a record differ: " + std::to_string(block_length_) + " and "
                  + std::to_string(length_at(at_)));
    }
    advance(length_bytes);
}

template <class T> std::size_t Reader::read(std::span<T> values)
{
    assert(sizeof(T) == header_.width);
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left_, values.size()));
    if (formatted_) {
        for (std::size_t i = 0; i < wanted; ++i) {
            values[i] = number<T>(token());
            --left_;
        }
        return wanted;
    }
    const bool swap = little_endian_ != (std::endian::native == std::endian::little);
    std::size_t done = 0;
    while (done < wanted) {
        if (block_left_ == 0) {
            begin_block();
        }
        if (!need(sizeof(T))) {
            fail_here("the file ends within a record");
        }
        const std::size_t part =
            std::min({wanted - done, static_cast<std::size_t>(block_left_) / sizeof(T), available() / sizeof(T)});
        copy_ordered<BitsOf<T>>(reinterpret_cast<char*>(values.data() + done), at_, part, swap);
        at_ += part * sizeof(T);
        block_left_ -= part * sizeof(T);
        left_ -= part;
        done += part;
        if (block_left_ == 0) {
            end_block();
        }
    }
    return wanted;
}

template std::size_t Reader::read(std::span<float>);
template std::size_t Reader::read(std::span<double>);
template std::size_t Reader::read(std::span<std::int32_t>);

UsualArray::UsualArray(std::string_view name, Type type, std::size_t count) : name_(name), count_(count)
{
    constexpr std::size_t value_bytes = 4;
    assert(name.size() <= name_bytes && count <= values_per_block && (type == Type::Integer || type == Type::Real));
    for (const bool little : {false, true}) {
        auto& head = heads_[little ? 1 : 0];
        const auto put = [&head, little](std::size_t at, std::size_t value) {
            const bool native = little == (std::endian::native == std::endian::little);
            const auto bits = static_cast<std::uint32_t>(value);
            const std::uint32_t ordered = native ? bits : swapped(bits);
            std::memcpy(head.data() + at, &ordered, sizeof ordered);
        };
        head.fill(' ');
        put(0, header_bytes);
        std::copy(name.begin(), name.end(), head.begin() + length_bytes);
        put(length_bytes + name_bytes, count);
        std::memcpy(head.data() + 2 * length_bytes + name_bytes, type == Type::Integer ? "INTE" : "REAL", type_bytes);
        put(length_bytes + header_bytes, header_bytes);
        put(head_bytes - length_bytes, count * value_bytes);
    }
}

template <class T> bool Reader::read_usual(const UsualArray& array, std::span<T> values)
{
    const std::size_t bytes = values.size() * sizeof(T);
    const auto& head = array.heads_[little_endian_ ? 1 : 0];
    if (formatted_ || left_ > 0 || !need(head.size() + bytes + length_bytes)
        || std::memcmp(at_, head.data(), head.size()) != 0
        || std::memcmp(at_ + head.size() + bytes, head.data() + head.size() - length_bytes, length_bytes) != 0) {
        return false;
    }
    header_.name = array.name_;
    header_.byte = position();
    header_.count = array.count_;
    header_.width = sizeof(T);
    copy_ordered<BitsOf<T>>(reinterpret_cast<char*>(values.data()), at_ + head.size(), values.size(),
                            little_endian_ != (std::endian::native == std::endian::little));
    at_ += head.size() + bytes + length_bytes;
    return true;
}

template bool Reader::read_usual(const UsualArray&, std::span<float>);
template bool Reader::read_usual(const UsualArray&, std::span<std::int32_t>);

std::vector<std::string> Reader::read_strings()
{
    std::vector<std::string> strings;
    while (left_ > 0) {
        if (formatted_) {
            strings.push_back(trimmed_end(quoted(longest_string, "a string")));
            --left_;
            continue;
        }
        if (block_left_ == 0) {
            begin_block();
        }
        if (!need(header_.width)) {
            fail_here("the file ends within a record");
        }
        strings.push_back(trimmed_end({at_, header_.width}));
        advance(header_.width);
        block_left_ -= header_.width;
        --left_;
        if (block_left_ == 0) {
            end_block();
        }
    }
    return strings;
}

std::vector<std::int32_t> Reader::read_integers(std::size_t wanted)
{
    std::vector<std::int32_t> values(static_cast<std::size_t>(std::min<std::uint64_t>(wanted, left_)));
    read(std::span(values));
    return values;
}

void Reader::skip_rest()
{
    while (left_ > 0) {
        if (formatted_) {
            if (header_.type == Type::String) {
                quoted(longest_string, "a string");
            } else if (token().front() == '\'') {
                fail_here("a name in quotes where " + std::to_string(left_) + " more values are expected");
            }
            --left_;
            continue;
        }
        if (block_left_ == 0) {
            begin_block();
        }
        advance(block_left_);
        left_ -= block_left_ / header_.width;
        block_left_ = 0;
        end_block();
        tick();
    }
}

// --- reading: text ---------------------------------------------------------------------------------------------------

bool Reader::skip_blanks()
{
    for (;;) {
        while (at_ != end_ && is_blank(*at_)) {
            line_ += *at_ == '\n';
            ++at_;
        }
        if (at_ != end_) {
            return true;
        }
        if (!need(1)) {
            return false;
        }
    }
}

std::string_view Reader::token()
{
    if (!skip_blanks()) {
        fail_here("the file ends, " + std::to_string(left_) + " of " + std::to_string(header_.count)
                  + " values are missing");
    }
    (void)need(longest_number + 1);
    const char* p = at_;
    while (p != end_ && !is_blank(*p)) {
        ++p;
    }
    const std::string_view text(at_, static_cast<std::size_t>(p - at_));
    if (text.size() > longest_number) {
        fail_here("a word of more than " + std::to_string(longest_number) + " characters where a number is expected");
    }
    at_ = p;
    return text;
}

std::string Reader::quoted(std::size_t longest, const char* what)
{
    if (!skip_blanks()) {
        fail_here(std::string("the file ends, expected ") + what);
    }
    (void)need(longest + 2);
    if (*at_ != '\'') {
        fail_here(std::string("expected ") + what + " in quotes");
    }
    const char* const start = at_ + 1;
    const auto* const close = static_cast<const char*>(
        std::memchr(start, '\'', std::min(longest + 1, static_cast<std::size_t>(end_ - start))));
    if (close == nullptr) {
        fail_here(std::string(what) + " without a closing quote or of more than " + std::to_string(longest)
                  + " characters");
    }
    std::string text(start, close);
    if (text.find('\n') != std::string::npos) {
        fail_here(std::string(what) + " without a closing quote");
    }
    at_ = close + 1;
    return text;
}

std::optional<Header> Reader::next_text()
{
    header_ = {};
    if (!skip_blanks()) {
        return {};
    }
    const auto read_header = [this] {
        if (!skip_blanks()) {
            fail_here("the file ends, expected a header");
        }
        Header header;
        header.byte = position();
        header.line = line_;
        header_ = header;
        const std::string name = quoted(name_bytes, "a name");
        if (!printable(name)) {
            fail_here("the name " + in_quotes(name) + " is no text");
        }
        header.name = trimmed_end(name);
        header_ = header;
        if (!skip_blanks()) {
            fail_here("the file ends within a header");
        }
        const auto count = static_cast<std::int64_t>(number<std::int32_t>(token()));
        const std::string type = quoted(type_bytes, "a type");
        if (type == long_count) {
            header.type_name = long_count;
            header.count = static_cast<std::uint64_t>(-std::min<std::int64_t>(count, 0));
        } else if (!set_type(header, type)) {
            fail_here("the type " + in_quotes(type) + " is not known");
        } else if (count < 0) {
            fail_here("states " + std::to_string(count) + " values");
        } else {
            header.count = static_cast<std::uint64_t>(count);
        }
        return header;
    };
    Header header = read_header();
    if (header.type_name == long_count) {
        const Header first = header;
        header = read_header();
        if (header.name != first.name || header.type_name == long_count) {
            fail("the header behind one of type X231 is not of " + in_quotes(first.name));
        }
        header.count += first.count << 31;
    }
    header_ = header;
    const std::uint64_t rest = file_bytes_ - position();
    // A digit and a blank.
    constexpr std::uint64_t least = 2;
    if (header.width > 0 && header.count > rest / least + 1) {
        fail(std::to_string(header.count) + " values, but the file has only " + std::to_string(rest)
             + " bytes behind the header");
    }
    left_ = header.width > 0 ? header.count : 0;
    return header;
}

template <class T> T Reader::number(std::string_view text) const
{
    const std::string_view word = text;
    T value{};
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc{} && end == text.data() + text.size()) {
        return value;
    }
    if constexpr (std::is_floating_point_v<T>) {
        // Fortran: exponents behind a D, or behind nothing when they have three digits.
        std::string plain;
        for (const char c : text) {
            const bool digit_before
                = !plain.empty() && ((plain.back() >= '0' && plain.back() <= '9') || plain.back() == '.');
            if (c == 'D' || c == 'd') {
                plain += 'E';
            } else if ((c == '+' || c == '-') && digit_before) {
                plain += 'E';
                plain += c;
            } else {
                plain += c;
            }
        }
        double wide = 0;
        const char* const last = plain.data() + plain.size();
        if (const auto result = std::from_chars(plain.data(), last, value);
            result.ec == std::errc{} && result.ptr == last) {
            return value;
        } else if (result.ec == std::errc::result_out_of_range && result.ptr == last) {
            // Too small is zero, too large is an error. The exponent's sign tells.
            const auto wider = std::from_chars(plain.data(), last, wide);
            const bool small = wider.ec == std::errc{} ? std::fabs(wide) < 1 : plain.find("E-") != std::string::npos
                    || plain.find("e-") != std::string::npos;
            if (small) {
                return static_cast<T>(plain.front() == '-' ? -0.0 : 0.0);
            }
        }
    }
    fail_here(in_quotes(word)
              + (error == std::errc::result_out_of_range ? " is beyond the range of " : " is not a number of ")
              + (header_.type_name.empty() ? "type INTE" : "type " + header_.type_name));
}

// --- writing ---------------------------------------------------------------------------------------------------------

namespace {

struct Layout {
    std::string_view type_name;
    std::size_t bytes;
    std::size_t per_block;
    std::size_t per_line;
    std::size_t column;
};

Layout layout_of(Type type)
{
    switch (type) {
    case Type::Integer: return {"INTE", 4, values_per_block, 6, 12};
    case Type::Real: return {"REAL", 4, values_per_block, 4, 17};
    case Type::Double: return {"DOUB", 8, values_per_block, 3, 23};
    case Type::Logical: return {"LOGI", 4, values_per_block, 25, 3};
    case Type::String: return {"CHAR", 8, strings_per_block, 7, 0};
    case Type::Message: break;
    }
    return {"MESS", 0, values_per_block, 1, 0};
}

std::string padded(std::string_view text, std::size_t width)
{
    std::string result(text.substr(0, width));
    result.resize(width, ' ');
    return result;
}

/// The digits of a double so that they fit a column of 23 with a blank, as readers of fixed columns want it: the usual
/// form, else without what the exponent can do without, else with a whole number before the exponent. Reads back as the
/// same number in every form; the longest of all (negative, below 1e-83) may need a wider column.
std::string double_text(double value)
{
    constexpr std::size_t longest = 22;
    char room[longest_number];
    const auto result = std::to_chars(std::begin(room), std::end(room), value, std::chars_format::scientific);
    std::string text(room, result.ptr);
    const std::size_t place = text.find('e');
    if (place == std::string::npos) {
        return text; // not finite
    }
    std::string digits = text.substr(0, place);
    int exponent = 0;
    const char* const first = text.data() + place + (text[place + 1] == '+' ? 2 : 1);
    std::from_chars(first, text.data() + text.size(), exponent);
    if (digits.find('.') == std::string::npos) {
        digits += ".0";
    }
    text[place] = 'D';
    text = digits + text.substr(place);
    if (text.size() > longest) {
        text = digits + 'D' + std::to_string(exponent);
    }
    if (text.size() > longest) {
        const std::size_t point = digits.find('.');
        exponent -= static_cast<int>(digits.size() - point - 1);
        text = digits.erase(point, 1) + 'D' + std::to_string(exponent);
    }
    return text;
}

template <class T> std::string number_text(T value)
{
    if constexpr (std::is_same_v<T, double>) {
        return double_text(value);
    } else if constexpr (std::is_integral_v<T>) {
        return std::to_string(value);
    } else {
        char room[longest_number];
        constexpr int digits = std::numeric_limits<T>::max_digits10 - 1;
        const auto result
            = std::to_chars(std::begin(room), std::end(room), value, std::chars_format::scientific, digits);
        std::replace(std::begin(room), result.ptr, 'e', 'E');
        return std::string(room, result.ptr);
    }
}

} // namespace

void Writer::put_length(std::size_t bytes)
{
    const auto value = static_cast<std::uint32_t>(bytes);
    const std::uint32_t bits = std::endian::native == std::endian::big ? value : swapped(value);
    std::memcpy(file_.reserve(sizeof bits), &bits, sizeof bits);
    file_.advance(sizeof bits);
}

void Writer::put_text(std::string_view text)
{
    const Layout layout = layout_of(type_);
    std::string line(std::max<std::size_t>(layout.column, text.size() + 1) - text.size(), ' ');
    line += text;
    if (++on_line_ == layout.per_line) {
        line += '\n';
        on_line_ = 0;
    }
    file_.write(line);
}

void Writer::close_line()
{
    if (formatted_ && on_line_ > 0) {
        file_.write("\n");
        on_line_ = 0;
    }
}

void Writer::begin(std::string_view name, Type type, std::uint64_t count, const std::filesystem::path& target)
{
    assert(left_ == 0 && name.size() <= name_bytes);
    if (count > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
        throw FileError(target.string(), 0, "cannot be written: " + std::string(name) + " has " + std::to_string(count)
                                                + " values, the format's headers count up to 2147483647");
    }
    type_ = type;
    left_ = count;
    block_left_ = 0;
    const Layout layout = layout_of(type);
    if (formatted_) {
        const std::string number = std::to_string(count);
        file_.write(" '" + padded(name, name_bytes) + "'" + std::string(12 - number.size(), ' ') + number + " '"
                    + std::string(layout.type_name) + "'\n");
        return;
    }
    put_length(header_bytes);
    file_.write(padded(name, name_bytes));
    put_length(static_cast<std::size_t>(count));
    file_.write(layout.type_name);
    put_length(header_bytes);
}

void Writer::open_block()
{
    const Layout layout = layout_of(type_);
    block_left_ = std::min<std::uint64_t>(left_, layout.per_block);
    block_bytes_ = static_cast<std::size_t>(block_left_) * layout.bytes;
    if (!formatted_) {
        put_length(block_bytes_);
    }
}

template <class T> void Writer::put(std::span<const T> values)
{
    assert(values.size() <= left_);
    while (!values.empty()) {
        if (block_left_ == 0) {
            open_block();
        }
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(block_left_, values.size()));
        if (formatted_) {
            for (const T value : values.first(part)) {
                put_text(type_ == Type::Logical ? std::string(value != T{} ? "T" : "F") : number_text(value));
            }
        } else {
            char* const room = file_.reserve(part * sizeof(T));
            copy_ordered<BitsOf<T>>(room, reinterpret_cast<const char*>(values.data()), part,
                                    std::endian::native == std::endian::little);
            file_.advance(part * sizeof(T));
        }
        values = values.subspan(part);
        left_ -= part;
        block_left_ -= part;
        if (block_left_ == 0 && !formatted_) {
            put_length(block_bytes_);
        }
        if (block_left_ == 0) {
            close_line();
        }
    }
}

template void Writer::put(std::span<const float>);
template void Writer::put(std::span<const double>);
template void Writer::put(std::span<const std::int32_t>);

void Writer::strings(std::string_view name, std::span<const std::string> values, const std::filesystem::path& target)
{
    begin(name, Type::String, values.size(), target);
    for (const std::string& value : values) {
        if (block_left_ == 0) {
            open_block();
        }
        const std::string text = padded(value, name_bytes);
        if (formatted_) {
            put_text("'" + text + "'");
        } else {
            file_.write(text);
        }
        --left_;
        if (--block_left_ == 0 && !formatted_) {
            put_length(block_bytes_);
        }
        if (block_left_ == 0) {
            close_line();
        }
    }
}

} // namespace lodex::records

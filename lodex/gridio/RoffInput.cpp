#include <lodex/gridio/RoffInput.h>

#include <lodex/gridio/TextNumbers.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lodex::roff {

namespace {

constexpr std::size_t text_window = 1 << 20;
constexpr std::size_t binary_window = 1 << 14;
constexpr std::size_t longest_word = 1024;
constexpr std::size_t longest_number = 512;
constexpr std::size_t most_keys = 10'000;        ///< of one tag
constexpr std::uint64_t most_strings = 1'000'000; ///< of one array
constexpr std::string_view text_start = "roff-asc";
constexpr std::string_view binary_start = "roff-bin";
constexpr std::array<std::string_view, 6> type_names = {"char", "bool", "byte", "int", "float", "double"};

bool is_blank(char c)
{
    return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f' || c == '\v';
}

/// For messages: not too long, no control characters.
std::string shown(std::string_view word)
{
    constexpr std::size_t longest = 40;
    std::string text = to_utf8(word.substr(0, longest));
    for (char& c : text) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    }
    return '"' + text + (word.size() > longest ? "...\"" : "\"");
}

/// Eight digits at p as a number, when all eight are digits.
bool eight_digits(const char* p, std::uint64_t& number)
{
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, p, 8);
    if constexpr (std::endian::native == std::endian::big) {
        bytes = __builtin_bswap64(bytes);
    }
    const std::uint64_t digits = bytes - 0x3030303030303030U;
    if (((digits | (bytes + 0x4646464646464646U)) & 0x8080808080808080U) != 0) {
        return false;
    }
    // Pairs, then fours, then all eight.
    const std::uint64_t pairs = digits * 10 + (digits >> 8);
    number = (((pairs & 0x000000FF000000FFU) * 0x000F424000000064U)
              + (((pairs >> 16) & 0x000000FF000000FFU) * 0x0000271000000001U))
        >> 32;
    return true;
}

/// parse_decimal() for numbers like -3.09999990E+00, which fill these files.
[[gnu::always_inline]] inline const char* parse_real(const char* p, Decimal& number)
{
    using text_numbers::is_digit;
    const char* const start = p;
    number.negative = *p == '-';
    p += *p == '-' || *p == '+' ? 1 : 0;
    std::uint64_t digits = 0;
    const char* const first = p;
    while (is_digit(*p)) {
        digits = 10 * digits + static_cast<std::uint64_t>(*p++ - '0');
    }
    auto count = p - first;
    std::int32_t exponent = 0;
    if (*p == '.') {
        const char* const point = ++p;
        if (std::uint64_t eight = 0; count <= 8 && eight_digits(p, eight)) {
            digits = 100'000'000 * digits + eight;
            p += 8;
        }
        while (is_digit(*p)) {
            digits = 10 * digits + static_cast<std::uint64_t>(*p++ - '0');
        }
        exponent = static_cast<std::int32_t>(point - p);
        count += p - point;
    }
    if (count == 0 || count > 19) [[unlikely]] {
        return parse_decimal(start, number);
    }
    if ((*p | 0x20) == 'e') {
        const char* const mark = p++;
        const bool negative = *p == '-';
        p += *p == '-' || *p == '+' ? 1 : 0;
        const char* const power = p;
        std::int32_t value = 0;
        while (is_digit(*p) && p - power < 5) {
            value = 10 * value + (*p++ - '0');
        }
        if (p == power || p - power == 5) [[unlikely]] {
            return mark == start ? start : parse_decimal(start, number);
        }
        exponent += negative ? -value : value;
    } else if ((*p | 0x20) == 'd') [[unlikely]] {
        return parse_decimal(start, number);
    }
    number.digits = digits;
    number.exponent = exponent;
    number.cut = false;
    number.integer = false;
    number.text = {start, static_cast<std::size_t>(p - start)};
    return p;
}

/// "nan", "inf", "-Infinity" and the like, as C's output functions write them.
const char* parse_special(const char* p, double& value)
{
    const bool negative = *p == '-';
    const char* q = p + (*p == '-' || *p == '+' ? 1 : 0);
    const auto is = [&q](std::string_view word) {
        for (std::size_t i = 0; i < word.size(); ++i) {
            if ((q[i] | 0x20) != word[i]) {
                return false;
            }
        }
        return true;
    };
    if (is("nan")) {
        value = std::numeric_limits<double>::quiet_NaN();
        return q + 3;
    }
    if (is("inf")) {
        value = negative ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
        return q + (is("infinity") ? 8 : 3);
    }
    return p;
}

bool ends_number(char c)
{
    return is_blank(c) || c == '\0' || c == '#' || c == '"';
}

} // namespace

std::string_view type_name(Type type)
{
    return type_names[static_cast<std::size_t>(type)];
}

std::size_t bytes_of(Type type)
{
    constexpr std::array<std::size_t, 6> bytes = {0, 1, 1, 4, 4, 8};
    return bytes[static_cast<std::size_t>(type)];
}

ByteSource::ByteSource(const std::filesystem::path& path) : name_(path.string())
{
    const auto system_failed = [this](int error) {
        const FileError failed(name_, 0, "cannot be read: " + std::generic_category().message(error));
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        return failed;
    };
    // Not blocking: a named pipe would otherwise wait for a writer.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0) {
        throw system_failed(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        ::close(descriptor_);
        throw FileError(name_, 0, S_ISDIR(status.st_mode) ? "is a folder, expected a file" : "is not a regular file");
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
    seconds_ = status.st_mtim.tv_sec;
    nanoseconds_ = status.st_mtim.tv_nsec;
}

ByteSource::ByteSource(std::string_view memory, std::string name)
    : name_(std::move(name)), memory_(memory), size_(memory.size())
{
}

ByteSource::~ByteSource()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void ByteSource::read_at(std::uint64_t offset, void* to, std::size_t count) const
{
    if (count == 0) {
        return;
    }
    if (offset > size_ || count > size_ - offset) {
        throw FileError(name_, 0, "at byte " + std::to_string(size_) + ": the file ends too early");
    }
    if (descriptor_ < 0) {
        std::memcpy(to, memory_.data() + offset, count);
        return;
    }
    auto* out = static_cast<char*>(to);
    while (count > 0) {
        const ssize_t got = ::pread(descriptor_, out, count, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw FileError(name_, 0, "cannot be read: " + std::generic_category().message(errno));
        }
        if (got == 0) {
            throw FileError(name_, 0, "changed while it was read (" + std::to_string(size_) + " bytes at first, then "
                                          + std::to_string(offset) + ")");
        }
        out += got;
        offset += static_cast<std::uint64_t>(got);
        count -= static_cast<std::size_t>(got);
    }
}

void ByteSource::check_unchanged() const
{
    struct stat status {};
    if (descriptor_ < 0) {
        return;
    }
    if (::fstat(descriptor_, &status) != 0 || static_cast<std::uint64_t>(status.st_size) != size_
        || status.st_mtim.tv_sec != seconds_ || status.st_mtim.tv_nsec != nanoseconds_) {
        throw FileError(name_, 0, "changed while it was read");
    }
}

const Key* Tag::find(std::string_view key) const
{
    const auto found = std::find_if(keys.begin(), keys.end(), [key](const Key& k) { return k.name == key; });
    return found == keys.end() ? nullptr : &*found;
}

Input::Input(const ByteSource& source, std::function<void(std::uint64_t)> claim,
             std::function<void(std::uint64_t)> tick, std::function<NumberSink*(const Tag&)> sink_for)
    : source_(source), claim_(std::move(claim)), tick_(std::move(tick)), sink_for_(std::move(sink_for))
{
    buffer_.resize(binary_window + 1);
    fill();
    const std::string_view head(buffer_.data(), length_);
    if (head.starts_with(text_start) && head.size() > text_start.size() && is_blank(head[text_start.size()])) {
        text_ = true;
        pos_ = text_start.size();
        buffer_.resize(text_window + 1);
    } else if (head.starts_with(binary_start) && head.size() > binary_start.size()
               && head[binary_start.size()] == '\0') {
        pos_ = binary_start.size() + 1;
    } else {
        throw FileError(source_.name(), 0, "is no ROFF file: it does not begin with \"roff-asc\" or \"roff-bin\"");
    }
}

void Input::fail(std::int64_t place, const std::string& reason) const
{
    if (text_) {
        throw FileError(source_.name(), place, reason);
    }
    throw FileError(source_.name(), 0, "at byte " + std::to_string(place) + ": " + reason);
}

std::int64_t Input::here() const
{
    return text_ ? lines_ + std::count(buffer_.data(), buffer_.data() + pos_, '\n')
                 : static_cast<std::int64_t>(position());
}

void Input::fill()
{
    if (text_) {
        lines_ += std::count(buffer_.data(), buffer_.data() + pos_, '\n');
    }
    std::memmove(buffer_.data(), buffer_.data() + pos_, length_ - pos_);
    base_ += pos_;
    length_ -= pos_;
    pos_ = 0;
    const std::size_t room = buffer_.size() - 1 - length_;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(room, source_.size() - base_ - length_));
    source_.read_at(base_ + length_, buffer_.data() + length_, count);
    length_ += count;
    buffer_[length_] = '\0';
    handled();
}

/// Makes `count` bytes stand behind the position, fewer only at the end of the file: false then.
bool Input::ensure(std::size_t count)
{
    if (length_ - pos_ < count && base_ + length_ < source_.size()) {
        fill();
    }
    return length_ - pos_ >= count;
}

void Input::seek(std::uint64_t offset)
{
    if (offset >= base_ && offset <= base_ + length_) {
        pos_ = static_cast<std::size_t>(offset - base_);
        return;
    }
    base_ = offset;
    told_ = offset; // the numbers between are told when they are loaded
    pos_ = length_ = 0;
    fill();
}

/// Progress: what lies before the buffer is done.
void Input::handled()
{
    if (base_ > told_) {
        const std::uint64_t bytes = base_ - told_;
        told_ = base_;
        tick_(bytes);
    }
}

bool Input::at_end()
{
    return !ensure(1);
}

/// Blanks and comments of text files, comments of binary ones.
void Input::skip_blanks()
{
    while (ensure(1)) {
        const char c = buffer_[pos_];
        if (text_ && is_blank(c)) {
            ++pos_;
        } else if (c == '#') {
            // Up to the next '#'; one that is not closed on its line ends there.
            ++pos_;
            const char last = text_ ? '\n' : '\0';
            while (ensure(1) && buffer_[pos_] != last && !(text_ && buffer_[pos_] == '#')) {
                ++pos_;
            }
            pos_ += ensure(1) ? 1 : 0;
        } else {
            return;
        }
    }
}

std::string Input::terminated(std::size_t longest, const char* what)
{
    std::string result;
    const std::int64_t place = here();
    for (;;) {
        if (!ensure(1)) {
            fail(here(), std::string("the file ends within ") + what);
        }
        const char* const begin = buffer_.data() + pos_;
        const auto* const end = static_cast<const char*>(std::memchr(begin, 0, length_ - pos_));
        const auto count = static_cast<std::size_t>((end != nullptr ? end : buffer_.data() + length_) - begin);
        if (result.size() + count > longest) {
            fail(place, std::string(what) + " of more than " + std::to_string(longest) + " characters, beginning with "
                            + shown(result.empty() ? std::string_view(begin, count) : result));
        }
        result.append(begin, count);
        pos_ += count;
        if (end != nullptr) {
            ++pos_;
            return result;
        }
    }
}

std::string Input::word()
{
    skip_blanks();
    if (!text_) {
        return terminated(longest_word, "a word");
    }
    if (!ensure(1)) {
        fail(here(), "the file ends too early, expected a word");
    }
    ensure(longest_word + 1);
    const char* const begin = buffer_.data() + pos_;
    const char* p = begin;
    while (!ends_number(*p)) {
        ++p;
    }
    const auto count = static_cast<std::size_t>(p - begin);
    if (count == 0 || count > longest_word) {
        fail(here(), count == 0 ? "found " + next_word_for_message() + ", expected a word"
                                : "a word of more than " + std::to_string(longest_word) + " characters");
    }
    pos_ += count;
    return {begin, count};
}

std::string Input::next_word_for_message()
{
    if (!ensure(1)) {
        return "the end of the file";
    }
    ensure(longest_word);
    const char* const begin = buffer_.data() + pos_;
    const char* end = begin + 1;
    while (end < buffer_.data() + length_ && !ends_number(*end)) {
        ++end;
    }
    return shown({begin, static_cast<std::size_t>(end - begin)});
}

std::string Input::quoted()
{
    skip_blanks();
    const std::int64_t place = here();
    if (!ensure(1) || buffer_[pos_] != '"') {
        fail(place, "found " + next_word_for_message() + ", expected text in quotes");
    }
    ++pos_;
    std::string result;
    for (;;) {
        if (!ensure(1)) {
            fail(place, "text in quotes does not end");
        }
        const char* const begin = buffer_.data() + pos_;
        const auto* const end = static_cast<const char*>(std::memchr(begin, '"', length_ - pos_));
        const auto count = static_cast<std::size_t>((end != nullptr ? end : buffer_.data() + length_) - begin);
        result.append(begin, count);
        pos_ += count;
        if (end != nullptr) {
            ++pos_;
            return result;
        }
    }
}

std::uint64_t Input::bytes_behind_end()
{
    skip_blanks();
    return source_.size() - position();
}

bool Input::next(Tag& tag, const std::function<bool(std::string_view)>& wanted)
{
    tag = {};
    skip_blanks();
    tag.place = here();
    if (at_end()) {
        fail(tag.place, "the file ends without the tag eof: it is cut off");
    }
    const std::string first = word();
    if (first == "eof") {
        return false;
    }
    if (first != "tag") {
        fail(tag.place, "found " + shown(first) + ", expected \"tag\"");
    }
    tag.name = word();
    const bool keep = wanted(tag.name);
    for (;;) {
        skip_blanks();
        const std::int64_t place = here();
        if (at_end()) {
            fail(place, "the file ends within the tag " + shown(tag.name) + ": it is cut off");
        }
        const std::string next_word = word();
        if (next_word == "endtag") {
            break;
        }
        if (tag.keys.size() == most_keys) {
            fail(place, "tag " + shown(tag.name) + " has more than " + std::to_string(most_keys) + " keys");
        }
        tag.keys.emplace_back().place = place;
        read_key(next_word, tag, keep);
        if (!keep) {
            tag.keys.pop_back();
        }
    }
    return tag.name != "eof";
}

void Input::read_key(const std::string& type_word, Tag& tag, bool wanted)
{
    Key& key = tag.keys.back();
    key.array = type_word == "array";
    const std::string type = key.array ? word() : type_word;
    const auto found = std::find(type_names.begin(), type_names.end(), type);
    if (found == type_names.end()) {
        const bool number = !type.empty() && (text_numbers::is_digit(type[0]) || type[0] == '-' || type[0] == '.');
        fail(here(), "in tag " + shown(tag.name) + ": "
                         + (text_ && number ? "found " + shown(type)
                                                  + ", expected a key: an array before it states fewer "
                                                    "values than there are"
                                            : "unknown type " + shown(type)));
    }
    key.type = static_cast<Type>(found - type_names.begin());
    key.name = word();
    if (wanted
        && std::any_of(tag.keys.begin(), tag.keys.end() - 1, [&key](const Key& k) { return k.name == key.name; })) {
        fail(key.place, "tag " + shown(tag.name) + " has the key " + shown(key.name) + " twice");
    }
    if (key.array) {
        key.count = array_count();
    }
    const bool may_stream = wanted && text_ && key.array && (key.type == Type::Float || key.type == Type::Double);
    read_values(key, wanted, may_stream ? sink_for_(tag) : nullptr);
    if (tag.name == "filedata" && key.name == "byteswaptest" && !key.array) {
        byte_order(key);
    }
}

std::uint64_t Input::array_count()
{
    const std::int64_t place = here();
    Key count;
    count.name = "length of the array";
    count.place = place;
    read_values(count, true);
    const std::int32_t value = integer(count);
    if (value < 0) {
        fail(place, "an array of " + std::to_string(value) + " values");
    }
    return static_cast<std::uint64_t>(value);
}

void Input::byte_order(const Key& key)
{
    if (key.type != Type::Int) {
        fail(key.place, "byteswaptest is of the type " + std::string(type_name(key.type)) + ", expected int");
    }
    order_known_ = true;
    constexpr std::int32_t swapped = 0x01000000;
    const std::int32_t value = integer(key);
    if (value == 1) {
        return;
    }
    if (text_ || value != swapped) {
        fail(key.place, "byteswaptest is " + std::to_string(value) + ", expected 1"
                            + (text_ ? std::string() : " in one of the two byte orders"));
    }
    swap_ = true;
}

void Input::read_values(Key& key, bool wanted, NumberSink* sink)
{
    if (key.type == Type::Char) {
        read_strings(key, wanted);
        return;
    }
    if (text_) {
        read_text_numbers(key, wanted, sink);
        return;
    }
    if (bytes_of(key.type) > 1 && !order_known_ && key.name != "byteswaptest") {
        fail(key.place, "numbers before the byteswaptest of the tag filedata: the byte order is not known");
    }
    key.offset = position();
    const std::uint64_t bytes = key.count * bytes_of(key.type);
    const std::uint64_t left = source_.size() - key.offset;
    if (bytes > left) {
        fail(key.place, shown(key.name) + " has " + std::to_string(key.count) + " values of " + std::to_string(bytes)
                            + " bytes, but the file has only " + std::to_string(left) + " bytes left");
    }
    seek(key.offset + bytes);
}

void Input::read_strings(Key& key, bool wanted)
{
    if (key.count > most_strings || key.count > source_.size() - position()) {
        fail(key.place, shown(key.name) + " has " + std::to_string(key.count) + " texts, more than there can be");
    }
    for (std::uint64_t i = 0; i < key.count; ++i) {
        std::string text = text_ ? quoted() : terminated(std::numeric_limits<std::size_t>::max() / 2, "a text");
        if (wanted) {
            key.strings.push_back(std::move(text));
        }
    }
}

void Input::read_text_numbers(Key& key, bool wanted, NumberSink* sink)
{
    // Each takes a digit and a blank at least.
    if (key.count > (source_.size() - position()) / 2 + 1) {
        fail(key.place, shown(key.name) + " has " + std::to_string(key.count) + " values, but the file has only "
                            + std::to_string(source_.size() - position()) + " bytes left");
    }
    if (!wanted) {
        skip_numbers(key);
        return;
    }
    switch (key.type) {
    case Type::Float:
        parse_numbers(key, key.numbers.emplace<std::vector<float>>(), sink);
        break;
    case Type::Double:
        parse_numbers(key, key.numbers.emplace<std::vector<double>>(), sink);
        break;
    case Type::Int:
        parse_numbers(key, key.numbers.emplace<std::vector<std::int32_t>>(), sink);
        break;
    default:
        parse_numbers(key, key.numbers.emplace<std::vector<std::uint8_t>>(), sink);
    }
}

template <class T> void Input::parse_numbers(Key& key, std::vector<T>& values, NumberSink* sink)
{
    const std::uint64_t room = sink == nullptr ? key.count : std::min<std::uint64_t>(key.count, NumberSink::piece);
    claim_(room * sizeof(T));
    values.resize(room);
    std::uint64_t done = 0;
    std::uint64_t given = 0; // to the sink
    const auto give = [&] {
        if constexpr (std::is_floating_point_v<T>) {
            if (sink != nullptr) {
                sink->take(std::span<const T>(values).first(done - given));
                given = done;
            }
        }
    };
    const auto bad = [&](const char* p) {
        pos_ = static_cast<std::size_t>(p - buffer_.data());
        const std::string found = next_word_for_message();
        const std::string which = key.array ? "value " + std::to_string(done + 1) + " of the "
                                                  + std::to_string(key.count) + " of " + shown(key.name)
                                            : "the value of " + shown(key.name);
        fail(here(), "found " + found + ", expected " + which + " (" + std::string(type_name(key.type)) + ")");
    };
    while (done < key.count) {
        if (done - given == room) {
            give();
        }
        skip_blanks();
        if (!ensure(longest_number) && pos_ == length_) {
            fail(here(), "the file ends after " + std::to_string(done) + " of the " + std::to_string(key.count)
                             + " values of " + shown(key.name) + ": it is cut off");
        }
        const char* p = buffer_.data() + pos_;
        const char* const end = buffer_.data() + length_;
        // Numbers that begin before this one are whole in the buffer.
        const char* const limit = base_ + length_ < source_.size() ? end - longest_number : end;
        const auto ended = [end, limit](const char* q) {
            return is_blank(*q) || (ends_number(*q) && (q != end || limit == end));
        };
        const std::uint64_t until = given + std::min(room, key.count - given);
        while (done < until) {
            while (is_blank(*p)) {
                ++p;
            }
            if (p > limit || p == end || *p == '#') [[unlikely]] {
                break;
            }
            Decimal number;
            const char* const start = p;
            if constexpr (std::is_floating_point_v<T>) {
                p = parse_real(p, number);
                if (p == start) [[unlikely]] {
                    double special = 0;
                    p = parse_special(p, special);
                    if (p == start || !ended(p)) {
                        bad(start);
                    }
                    values[done++ - given] = static_cast<T>(special);
                    continue;
                }
                T value{};
                if constexpr (std::is_same_v<T, float>) {
                    value = to_float(number);
                } else {
                    value = to_double(number);
                }
                if (!ended(p) || !(std::fabs(value) <= std::numeric_limits<T>::max())) [[unlikely]] {
                    bad(start);
                }
                values[done++ - given] = value;
            } else {
                p = parse_decimal(p, number);
                const auto value = p == start ? std::nullopt : to_integer(number);
                constexpr bool one_byte = sizeof(T) == 1;
                if (!value || !ended(p) || (one_byte && (*value < 0 || *value > 255))) [[unlikely]] {
                    bad(start);
                }
                values[done++ - given] = static_cast<T>(*value);
            }
        }
        pos_ = static_cast<std::size_t>(p - buffer_.data());
    }
    give();
    if (sink != nullptr) {
        values = {};
    }
}

void Input::skip_numbers(const Key& key)
{
    for (std::uint64_t done = 0; done < key.count;) {
        skip_blanks();
        if (!ensure(longest_number) && pos_ == length_) {
            fail(here(), "the file ends after " + std::to_string(done) + " of the " + std::to_string(key.count)
                             + " values of " + shown(key.name) + ": it is cut off");
        }
        const char c = buffer_[pos_];
        const bool special = (c | 0x20) == 'n' || (c | 0x20) == 'i';
        if (!text_numbers::is_digit(c) && c != '-' && c != '+' && c != '.' && !special) {
            fail(here(), "found " + next_word_for_message() + ", expected value " + std::to_string(done + 1)
                             + " of the " + std::to_string(key.count) + " of " + shown(key.name));
        }
        const std::size_t start = pos_;
        while (!ends_number(buffer_[pos_]) && pos_ - start < longest_number) {
            ++pos_;
        }
        if (special && std::string_view(buffer_.data() + start, pos_ - start) == "endtag") {
            fail(here(), "found \"endtag\", expected value " + std::to_string(done + 1) + " of " + shown(key.name));
        }
        if (!ends_number(buffer_[pos_])) {
            fail(here(), "a number of more than " + std::to_string(longest_number) + " characters");
        }
        ++done;
    }
}

std::int32_t Input::integer(const Key& key) const
{
    if (key.count != 1) {
        fail(key.place, shown(key.name) + " has " + std::to_string(key.count) + " values, expected one");
    }
    return integers(key).front();
}

double Input::real(const Key& key) const
{
    if (key.count != 1) {
        fail(key.place, shown(key.name) + " has " + std::to_string(key.count) + " values, expected one");
    }
    return reals(key).front();
}

const std::string& Input::string(const Key& key) const
{
    if (key.type != Type::Char || key.count != 1) {
        fail(key.place, shown(key.name) + " is not one text");
    }
    return key.strings.front();
}

std::vector<std::int32_t> Input::integers(const Key& key) const
{
    const auto count = static_cast<std::size_t>(key.count);
    if (key.type == Type::Int) {
        std::vector<std::int32_t> values(count);
        const std::int32_t* const numbers = load(key, 0, count, values.data());
        return text_ ? std::vector<std::int32_t>(numbers, numbers + count) : values;
    }
    if (key.type == Type::Bool || key.type == Type::Byte) {
        std::vector<std::uint8_t> values(count);
        const std::uint8_t* const numbers = load(key, 0, count, values.data());
        return {numbers, numbers + count};
    }
    fail(key.place, shown(key.name) + " is of the type " + std::string(type_name(key.type)) + ", expected int");
}

std::vector<double> Input::reals(const Key& key) const
{
    const auto count = static_cast<std::size_t>(key.count);
    if (key.type == Type::Float) {
        std::vector<float> values(count);
        const float* const numbers = load(key, 0, count, values.data());
        return {numbers, numbers + count};
    }
    if (key.type == Type::Double) {
        std::vector<double> values(count);
        const double* const numbers = load(key, 0, count, values.data());
        return {numbers, numbers + count};
    }
    fail(key.place, shown(key.name) + " is of the type " + std::string(type_name(key.type)) + ", expected float");
}

} // namespace lodex::roff

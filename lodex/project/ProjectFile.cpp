#include "ProjectFile.h"

#include "ArrayCodec.h"
#include "lodex/utils/FileError.h"
#include "lodex/utils/Numbers.h"

#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <exception>
#include <fcntl.h>
#include <mutex>
#include <sstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lodex {

namespace {

constexpr std::string_view magic = "LODEX PROJECT\n";
constexpr std::string_view hdf5_signature = "\x89HDF\r\n\x1a\n";

/// Enough to keep all threads at work, little enough for a short time between two progress checks and for the nearest
/// caches to hold what one thread works on.
constexpr std::uint64_t chunk_bytes = std::uint64_t{1} << 20;
constexpr std::size_t batch_chunks = 16;

std::span<const std::byte> bytes_of_text(std::string_view text)
{
    return std::as_bytes(std::span(text.data(), text.size()));
}

std::string hexadecimal(std::uint32_t number)
{
    char text[8];
    const auto end = std::to_chars(text, text + sizeof text, number, 16).ptr;
    return {text, end};
}

/// What stands in front of the HDF5 part, the last line being the checksum of those before.
std::string user_block(int format, std::uint64_t place, std::string_view contents, std::uint64_t size)
{
    std::string block(magic);
    block += "format " + std::to_string(format) + "\n";
    block += "contents " + std::to_string(place) + " " + std::to_string(contents.size()) + " " +
             hexadecimal(checksum(bytes_of_text(contents))) + "\n";
    block += "size " + std::to_string(size) + "\n";
    return block + "check " + hexadecimal(checksum(bytes_of_text(block))) + "\n";
}

template <class T> bool number_of(std::string_view word, T& number, int base = 10)
{
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number, base);
    return error == std::errc() && end == word.data() + word.size();
}

int open_for_reading(const std::filesystem::path& path)
{
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

/// Reads up to the end of the file; returns how many bytes there were, -1 on an error.
ssize_t read_fully(int descriptor, std::uint64_t place, std::span<std::byte> bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t now =
            ::pread(descriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(place + done));
        if (now < 0 && errno == EINTR)
            continue;
        if (now < 0)
            return -1;
        if (now == 0)
            break;
        done += static_cast<std::size_t>(now);
    }
    return static_cast<ssize_t>(done);
}

/// What the user block says.
struct Heading {
    int format = 0;
    std::uint64_t place = 0, size = 0, file_size = 0;
    std::uint32_t contents_checksum = 0;
    std::string problem; ///< empty: none
};

Heading parse_heading(std::string_view block)
{
    Heading heading;
    heading.problem = "its first lines are damaged";
    std::istringstream lines{std::string(block)};
    std::string line, word, format, place, size, sum, file_size, check;
    std::getline(lines, line);
    if (!(lines >> word >> format) || word != "format" || !number_of(format, heading.format) || heading.format < 1)
        return heading;
    if (heading.format > project_format) {
        heading.problem = "was written by a later version of the program (format " + format + "; this one reads up to " +
                          std::to_string(project_format) + ")";
        return heading;
    }
    const bool good = (lines >> word >> place >> size >> sum) && word == "contents" && number_of(place, heading.place) &&
                      number_of(size, heading.size) && number_of(sum, heading.contents_checksum, 16) &&
                      (lines >> word >> file_size) && word == "size" && number_of(file_size, heading.file_size);
    if (!good)
        return heading;
    const std::size_t end = block.find("check ");
    std::uint32_t wanted = 0;
    if ((lines >> word >> check) && word == "check" && number_of(check, wanted, 16) &&
        wanted == checksum(bytes_of_text(block.substr(0, end))))
        heading.problem.clear();
    return heading;
}

} // namespace

// Reading

ProjectFile::ProjectFile(const std::filesystem::path& path) : path_(path), descriptor_(open_for_reading(path))
{
    try {
        struct stat status {};
        if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0)
            fail("cannot be read: " + std::generic_category().message(errno));
        if (!S_ISREG(status.st_mode))
            fail(S_ISDIR(status.st_mode) ? "is a folder, not a project" : "is not a regular file");
        size_ = static_cast<std::uint64_t>(status.st_size);
        std::vector<std::byte> start(std::min<std::uint64_t>(size_, Hdf5Output::user_block_bytes));
        read_at(0, start, "its first lines");
        const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
        if (!text.starts_with(magic)) {
            fail(text.starts_with(hdf5_signature) ? "is an HDF5 file, but no project"
                                                  : "is no project: expected \"LODEX PROJECT\" at its start");
        }
        const Heading heading = parse_heading(text);
        if (!heading.problem.empty())
            fail(heading.problem);
        if (heading.file_size > size_) {
            fail("is truncated: " + std::to_string(size_) + " bytes of " + std::to_string(heading.file_size) +
                 " are there");
        }
        if (heading.place > size_ || heading.size > size_ - heading.place)
            fail("its first lines are damaged");
        format_ = heading.format;
        contents_place_ = heading.place;
        contents_size_ = heading.size;
        contents_checksum_ = heading.contents_checksum;
    } catch (...) {
        if (descriptor_ >= 0)
            ::close(descriptor_);
        throw;
    }
}

ProjectFile::~ProjectFile()
{
    ::close(descriptor_);
}

void ProjectFile::fail(const std::string& reason) const
{
    throw FileError(path_.string(), 0, reason);
}

bool ProjectFile::recognises(const std::filesystem::path& path)
{
    const int descriptor = open_for_reading(path);
    if (descriptor < 0)
        return false;
    std::array<std::byte, magic.size()> start{};
    struct stat status {};
    const bool good = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                      read_fully(descriptor, 0, start) == static_cast<ssize_t>(start.size());
    ::close(descriptor);
    return good && std::ranges::equal(start, bytes_of_text(magic));
}

void ProjectFile::read_at(std::uint64_t place, std::span<std::byte> bytes, std::string_view what) const
{
    const ssize_t count = read_fully(descriptor_, place, bytes);
    if (count < 0)
        fail("cannot be read: " + std::string(what) + ": " + std::generic_category().message(errno));
    if (static_cast<std::size_t>(count) < bytes.size())
        fail(std::string(what) + " is cut off: the file has become shorter");
}

std::string ProjectFile::contents() const
{
    std::string text(contents_size_, '\0');
    read_at(contents_place_, std::as_writable_bytes(std::span(text)), "its table of contents");
    if (checksum(bytes_of_text(text)) != contents_checksum_)
        fail("its table of contents is damaged: the checksum does not fit");
    return text;
}

void ProjectFile::read_stored(const StoredArray& array, std::size_t chunk, std::span<std::byte> bytes) const
{
    read_at(array.chunks[chunk].place, bytes, array.path);
    check_sum(array, chunk, bytes);
}

void ProjectFile::check_sum(const StoredArray& array, std::size_t chunk, std::span<const std::byte> bytes) const
{
    if (checksum(bytes) != array.chunks[chunk].checksum)
        fail(array.path + " is damaged or was changed: the checksum of part " + std::to_string(chunk + 1) + " of " +
             std::to_string(array.chunks.size()) + " does not fit");
}

void ProjectFile::read(const StoredArray& array, std::span<std::byte> values, const ProgressCheck& check) const
{
    const std::size_t width = bytes_of(array.type);
    const std::size_t size = array.chunk_count * width;
    const std::size_t chunks = array.chunks.size();
    /// Where the values of a chunk go; the last one may not be whole.
    const auto target_of = [&](std::size_t n) {
        return values.subspan(n * size, std::min(size, values.size() - n * size));
    };
    const auto goes_straight = [&](std::size_t n) { return array.chunks[n].plain && target_of(n).size() == size; };

    using Batch = std::vector<std::vector<std::byte>>; // stored bytes
    const auto fetch = [&](std::size_t first, Batch& batch) {
        batch.resize(std::min(batch_chunks, chunks - first));
        for (std::size_t n = 0; n < batch.size(); ++n) {
            const StoredArray::Chunk& chunk = array.chunks[first + n];
            if (goes_straight(first + n)) {
                read_at(chunk.place, target_of(first + n), array.path);
            } else {
                batch[n].resize(chunk.size);
                read_at(chunk.place, batch[n], array.path);
            }
        }
    };
    const auto decode = [&](std::size_t n, const std::vector<std::byte>& stored) {
        thread_local std::vector<std::byte> scratch, filled;
        const std::span<std::byte> target = target_of(n);
        if (goes_straight(n))
            return check_sum(array, n, target);
        check_sum(array, n, stored);
        const bool whole = target.size() == size;
        if (!whole)
            filled.resize(size);
        const std::span<std::byte> decoded = whole ? target : std::span(filled);
        if (array.chunks[n].plain)
            std::ranges::copy(stored, decoded.begin());
        else if (!decode_chunk(stored, width, decoded, scratch))
            fail(array.path + " is damaged: part " + std::to_string(n + 1) + " cannot be inflated");
        if (!whole)
            std::ranges::copy(decoded.first(target.size()), target.begin());
    };
    // One batch is read, from front to back as disks like it, while the one before is decoded.
    Batch now, next;
    // Nobody else's work meanwhile: it might ask for an array of the same grid.
    tbb::this_task_arena::isolate([&] {
        for (std::size_t first = 0; first < chunks; first += batch_chunks) {
            if (check && !check(static_cast<double>(first) / static_cast<double>(chunks)))
                throw Cancelled{};
            if (first == 0)
                fetch(0, now);
            tbb::task_group decoding;
            decoding.run([&] {
                tbb::parallel_for(std::size_t{0}, now.size(), [&](std::size_t n) { decode(first + n, now[n]); });
            });
            try {
                if (first + batch_chunks < chunks)
                    fetch(first + batch_chunks, next);
            } catch (...) {
                decoding.wait();
                throw;
            }
            decoding.wait();
            now.swap(next);
        }
    });
}

// Writing

ProjectFileWriter::ProjectFileWriter(const std::filesystem::path& path, std::uint64_t total_bytes, ProgressCheck check,
                                     int format)
    : output_(path), format_(format), total_(std::max<std::uint64_t>(total_bytes, 1)), check_(std::move(check))
{
}

ProjectFileWriter::~ProjectFileWriter() = default;

void ProjectFileWriter::advance(std::uint64_t bytes)
{
    done_ += bytes;
    if (check_ && !check_(std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_))))
        throw Cancelled{};
}

StoredArray ProjectFileWriter::write(const std::string& path, NumberType type, std::span<const std::byte> values)
{
    const std::size_t width = bytes_of(type);
    StoredArray array;
    array.path = path;
    array.type = type;
    array.count = values.size() / width;
    array.chunk_count = std::min(array.count, chunk_bytes / width);
    const std::size_t size = array.chunk_count * width;
    const std::size_t chunks = (values.size() + size - 1) / size;
    output_.begin_array(path, type, array.count, array.chunk_count);

    struct Encoded {
        EncodedChunk chunk;
        std::span<const std::byte> stored; ///< of the chunk, or the values themselves
        std::uint32_t sum = 0;
    };
    std::vector<std::byte> last(values.size() % size == 0 ? 0 : size); // filled up with zeros
    std::ranges::copy(values.last(values.size() % size), last.begin());
    const auto encode_batch = [&](std::size_t first, std::vector<Encoded>& batch) {
        batch.resize(std::min(batch_chunks, chunks - first));
        tbb::parallel_for(std::size_t{0}, batch.size(), [&](std::size_t n) {
            const std::size_t begin = (first + n) * size;
            const bool whole = begin + size <= values.size();
            const auto source = whole ? values.subspan(begin, size) : std::span<const std::byte>(last);
            Encoded& one = batch[n];
            encode_chunk(source, width, one.chunk);
            one.stored = one.chunk.plain ? source : std::span<const std::byte>(one.chunk.bytes);
            one.sum = checksum(one.stored);
        });
    };
    // One batch is written while the next one is encoded.
    std::vector<Encoded> now, next;
    tbb::this_task_arena::isolate([&] {
        encode_batch(0, now);
        for (std::size_t first = 0; first < chunks; first += batch_chunks) {
            tbb::task_group encoding;
            if (first + batch_chunks < chunks)
                encoding.run([&] { encode_batch(first + batch_chunks, next); });
            try {
                for (std::size_t n = 0; n < now.size(); ++n) {
                    const bool plain = now[n].chunk.plain;
                    const std::uint64_t place = output_.write_chunk(first + n, now[n].stored, plain);
                    array.chunks.push_back({place, now[n].stored.size(), now[n].sum, plain});
                }
                advance(std::min<std::uint64_t>(values.size() - first * size, batch_chunks * size));
            } catch (...) {
                encoding.wait();
                throw;
            }
            encoding.wait();
            now.swap(next);
        }
    });
    output_.end_array();
    return array;
}

StoredArray ProjectFileWriter::copy(const std::string& path, const ProjectFile& from, const StoredArray& array)
{
    StoredArray result = array;
    result.path = path;
    output_.begin_array(path, array.type, array.count, array.chunk_count);
    std::vector<std::byte> bytes;
    for (std::size_t n = 0; n < array.chunks.size(); ++n) {
        bytes.resize(array.chunks[n].size);
        from.read_stored(array, n, bytes);
        result.chunks[n].place = output_.write_chunk(n, bytes, array.chunks[n].plain);
        advance(array.chunk_count * bytes_of(array.type));
    }
    output_.end_array();
    return result;
}

void ProjectFileWriter::describe(const std::string& path, const std::string& name, const std::string& text)
{
    output_.set_attribute(path, name, text);
}

void ProjectFileWriter::describe(const std::string& path, const std::string& name, std::span<const std::int64_t> numbers)
{
    output_.set_attribute(path, name, numbers);
}

void ProjectFileWriter::commit(std::string_view contents)
{
    const std::uint64_t place = output_.write_bytes("/contents", bytes_of_text(contents));
    const std::uint64_t size = output_.close();
    advance(0);
    output_.commit(user_block(format_, place, contents, size));
}

} // namespace lodex

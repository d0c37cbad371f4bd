#include <lodex/gridio/GridFormat.h>

#include <lodex/utils/FileRecovery.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lodex {

namespace {

struct Registry {
    std::mutex mutex;
    std::vector<std::unique_ptr<GridFormat>> formats;
};

Registry& registry()
{
    static Registry the_registry;
    return the_registry;
}

std::string lower(std::string_view text)
{
    std::string result(text);
    for (char& c : result) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

bool has_ending(const GridFormat& format, const std::filesystem::path& path)
{
    const std::string ending = lower(path.extension().string());
    const auto endings = format.endings();
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

std::string read_head(const std::filesystem::path& path)
{
    constexpr std::size_t head_bytes = 64 * 1024;
    const auto fail = [&path](int error) {
        return FileError(path.string(), 0, "cannot be read: " + std::generic_category().message(error));
    };
    // Not blocking: a named pipe would otherwise wait for a writer.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        throw fail(errno);
    }
    struct Closer {
        int descriptor;
        ~Closer() { ::close(descriptor); }
    } closer{descriptor};
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throw fail(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw FileError(path.string(), 0, S_ISDIR(status.st_mode) ? "is a folder, expected a file"
                                                                   : "is not a regular file");
    }
    std::string head(head_bytes, '\0');
    std::size_t count = 0;
    while (count < head.size()) {
        const ssize_t got = ::read(descriptor, head.data() + count, head.size() - count);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw fail(errno);
        }
        if (got == 0) {
            break;
        }
        count += static_cast<std::size_t>(got);
    }
    head.resize(count);
    return head;
}

std::string list_of_names(bool writable)
{
    std::string names;
    for (const GridFormat* format : GridFormats::all()) {
        if (writable ? format->can_write() : format->can_read()) {
            names += (names.empty() ? "" : ", ") + std::string(format->name());
        }
    }
    return names;
}

} // namespace

ReadResult GridFormat::read(const std::filesystem::path& path, const ReadOptions&) const
{
    throw FileError(path.string(), 0, "the format " + std::string(name()) + " is for writing only");
}

WriteResult GridFormat::write(const GridModel&, const std::filesystem::path& path, const WriteOptions&) const
{
    throw FileError(path.string(), 0, "the format " + std::string(name()) + " is for reading only");
}

void GridFormats::add(std::unique_ptr<GridFormat> format)
{
    Registry& all_formats = registry();
    const std::lock_guard lock(all_formats.mutex);
    const auto place = std::upper_bound(all_formats.formats.begin(), all_formats.formats.end(), format,
                                        [](const auto& a, const auto& b) { return a->name() < b->name(); });
    all_formats.formats.insert(place, std::move(format));
}

std::vector<const GridFormat*> GridFormats::all()
{
    Registry& all_formats = registry();
    const std::lock_guard lock(all_formats.mutex);
    std::vector<const GridFormat*> formats;
    for (const auto& format : all_formats.formats) {
        formats.push_back(format.get());
    }
    return formats;
}

const GridFormat* GridFormats::find(std::string_view name)
{
    for (const GridFormat* format : all()) {
        if (lower(format->name()) == lower(name)) {
            return format;
        }
    }
    return nullptr;
}

const GridFormat& GridFormats::for_reading(const std::filesystem::path& path)
{
    // A model may consist of several files, and their writer may have been killed while they changed.
    std::error_code ignored;
    const std::filesystem::path file = std::filesystem::canonical(path, ignored);
    [[maybe_unused]] const bool whole = recover_file_sets((file.empty() ? path : file).parent_path());
    const std::string head = read_head(path);
    const auto formats = all();
    for (const GridFormat* format : formats) {
        if (format->can_read() && format->recognises(head, path)) {
            return *format;
        }
    }
    for (const GridFormat* format : formats) {
        if (format->can_read() && has_ending(*format, path)) {
            return *format; // its reader says what is wrong with the content
        }
    }
    throw FileError(path.string(), 0, "is of no known format (known: " + list_of_names(false) + ")");
}

const GridFormat& GridFormats::for_writing(const std::filesystem::path& path, std::string_view name)
{
    if (!name.empty()) {
        const GridFormat* format = find(name);
        if (format == nullptr) {
            throw FileError(path.string(), 0,
                            "there is no format \"" + to_utf8(name) + "\" (known: " + list_of_names(true) + ")");
        }
        if (!format->can_write()) {
            throw FileError(path.string(), 0, "the format " + std::string(format->name()) + " is for reading only");
        }
        return *format;
    }
    for (const GridFormat* format : all()) {
        if (format->can_write() && has_ending(*format, path)) {
            return *format;
        }
    }
    throw FileError(path.string(), 0, "the ending \"" + to_utf8(path.extension().string())
                                          + "\" belongs to no format that can be written (known: " + list_of_names(true)
                                          + ")");
}

} // namespace lodex

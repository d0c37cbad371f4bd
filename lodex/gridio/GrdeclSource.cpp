#include <lodex/gridio/GrdeclSource.h>

#include <lodex/gridio/GrdeclText.h>
#include <lodex/utils/FileError.h>
#include <lodex/volumes/model/LargeArray.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lodex::grdecl {

namespace {

constexpr std::size_t large_page = std::size_t{2} << 20;
constexpr std::size_t piece_bytes = std::size_t{256} << 10;

std::string system_text(int error)
{
    return "cannot be read: " + std::generic_category().message(error);
}

std::string changed_text(std::size_t before, std::size_t now)
{
    return "changed while it was read"
        + (before == now ? std::string()
                         : " (" + std::to_string(before) + " bytes at first, then " + std::to_string(now) + ")");
}

} // namespace

void Source::FreeText::operator()(char* text) const
{
    std::free(text);
}

Source::Source(const std::filesystem::path& path, std::string shown_name, const TextWindow& window,
               std::function<void()> on_read)
    : shown(std::move(shown_name)), folder(path.parent_path()), on_read_(std::move(on_read))
{
    // Not blocking: a named pipe would otherwise wait for a writer.
    struct Closer {
        int descriptor;
        ~Closer()
        {
            if (descriptor >= 0) {
                ::close(descriptor);
            }
        }
    } file{::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    struct stat status {};
    if (file.descriptor < 0 || ::fstat(file.descriptor, &status) != 0) {
        throw FileError(shown, 0, system_text(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw FileError(shown, 0,
                        S_ISDIR(status.st_mode) ? "is a folder, expected a file" : "is not a regular file");
    }
    device = status.st_dev;
    node = status.st_ino;
    seconds_ = status.st_mtim.tv_sec;
    nanoseconds_ = status.st_mtim.tv_nsec;
    const auto size = static_cast<std::size_t>(status.st_size);
    descriptor_ = file.descriptor;
    try {
        if (size <= window.whole) {
            read_whole(size);
        } else {
            step_ = window.step;
            reserve(size);
        }
        start();
    } catch (...) {
        descriptor_ = -1;
        if (mapping_ != nullptr) {
            ::munmap(mapping_, mapped_);
        }
        throw;
    }
    if (mapping_ != nullptr) {
        file.descriptor = -1; // stays open
    } else {
        descriptor_ = -1;
    }
}

Source::Source(std::string_view text, std::string shown_name) : shown(std::move(shown_name))
{
    storage_.reset(static_cast<char*>(std::malloc(text.size() + padding)));
    if (!storage_) {
        throw std::bad_alloc();
    }
    std::copy(text.begin(), text.end(), storage_.get());
    std::memset(storage_.get() + text.size(), 0, padding);
    begin = storage_.get();
    end = begin + text.size();
    start();
}

Source::~Source()
{
    if (mapping_ != nullptr) {
        ::munmap(mapping_, mapped_);
    }
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void Source::read_whole(std::size_t size)
{
    storage_.reset(static_cast<char*>(std::malloc(size + padding)));
    if (!storage_) {
        throw FileError(shown, 0, "does not fit into memory (" + std::to_string(size) + " bytes)");
    }
    begin = storage_.get();
    end = begin + size;
    read_all_at(0, storage_.get(), size);
    std::memset(storage_.get() + size, 0, padding);
    if (on_read_) {
        on_read_();
    }
    if (const auto what = change()) {
        throw FileError(shown, 0, *what);
    }
}

void Source::reserve(std::size_t size)
{
    mapped_ = (size + padding + large_page) / large_page * large_page + large_page;
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    void* const place = ::mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, flags, -1, 0);
    if (place == MAP_FAILED) {
        throw FileError(shown, 0, "does not fit into memory (" + std::to_string(size) + " bytes)");
    }
    mapping_ = static_cast<char*>(place);
    const auto address = reinterpret_cast<std::uintptr_t>(mapping_);
    begin = mapping_ + ((address + large_page - 1) / large_page * large_page - address);
    end = begin + size;
    if (step_ % large_page == 0) {
        advise_large_pages(mapping_, mapped_);
    }
    [[maybe_unused]] const int advised = ::posix_fadvise(descriptor_, 0, 0, POSIX_FADV_SEQUENTIAL);
}

void Source::start()
{
    counted_to_ = begin;
    pos = begin;
    low_ = begin;
    if (mapping_ == nullptr) {
        loaded_ = end;
        safe_ = static_cast<std::size_t>(end - begin) + padding;
    } else {
        loaded_ = begin;
        move_window(begin);
    }
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (std::string_view(begin, std::min(byte_order_mark.size(), static_cast<std::size_t>(end - begin)))
        == byte_order_mark) {
        pos += byte_order_mark.size();
    }
}

std::size_t Source::read_at(std::size_t offset, char* to, std::size_t count) const
{
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = ::pread(descriptor_, to + done, count - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            throw FileError(shown, 0, system_text(errno));
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void Source::read_all_at(std::size_t offset, char* to, std::size_t count) const
{
    if (const std::size_t got = read_at(offset, to, count); got < count) {
        throw FileError(shown, 0, change().value_or(changed_text(static_cast<std::size_t>(end - begin), offset + got)));
    }
}

void Source::move_window(const char* p)
{
    if (mapping_ == nullptr) {
        return;
    }
    const auto size = static_cast<std::size_t>(end - begin);
    const auto offset = std::min(static_cast<std::size_t>(p - begin), size);
    // Some text before p stays: words are looked at from their beginning and lines from theirs.
    const std::size_t first = (offset - std::min(offset, reach())) / step_ * step_;
    const std::size_t last = std::min((offset + reach() + step_) / step_ * step_, size);
    char* const base = mapping_ + (begin - mapping_);
    const auto drop = [base](std::size_t from, std::size_t to) {
        constexpr std::size_t page = 4096;
        to = (to + page - 1) / page * page;
        if (to > from && ::madvise(base + from, to - from, MADV_DONTNEED) != 0) {
            std::memset(base + from, 0, to - from);
        }
    };
    const auto low = static_cast<std::size_t>(low_ - begin);
    auto loaded = static_cast<std::size_t>(loaded_ - begin);
    if (first < low || first > loaded) {
        drop(low, loaded);
        loaded = first;
    } else {
        drop(low, first);
    }
    // Empty until the reading is done, so that an exception leaves no window that is not filled.
    low_ = loaded_ = begin + first;
    safe_ = 0;
    if (last > loaded) {
        read_all_at(loaded, base + loaded, last - loaded);
    }
    loaded_ = begin + std::max(last, loaded);
    safe_ = loaded_ == end ? static_cast<std::size_t>(end - low_) + padding
                           : static_cast<std::size_t>(loaded_ - low_) - reach();
    if (on_read_) {
        on_read_();
    }
}

template <class Use> void Source::in_pieces(const char* from, const char* to, const Use& use)
{
    if (from >= low_ && to <= loaded_) {
        use(std::string_view(from, static_cast<std::size_t>(to - from)));
        return;
    }
    std::string piece(std::min(piece_bytes, static_cast<std::size_t>(to - from)), '\0');
    while (from < to) {
        const std::size_t count = std::min(piece.size(), static_cast<std::size_t>(to - from));
        read_all_at(static_cast<std::size_t>(from - begin), piece.data(), count);
        use(std::string_view(piece).substr(0, count));
        from += count;
    }
}

void Source::append_text(std::string& to, const char* from, const char* until)
{
    if (until > from) {
        to.reserve(to.size() + static_cast<std::size_t>(until - from));
        in_pieces(from, until, [&to](std::string_view piece) { to += piece; });
    }
}

std::string Source::text(const char* from, const char* to)
{
    std::string result;
    append_text(result, from, to);
    return result;
}

const char* Source::without_blanks(const char* first, const char* last)
{
    while (last > first) {
        need(last - 1);
        if (!is_space(last[-1])) {
            break;
        }
        --last;
    }
    return last;
}

std::int64_t Source::line_of(const char* p)
{
    p = std::min(p, end);
    if (p < counted_to_) {
        counted_to_ = begin;
        lines_ = 1;
    }
    in_pieces(counted_to_, p,
              [this](std::string_view piece) { lines_ += std::count(piece.begin(), piece.end(), '\n'); });
    counted_to_ = p;
    return lines_;
}

std::optional<std::string> Source::change() const
{
    struct stat status {};
    if (descriptor_ < 0) {
        return {};
    }
    if (::fstat(descriptor_, &status) != 0) {
        return system_text(errno);
    }
    const auto size = static_cast<std::size_t>(end - begin);
    if (static_cast<std::size_t>(status.st_size) == size && status.st_mtim.tv_sec == seconds_
        && status.st_mtim.tv_nsec == nanoseconds_) {
        return {};
    }
    return changed_text(size, static_cast<std::size_t>(status.st_size));
}

} // namespace lodex::grdecl

#include <lodex/utils/FileRecovery.h>

#include <lodex/utils/Numbers.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace lodex {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view temporary_ending = ".tmp";
constexpr std::string_view undo_ending = ".undo";
constexpr std::string_view redo_ending = ".redo";
constexpr std::string_view first_field = "files that belong together, 1";
constexpr std::string_view last_field = "end";
constexpr std::size_t largest_record = 64 * 1024;

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor()
    {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return descriptor_; }

private:
    int descriptor_;
};

/// Takes the longest run of digits off the front; false when there is none.
bool take_digits(std::string_view& text)
{
    const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(count);
    return count > 0;
}

bool take(std::string_view& text, std::string_view what)
{
    if (!text.starts_with(what)) {
        return false;
    }
    text.remove_prefix(what.size());
    return true;
}

std::string_view cut(std::string_view name)
{
    constexpr std::size_t longest = 180; // of 255 bytes; the rest is for numbers and endings
    return name.substr(0, longest);
}

/// Whether this is a name that temporary_name() gives for the target.
bool is_temporary_of(std::string_view name, std::string_view target)
{
    return take(name, ".") && take(name, cut(target)) && take(name, ".") && take_digits(name) && take(name, "-")
        && take_digits(name) && name == temporary_ending;
}

/// Whether this is the second name of the target's old content, made by a process of this machine that is no more. A
/// record tells of it as a rule; there is none for files of several folders.
bool is_old_content_of(std::string_view name, std::string_view target)
{
    if (!name.ends_with(old_content_ending)) {
        return false;
    }
    name.remove_suffix(std::string_view(old_content_ending).size());
    if (!is_temporary_of(name, target)) {
        return false;
    }
    const auto process = parse_long(name.substr(2 + cut(target).size(), name.rfind('-') - 2 - cut(target).size()));
    return process && *process > 0 && ::kill(static_cast<pid_t>(*process), 0) != 0 && errno == ESRCH;
}

/// ".PID-N.undo" or ".PID-N.redo".
bool is_record(std::string_view name)
{
    return take(name, ".") && take_digits(name) && take(name, "-") && take_digits(name)
        && (name == undo_ending || name == redo_ending);
}

int open_regular(const fs::path& path)
{
    // For writing, since some network file systems lock nothing else; a link or a pipe is none of ours.
    const int descriptor = ::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status {};
    if (descriptor >= 0 && (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

void sync(const fs::path& folder) noexcept
{
    const Descriptor directory(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.get() >= 0) {
        [[maybe_unused]] const int result = ::fsync(directory.get());
    }
}

/// Names in a folder; none when it cannot be read. (The standard library's iterator ends the program when memory runs out.)
std::vector<std::string> names_in(const fs::path& folder)
{
    struct Closer {
        void operator()(DIR* directory) const { ::closedir(directory); }
    };
    std::vector<std::string> names;
    const std::unique_ptr<DIR, Closer> directory(::opendir(folder.empty() ? "." : folder.c_str()));
    while (directory) {
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) {
            break;
        }
        if (entry->d_name[0] == '.') {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

std::string to_text(std::span<const FileSetRecord::Member> members)
{
    // File names may hold anything but NUL.
    std::string text(first_field);
    text += '\0';
    for (const auto& member : members) {
        for (const std::string& field :
             {member.temporary, member.target, std::to_string(member.node), std::string(member.existed ? "1" : "0")}) {
            text += field;
            text += '\0';
        }
    }
    return text.append(last_field);
}

/// Nothing when the record is not whole or names files that this program would not have named.
std::optional<std::vector<FileSetRecord::Member>> from_text(std::string_view text)
{
    std::vector<std::string_view> fields;
    for (;;) {
        const std::size_t end = text.find('\0');
        fields.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            break;
        }
        text.remove_prefix(end + 1);
    }
    constexpr std::size_t per_member = 4;
    if (fields.size() % per_member != 2 || fields.front() != first_field || fields.back() != last_field) {
        return {};
    }
    std::vector<FileSetRecord::Member> members;
    for (std::size_t i = 1; i + per_member < fields.size(); i += per_member) {
        FileSetRecord::Member member{std::string(fields[i]), std::string(fields[i + 1]), 0, fields[i + 3] == "1"};
        if (!is_temporary_of(member.temporary, member.target) || member.target.find('/') != std::string::npos) {
            return {};
        }
        for (const char digit : fields[i + 2]) {
            if (digit < '0' || digit > '9') {
                return {};
            }
            member.node = member.node * 10 + static_cast<std::uint64_t>(digit - '0');
        }
        members.push_back(std::move(member));
    }
    return members;
}

std::optional<std::string> content(int descriptor)
{
    std::string text(largest_record, '\0');
    std::size_t used = 0;
    while (used < text.size()) {
        const ssize_t got = ::pread(descriptor, text.data() + used, text.size() - used, static_cast<off_t>(used));
        if (got < 0 && errno != EINTR) {
            return {};
        }
        if (got == 0) {
            break;
        }
        used += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    text.resize(used);
    return text;
}

bool gone(const fs::path& path)
{
    return ::unlink(path.c_str()) == 0 || errno == ENOENT;
}

/// Gives every new file its name.
bool finish(const fs::path& folder, const std::vector<FileSetRecord::Member>& members, const struct stat& record)
{
    bool done = true;
    for (const auto& member : members) {
        const fs::path temporary = folder / member.temporary;
        const fs::path target = folder / member.target;
        const fs::path old = temporary.string() + old_content_ending;
        struct stat now {};
        struct stat former {};
        struct stat ready {};
        if (::lstat(temporary.c_str(), &ready) == 0 && ready.st_ino == member.node) {
            // What somebody else has written since then is newer than ours.
            const bool replaced = ::lstat(target.c_str(), &now) == 0
                && !(::lstat(old.c_str(), &former) == 0 && former.st_ino == now.st_ino)
                && now.st_mtime > record.st_mtime;
            done &= replaced ? gone(temporary) : ::rename(temporary.c_str(), target.c_str()) == 0;
        }
        done &= gone(old);
    }
    return done;
}

/// Gives every old file its name back.
bool take_back(const fs::path& folder, const std::vector<FileSetRecord::Member>& members)
{
    bool done = true;
    for (const auto& member : members) {
        const fs::path temporary = folder / member.temporary;
        const fs::path target = folder / member.target;
        const fs::path old = temporary.string() + old_content_ending;
        struct stat now {};
        const bool ours = ::lstat(target.c_str(), &now) == 0 && now.st_ino == member.node;
        const bool missing = ::lstat(target.c_str(), &now) != 0;
        if (ours && !member.existed) {
            done &= gone(target);
        } else if (member.existed && (ours || missing) && ::lstat(old.c_str(), &now) == 0) {
            done &= ::rename(old.c_str(), target.c_str()) == 0;
        }
        done &= gone(temporary);
        done &= gone(old);
    }
    return done;
}

bool recover(const fs::path& folder, const fs::path& path, bool redo)
{
    const Descriptor record(open_regular(path));
    struct stat status {};
    struct stat named {};
    if (record.get() < 0) {
        return errno == ENOENT;
    }
    // Locked: its process lives. Another file of that name by now: its process has gone on since.
    if (!try_lock(record.get()) || ::fstat(record.get(), &status) != 0) {
        return false;
    }
    if (::lstat(path.c_str(), &named) != 0 || named.st_ino != status.st_ino) {
        return true;
    }
    const auto text = content(record.get());
    if (!text) {
        return false;
    }
    if (const auto members = from_text(*text)) {
        if (!(redo ? finish(folder, *members, status) : take_back(folder, *members))) {
            return false;
        }
        sync(folder);
    }
    return gone(path); // one that is not whole was never acted on
}

} // namespace

bool try_lock(int descriptor) noexcept
{
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

std::string temporary_name(const std::string& target_name, std::uint64_t process, std::uint64_t number)
{
    std::string name = ".";
    name += cut(target_name);
    name += '.';
    name += std::to_string(process);
    name += '-';
    name += std::to_string(number);
    name += temporary_ending;
    return name;
}

bool recover_file_sets(const fs::path& folder) noexcept
{
    try {
        std::vector<std::string> records = names_in(folder);
        std::erase_if(records, [](const std::string& name) { return !is_record(name); });
        bool done = true;
        for (const std::string& name : records) {
            done &= recover(folder, folder / name, name.ends_with(redo_ending));
        }
        return done;
    } catch (...) {
        return false; // no memory for a list of names
    }
}

void clean_up_for(const fs::path& target) noexcept
{
    try {
        const fs::path folder = target.parent_path();
        if (!recover_file_sets(folder)) {
            return; // a record that still counts may name what looks left behind
        }
        const std::string name = target.filename().string();
        for (const std::string& other : names_in(folder)) {
            if (!is_temporary_of(other, name) && !is_old_content_of(other, name)) {
                continue;
            }
            const fs::path path = folder / other;
            const Descriptor file(open_regular(path));
            struct stat status {};
            // Old content without another name is all that is left of a file: not ours to remove.
            const bool of_use = file.get() < 0 || ::fstat(file.get(), &status) != 0
                || (path.extension() == old_content_ending && status.st_nlink < 2);
            if (!of_use && try_lock(file.get())) {
                ::unlink(path.c_str());
            }
        }
    } catch (...) {
        // No memory for a list of names: they stay until the next time.
    }
}

FileSetRecord::FileSetRecord(const fs::path& folder, std::span<const Member> members) : folder_(folder)
{
    static std::atomic<unsigned> counter{0};
    const std::string text = to_text(members);
    const auto fail = [this](int error) {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
            ::unlink(path_.c_str());
        }
        throw std::system_error(error, std::generic_category());
    };
    constexpr int attempts = 100; // a killed process that had our number may have left its record
    for (int attempt = 0; attempt < attempts && descriptor_ < 0; ++attempt) {
        std::string name = ".";
        name += std::to_string(::getpid());
        name += '-';
        name += std::to_string(counter.fetch_add(1));
        stem_ = folder / name;
        const fs::path taken = stem_.string() + std::string(redo_ending);
        path_ = stem_.string() + std::string(undo_ending);
        errno = EEXIST;
        if (::access(taken.c_str(), F_OK) != 0) {
            descriptor_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        }
        if (descriptor_ < 0 && errno != EEXIST) {
            fail(errno);
        }
    }
    if (descriptor_ < 0) {
        fail(EEXIST);
    }
    [[maybe_unused]] const bool locked = try_lock(descriptor_); // where nothing can be locked nobody recovers either
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = ::write(descriptor_, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            fail(count < 0 ? errno : EIO);
        }
        done += static_cast<std::size_t>(count);
    }
    if (::fsync(descriptor_) != 0) {
        fail(errno);
    }
    sync_folder();
}

FileSetRecord::~FileSetRecord()
{
    if (!left_) {
        ::unlink(path_.c_str());
    }
    ::close(descriptor_);
}

void FileSetRecord::sync_folder() const noexcept
{
    sync(folder_);
}

void FileSetRecord::change_to(const char* ending)
{
    fs::path next = stem_;
    next += ending;
    if (::rename(path_.c_str(), next.c_str()) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    path_ = std::move(next);
    sync_folder();
}

void FileSetRecord::redo()
{
    change_to(redo_ending.data());
}

void FileSetRecord::undo() noexcept
{
    try {
        change_to(undo_ending.data());
    } catch (...) {
        // It matters only when the old files cannot be put back either: then the new ones count.
    }
}

} // namespace lodex

#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace lodex {

/// What processes leave behind that were killed while they wrote a file, and how it is put right.
///
/// A temporary file is named ".NAME.PID-N.tmp" and locked (flock) by the process that writes it, so that one that nobody
/// holds any more can be told from one that is being written, on other machines of a network as well.

/// Hidden name beside the target for one attempt. NAME is cut so that the whole fits what file systems take.
[[nodiscard]] std::string temporary_name(const std::string& target_name, std::uint64_t process, std::uint64_t number);

/// The second name of the old content while files that belong together change.
inline constexpr const char* old_content_ending = ".old";

/// Removes temporary files of the target that no process writes any more; finishes or takes back sets of files (see
/// FileSetRecord) first. Never throws: what cannot be put right stays.
void clean_up_for(const std::filesystem::path& target) noexcept;

/// Finishes or takes back the sets of files in this folder whose process was killed while they changed their names.
/// False when something was left as it is (no right to change the folder). Never throws.
bool recover_file_sets(const std::filesystem::path& folder) noexcept;

/// Written down before files that belong together change their names: with it, all of them change or none, also when the
/// process is killed or the power fails in between. A record says "undo" until every new file is ready, then "redo"; the
/// next process of this program that reads or writes in the folder acts on it. Only for files of one folder.
class FileSetRecord {
public:
    struct Member {
        std::string temporary;   ///< name in the folder
        std::string target;      ///< name in the folder
        std::uint64_t node = 0;  ///< file number of the temporary file
        bool existed = false;    ///< the target was there before
    };

    /// Writes the record; the state is "undo". Throws std::system_error.
    FileSetRecord(const std::filesystem::path& folder, std::span<const Member> members);
    /// Removes the record.
    ~FileSetRecord();
    FileSetRecord(const FileSetRecord&) = delete;
    FileSetRecord& operator=(const FileSetRecord&) = delete;

    /// From here on the new files count. Throws std::system_error.
    void redo();
    /// From here on the old files count, unless that cannot be written down.
    void undo() noexcept;
    /// Leaves the record to the next process.
    void leave() noexcept { left_ = true; }

private:
    void change_to(const char* ending);
    void sync_folder() const noexcept;

    std::filesystem::path folder_;
    std::filesystem::path stem_; ///< the record's path without its ending
    std::filesystem::path path_;
    int descriptor_ = -1;
    bool left_ = false;
};

/// Locks a file for as long as the descriptor is open; false when somebody else holds it. File systems without locks
/// count as locked.
[[nodiscard]] bool try_lock(int descriptor) noexcept;

} // namespace lodex

#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lodex::grdecl {

/// How much of a file's text is in memory at a time.
struct TextWindow {
    /// Files of up to this many bytes are read whole.
    std::size_t whole = std::size_t{8} << 20;
    /// Bytes that are read at a time from longer ones, a multiple of 16 KiB; about three times as many are in memory.
    std::size_t step = std::size_t{2} << 20;
};

/// One text: a file, or what the caller gave.
///
/// Every byte has its address between begin and end from the start to the end of the reading, but of a long file only a
/// window is in memory; all other addresses hold zeros. need(p) brings the window to p. It then reaches from p to at
/// least reach() bytes behind it, or to the end, where zeros follow. The window moves forward while the text is read
/// and gives its memory back; going back is right but slow.
class Source {
public:
    std::string shown;     ///< for messages
    std::filesystem::path folder;
    std::string kept_name; ///< for KeptKeyword::file
    const char* begin = nullptr;
    const char* end = nullptr;
    const char* pos = nullptr; ///< behind what was read
    dev_t device = 0;
    ino_t node = 0;

    /// Opens a file. Throws FileError: no such file, not a regular one, not readable, not enough memory. on_read is
    /// called after every piece that is read and may throw.
    Source(const std::filesystem::path& path, std::string shown_name, const TextWindow& window,
           std::function<void()> on_read);
    /// Copies a text.
    Source(std::string_view text, std::string shown_name);
    ~Source();
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /// Throws FileError when the file became shorter or cannot be read.
    void need(const char* p)
    {
        if (static_cast<std::size_t>(p - low_) >= safe_) [[unlikely]] {
            move_window(p);
        }
    }
    /// need() is called for no place before this one unless the text goes back.
    [[nodiscard]] const char* safe_end() const { return low_ + safe_; }
    /// Where the window ends although the text goes on: what stops there is not at its end. Behind the padding when the
    /// window reaches to the end.
    [[nodiscard]] const char* cut() const { return loaded_ == end ? end + padding : loaded_; }
    /// Longest word that is seen whole.
    [[nodiscard]] std::size_t reach() const { return step_ / 4; }

    /// The text from one place to another, wherever the window is.
    [[nodiscard]] std::string text(const char* from, const char* to);
    void append_text(std::string& to, const char* from, const char* until);
    /// The place without the blanks before it, not before first.
    [[nodiscard]] const char* without_blanks(const char* first, const char* last);

    /// 1-based; cheap when asked for places one behind the other.
    [[nodiscard]] std::int64_t line_of(const char* p);

    /// What happened to the file since it was opened; nothing when it is as it was.
    [[nodiscard]] std::optional<std::string> change() const;

    static constexpr std::size_t padding = 64; ///< zeros behind the end that may be looked at

private:
    struct FreeText {
        void operator()(char* text) const;
    };

    void start();
    void read_whole(std::size_t size);
    void reserve(std::size_t size);
    void move_window(const char* p);
    std::size_t read_at(std::size_t offset, char* to, std::size_t count) const;
    void read_all_at(std::size_t offset, char* to, std::size_t count) const;
    /// Calls use(piece) for the text between two places.
    template <class Use> void in_pieces(const char* from, const char* to, const Use& use);

    std::unique_ptr<char[], FreeText> storage_; ///< of a text that is in memory as a whole
    char* mapping_ = nullptr;                   ///< addresses of a long file
    std::size_t mapped_ = 0;
    std::size_t step_ = std::size_t{1} << 40;
    const char* low_ = nullptr;    ///< the window
    const char* loaded_ = nullptr; ///< its end
    std::size_t safe_ = 0;         ///< of the window, from low_: where need() has nothing to do
    int descriptor_ = -1;
    std::int64_t seconds_ = 0, nanoseconds_ = 0; ///< time of the last change
    std::function<void()> on_read_;
    const char* counted_to_ = nullptr;
    std::int64_t lines_ = 1;
};

} // namespace lodex::grdecl

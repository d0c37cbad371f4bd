#pragma once

namespace Lodex {

/// Counted start-up of one host library. The first initialize() brings the library up, the last terminate() is only
/// counted: registries live as long as the process. Tag is the library's init class.
template <class Tag> class LibraryInit {
public:
    static void initialize()
    {
        if (count_++ == 0)
            Tag::start();
    }
    static void terminate() { --count_; }
    /// Number of live users.
    [[nodiscard]] static int count() { return count_; }

private:
    static inline int count_ = 0;
};

} // namespace Lodex

#pragma once

namespace Kelvane {

/// Counts the live users of the module: every source unit while the library is loaded, and every object of this
/// class. Nothing is set up at the first use or taken down at the last; that is the business of the host's libraries.
class Kelvane_gui_init {
public:
    Kelvane_gui_init();
    ~Kelvane_gui_init();
    Kelvane_gui_init(const Kelvane_gui_init&) = delete;
    Kelvane_gui_init& operator=(const Kelvane_gui_init&) = delete;

    static void initialize();
    static void terminate();

    static int count_;

private:
    static void initialize_internal();
    static void terminate_internal();
};

} // namespace Kelvane

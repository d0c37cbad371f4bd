#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Top-level user interface; brings up all the others.
class Lodex_gui_init : public LibraryInit<Lodex_gui_init> {
    friend class LibraryInit<Lodex_gui_init>;
    static void start();
};

} // namespace Lodex

#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Shell windows and the help manager.
class Lodex_xtools_init : public LibraryInit<Lodex_xtools_init> {
    friend class LibraryInit<Lodex_xtools_init>;
    static void start();
};

} // namespace Lodex

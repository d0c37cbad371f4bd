#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Colour maps.
class Lodex_gtools_init : public LibraryInit<Lodex_gtools_init> {
    friend class LibraryInit<Lodex_gtools_init>;
    static void start();
};

} // namespace Lodex

#pragma once

#include <Lodex/utils/LibraryInit.h>

namespace Lodex {

/// Surfaces; this host holds none of its own.
class Lodex_surfaces_init : public LibraryInit<Lodex_surfaces_init> {
    friend class LibraryInit<Lodex_surfaces_init>;
    static void start();
};

} // namespace Lodex
